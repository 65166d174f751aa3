#include "frame/source/graphics/cairo/imagecodec.h"
#include <algorithm>
#include <cstring>

namespace Tessarine::Graphics {
namespace {
constexpr const ImageCodec* kCodecs[] = {&kPngCodec, &kJpegCodec, &kBmpCodec};

bool isOf(const ImageCodec& codec, ImageSource& source) {
    const ImageSource::Bytes head = source.peek(codec.magic.size());
    return std::ranges::equal(head, codec.magic, {}, {}, [](char each) { return uint8_t(each); });
}
}  // namespace

ImageSource::Bytes ImageSource::peek(size_t count) {
    while (end - begin < count && fill()) {}
    return {block.data() + begin, std::min(count, end - begin)};
}

ImageSource::Bytes ImageSource::takeBlock() {
    Bytes bytes;
    takeUpTo(block.size(), bytes);
    return bytes;
}

bool ImageSource::read(void* to, size_t count) {
    auto* at = static_cast<uint8_t*>(to);
    for (Bytes bytes; count > 0; count -= bytes.size(), at += bytes.size()) {
        if (!takeUpTo(count, bytes))
            return false;
        std::memcpy(at, bytes.data(), bytes.size());
    }
    return true;
}

bool ImageSource::skip(size_t count) {
    for (Bytes bytes; count > 0; count -= bytes.size())
        if (!takeUpTo(count, bytes))
            return false;
    return true;
}

bool ImageSource::takeUpTo(size_t count, Bytes& bytes) {
    if (begin == end) {
        begin = end = 0;
        if (!fill())
            return false;
    }
    bytes = {block.data() + begin, std::min(count, end - begin)};
    begin += bytes.size();
    return true;
}

bool ImageSource::fill() {
    const auto space = int32_t(block.size() - end);
    int32_t count = 0;
    if (!hasEnded && space > 0)
        stream->read(block.data() + end, space, &count);  // streams differ in their results for the last bytes
    hasEnded = count <= 0 || count > space;
    end += hasEnded ? 0 : size_t(count);
    return !hasEnded;
}

std::span<const ImageCodec* const> imageCodecs() {
    return kCodecs;
}

CairoBitmap* readImage(IBStream* stream) {
    if (!stream)
        return nullptr;
    ImageSource source(stream);
    const auto codec = std::ranges::find_if(kCodecs, [&](const ImageCodec* each) { return isOf(*each, source); });
    return codec == std::end(kCodecs) ? nullptr : (*codec)->read(source);
}

}  // namespace Tessarine::Graphics
