#pragma once

namespace Tessarine {
class CmObject;

/** What the values ask of the floors above. All null until they are installed. */
struct ValueHooks {
    /** The main loop is bringing out what is pending: news go out at once. */
    bool (*isInUpdatePhase)() = nullptr;
    /** The command, borrowed; null: there is none of this name. */
    CmObject* (*commandByName)(const char* category, const char* name) = nullptr;
};
extern ValueHooks gValueHooks;

}  // namespace Tessarine
