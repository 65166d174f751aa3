#pragma once
#include "base/source/fbitset.h"
#include "collect/cmlinkedlist.h"

namespace Tessarine {
class UValue;
class UValueContainer;

/** Switches a group of values active or inactive, and back again those that it has changed itself. The values are
    borrowed, and must live as long. Main thread. */
class UValueActivator {
public:
    void add(UValue* value);
    /** All that it has now. */
    void add(UValueContainer& container);
    void setActive(bool state);
    /** Undoes the last setActive. */
    void reset();

private:
    CmLinkedList values;  // of UValue
    BitSet changedBits;   // in their order
    bool active = false;
};

}  // namespace Tessarine
