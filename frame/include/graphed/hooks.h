#pragma once
#include <cstdint>

namespace Tessarine {
class CmObject;
class FMessage;

/** What undo and commands ask of the floors above. Null until they are installed; then there is no window, nothing is put off,
    and every thread is the main thread. */
struct ActionHooks {
    /** Who hears that the edit menus are out of date, and interprets what nobody else does; borrowed. Null: nobody. */
    CmObject* (*application)() = nullptr;
    /** Offers an action to the windows, from the front. true: the answer stands, a modal window's also when it is 0. */
    bool (*dispatchToWindows)(FMessage* message, int32_t& answer) = nullptr;
    bool (*isModal)() = nullptr;
    /** Actions of commands are to wait for the next turn of the main loop. */
    bool (*defersActions)() = nullptr;
    bool (*isMainThread)() = nullptr;
    /** One round of idle work. */
    void (*idle)() = nullptr;
    /** Returns the former state. */
    bool (*suspendMouse)(bool state) = nullptr;
    void (*showText)(const char16_t* text) = nullptr;
    /** Whether the user agrees; nobody to ask: yes. */
    bool (*ask)(const char16_t* text) = nullptr;
};
extern ActionHooks gActionHooks;

}  // namespace Tessarine
