#include "storage/fstreamproxy.h"
#include "storage/ffstream.h"
#include <algorithm>

namespace Tessarine {
namespace {
/** The same, of whatever can be sought. */
int64_t endOf(FStream* stream) {
    const int64_t said = streamSize(stream);
    if (said >= 0 || !stream)
        return said;
    const int64_t place = stream->tell();
    const int64_t end = stream->seek(0, kFromEnd);
    stream->seek(place, kFromStart);
    return end;
}
}  // namespace

int64_t streamSize(FStream* stream) {
    int64_t size = -1;
    const FUnknownPtr<ISizeableStream> sizeable(static_cast<IBStream*>(stream));
    return sizeable && sizeable->getStreamSize(size) == kResultOk ? size : -1;
}

IMPLEMENT_ABSTRACT_CLASS(FStreamProxy, FStream)

FStreamProxy::FStreamProxy(FStream* shared, int64_t offset, int64_t size)
    : stream(shared), file(classCast<FFileStream>(shared)), offset(offset), windowSize(0) {
    const int64_t end = endOf(shared);
    if (offset >= 0 && offset < end)
        windowSize = size < 0 ? end - offset : std::min(size, end - offset);
    if (!shared)
        return;
    byteOrder = shared->byteOrder;
    if (shared->getFileType().isValid())
        setFileType(shared->getFileType());
}

int32_t FStreamProxy::queryInterface(const char* iid, void** obj) {
    if (answerInterface<ISizeableStream>(this, iid, obj))
        return kResultOk;
    return FStream::queryInterface(iid, obj);
}

int64_t FStreamProxy::readRaw(void* buffer, int64_t count) {
    count = std::min(count, windowSize - position);
    if (count <= 0)
        return 0;
    const int64_t place = offset + position;
    int64_t passed = 0;
    if (file)
        passed = file->readAt(place, buffer, count);
    else if (stream->seek(place, kFromStart) == place)
        passed = std::max<int64_t>(stream->readRaw(buffer, count), 0);
    position += passed;
    return passed;
}

int64_t FStreamProxy::seek(int64_t pos, FSeekMode mode) {
    const int64_t from[] = {0, position, windowSize};
    return position = placeFrom(from[mode], pos);
}

bool FStreamProxy::verify() {
    return stream && stream->verify();
}

int32_t FStreamProxy::getStreamSize(int64_t& size) {
    size = windowSize;
    return kResultOk;
}

int32_t FStreamProxy::setStreamSize(int64_t /*size*/) {
    return kResultFalse;
}

}  // namespace Tessarine
