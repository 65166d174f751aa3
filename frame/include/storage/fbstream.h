#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstreamer.h"
#include "pluginterfaces/base/ibstream.h"
#include "storage/ffiletype.h"

namespace Tessarine {
class CmBuffer;
class UProgressHook;

/** A stream of bytes as an object: typed reading and writing, and the component face for other modules.
    Little-endian, unless somebody sets byteOrder.

    Copies    go in blocks of 1024 bytes. A stream is never copied onto itself: that copies nothing.
    Threads   one at a time; there are no locks. */
class FStream : public CmObject, public FStreamer, public virtual IBStream {
public:
    int32_t queryInterface(const char* iid, void** obj) override;

    /** Back to the first byte. */
    virtual void rewind() { seek(0, kFromStart); }
    /** Bytes passed; fewer than count at the end or after a failure. */
    int64_t readRaw(void* buffer, int64_t count) override = 0;
    int64_t writeRaw(const void* buffer, int64_t count) override = 0;
    /** All that was written is where it belongs and safe; false: something wasn't written, now or before. */
    virtual bool flush() { return true; }
    /** Nothing has failed so far. */
    virtual bool verify() { return true; }
    /** Writes count bytes of the source here, or as many as it has; the result is their number. */
    virtual uint32_t read(FStream& source, uint32_t count);
    /** All of this stream, from its start, to where the target stands. false: the target didn't take it all, or there is
        no way back to the start. */
    virtual bool copyTo(FStream& target);
    /** Who hears of what is read and written in large pieces, after each blockSize bytes of one; a stop cuts the piece
        short. The hook is borrowed; null ends it. Streams that go no further than memory tell nothing. */
    virtual void setReadWriteHook(UProgressHook* /*hook*/, int32_t /*blockSize*/) {}

    /** kResultFalse: not a single byte. */
    int32_t read(void* buffer, int32_t numBytes, int32_t* numBytesRead) override;
    /** kResultFalse: not all bytes. */
    int32_t write(void* buffer, int32_t numBytes, int32_t* numBytesWritten) override;
    int32_t seek(int64_t pos, int32_t mode, int64_t* result) override;
    int32_t tell(int64_t* pos) override;
    using FStreamer::seek;
    using FStreamer::tell;

    /** The reverse of read(source, count). */
    uint32_t write(FStream& target, uint32_t count) { return target.read(*this, count); }
    bool copyFrom(FStream& source) { return source.copyTo(*this); }
    /** Both hold the same bytes from start to end. The places stay. */
    bool isStreamEqual(FStream& other);
    /** The next line, which line feeds and carriage returns end, any number of them: empty lines behind it are passed
        over. trim leaves out blanks and tabs at both ends. The line replaces what the buffer holds, with a terminator
        behind its fill size. false: the end of the stream, no memory, or a stream that can't go back. */
    bool readLine(CmBuffer& line, bool trim);
    /** The units in the stream's byte order; null is empty. */
    bool writeString16(const tchar* text, bool terminated = true);
    /** What there is to read up to the end, in bytes, as the stream tells it (ISizeableStream); -1: it doesn't. A length
        that was read is to be compared with this before anything is allocated for it. */
    int64_t bytesLeft();

    const FFileType& getFileType() const { return fileType; }
    void setFileType(const FFileType& type) { fileType = type; }

    DECLARE_ABSTRACT_CLASS(FStream, CmObject)
    FORWARD_REFCOUNT(CmObject)

protected:
    static constexpr int64_t kMaxPlace = INT64_MAX / 2;  // the sum of two such places fits
    /** The place so far from another, bounded to 0..kMaxPlace. */
    static int64_t placeFrom(int64_t from, int64_t distance);

private:
    FFileType fileType;
};

/** Discards what is written and counts it; there is nothing to read. Places are on the count: going back takes from it. */
class FStreamCounter : public FStream {
public:
    int64_t getSize() const { return count; }

    int64_t readRaw(void* /*buffer*/, int64_t /*size*/) override { return 0; }
    int64_t writeRaw(const void* buffer, int64_t size) override;
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override { return count; }
    using FStream::seek;
    using FStream::tell;

    DECLARE_CLASS(FStreamCounter, FStream)

private:
    int64_t count = 0;
};

/** What is left in a component's stream, from its place on; -1: it doesn't tell. */
int64_t bytesLeft(IBStream* stream);

}  // namespace Tessarine
