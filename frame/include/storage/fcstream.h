#pragma once
#include "collect/cmbuffer.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fcompression.h"
#include "storage/fmstream.h"
#include <memory>

namespace Tessarine {

/** Writes through a compressor, or reads through a decompressor.

    Places    count what goes in or comes out uncompressed. There is no way back, unless the decompressor has one.
    Stream    begins where it stands. A decompressor reads up to 64 KB ahead, so that the stream isn't left behind the
              data: what is shared with others wants a window of its own in between.
    Size      is what was said at the beginning, and reading ends there at the latest; what is stored bounds it too, so
              that no one is told more than there can be. */
class FCompressionStream : public FStream {
public:
    /** Shares both. Without an engine it is the default one; the stream is dead when there is none. */
    explicit FCompressionStream(IBStream* stream, FCompressionEngine* engine = nullptr);
    ~FCompressionStream() override;

    /** quality: 0 to 1, below 0 as the engine thinks best. */
    bool beginCompress(float quality);
    /** originalSize: in bytes; below 0: not known. */
    bool beginDecompress(int64_t originalSize = -1);
    /** Ends both, and what was written is complete; false: it isn't. The end of the stream does it too. */
    bool finish();
    /** Below 0: not known. */
    int64_t getOriginalSize() const { return originalSize; }
    IBStream* getStream() const { return stream; }

    int64_t readRaw(void* buffer, int64_t count) override;
    int64_t writeRaw(const void* buffer, int64_t count) override;
    /** -1: not supported; where it stands is always. */
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override { return position; }
    bool flush() override;
    bool verify() override { return !failed; }
    using FStream::seek;
    using FStream::tell;

    DECLARE_ABSTRACT_CLASS(FCompressionStream, FStream)

private:
    IPtr<IBStream> stream;
    IPtr<FCompressionEngine> engine;
    std::unique_ptr<ICompressor> compressor;
    std::unique_ptr<IDecompressor> decompressor;
    int64_t originalSize = -1;
    int64_t position = 0;
    bool failed = false;
};

/** A compressed stream is read into memory, released, and the memory stream comes back, at its start, with one reference;
    any other stream, null too, comes back itself. Null: there isn't enough memory. */
FStream* createUncompressedStream(FStream* stream);

/** The same for a stream that stays whose it is: a memory stream over what a compressed one holds, or the stream itself. */
class FStreamUnpacker {
public:
    explicit FStreamUnpacker(FStream* stream);
    FStreamUnpacker(const FStreamUnpacker&) = delete;
    FStreamUnpacker& operator=(const FStreamUnpacker&) = delete;

    /** Borrowed, for the life of the unpacker; null: for null, and where there isn't enough memory. */
    FStream* getStream() const { return stream; }

private:
    CmBuffer buffer;
    OPtr<FMemoryStream> view;  // over the buffer
    FStream* stream;           // borrowed, the view or what was given
};

}  // namespace Tessarine
