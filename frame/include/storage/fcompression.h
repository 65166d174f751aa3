#pragma once
#include "base/source/fobject.h"
#include "base/source/fstreamer.h"

namespace Tessarine {
class FEncryptionKey;
class UProgressHook;

/** Turns bytes into fewer. The caller owns it and deletes it.

    Order    prepare, compress as often as needed, flush at will, finish; then prepare again.
    Results  false: it failed, or the stream didn't take it all; finish is then false too. */
class ICompressor {
public:
    virtual ~ICompressor() = default;
    /** The stream is borrowed until finish. quality: 0 (fastest) to 1 (smallest); below 0 as the engine thinks best. */
    virtual bool prepare(IBStream* stream, float quality) = 0;
    virtual bool compress(const void* data, int32_t size) = 0;
    /** Writes the end. */
    virtual bool finish() = 0;
    /** Brings all that came in so far to the stream, so that a reader can have it. */
    virtual bool flush() = 0;
};

/** The reverse, with the same owner. What comes out can be a thousand times what is stored: the caller decides how much of
    it to take. It reads ahead of what it gives out. */
class IDecompressor {
public:
    virtual ~IDecompressor() = default;
    /** The stream is borrowed until finish, and stands at the first byte. */
    virtual bool prepare(IBStream* stream) = 0;
    /** The bytes that came out: fewer than size at the end, and where the source is cut off; 0 as soon as it is damaged. */
    virtual int32_t decompress(void* data, int32_t size) = 0;
    virtual bool finish() = 0;
    virtual bool isSeekSupported() = 0;
    /** The new place in what comes out; -1: not supported. */
    virtual int64_t seek(int64_t position, FSeekMode mode) = 0;
};

/** A way to compress, as a component of the category kCategory. */
class FCompressionEngine : public FObject {
public:
    static constexpr const char* kCategory = "Compression Engine";
    enum Flags : int32_t { kEnciphers = 2 };

    const char* isA() const override { return "FCompressionEngine"; }
    bool isA(const char* name) const override { return isTypeOf(name, false); }
    bool isTypeOf(const char* name, bool askBaseClass) const override;

    /** New ones, which the caller deletes. */
    virtual ICompressor* createCompressor() = 0;
    virtual IDecompressor* createDecompressor() = 0;
    /** What tells the engine in files. */
    virtual bool getCompressionCID(FUID& cid) = 0;
    virtual int32_t getCompressionFlags() { return 0; }
    /** false: this one doesn't encipher. */
    virtual bool setEncryptionKey(const FEncryptionKey& /*key*/) { return false; }
    virtual bool getEncryptionKey(FEncryptionKey& /*key*/) { return false; }
    /** With one reference. */
    virtual FCompressionEngine* newCopy() = 0;

    /** The first of its category, with a reference for the caller; null when there is none. */
    static FCompressionEngine* createDefault();
};

/** Compress all that is left of one stream into the other, where it stands, and back. Blocks of 64 KB, or of bufferSize
    bytes when that is above 0. Both stream faces are borrowed; without an engine it is the default one. The hook, when
    there is one, hears after each block.
    false: stopped by the hook, no engine, or the target didn't take it all; what was written stays. */
bool FCompressData(IBStream* in, IBStream* out, FCompressionEngine* engine, float quality,
                   UProgressHook* hook = nullptr);
/** Damaged data is no failure: it ends there. */
bool FDecompressData(IBStream* in, IBStream* out, FCompressionEngine* engine, UProgressHook* hook = nullptr,
                     int32_t bufferSize = 0);
/** What the next 8192 bytes would become, by what they are; 1 on any failure. The stream's place stays. */
double FGetCompressionRatio(IBStream* stream, FCompressionEngine* engine, float quality);

}  // namespace Tessarine
