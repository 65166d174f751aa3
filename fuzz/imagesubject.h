#pragma once
#include "demand.h"
#include "frame/source/graphics/cairo/cairobitmapfactory.h"
#include "frame/source/graphics/cairo/imagecodec.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "storage/fmstream.h"
#include "tests/support/piecestream.h"
#include <algorithm>
#include <string>

/** The reading of images from outside. */
namespace ImageSubject {
using namespace Tessarine;
using Bitmap = OPtr<Graphics::IBitmap>;
constexpr int64_t kMostCompared = 1 << 18;  // pixels; larger ones are only read

inline OPtr<FMemoryStream> streamOf(std::string bytes) {
    auto* stream = new FMemoryStream;
    stream->writeRaw(bytes.data(), int64_t(bytes.size()));
    stream->rewind();
    return stream;
}

inline Bitmap read(IBStream* stream) {
    const OPtr<Graphics::CairoBitmapFactory> factory(new Graphics::CairoBitmapFactory);
    return factory->createFromStream(stream);
}

inline bool isSmall(Graphics::IBitmap* bitmap) {
    const auto [width, height] = bitmap->getSize();
    const int64_t count = int64_t(width) * int64_t(height);
    demand(count > 0 && std::max(width, height) <= Graphics::IBitmapFactory::kMaxSide);
    demand(count <= Graphics::IBitmapFactory::kMaxPixels);
    return count <= kMostCompared;
}

inline bool areAlike(Graphics::IBitmap* a, Graphics::IBitmap* b) {
    const BitmapPixelAccessor first(a, Graphics::kLockRead), second(b, Graphics::kLockRead);
    bool alike = first.getWidth() == second.getWidth() && first.getHeight() == second.getHeight();
    for (int32_t y = 0; alike && y < first.getHeight(); ++y)
        alike = std::equal(first.row(y), first.row(y) + first.getWidth(), second.row(y));
    return alike;
}

/** However the bytes come, the image is the same; a part of them gives all of it or nothing; writing keeps each pixel. */
inline void check(const std::string& file, size_t piece, size_t cut) {
    const Bitmap whole = read(streamOf(file));
    if (whole && !isSmall(whole))
        return;
    PieceStream pieces(file, piece);
    const Bitmap inPieces = read(&pieces);
    demand(!whole == !inPieces && areAlike(whole, inPieces));
    const Bitmap part = read(streamOf(file.substr(0, cut)));
    demand(!part || (whole && areAlike(whole, part)));
    if (!whole)
        return;
    const OPtr<FMemoryStream> written(new FMemoryStream);
    demand(Graphics::kPngCodec.write(whole, written));
    written->rewind();
    const Bitmap back = read(written);
    demand(back && areAlike(whole, back));
}

/** An input is two bytes, which say in which pieces the file behind them is read and where it is cut as well. */
inline int checkInput(const uint8_t* data, size_t size) {
    if (size >= 2) {
        const std::string file(data + 2, data + size);
        check(file, size_t(data[0]) + 1, file.size() * data[1] / 256);
    }
    return 0;
}
}  // namespace ImageSubject
