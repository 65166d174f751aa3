#pragma once
#include "base/source/fbuffer.h"
#include "storage/fcompression.h"
#include <zlib.h>

namespace ZLib {

/** How the engine is called in files. */
const Tessarine::FUID& getCID();

/** One side's zlib state between init and end, with its block of 64 KB. */
class ZLibState {
public:
    ZLibState();
    ZLibState(const ZLibState&) = delete;
    ZLibState& operator=(const ZLibState&) = delete;

protected:
    ~ZLibState() = default;

    z_stream state = {};
    Tessarine::Buffer block;
    Tessarine::IBStream* stream = nullptr;  // borrowed; null outside prepare and finish
};

class ZLibCompressor final : public Tessarine::ICompressor, private ZLibState {
public:
    ~ZLibCompressor() override;
    bool prepare(Tessarine::IBStream* target, float quality) override;
    bool compress(const void* data, int32_t size) override;
    bool finish() override;
    bool flush() override;

private:
    bool writeBlock();
    int deflateRest(int mode);
    bool end();

    bool failed = false;
};

class ZLibDecompressor final : public Tessarine::IDecompressor, private ZLibState {
public:
    ~ZLibDecompressor() override;
    bool prepare(Tessarine::IBStream* source) override;
    int32_t decompress(void* data, int32_t size) override;
    bool finish() override;
    bool isSeekSupported() override { return false; }
    int64_t seek(int64_t /*position*/, Tessarine::FSeekMode /*mode*/) override { return -1; }

private:
    bool readBlock();

    int result = Z_OK;  // of the last inflate; anything else is final
};

class ZLibEngine : public Tessarine::FCompressionEngine {
public:
    using Tessarine::FCompressionEngine::isA;
    const char* isA() const override { return "ZLibEngine"; }
    bool isTypeOf(const char* name, bool askBaseClass) const override;

    Tessarine::ICompressor* createCompressor() override { return new ZLibCompressor; }
    Tessarine::IDecompressor* createDecompressor() override { return new ZLibDecompressor; }
    bool getCompressionCID(Tessarine::FUID& cid) override;
    Tessarine::FCompressionEngine* newCopy() override { return new ZLibEngine; }
};

}  // namespace ZLib
