#include "base/source/fbitset.h"
#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdlib>
#include <cstring>

namespace Tessarine {

BitSet::~BitSet() {
    std::free(array);
}

BitSet& BitSet::operator=(const BitSet& other) {
    if (this != &other && setSize(other.bits) && chunks > 0)
        std::memcpy(array, other.array, chunks * sizeof *array);
    return *this;
}

bool BitSet::setSize(uint32_t size) {
    if (size > kMaxBits)
        return false;
    const uint32_t wanted = (size + kChunkBits - 1) / kChunkBits;
    if (wanted == 0) {
        std::free(array);
        array = nullptr;
    } else if (wanted != chunks) {
        void* block = std::realloc(array, wanted * sizeof *array);
        if (!block)
            return false;
        array = static_cast<uint32_t*>(block);
        if (wanted > chunks)
            std::memset(array + chunks, 0, (wanted - chunks) * sizeof *array);
    }
    chunks = wanted;
    bits = size;
    clearBeyond();
    return true;
}

uint32_t& BitSet::chunkOf(uint32_t index) {
    assert(array);  // there is none only at size 0
    return array[index / kChunkBits];
}

bool BitSet::setBit(uint32_t index) {
    if (index >= bits && (index >= kMaxBits || !setSize(index + 1)))
        return false;
    chunkOf(index) |= bitOf(index);
    return true;
}

void BitSet::clearBit(uint32_t index) {
    if (index < bits)
        chunkOf(index) &= ~bitOf(index);
}

bool BitSet::toggleBit(uint32_t index) {
    if (index >= bits)
        return setBit(index);
    chunkOf(index) ^= bitOf(index);
    return true;
}

void BitSet::setAll() {
    std::fill_n(array, chunks, UINT32_MAX);
    clearBeyond();
}

void BitSet::clearAll() {
    std::fill_n(array, chunks, 0);
}

uint32_t BitSet::countSetBits(int32_t limit) const {
    const uint32_t counted = limit < 0 ? bits : std::min(uint32_t(limit), bits);
    uint32_t found = 0;
    for (uint32_t i = 0; i < counted / kChunkBits; ++i)
        found += uint32_t(std::popcount(array[i]));
    if (counted % kChunkBits != 0)
        found += uint32_t(std::popcount(array[counted / kChunkBits] & (bitOf(counted) - 1)));
    return found;
}

int32_t BitSet::getFirstSet() const {
    for (uint32_t i = 0; i < chunks; ++i)
        if (array[i] != 0)
            return int32_t(i * kChunkBits) + std::countr_zero(array[i]);
    return -1;
}

int32_t BitSet::getFirstNotSet() const {
    for (uint32_t i = 0; i < chunks; ++i) {
        const uint32_t place = i * kChunkBits + uint32_t(std::countr_one(array[i]));
        if (array[i] != UINT32_MAX)
            return place < bits ? int32_t(place) : -1;
    }
    return -1;
}

int32_t BitSet::getLastSet() const {
    for (uint32_t i = chunks; i-- > 0;)
        if (array[i] != 0)
            return int32_t(i * kChunkBits + kChunkBits - 1) - std::countl_zero(array[i]);
    return -1;
}

bool BitSet::setChunk(uint32_t index, uint32_t value) {
    if (index >= chunks)
        return false;
    array[index] = value;
    clearBeyond();
    return true;
}

bool BitSet::operator==(const BitSet& other) const {
    return bits == other.bits && std::equal(array, array + chunks, other.array);
}

BitSet& BitSet::operator&=(const BitSet& other) {
    for (uint32_t i = 0; i < chunks; ++i)
        array[i] &= other.getChunk(i);
    return *this;
}

BitSet& BitSet::operator|=(const BitSet& other) {
    if (bits >= other.bits || setSize(other.bits))
        for (uint32_t i = 0; i < other.chunks; ++i)
            chunkOf(i * kChunkBits) |= other.array[i];
    return *this;
}

BitSet& BitSet::operator^=(const BitSet& other) {
    if (bits >= other.bits || setSize(other.bits))
        for (uint32_t i = 0; i < other.chunks; ++i)
            chunkOf(i * kChunkBits) ^= other.array[i];
    return *this;
}

void BitSet::clearBeyond() {
    if (bits % kChunkBits != 0)
        chunkOf(bits) &= bitOf(bits) - 1;
}

IDSet::IDSet(int32_t base, int32_t delta) : base(base), delta(std::max(delta, 1)) {}

int32_t IDSet::newID() {
    int32_t place = getFirstNotSet();
    if (place < 0) {
        place = int32_t(getSize());
        if (!setSize(getSize() + uint32_t(delta)))
            return -1;
    }
    if (base > INT32_MAX - place || !setBit(uint32_t(place)))
        return -1;
    return base + place;
}

void IDSet::releaseID(int32_t id) {
    const int64_t place = int64_t(id) - base;
    if (place >= 0 && place < int64_t(getSize()))
        clearBit(uint32_t(place));
}

}  // namespace Tessarine
