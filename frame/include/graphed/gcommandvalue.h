#pragma once
#include "graphed/gcommand.h"
#include "gui/values/uvalue.h"

namespace Tessarine {

/** Fires a command when it is switched on, and springs back. Shares the command. */
class GCommandValue : public UValue {
public:
    DECLARE_CLASS(GCommandValue, UValue)
    DECLARE_NEWCOPY(GCommandValue)

    explicit GCommandValue(GCommand* command = nullptr);
    /** Borrowed; null: none. */
    GCommand* getCommand() const { return classCast<GCommand>(owner); }
};

}  // namespace Tessarine
