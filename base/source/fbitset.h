#pragma once
#include <cstdint>

namespace Tessarine {

/** A row of bits that grows on demand.

    Sizes     in bits, up to kMaxBits; 32 of them to a chunk. Bits beyond the size are false.
    Owns      its chunks, from malloc.
    Results   false: no memory, or more than kMaxBits; nothing has changed then. */
class BitSet {
public:
    static constexpr uint32_t kMaxBits = INT32_MAX;  // so that a place fits a signed result

    explicit BitSet(uint32_t size = 0) { setSize(size); }
    BitSet(const BitSet& other) { *this = other; }
    BitSet& operator=(const BitSet& other);
    virtual ~BitSet();

    uint32_t getSize() const { return bits; }
    uint32_t countChunks() const { return chunks; }
    /** Keeps the bits that fit; new ones are clear. */
    bool setSize(uint32_t size);

    /** Beyond the size the set grows. */
    bool setBit(uint32_t index);
    void clearBit(uint32_t index);
    /** Beyond the size the set grows. */
    bool toggleBit(uint32_t index);
    bool getBit(uint32_t index) const { return index < bits && (array[index / kChunkBits] & bitOf(index)) != 0; }
    void setAll();
    void clearAll();

    bool isEmpty() const { return getFirstSet() < 0; }
    /** Over the first limit bits; -1: all. */
    uint32_t countSetBits(int32_t limit = -1) const;
    /** Places; -1: there is none. */
    int32_t getFirstSet() const;
    int32_t getFirstNotSet() const;
    int32_t getLastSet() const;
    /** Bit 0 is the chunk's first; 0 beyond the last chunk. */
    uint32_t getChunk(uint32_t index) const { return index < chunks ? array[index] : 0; }
    /** false beyond the last chunk. Bits beyond the size stay clear. */
    bool setChunk(uint32_t index, uint32_t value);

    /** Of one size and with the same bits. */
    bool operator==(const BitSet& other) const;
    /** The size stays. */
    BitSet& operator&=(const BitSet& other);
    /** A longer other one makes this one as long. */
    BitSet& operator|=(const BitSet& other);
    BitSet& operator^=(const BitSet& other);

private:
    static constexpr uint32_t kChunkBits = 32;
    static constexpr uint32_t bitOf(uint32_t index) { return 1u << (index % kChunkBits); }
    void clearBeyond();
    uint32_t& chunkOf(uint32_t index);

    uint32_t bits = 0;
    uint32_t chunks = 0;
    uint32_t* array = nullptr;  // owned; bits beyond the size are clear in it
};

/** Hands out numbers from base on, always the lowest that is free. */
class IDSet : public BitSet {
public:
    /** delta: for how many more there is room whenever room runs out; at least 1. */
    IDSet(int32_t base, int32_t delta);
    /** -1: there is none left, or no memory. */
    int32_t newID();
    /** Numbers that weren't handed out are ignored. */
    void releaseID(int32_t id);

private:
    int32_t base, delta;
};

}  // namespace Tessarine
