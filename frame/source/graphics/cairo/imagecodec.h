#pragma once
#include "frame/source/graphics/cairo/cairobitmap.h"
#include "pluginterfaces/base/ibstream.h"
#include <array>
#include <span>
#include <string_view>

namespace Tessarine::Graphics {

/** The bytes of a stream that needn't seek, read ahead in blocks. The stream is borrowed. */
class ImageSource {
public:
    using Bytes = std::span<const uint8_t>;

    explicit ImageSource(IBStream* stream) : stream(stream) {}
    ImageSource(const ImageSource&) = delete;
    ImageSource& operator=(const ImageSource&) = delete;

    /** What the stream begins with, before anything was taken: so many bytes, at most a block, or all that there are. */
    Bytes peek(size_t count);
    /** What was read ahead, or the next that the stream gives; empty: it has ended. Until the next call. */
    Bytes takeBlock();
    /** False: the stream ended before, as with skip. */
    bool read(void* to, size_t count);
    bool skip(size_t count);

private:
    bool fill();
    bool takeUpTo(size_t count, Bytes& bytes);

    IBStream* const stream;
    std::array<uint8_t, 4096> block;
    size_t begin = 0;  // what was read and not yet taken
    size_t end = 0;
    bool hasEnded = false;
};

/** A kind of image file. No colours are managed and no gamma is applied; samples of 16 bits count with their high byte. */
struct ImageCodec {
    const char* extension;
    const char* name;
    const char* mimeType;
    std::string_view magic;  // what files of the kind begin with
    /** With a reference for the caller; null: the file isn't whole, or too large. */
    CairoBitmap* (*read)(ImageSource& source);
    /** False: the stream took less. Null: the kind is only read. */
    bool (*write)(IBitmap* bitmap, IBStream* stream);
};

extern const ImageCodec kPngCodec;
extern const ImageCodec kJpegCodec;
extern const ImageCodec kBmpCodec;

std::span<const ImageCodec* const> imageCodecs();

/** With a reference for the caller; null: no codec knows it, or the one that does can't read it. */
CairoBitmap* readImage(IBStream* stream);

}  // namespace Tessarine::Graphics
