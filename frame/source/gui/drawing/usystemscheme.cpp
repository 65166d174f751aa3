#include "gui/drawing/usystemscheme.h"
#include "frame/source/gui/drawing/schemepainter.h"

namespace Tessarine {

IMPLEMENT_CLASS(USystemScheme, UScheme)

void USystemScheme::drawWorkAreaFrame(UDrawDevice& device, const URect& rect) {
    SchemePainter painter(device);
    painter.fill(inside(rect, 1), getColor(kSchemeWorkArea));
    painter.edges(rect, SchemePainter::kAllSides, getColor(kSchemeFrameBottom));
}

}  // namespace Tessarine
