#include "gui/drawing/bitmappixelaccessor.h"

namespace Tessarine {

BitmapPixelAccessor::BitmapPixelAccessor(Graphics::IBitmap* bitmap, unsigned flags)
    : pixels(bitmap ? bitmap->lockPixels(flags) : nullptr) {
    if (!pixels || pixels->getPixelFormat() != Graphics::kPixelFormatARGB32)
        return;
    first = static_cast<char*>(pixels->getRowAddress(0));
    if (!first)
        return;
    const Graphics::Size size = bitmap->getSize();
    width = int32_t(size.width);
    height = int32_t(size.height);
    stride = ptrdiff_t(pixels->getRowByteCount());
}

}  // namespace Tessarine
