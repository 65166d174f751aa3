#pragma once
#include "base/fmessage.h"
#include <atomic>

namespace Tessarine {

/** Sends one message, once its time has come, from the controller's idle steps; then it ends itself.

    Owns      the message, taken over. The receiver is borrowed.
    Holder    a container that it stands in until the message goes, so that it can be found and given up: one that takes
              over has the maker's reference. Null is allowed.
    Giving up release() of the last reference while it waits: nothing is sent, and it ends when its time has come.
    Threads   main */
class UMessageTimer : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(UMessageTimer, CmObject)

    UMessageTimer(CmObject* receiver, int32_t ms, FMessage* message, CmContainer* holder);

    uint32_t release() override;
    int32_t notify(FMessage* message) override;
    /** Sends it now, unless that was done or given up, and ends the timer: don't touch it afterwards. */
    void deliverNow();

private:
    ~UMessageTimer() override = default;
    void leaveHolder();

    IPtr<FMessage> message;
    int32_t dueTicks;
    CmObject* receiver;  // borrowed
    FLock lock;
    std::atomic<bool> done{false};
    CmContainer* holder;                // borrowed, may be null
    std::atomic<bool> isWaiting{true};  // the idle list knows it
};

}  // namespace Tessarine
