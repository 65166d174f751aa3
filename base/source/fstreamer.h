#pragma once
#include "pluginterfaces/base/ibstream.h"

namespace Tessarine {

enum FSeekMode { kFromStart, kFromCurrent, kFromEnd };

/** Typed reading and writing over raw bytes.

    Order     byteOrder 0: little-endian, as in memory; any other value swaps each multi-byte value.
    Results   true when all bytes passed. On a short read the target is 0; of an array, all values that didn't arrive
              whole.
    Threads   none of its own: a streamer belongs to one thread at a time. */
class FStreamer {
public:
    /** The number of bytes that passed. */
    virtual int64_t readRaw(void* buffer, int64_t size) = 0;
    virtual int64_t writeRaw(const void* buffer, int64_t size) = 0;
    /** The new position. */
    virtual int64_t seek(int64_t position, FSeekMode mode) = 0;
    virtual int64_t tell() = 0;

    bool writeChar8(char value) { return writeValue(value); }
    bool readChar8(char& value) { return readValue(value); }
    bool writeUChar8(uint8_t value) { return writeValue(value); }
    bool readUChar8(uint8_t& value) { return readValue(value); }
    bool writeChar16(tchar value) { return writeValue(value); }
    bool readChar16(tchar& value) { return readValue(value); }
    bool writeInt16(int16_t value) { return writeValue(value); }
    bool readInt16(int16_t& value) { return readValue(value); }
    bool writeInt16Array(const int16_t* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readInt16Array(int16_t* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    bool writeInt16u(uint16_t value) { return writeValue(value); }
    bool readInt16u(uint16_t& value) { return readValue(value); }
    bool writeInt16uArray(const uint16_t* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readInt16uArray(uint16_t* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    bool writeInt32(int32_t value) { return writeValue(value); }
    bool readInt32(int32_t& value) { return readValue(value); }
    bool writeInt32Array(const int32_t* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readInt32Array(int32_t* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    bool writeInt32u(uint32_t value) { return writeValue(value); }
    bool readInt32u(uint32_t& value) { return readValue(value); }
    bool writeInt32uArray(const uint32_t* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readInt32uArray(uint32_t* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    bool writeInt64(int64_t value) { return writeValue(value); }
    bool readInt64(int64_t& value) { return readValue(value); }
    bool writeInt64Array(const int64_t* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readInt64Array(int64_t* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    bool writeInt64u(uint64_t value) { return writeValue(value); }
    bool readInt64u(uint64_t& value) { return readValue(value); }
    bool writeInt64uArray(const uint64_t* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readInt64uArray(uint64_t* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    bool writeFloat(float value) { return writeValue(value); }
    bool readFloat(float& value) { return readValue(value); }
    bool writeFloatArray(const float* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readFloatArray(float* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    bool writeDouble(double value) { return writeValue(value); }
    bool readDouble(double& value) { return readValue(value); }
    bool writeDoubleArray(const double* values, int32_t count) { return writeUnits(values, sizeof *values, count); }
    bool readDoubleArray(double* values, int32_t count) { return readUnits(values, sizeof *values, count); }
    /** Two bytes; not 0 is true. */
    bool writeBool(bool value) { return writeInt16(value); }
    bool readBool(bool& value);

    /** Reads and drops so many bytes; ends at the first short read. Below 0 it does nothing. */
    bool skip(int64_t bytes);
    /** Writes so many zero bytes; below 0 nothing. */
    bool pad(int64_t bytes);

    /** A new array, which the caller deletes; null for null, an empty form or one that is cut off. */
    char* readStr8();
    /** A 32-bit size and the bytes, both with the terminator; a size of 0 for null. */
    bool writeStr8(const char* text);
    /** The bytes that writeStr8 would write; text isn't null. */
    static int32_t getStr8Size(const char* text);
    /** Reads up to a 0, a line feed or size - 1 bytes, and terminates. A line feed stays unless a carriage return stands
        before it: then both go. The result is the length. */
    int64_t readString8(char* text, int64_t size);
    /** The bytes, and the terminator when terminated; null is empty. */
    bool writeString8(const char* text, bool terminated = true);
    /** Reads to a 0; UTF-8 with a mark in front, else code page 0. text has room for count units; the rest is read and
        cut off. false: no terminator, or malformed; the text is empty then. */
    bool readStringUtf8(tchar* text, int32_t count);
    /** ASCII as bytes with a terminator; any other text as EF BB BF and UTF-8 with a terminator. */
    bool writeStringUtf8(const tchar* text);

    int16_t byteOrder = 0;

    /** A size from outside is believed this far before its bytes are there. */
    static constexpr int32_t kTrustedBytes = 0x10000;

protected:
    ~FStreamer() = default;
    bool writeUnits(const void* units, int32_t width, int32_t count);
    bool readUnits(void* units, int32_t width, int32_t count);

private:
    template <class T>
    bool writeValue(T value) {
        return byteOrder == 0 ? writeRaw(&value, sizeof value) == sizeof value : writeUnits(&value, sizeof value, 1);
    }
    template <class T>
    bool readValue(T& value) {
        if (byteOrder != 0)
            return readUnits(&value, sizeof value, 1);
        if (readRaw(&value, sizeof value) == sizeof value)
            return true;
        value = 0;
        return false;
    }
};

/** Typed reading and writing over the component face of a stream, which is borrowed. */
class IBStreamer final : public FStreamer {
public:
    explicit IBStreamer(IBStream* target) : stream(target) {}
    int64_t readRaw(void* buffer, int64_t size) override;
    int64_t writeRaw(const void* buffer, int64_t size) override;
    /** -1: there is no such place. */
    int64_t seek(int64_t position, FSeekMode mode) override;
    int64_t tell() override;

private:
    IBStream* stream;
};

/** A section behind its own 32-bit size, so that a reader may leave parts of it unread.

    Writing   beginWrite, the content, endWrite, which fills the size in.
    Reading   beginRead, what one knows of the content, endRead, which goes behind the section.
    Stream    must be able to seek. */
class FStreamSizeHolder {
public:
    explicit FStreamSizeHolder(FStreamer& held) : stream(held) {}
    bool beginWrite();
    /** The size of the content, 0 without beginWrite; -1: it is too long for its field, or writing failed. */
    int32_t endWrite();
    /** The size of the content; -1, and endRead will stay: there is none, or it isn't one that the stream can hold. */
    int32_t beginRead();
    bool endRead();

private:
    FStreamer& stream;     // borrowed
    int64_t sizePos = -1;  // where the size stands; in reading, the position behind the section
};

}  // namespace Tessarine
