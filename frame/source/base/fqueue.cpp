#include "base/fqueue.h"

namespace Tessarine {

bool FQueue::append(void* item) {
    const FGuard guard(lock);
    return TDLinkedList::append(item);
}

bool FQueue::prepend(void* item) {
    const FGuard guard(lock);
    return TDLinkedList::prepend(item);
}

void* FQueue::removeFirst() {
    const FGuard guard(lock);
    return TDLinkedList::removeFirst();
}

void* FQueue::removeLast() {
    const FGuard guard(lock);
    return TDLinkedList::removeLast();
}

FLockFreeQueue::FLockFreeQueue(int32_t capacity, void (*deleter)(void*))
    : CmTLockFreeQueue(capacity), deleter(deleter) {}

void FLockFreeQueue::flush() {
    while (hasItem()) {
        void* item = pop();
        if (deleter)
            deleter(item);
    }
}

}  // namespace Tessarine
