#include "frame/source/graphics/cairo/cairotext.h"
#include "frame/source/graphics/cairo/cairofontcollection.h"
#include "frame/source/graphics/cairo/objectbehind.h"
#include <algorithm>
#include <cmath>

namespace Tessarine::Graphics {
namespace {
constexpr double kFarAway = 1e6;     // in pixels
constexpr double kTooLarge = 20000;  // pixels of a font: what a font can't be scaled to would break it for the process

double startOf(const Rect& rect, CairoFontFace* face, const tchar* text, unsigned alignment) {
    if (alignment & kAlignLeft)
        return rect.x;
    const double width = face->widthOf(text);
    if (alignment & kAlignRight)
        return rect.x + rect.width - (width + 0.5);
    return rect.x + (rect.width - (width + 0.5)) / 2;
}

double baselineOf(const Rect& rect, const FontMetrics& metrics, unsigned alignment) {
    if (alignment & kAlignTop)
        return rect.y + metrics.ascent;
    if (alignment & kAlignBottom)
        return rect.y + rect.height - metrics.descent;
    return rect.y + (rect.height - (metrics.ascent + metrics.descent + 0.5)) / 2 + metrics.ascent;
}

bool fits(cairo_t* context, double size) {
    cairo_matrix_t m;
    cairo_get_matrix(context, &m);
    return size * std::max(std::hypot(m.xx, m.yx), std::hypot(m.xy, m.yy)) < kTooLarge;
}

/** On a whole pixel, so that text of one size looks the same wherever it stands. False: it is out of sight. */
bool place(cairo_t* context, double x, double baseline) {
    cairo_user_to_device(context, &x, &baseline);
    if (!(std::fabs(x) < kFarAway && std::fabs(baseline) < kFarAway))
        return false;
    baseline = std::floor(baseline + 0.5);
    cairo_device_to_user(context, &x, &baseline);
    cairo_move_to(context, x, baseline);
    return true;
}
}  // namespace

bool drawText(cairo_t* context, const tchar* text, const Rect& rect, IFontFace* face, unsigned alignment,
              bool antialiased) {
    CairoFontFace* ours = objectBehind<CairoFontFace>(face);
    if (!ours)
        return false;
    const double baseline = baselineOf(rect, ours->getMetrics(), alignment);
    if (fits(context, ours->getHeight()) && place(context, startOf(rect, ours, text, alignment), baseline))
        pango_cairo_show_layout_line(context, ours->lineOf(text, antialiased));
    cairo_new_path(context);
    return true;
}

}  // namespace Tessarine::Graphics
