#include "gui/drawing/udrawdevice.h"
#include "gui/drawing/irealtimetranslator.h"
#include <algorithm>
#include <cmath>
#include <string>

namespace Tessarine {
namespace {
constexpr UTextMetrics kNoFaceMetrics = {10, 7, 3, 3};

int32_t roundedUp(double length) {
    return int32_t(std::clamp<double>(std::ceil(length), INT32_MIN, INT32_MAX));
}
}  // namespace

int32_t UDrawDevice::getStringWidth(const UFont& font, const tchar* text) {
    if (!text)
        return 0;
    if (IRealtimeTranslator* translator = IRealtimeTranslator::gInstance)
        return translator->getStringWidth(font, text);
    double width = 0;
    Graphics::IFontFace* face = font.getGraphicsObject();
    if (face && face->getStringWidth(text, width) == kResultOk)
        return roundedUp(width);
    return roundedUp(double(std::char_traits<tchar>::length(text)) * font.getSize());
}

void UDrawDevice::getTextExtents(const UFont& font, const tchar* text, URect& extents) {
    UTextMetrics metrics;
    getTextMetrics(font, metrics);
    extents = URect(0, 0, getStringWidth(font, text), metrics.height);
}

void UDrawDevice::getTextMetrics(const UFont& font, UTextMetrics& metrics) {
    Graphics::IFontFace* face = font.getGraphicsObject();
    Graphics::FontMetrics exact;
    metrics = kNoFaceMetrics;
    if (!face || face->getMetrics(exact) != kResultOk)
        return;
    metrics.ascent = roundedUp(exact.ascent);
    metrics.descent = roundedUp(exact.descent);
    metrics.leading = roundedUp(exact.leading);
    metrics.height = metrics.ascent + metrics.descent;
}

}  // namespace Tessarine
