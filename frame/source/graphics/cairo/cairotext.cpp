#include "frame/source/graphics/cairo/cairotext.h"
#include "frame/source/graphics/cairo/cairofontcollection.h"
#include "frame/source/graphics/cairo/objectbehind.h"
#include <algorithm>
#include <cmath>

namespace Tessarine::Graphics {
namespace {
constexpr double kFarAway = 1e6;     // in pixels
constexpr double kLarge = 1000;      // pixels of a font: pictures of its letters may fail when they are flat
constexpr double kTooLarge = 20000;  // a font that can't be scaled so far would be broken from then on

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

/** In pixels, in the direction that is stretched most. */
double sizeOn(cairo_t* context, double size) {
    cairo_matrix_t m;
    cairo_get_matrix(context, &m);
    return size * std::max(std::hypot(m.xx, m.yx), std::hypot(m.xy, m.yy));
}

void show(cairo_t* context, PangoLayoutLine* line, double size) {
    if (size < kLarge)
        return pango_cairo_show_layout_line(context, line);
    pango_cairo_layout_line_path(context, line);
    cairo_fill(context);
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
    const double size = sizeOn(context, ours->getHeight());
    const double baseline = baselineOf(rect, ours->getMetrics(), alignment);
    if (size < kTooLarge && place(context, startOf(rect, ours, text, alignment), baseline))
        show(context, ours->lineOf(text, antialiased), size);
    cairo_new_path(context);
    return true;
}

}  // namespace Tessarine::Graphics
