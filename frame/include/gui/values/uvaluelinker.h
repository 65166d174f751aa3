#pragma once
#include "collect/cmlinkedlist.h"
#include "gui/values/uvalue.h"

namespace Tessarine {

/** Keeps values equal to one master, as floats: integers beyond 24 bits lose digits.

    Owns      its slaves, shared. The master is borrowed; the linker lets go when it dies.
    News      each of the master pushes its value to all slaves at once, equal or not, and their owners hear of it; so
              does adding either side. Of two linkers that are crossed the narrower range pulls the other value back;
              ranges that wrap must be equal, or they may chase each other without end.
    Threads   the main thread. */
class UValueLinker : public CmObject {
public:
    DECLARE_CLASS(UValueLinker, CmObject)
    UValueLinker() { slaves._ownsObjects = CmContainer::kShares; }
    UValueLinker(const UValueLinker&) = delete;
    UValueLinker& operator=(const UValueLinker&) = delete;
    ~UValueLinker() override { addMaster(nullptr); }
    using CmObject::update;
    void update(CmObject* source, int32_t message) override;

    /** Instead of the old one; null: none. */
    void addMaster(UValue* value);
    /** Once each. */
    void addSlave(UValue* value);
    void removeSlave(UValue* value) { slaves.remove(value); }
    void updateSlaves();

private:
    CmLinkedList slaves;  // of UValue
    UValue* master = nullptr;
    uint32_t pushes = 0;
};

}  // namespace Tessarine
