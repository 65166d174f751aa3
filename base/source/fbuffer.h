#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class String;

/** A plain growable block of memory in which bytes collect.

    Sizes     memSize bytes are there, fillSize of them are in use; all in bytes. It grows in steps of delta.
    Owns      its memory, from malloc.
    Results   false when there is no memory or an argument is out of range; nothing has changed then. */
class Buffer {
public:
    static constexpr uint32_t kDefaultDelta = 4096;

    Buffer() = default;
    /** Memory of this size, nothing in use. */
    explicit Buffer(uint32_t size) { setSize(size); }
    /** A filled copy. */
    Buffer(const void* bytes, uint32_t size) { put(bytes, size); }
    /** The same sizes and the same bytes in use. */
    Buffer(const Buffer& other) { copyFrom(other); }
    Buffer& operator=(const Buffer& other);
    virtual ~Buffer();

    char* data() { return buffer; }
    const char* data() const { return buffer; }
    tchar* data16() { return reinterpret_cast<tchar*>(buffer); }
    const tchar* data16() const { return reinterpret_cast<const tchar*>(buffer); }
    uint32_t getSize() const { return memSize; }
    uint32_t getFillSize() const { return fillSize; }
    uint32_t getFree() const { return memSize - fillSize; }
    uint32_t getDelta() const { return delta; }
    void setDelta(uint32_t step) { delta = step; }

    /** Appends at fillSize. The bytes may be the buffer's own. */
    bool put(const void* bytes, uint32_t count);
    bool put(char byte) { return put(&byte, 1); }
    bool put(uint8_t byte) { return put(&byte, 1); }
    bool put(uint16_t value) { return put(&value, sizeof value); }
    bool put(tchar character) { return put(&character, sizeof character); }
    /** In its own width, with the terminator. */
    bool put(const String& text);
    /** Takes up to count bytes from fillSize on and moves fillSize behind them; the result is their number. To read a
        filled block, set fillSize to 0 first. */
    uint32_t get(void* bytes, uint32_t count);

    /** At least so much memory, rounded up to a multiple of delta. */
    bool grow(uint32_t size);
    /** Exactly so much memory; 0 frees it. */
    bool setSize(uint32_t size);
    /** false beyond memSize. */
    bool setFillSize(uint32_t size);
    bool truncateToFillSize() { return setSize(fillSize); }
    /** Sets all memory. */
    void set(uint8_t byte);
    /** Sets the free memory; it stays free. */
    void fillup(uint8_t byte = 0);
    /** Moves the memory here and empties the other. */
    void take(Buffer& other);
    /** Hands the memory to the caller, who frees it with free(). */
    char* pass();

    /** Copies bytes inside the memory, which grows when the target needs it. */
    bool copy(uint32_t from, uint32_t to, uint32_t count);
    /** Shifts all memory up, or down for a negative amount; what gets vacant is set to byte. Sizes stay. */
    void move(int32_t amount, uint8_t byte = 0);
    /** Opens a gap at position, or for a negative amount removes bytes there; fillSize follows. What is in the gap
        isn't set. */
    bool shiftAt(uint32_t position, int32_t amount);
    /** The address of a byte. */
    char* operator+(uint32_t offset) { return buffer + offset; }
    /** The bytes in use. */
    bool operator==(const Buffer& other) const;
    /** Swaps the byte order of each whole value of 2, 4 or 8 bytes in use; false for another width. */
    bool swap(int16_t width);

    /** Text without its terminator; null is empty. */
    bool appendString8(const char* text);
    bool appendString16(const tchar* text);
    bool prependString8(const char* text);
    bool prependString16(const tchar* text);
    /** Two upper-case digits a byte. */
    void makeHexString(String& text) const;
    /** Replaces all by the bytes of a text of hexadecimal pairs; false, and as before, for any other. */
    bool fromHexString(const char* text);
    /** The bytes in use as text of a code page, made 16-bit; terminated behind fillSize. False, and as before, for
        malformed text. */
    bool toWideString(int32_t codePage);
    /** The reverse. */
    bool toMultibyteString(int32_t codePage);

protected:
    char* buffer = nullptr;
    uint32_t memSize = 0;
    uint32_t fillSize = 0;
    uint32_t delta = kDefaultDelta;

private:
    void copyFrom(const Buffer& other);
    bool owns(const void* bytes) const;
    bool insert(uint32_t position, const void* bytes, size_t count);
};

}  // namespace Tessarine
