#pragma once
#include "collect/cmlinkedlist.h"

namespace Tessarine {

/** First in, first out. What leaves takes the container's reference with it; peek lends. Null when empty. */
class CmQueue : public CmLinkedList {
public:
    DECLARE_CLASS(CmQueue, CmLinkedList)
    DECLARE_NEWCOPY(CmQueue)

    bool enqueue(CmObject* object) { return append(object); }
    CmObject* dequeue() { return removeFirst(); }
    CmObject* peek() const { return objectOf(_first); }
};

/** Last in, first out; the same of references. */
class CmStack : public CmLinkedList {
public:
    DECLARE_CLASS(CmStack, CmLinkedList)
    DECLARE_NEWCOPY(CmStack)

    bool push(CmObject* object) { return prepend(object); }
    CmObject* pop() { return removeFirst(); }
    CmObject* peek() const { return objectOf(_first); }
    CmObject* removeBottom() { return removeLast(); }
};

}  // namespace Tessarine
