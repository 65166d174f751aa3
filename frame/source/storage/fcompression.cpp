#include "storage/fcompression.h"
#include "base/fcompiledinclass.h"
#include "base/uprogresshook.h"
#include "storage/fcstream.h"
#include <cstring>

namespace Tessarine {
namespace {
constexpr int32_t kBlockBytes = 0x10000;
constexpr int32_t kSampleBytes = 8192;

/** Tells a hook how much of a stream is read. */
class ReadingProgress {
public:
    ReadingProgress(IBStream* in, UProgressHook* hook) : in(in), hook(hook), total(bytesLeft(in)) { in->tell(&start); }
    bool goOn() const {
        int64_t place = start;
        if (hook)
            in->tell(&place);
        return tellProgress(hook, place - start, total);
    }

private:
    IBStream* in;         // borrowed
    UProgressHook* hook;  // borrowed, may be null
    int64_t total, start = 0;
};

/** From where it stands to the end of one, or to the first stop, to the other. */
bool copyBlocks(FStreamer& from, FStreamer& to, int32_t blockSize, const ReadingProgress& progress) {
    Buffer block{uint32_t(blockSize)};
    if (!block.data())
        return false;
    for (int64_t size; (size = from.readRaw(block.data(), blockSize)) > 0;)
        if (to.writeRaw(block.data(), size) != size || !progress.goOn())
            return false;
    return true;
}
}  // namespace

bool FCompressionEngine::isTypeOf(const char* name, bool askBaseClass) const {
    return name && (std::strcmp(name, "FCompressionEngine") == 0 || (askBaseClass && FObject::isTypeOf(name, true)));
}

FCompressionEngine* FCompressionEngine::createDefault() {
    const FCompiledInClass* found = FCompiledInClass::find(kCategory, "FCompressionEngine");
    return found ? static_cast<FCompressionEngine*>(found->create()) : nullptr;
}

bool FCompressData(IBStream* in, IBStream* out, FCompressionEngine* engine, float quality, UProgressHook* hook) {
    if (!in || !out)
        return false;
    const OPtr<FCompressionStream> target(new FCompressionStream(out, engine));
    IBStreamer source(in);
    return target->beginCompress(quality) && copyBlocks(source, *target, kBlockBytes, ReadingProgress(in, hook)) &&
           target->finish();
}

bool FDecompressData(IBStream* in, IBStream* out, FCompressionEngine* engine, UProgressHook* hook, int32_t bufferSize) {
    if (!in || !out)
        return false;
    const ReadingProgress progress(in, hook);  // before anything is read ahead
    const OPtr<FCompressionStream> source(new FCompressionStream(in, engine));
    IBStreamer target(out);
    return source->beginDecompress() &&
           copyBlocks(*source, target, bufferSize > 0 ? bufferSize : kBlockBytes, progress);
}

double FGetCompressionRatio(IBStream* stream, FCompressionEngine* engine, float quality) {
    char sample[kSampleBytes];
    IBStreamer source(stream);
    const int64_t place = stream ? source.tell() : -1;
    const int64_t size = stream ? source.readRaw(sample, kSampleBytes) : 0;
    if (size <= 0 || source.seek(place, kFromStart) != place)
        return 1;
    const OPtr<FStreamCounter> counter(new FStreamCounter);
    const OPtr<FCompressionStream> target(new FCompressionStream(counter, engine));
    const bool done = target->beginCompress(quality) && target->writeRaw(sample, size) == size && target->finish();
    return done ? double(counter->getSize()) / double(size) : 1;
}

}  // namespace Tessarine
