#include "gui/umessagetimer.h"
#include "base/utimer.h"
#include "gui/uctrler.h"

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(UMessageTimer, CmObject)

UMessageTimer::UMessageTimer(CmObject* receiver, int32_t ms, FMessage* given, CmContainer* holder)
    : message(OPtr<FMessage>(given)), dueTicks(UTicks::future(ms)), receiver(receiver), holder(holder) {
    if (holder)
        holder->add(this);
    if (gController)
        gController->addIdle(this);
}

uint32_t UMessageTimer::release() {
    if (refCount > 1 || !isWaiting || !gController)
        return CmObject::release();
    done = true;
    return 1;
}

int32_t UMessageTimer::notify(FMessage* told) {
    if (!told->isType("Idle"))
        return CmObject::notify(told);
    if (UTicks::reachedFuture(dueTicks))
        deliverNow();
    return 1;
}

void UMessageTimer::deliverNow() {
    if (!isWaiting.exchange(false))
        return;
    if (gController)
        gController->removeIdle(this);
    {
        const FGuard guard(lock);
        if (!done.exchange(true)) {
            leaveHolder();
            if (receiver)
                receiver->notify(message);
        }
    }
    message = nullptr;
    release();
}

void UMessageTimer::leaveHolder() {
    if (!holder)
        return;
    if (holder->_ownsObjects == CmContainer::kTakesOver)
        addRef();
    holder->remove(this);
}

}  // namespace Tessarine
