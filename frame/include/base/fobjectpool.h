#pragma once
#include <cstddef>
#include <cstdint>

namespace Tessarine {

/** Memory for very many small objects that come and mostly go together, as when a file of bags is loaded: while a pool is there,
    objects of the classes that say FROM_OBJECT_POOL, made on its thread, stand side by side in blocks. A block goes with the last
    object in it, long after the pool. Without a pool each has its own memory.

    Threads   a pool serves the thread that made it, and is ended there; objects may end on any thread. */
class FObjectPool {
public:
    FObjectPool() : outer(current) { current = this; }
    ~FObjectPool();
    FObjectPool(const FObjectPool&) = delete;
    FObjectPool& operator=(const FObjectPool&) = delete;

    static void* allocate(size_t size);
    static void release(void* memory);

private:
    struct Block;
    struct Header;

    void* take(size_t size);
    void leaveBlock();

    FObjectPool* const outer;
    Block* block = nullptr;  // the pool holds it like an object would
    char *next = nullptr, *end = nullptr;
    static thread_local FObjectPool* current;
};

#define FROM_OBJECT_POOL                                 \
    static void* operator new(size_t size) {             \
        return ::Tessarine::FObjectPool::allocate(size); \
    }                                                    \
    static void operator delete(void* memory) {          \
        ::Tessarine::FObjectPool::release(memory);       \
    }

}  // namespace Tessarine
