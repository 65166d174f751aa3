#include "libraries/source/zlib/zlibcomp.h"
#include "base/fcompiledinclass.h"
#include "base/source/finitializer.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace ZLib {
using namespace Tessarine;

namespace {
constexpr uint32_t kBlockBytes = 0x10000;
constexpr const char* kZLibVersion = "1.1.3";  // the interface that is used here; later ones still have it
constexpr int kMaxLevel = 9;
constexpr uint32_t kFirst = 0;  // what is packed may be wanted by any later step of the start-up

voidpf allocate(voidpf /*opaque*/, uInt count, uInt size) {
    return std::malloc(size_t(count) * size);
}

void deallocate(voidpf /*opaque*/, voidpf memory) {
    std::free(memory);
}

/** Quality in whole levels, cut and not rounded. */
int levelOf(float quality) {
    return quality >= 0 ? int(std::min(quality, 1.0f) * float(kMaxLevel)) : Z_DEFAULT_COMPRESSION;
}

Bytef* bytesOf(void* data) {
    return static_cast<Bytef*>(data);
}

constexpr FUID makeCID() {
    return FUID(0x443752F1, 0x5680439C, 0xAC5CB48A, 0x13A8D6DE);
}

constinit FCompiledInClass engineRecord{FCompressionEngine::kCategory, "ZLib", makeCID(),
                                        [] { return static_cast<FObject*>(new ZLibEngine); }};

bool initZLibCompressor() {
    FCompiledInClass::registerClass(engineRecord);
    return true;
}

const OneTimeProcedure ZLibCompressorInitializer(true, initZLibCompressor, "ZLibCompressor", kFirst);
}  // namespace

const FUID& getCID() {
    return engineRecord.classID;
}

ZLibState::ZLibState() {
    state.zalloc = allocate;
    state.zfree = deallocate;
}

// --- ZLibCompressor

ZLibCompressor::~ZLibCompressor() {
    end();
}

bool ZLibCompressor::prepare(IBStream* target, float quality) {
    end();
    if (!target || !block.setSize(kBlockBytes) ||
        deflateInit_(&state, levelOf(quality), kZLibVersion, int(sizeof state)) != Z_OK)
        return false;
    stream = target;
    failed = false;
    state.next_out = bytesOf(block.data());
    state.avail_out = kBlockBytes;
    return true;
}

bool ZLibCompressor::compress(const void* data, int32_t size) {
    if (!stream || failed || size < 0)
        return false;
    state.next_in = bytesOf(const_cast<void*>(data));  // zlib only reads it
    state.avail_in = uInt(size);
    while (!failed && state.avail_in > 0)
        failed = deflate(&state, Z_NO_FLUSH) != Z_OK || (state.avail_out == 0 && !writeBlock());
    return !failed;
}

bool ZLibCompressor::finish() {
    const bool finished = deflateRest(Z_FINISH) == Z_STREAM_END;
    return end() && finished;
}

bool ZLibCompressor::flush() {
    const int result = deflateRest(Z_SYNC_FLUSH);
    return result == Z_OK || result == Z_BUF_ERROR;  // the latter: there was nothing to bring out
}

/** Brings out what zlib still holds; the last result of zlib, or Z_ERRNO when the stream didn't take it. */
int ZLibCompressor::deflateRest(int mode) {
    int result = stream && !failed ? Z_OK : Z_ERRNO;
    for (bool more = result == Z_OK; more;) {
        result = deflate(&state, mode);
        more = result == Z_OK && state.avail_out == 0;
        failed = !writeBlock();
        if (failed)
            return Z_ERRNO;
    }
    return result;
}

/** Brings the block to the stream and empties it. */
bool ZLibCompressor::writeBlock() {
    const int32_t size = int32_t(kBlockBytes - state.avail_out);
    int32_t written = 0;
    state.next_out = bytesOf(block.data());
    state.avail_out = kBlockBytes;
    return size == 0 || (stream->write(block.data(), size, &written) == kResultOk && written == size);
}

bool ZLibCompressor::end() {
    if (!stream)
        return false;
    stream = nullptr;
    return deflateEnd(&state) == Z_OK;
}

// --- ZLibDecompressor

ZLibDecompressor::~ZLibDecompressor() {
    finish();
}

bool ZLibDecompressor::prepare(IBStream* source) {
    finish();
    if (!source || !block.setSize(kBlockBytes))
        return false;
    stream = source;
    readBlock();
    result = inflateInit_(&state, kZLibVersion, int(sizeof state));
    if (result != Z_OK)
        stream = nullptr;
    return result == Z_OK;
}

int32_t ZLibDecompressor::decompress(void* data, int32_t size) {
    if (!stream || result != Z_OK || size <= 0)
        return 0;
    state.next_out = bytesOf(data);
    state.avail_out = uInt(size);
    bool dry = false;
    while (result == Z_OK && state.avail_out > 0 && !dry) {
        dry = state.avail_in == 0 && !readBlock();  // then what zlib still holds is the last
        result = inflate(&state, Z_NO_FLUSH);
        if (result == Z_BUF_ERROR && dry)
            result = Z_OK;
    }
    return result < 0 ? 0 : int32_t(uInt(size) - state.avail_out);
}

bool ZLibDecompressor::finish() {
    if (!stream)
        return false;
    stream = nullptr;
    return inflateEnd(&state) == Z_OK;
}

/** false: the source has nothing more. */
bool ZLibDecompressor::readBlock() {
    int32_t read = 0;
    stream->read(block.data(), int32_t(kBlockBytes), &read);
    state.next_in = bytesOf(block.data());
    state.avail_in = uInt(std::clamp(read, 0, int32_t(kBlockBytes)));
    return state.avail_in > 0;
}

// --- ZLibEngine

bool ZLibEngine::isTypeOf(const char* name, bool askBaseClass) const {
    return name && (std::strcmp(name, "ZLibEngine") == 0 || (askBaseClass && FCompressionEngine::isTypeOf(name, true)));
}

bool ZLibEngine::getCompressionCID(FUID& cid) {
    cid = getCID();
    return true;
}

}  // namespace ZLib
