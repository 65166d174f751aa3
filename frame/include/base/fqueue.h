#pragma once
#include "base/source/fthread.h"
#include "base/source/tdlinkedlist.h"
#include <algorithm>

/** Queues of plain pointers, which they borrow. */

namespace Tessarine {

/** A queue for several threads. The operations named here take the lock, each for itself; all others of the list are
    for who has the queue alone. isEmpty() looks without the lock. */
class FQueue : public TDLinkedList<void*> {
public:
    bool add(void* const& item) override { return append(item); }
    bool append(void* item);
    bool prepend(void* item);
    /** Both give null when the queue is empty. */
    void* removeFirst();
    void* removeLast();

private:
    FLock lock;
};

/** The memory of a ring: two indices that run round an array. */
template <class T>
class TRingBuffer {
public:
    /** At least one element. */
    explicit TRingBuffer(int32_t capacity)
        : data(new std::atomic<T>[static_cast<uint32_t>(std::max(capacity, 1))]()), capacity(std::max(capacity, 1)) {}
    ~TRingBuffer() {
        if (ownsBuffer)
            delete[] data;
    }
    TRingBuffer(const TRingBuffer&) = delete;
    TRingBuffer& operator=(const TRingBuffer&) = delete;

protected:
    int32_t behind(int32_t index) const { return index + 1 < capacity ? index + 1 : 0; }

    std::atomic<T>* data;
    int32_t capacity;
    std::atomic<int32_t> writeIndex{0};  // the producer's
    std::atomic<int32_t> readIndex{0};   // the consumer's
    bool ownsBuffer = true;
};

/** A ring for exactly one producer and one consumer, which never wait for each other; it neither grows nor checks.

    Room      capacity - 1 elements once the reader has moved on. While it stands at the start of the array, one push
              more succeeds, and with that the ring reads as empty: its elements are lost.
    Threads   push on the producer's, the rest on the consumer's */
template <class T>
class CmTLockFreeQueue : public TRingBuffer<T> {
public:
    using TRingBuffer<T>::TRingBuffer;

    /** False: full. */
    bool push(T item) {
        const int32_t place = this->writeIndex.load(std::memory_order_relaxed);
        if (place == this->readIndex.load(std::memory_order_acquire) - 1)
            return false;
        this->data[place].store(item, std::memory_order_relaxed);
        this->writeIndex.store(this->behind(place), std::memory_order_release);
        return true;
    }
    /** T() when empty, which an element may be as well. */
    T pop() {
        const int32_t place = this->readIndex.load(std::memory_order_relaxed);
        if (place == this->writeIndex.load(std::memory_order_acquire))
            return T();
        const T item = this->data[place].load(std::memory_order_relaxed);
        this->readIndex.store(this->behind(place), std::memory_order_release);
        return item;
    }
    /** What the next pop would give, or anything at all when there is nothing. */
    T peek() const {
        return this->data[this->readIndex.load(std::memory_order_relaxed)].load(std::memory_order_acquire);
    }

protected:
    bool hasItem() const {
        return this->readIndex.load(std::memory_order_relaxed) != this->writeIndex.load(std::memory_order_acquire);
    }
};

class FLockFreeQueue : public CmTLockFreeQueue<void*> {
public:
    /** deleter ends what is still inside at the end; null for none. */
    FLockFreeQueue(int32_t capacity, void (*deleter)(void*));
    ~FLockFreeQueue() { flush(); }

    /** Empties the queue; the deleter gets each item. */
    void flush();

private:
    void (*deleter)(void*);
};

}  // namespace Tessarine
