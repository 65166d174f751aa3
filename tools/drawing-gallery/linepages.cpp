#include "tools/drawing-gallery/page.h"
#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessarine::Gallery {
namespace {
struct PenRow {
    const char* caption;
    UPen::Style style;
    int32_t width;
    bool smooth;
    Graphics::LineStyle line;
};
constexpr Graphics::LineStyle kDashes = {
    Graphics::kCapButt, Graphics::kJoinMiter, 4, {8, 4, 2, 4}
};
constexpr Graphics::LineStyle kRound = {Graphics::kCapRound, Graphics::kJoinRound, 0, {}};
constexpr Graphics::LineStyle kSquare = {Graphics::kCapSquare, Graphics::kJoinBevel, 0, {}};
constexpr PenRow kPens[] = {
    {"1",                   UPen::kSolid,  1, false, {}     },
    {"2",                   UPen::kSolid,  2, false, {}     },
    {"3",                   UPen::kSolid,  3, false, {}     },
    {"6",                   UPen::kSolid,  6, false, {}     },
    {"dotted",              UPen::kDotted, 1, false, {}     },
    {"1, smooth",           UPen::kSolid,  1, true,  {}     },
    {"2, smooth",           UPen::kSolid,  2, true,  {}     },
    {"3, smooth",           UPen::kSolid,  3, true,  {}     },
    {"6, smooth",           UPen::kSolid,  6, true,  {}     },
    {"dotted, smooth",      UPen::kDotted, 1, true,  {}     },
    {"round, 9",            UPen::kCustom, 9, true,  kRound },
    {"square and bevel, 9", UPen::kCustom, 9, true,  kSquare},
    {"dashes, 1",           UPen::kCustom, 1, false, kDashes},
    {"dashes, 2",           UPen::kCustom, 2, true,  kDashes},
    {"dashes, 4",           UPen::kCustom, 4, true,  kDashes},
};

UPen penOf(const PenRow& row) {
    UPen pen(UColor(UColor::getStandardColorSpec(kBlack)), row.width, row.style, row.smooth);
    pen.lineStyle = row.line;
    return pen;
}

void drawSample(UDrawDevice& device, const URect& place) {
    int32_t y = place.top + 6;
    device.moveTo({place.left + 6, y});
    device.lineTo({place.left + 54, y});
    device.moveTo({place.left + 6, y + 8});
    device.lineTo({place.left + 6, place.bottom - 6});
    device.moveTo({place.left + 14, place.bottom - 8});
    device.lineTo({place.left + 54, y + 12});
    UPolygon corner;
    corner.lineTo({place.left + 66.0, place.bottom - 12.0});
    corner.lineTo({place.left + 80.0, y + 4.0});
    corner.lineTo({place.left + 94.0, place.bottom - 12.0});
    device.polyLine(corner);
    device.frameRect({place.left + 104, y, place.left + 119, place.bottom - 8});
}

UPolygon star(const URect& place, int32_t points) {
    const double x = (place.left + place.right) / 2.0, y = (place.top + place.bottom) / 2.0;
    const double outer = std::min(place.getWidth(), place.getHeight()) / 2.0 - 4;
    UPolygon polygon;
    for (int32_t index = 0; index < 2 * points; ++index) {
        const double angle = index * std::numbers::pi / points - std::numbers::pi / 2;
        const double radius = index % 2 ? outer * 0.45 : outer;
        polygon.lineTo({x + radius * std::cos(angle), y + radius * std::sin(angle)});
    }
    return polygon;
}

using Draw = void (*)(UDrawDevice&, const URect&);
struct FigureRow {
    const char* caption;
    Draw draw;
};
constexpr FigureRow kFigures[] = {
    {"frame of a polygon", [](UDrawDevice& d, const URect& r) { d.framePoly(star(r, 5)); }      },
    {"filled polygon",     [](UDrawDevice& d, const URect& r) { d.paintPoly(star(r, 5)); }      },
    {"open polygon",       [](UDrawDevice& d, const URect& r) { d.polyLine(star(r, 7)); }       },
    {"frame of an oval",   [](UDrawDevice& d, const URect& r) { d.frameOval(r, 0, kWholeTurn); }},
    {"filled oval",        [](UDrawDevice& d, const URect& r) { d.paintOval(r, 0, kWholeTurn); }},
    {"arc",                [](UDrawDevice& d, const URect& r) { d.frameOval(r, 0.5F, 4.0F); }   },
    {"pie",                [](UDrawDevice& d, const URect& r) { d.paintOval(r, 0.5F, 4.0F); }   },
    {"frame",              [](UDrawDevice& d, const URect& r) { d.frameRect(r); }               },
    {"frame, radius 10",   [](UDrawDevice& d, const URect& r) { d.frameRoundRect(r, 10); }      },
    {"filled, radius 10",  [](UDrawDevice& d, const URect& r) { d.paintRoundRect(r, 10); }      },
};
}  // namespace

void drawLines(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {121, 62}, 5);
    for (const PenRow& row : kPens) {
        const URect place = sheet.next(row.caption);
        device.setPen(penOf(row));
        drawSample(device, place);
    }
}

void drawPolygons(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {121, 120}, 5);
    for (const FigureRow& row : kFigures) {
        const URect place = sheet.next(row.caption).inset(12, 12);
        device.setBrush(UBrush(UColor("lightblue", UColor()), true));
        device.setPen(UPen(UColor("darkblue", UColor()), 1, UPen::kSolid, true));
        row.draw(device, place);
    }
}
}  // namespace Tessarine::Gallery
