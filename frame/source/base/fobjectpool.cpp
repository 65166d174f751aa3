#include "base/fobjectpool.h"
#include "pluginterfaces/base/funknown.h"
#include <new>

namespace Tessarine {
namespace {
constexpr size_t kBlockSize = 0x4000;
constexpr size_t kAlignment = alignof(std::max_align_t);
}  // namespace

struct FObjectPool::Block {
    alignas(kAlignment) int32_t living;
};

/** Stands before each object. */
struct FObjectPool::Header {
    alignas(kAlignment) Block* block;  // null: the object has its own memory
};

thread_local FObjectPool* FObjectPool::current = nullptr;

FObjectPool::~FObjectPool() {
    leaveBlock();
    current = outer;
}

void* FObjectPool::allocate(size_t size) {
    if (current && size <= kBlockSize / 16)
        return current->take(size);
    auto* header = static_cast<Header*>(::operator new(sizeof(Header) + size));
    header->block = nullptr;
    return header + 1;
}

void FObjectPool::release(void* memory) {
    if (!memory)
        return;
    auto* header = static_cast<Header*>(memory) - 1;
    Block* block = header->block;
    if (!block)
        ::operator delete(header);
    else if (FUnknown::atomicAdd(block->living, -1) == 0)
        ::operator delete(block);
}

void* FObjectPool::take(size_t size) {
    const size_t whole = sizeof(Header) + (size + kAlignment - 1) / kAlignment * kAlignment;
    if (static_cast<size_t>(end - next) < whole) {
        leaveBlock();
        block = static_cast<Block*>(::operator new(kBlockSize));
        block->living = 1;
        next = reinterpret_cast<char*>(block + 1);
        end = reinterpret_cast<char*>(block) + kBlockSize;
    }
    auto* header = reinterpret_cast<Header*>(next);
    next += whole;
    header->block = block;
    FUnknown::atomicAdd(block->living, 1);
    return header + 1;
}

void FObjectPool::leaveBlock() {
    if (block && FUnknown::atomicAdd(block->living, -1) == 0)
        ::operator delete(block);
    block = nullptr;
    next = end = nullptr;
}

}  // namespace Tessarine
