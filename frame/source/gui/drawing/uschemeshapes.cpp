#include "frame/source/gui/drawing/schemepainter.h"
#include "gui/drawing/uscheme.h"
#include <algorithm>
#include <cmath>

namespace Tessarine {
namespace {
using Painter = SchemePainter;

constexpr int32_t kFarAway = 1 << 20;  // nothing is drawn beyond
constexpr int32_t kControlRadius = 3;
constexpr int32_t kBoxRadius = 2;
constexpr int32_t kFrameRadius = 4;
constexpr int32_t kTextInset = 4;
constexpr int32_t kGroupTextLeft = 8;
constexpr int32_t kInactiveTabDrop = 2;
constexpr int32_t kMaxShadow = 8;
constexpr double kShadowStrength = 0.05;  // of each layer
constexpr int32_t kGripDots = 5, kGripStep = 5, kGripThickness = 5;

/** A raised or sunken body: a line around it, and its light from the top to the bottom. */
struct Body {
    UColor border, first, top, bottom;  // first: the topmost row
};

/** shown: what isn't cut off; the light goes from its top to its bottom. */
void drawPartOfBody(Painter& painter, const URect& rect, const URect& shown, int32_t radius, const Body& body) {
    if (rect.isEmpty())
        return;
    painter.fillRound(rect, radius, body.border);
    const URect within = inside(rect, 1);
    if (within.isEmpty())
        return;
    const int32_t middle = within.top + within.getHeight() / 2;
    const struct {
        int32_t top, bottom;
        const UColor& color;
    } kBands[] = {
        {within.top,     within.top + 1, body.first },
        {within.top + 1, middle,         body.top   },
        {middle,         within.bottom,  body.bottom},
    };
    for (const auto& [top, bottom, color] : kBands) {
        const ClipWithin clip(painter.device, {within.left, top, within.right, bottom});
        painter.fillRound(within, radius - 1, color);
    }
    const int32_t round = std::max(radius - 1, 1);  // rows that the corners narrow
    URect lit = URect(within).inset(0, round);
    if (lit.intersect(shown) && !(body.top == body.bottom))
        painter.ramp(lit, body.top, body.bottom);
}

void drawBody(Painter& painter, const URect& rect, int32_t radius, const Body& body) {
    drawPartOfBody(painter, rect, rect, radius, body);
}

/** What is in the upper rows of a field falls into its own shade. */
Body fieldBody(const UColor& border, const UColor& back) {
    return {border, mixed(back, border, 0.35F), back, back};
}

UColor lineColor(const UScheme& scheme) {
    return mixed(scheme.getColor(kSchemeFrameBottom), scheme.getColor(kSchemeFrame), 0.3F);
}

bool isLying(const URect& rect) {
    return rect.getWidth() >= rect.getHeight();
}

void drawButton(Painter& painter, const UScheme& scheme, const URect& rect, const Body& body, const tchar* text) {
    drawBody(painter, rect, kControlRadius, body);
    painter.text(text, inside(rect, 1), scheme.getFont(kSchemeLabelFont), scheme.getColor(kSchemeLabelColor), 0,
                 kTextInset);
}

Body releasedBody(const UScheme& scheme, USchemeColor top, USchemeColor bottom) {
    const UColor &face = scheme.getColor(kSchemeButtonFace), &dark = scheme.getColor(kSchemeButtonBottom);
    return {mixed(scheme.getColor(bottom), face, 0.15F), scheme.getColor(kSchemeButtonHilight),
            mixed(face, scheme.getColor(top), 0.75F), mixed(face, dark, 0.2F)};
}

Body pressedBody(const UScheme& scheme, USchemeColor bottom) {
    const UColor &face = scheme.getColor(kSchemeButtonFace), &dark = scheme.getColor(kSchemeButtonBottom);
    const UColor& border = scheme.getColor(bottom);
    return {mixed(border, scheme.getColor(kSchemeFrame), 0.2F), mixed(dark, border, 0.6F), mixed(face, dark, 0.9F),
            mixed(face, dark, 0.35F)};
}

void drawField(Painter& painter, const UScheme& scheme, const URect& rect, const Body& body) {
    const URect field(rect.left, rect.top, rect.right, rect.bottom - 1);
    painter.edges(URect(rect).inset(kControlRadius, 0), Painter::kBottom,
                  translucent(scheme.getColor(kSchemeDataFieldBottom), 0.8));
    drawBody(painter, field, kControlRadius, body);
}

/** The part of a tab's outline that lies outside of its rectangle is cut off. */
void drawTab(Painter& painter, const UScheme& scheme, const URect& rect, const tchar* text, bool active, bool atTop) {
    const UColor line = lineColor(scheme), &pane = scheme.getColor(kSchemeMultiPane);
    const int32_t drop = active ? 0 : kInactiveTabDrop, beyond = kFrameRadius + 1;
    const URect shown(rect.left, rect.top + (atTop ? drop : 0), rect.right, rect.bottom - (atTop ? 0 : drop));
    const URect outline(shown.left, shown.top - (atTop ? 0 : beyond), shown.right, shown.bottom + (atTop ? beyond : 0));
    const UColor free = active ? mixed(pane, scheme.getColor(kSchemeFrameTop), 0.6F) : mixed(pane, line, 0.1F),
                 joined = active ? pane : mixed(pane, line, 0.25F);
    const UColor &top = atTop ? free : joined, &bottom = atTop ? joined : free;
    const ClipWithin clip(painter.device, shown);
    drawPartOfBody(painter, outline, shown, kFrameRadius,
                   {line, atTop ? mixed(free, scheme.getColor(kSchemeFrameTop), 0.7F) : top, top, bottom});
    if (!active)
        painter.edges(shown, atTop ? Painter::kBottom : Painter::kTop, line);
    painter.text(text, shown, scheme.getFont(kSchemeTabFont),
                 mixed(scheme.getColor(kSchemeLabelColor), pane, active ? 0 : 0.35F), 0, kTextInset);
}

int32_t filledWidth(const URect& rect, float part) {
    const float bounded = part > 0 ? std::min(part, 1.0F) : 0.0F;  // no number counts as 0
    return int32_t(std::lround(double(bounded) * std::max(rect.getWidth(), 0)));
}

/** Between places that are given as parts of a square. */
Graphics::Point at(const URect& square, double x, double y) {
    return {square.left + x * square.getWidth(), square.top + y * square.getHeight()};
}

/** The ends are round, and in a small square would leave it. */
void strokeWithin(Painter& painter, const URect& square, std::initializer_list<Graphics::Point> points,
                  const UColor& color) {
    const ClipWithin clip(painter.device, square);
    painter.stroke(points, std::max(1, (square.getWidth() + 3) / 6), color);
}

void strokeCross(Painter& painter, const URect& square, const UColor& color) {
    const double near = 0.22, far = 1 - near;
    strokeWithin(painter, square, {at(square, near, near), at(square, far, far)}, color);
    strokeWithin(painter, square, {at(square, far, near), at(square, near, far)}, color);
}

enum class Pointing { kUp, kDown };

/** A triangle in the middle, at most of a given width; its base is sharp. */
URect triangleIn(const URect& rect, int32_t maxWidth) {
    const int32_t room = std::min({rect.getWidth(), 2 * rect.getHeight(), maxWidth});
    const int32_t width = room - (room + rect.getWidth()) % 2, height = (width + 1) / 2;
    const UPoint origin(rect.left + (rect.getWidth() - width) / 2, rect.top + (rect.getHeight() - height) / 2);
    return {origin, UPoint(width, height)};
}

void fillTriangle(Painter& painter, const URect& box, Pointing pointing, const UColor& color) {
    if (box.isEmpty())
        return;
    const double base = pointing == Pointing::kDown ? box.top : box.bottom;
    const double tip = pointing == Pointing::kDown ? box.bottom : box.top;
    painter.fillPolygon(
        {
            {double(box.left),             base},
            {double(box.right),            base},
            {(box.left + box.right) / 2.0, tip }
    },
        color);
}

void drawGrip(Painter& painter, const UScheme& scheme, const URect& rect) {
    const bool lying = isLying(rect);
    const int32_t thickness = lying ? rect.getHeight() : rect.getWidth(),
                  length = lying ? rect.getWidth() : rect.getHeight();
    if (thickness < kGripThickness || length < kGripStep * (kGripDots + 1))
        return;
    const UPoint middle((rect.left + rect.right) / 2 - 1, (rect.top + rect.bottom) / 2 - 1);
    for (int32_t dot = 0; dot < kGripDots; ++dot) {
        const int32_t along = (dot - kGripDots / 2) * kGripStep;
        const UPoint place = middle + (lying ? UPoint(along, 0) : UPoint(0, along));
        painter.fill({place + UPoint(1, 1), UPoint(2, 2)}, scheme.getColor(kSchemeFrameTop));
        painter.fill({place, UPoint(2, 2)}, lineColor(scheme));
    }
}

using Draw = void (*)(UScheme&, UDrawDevice&, const URect&, const tchar*);

/** The text is for those operations that take one; a state of the shape comes last. */
template <auto operation, auto... state>
void draw(UScheme& scheme, UDrawDevice& device, const URect& rect, const tchar* text) {
    if constexpr (requires { (scheme.*operation)(device, rect, text, state...); })
        (scheme.*operation)(device, rect, text, state...);
    else
        (scheme.*operation)(device, rect, state...);
}
}  // namespace

void UScheme::drawWorkAreaFrame(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    painter.fill(inside(rect, 2), getColor(kSchemeWorkArea));
    painter.edges(rect, Painter::kLeft | Painter::kTop, getColor(kSchemeFrameBottom));
    painter.edges(rect, Painter::kRight | Painter::kBottom, getColor(kSchemeFrameTop));
    painter.edges(inside(rect, 1), Painter::kAllSides, lineColor(*this));
}

void UScheme::drawDialogFrame(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    painter.fill(inside(rect, 2), getColor(kSchemeDialogBack));
    painter.edges(inside(rect, 1), Painter::kRight | Painter::kBottom, getColor(kSchemeFrameBottom));
    painter.edges(inside(rect, 1), Painter::kLeft | Painter::kTop, getColor(kSchemeFrameTop));
    painter.edges(rect, Painter::kAllSides, lineColor(*this));
}

void UScheme::drawGroupFrame(UDrawDevice& device, const URect& rect, const tchar* text) {
    const UFont& font = getFont(kSchemeLabelFont);
    const bool hasText = text && *text;
    URect extents;
    if (hasText)
        UDrawDevice::getTextExtents(font, text, extents);
    extents.intersect({0, 0, kFarAway, kFarAway});
    const URect frame(rect.left, rect.top + extents.getHeight() / 2, rect.right, rect.bottom);
    const int32_t gapLeft = frame.left + kGroupTextLeft, gapRight = gapLeft + extents.getWidth() + 2 * kTextInset;
    const URect parts[] = {
        {frame.left, frame.top,     hasText ? gapLeft : frame.right,  frame.top + 2},
        {gapRight,   frame.top,     hasText ? frame.right : gapRight, frame.top + 2},
        {frame.left, frame.top + 2, frame.right,                      frame.bottom },
    };
    Painter painter(device);
    for (const URect& part : parts) {
        const ClipWithin clip(device, part);
        painter.frameRound({frame.left + 1, frame.top + 1, frame.right, frame.bottom}, kFrameRadius,
                           getColor(kSchemeFrameTop));
        painter.frameRound({frame.left, frame.top, frame.right - 1, frame.bottom - 1}, kFrameRadius, lineColor(*this));
    }
    const int32_t right = std::min(gapRight, rect.right),
                  bottom = std::min(rect.top + extents.getHeight(), rect.bottom);
    painter.text(text, {gapLeft, rect.top, right, bottom}, font, getColor(kSchemeLabelColor), kTextLeft | kTextTop,
                 kTextInset);
}

void UScheme::drawButtonReleased(UDrawDevice& device, const URect& rect, const tchar* text) {
    Painter painter(device);
    drawButton(painter, *this, rect, releasedBody(*this, kSchemeButtonTop, kSchemeButtonBottom2), text);
}

void UScheme::drawButtonPressed(UDrawDevice& device, const URect& rect, const tchar* text) {
    Painter painter(device);
    drawButton(painter, *this, rect, pressedBody(*this, kSchemeButtonBottom2), text);
}

void UScheme::drawDataFieldActive(UDrawDevice& device, const URect& rect, const tchar* text) {
    Painter painter(device);
    const UColor& back = getColor(kSchemeDataFieldBack);
    drawField(painter, *this, rect, fieldBody(mixed(getColor(kSchemeDataFieldTop), back, 0.1F), back));
    painter.text(text, inside(rect, getSize(kSchemeDataFieldBorder)), getFont(kSchemeDataFont),
                 getColor(kSchemeDataFieldFore), kTextLeft, kTextInset);
}

void UScheme::drawDataFieldInactive(UDrawDevice& device, const URect& rect, const tchar* text) {
    Painter painter(device);
    const UColor &panel = getColor(kSchemePanelBack), back = mixed(getColor(kSchemeDataFieldBack), panel, 0.6F);
    drawField(painter, *this, rect, fieldBody(mixed(getColor(kSchemeDataFieldTop), panel, 0.5F), back));
    painter.text(text, inside(rect, getSize(kSchemeDataFieldBorder)), getFont(kSchemeDataFont),
                 getColor(kSchemeDataFieldForeInactive), kTextLeft, kTextInset);
}

void UScheme::drawDataFieldButtonReleased(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    drawBody(painter, rect, kBoxRadius, releasedBody(*this, kSchemeButtonTop2, kSchemeButtonBottom));
}

void UScheme::drawDataFieldButtonPressed(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    drawBody(painter, rect, kBoxRadius, pressedBody(*this, kSchemeButtonBottom));
}

void UScheme::drawMultiPane(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    painter.fill(inside(rect, 1), getColor(kSchemeMultiPane));
    painter.edges(rect, Painter::kAllSides, lineColor(*this));
}

void UScheme::drawTopTab(UDrawDevice& device, const URect& rect, const tchar* text, bool active) {
    Painter painter(device);
    drawTab(painter, *this, rect, text, active, true);
}

void UScheme::drawBottomTab(UDrawDevice& device, const URect& rect, const tchar* text, bool active) {
    Painter painter(device);
    drawTab(painter, *this, rect, text, active, false);
}

void UScheme::drawSeparator(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    const bool lying = isLying(rect);
    const int32_t x = lying ? rect.left : rect.left + (rect.getWidth() - 1) / 2,
                  y = lying ? rect.top + (rect.getHeight() - 1) / 2 : rect.top;
    URect line(x, y, lying ? rect.right : x + 1, lying ? y + 1 : rect.bottom);
    const ClipWithin clip(device, rect);
    painter.fill(line, lineColor(*this));
    painter.fill(line.offset(lying ? UPoint(0, 1) : UPoint(1, 0)), getColor(kSchemeFrameTop));
}

void UScheme::drawProgressBar(UDrawDevice& device, const URect& rect, const tchar* text, float part) {
    Painter painter(device);
    const UColor &color = getColor(kSchemeProgressBar), &light = getColor(kSchemeButtonHilight),
                 back = mixed(getColor(kSchemeDataFieldBack), getColor(kSchemePanelBack), 0.4F);
    drawBody(painter, rect, kControlRadius, fieldBody(getColor(kSchemeDataFieldTop), back));
    const int32_t border = rect.left + filledWidth(rect, part);
    const struct {
        URect part;
        UColor text;
    } kParts[] = {
        {{rect.left, rect.top, border, rect.bottom},  light                },
        {{border, rect.top, rect.right, rect.bottom}, getColor(kSchemeText)},
    };
    {
        const ClipWithin clip(device, kParts[0].part);
        drawBody(painter, rect, kControlRadius,
                 {color, mixed(color, light, 0.5F), mixed(color, light, 0.38F), mixed(color, light, 0.1F)});
        if (border < rect.right)
            painter.edges(kParts[0].part, Painter::kRight, color);
    }
    for (const auto& [shown, textColor] : kParts) {
        const ClipWithin clip(device, shown);
        painter.text(text, rect, getFont(kSchemeSmallLabelFont), textColor, 0, kTextInset);
    }
}

void UScheme::drawSimpleProgressBar(UDrawDevice& device, const URect& rect, float part) {
    Painter painter(device);
    painter.fill(inside(rect, 1), getColor(kSchemeDataFieldBack));
    painter.edges(rect, Painter::kAllSides, lineColor(*this));
    URect bar = inside(rect, 2);
    bar.right = bar.left + filledWidth(bar, part);
    painter.fill(bar, getColor(kSchemeProgressBar));
}

void UScheme::drawCross(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    strokeCross(painter, squareIn(rect), getColor(kSchemeText));
}

void UScheme::drawCrossBox(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    const URect square = squareIn(rect);
    drawBody(painter, square, kBoxRadius, fieldBody(getColor(kSchemeDataFieldTop), getColor(kSchemeDataFieldBack)));
    strokeCross(painter, inside(square, 1), getColor(kSchemeDataFieldFore));
}

void UScheme::drawCheckmark(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    const URect square = squareIn(rect);
    strokeWithin(painter, square, {at(square, 0.16, 0.54), at(square, 0.4, 0.78), at(square, 0.84, 0.22)},
                 getColor(kSchemeText));
}

void UScheme::drawExpansionBox(UDrawDevice& device, const URect& rect, bool open) {
    Painter painter(device);
    const URect square = squareIn(rect);
    drawBody(painter, square, kBoxRadius, releasedBody(*this, kSchemeButtonTop, kSchemeButtonBottom2));
    const int32_t side = square.getWidth(), margin = std::max(2, side / 4 + 1), half = (side - 1) / 2;
    const UColor& color = getColor(kSchemeText);
    painter.fill(URect(square).inset(margin, half), color);
    if (!open)
        painter.fill(URect(square).inset(half, margin), color);
}

void UScheme::drawMenuArrow(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    fillTriangle(painter, triangleIn(rect, std::max(4, rect.getHeight() / 2)), Pointing::kDown, getColor(kSchemeText));
}

void UScheme::drawShadow(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    const int32_t depth = std::min(kMaxShadow, std::min(rect.getWidth(), rect.getHeight()) / 4);
    for (int32_t layer = 0; layer < depth; ++layer)
        painter.fillSoft(inside(rect, layer), depth - layer + kFrameRadius,
                         translucent(getColor(kSchemeFrame), kShadowStrength));
}

void UScheme::drawSortMarker(UDrawDevice& device, const URect& rect, bool down) {
    Painter painter(device);
    const UColor& color = getColor(kSchemeSortMarker);
    fillTriangle(painter, triangleIn(rect, std::max(4, rect.getHeight() / 2)), down ? Pointing::kDown : Pointing::kUp,
                 mixed(color, getColor(kSchemeFrame), 0.4F));
}

void UScheme::drawViewSeparator(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    const bool lying = isLying(rect);
    painter.fill(rect, getColor(kSchemeWindowBack));
    painter.edges(rect, lying ? Painter::kTop : Painter::kLeft, getColor(kSchemeFrameTop));
    painter.edges(rect, lying ? Painter::kBottom : Painter::kRight, lineColor(*this));
    drawGrip(painter, *this, rect);
}

void UScheme::drawTransparentFrame(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    painter.edges(rect, Painter::kAllSides, translucent(getColor(kSchemeFrame2), 0.4));
    painter.edges(inside(rect, 1), Painter::kAllSides, translucent(getColor(kSchemeFrameTop2), 0.5));
}

void UScheme::drawColumnHeader(UDrawDevice& device, const URect& rect) {
    Painter painter(device);
    const UColor& face = getColor(kSchemeButtonFace);
    painter.ramp(rect, mixed(face, getColor(kSchemeButtonTop), 0.75F), face);
    painter.edges(rect, Painter::kRight, getColor(kSchemeFrameBottom));
    painter.edges(rect, Painter::kBottom, lineColor(*this));
}

void UScheme::drawColumnText(UDrawDevice& device, const URect& rect, const tchar* text) {
    Painter painter(device);
    painter.text(text, rect, getFont(kSchemeColumnFont), getColor(kSchemeLabelColor), kTextLeft, kTextInset);
}

void UScheme::drawShape(UDrawDevice& device, const URect& rect, USchemeShape shape, const tchar* text) {
    static constexpr Draw kShapes[] = {
        draw<&UScheme::drawWorkAreaFrame>,
        draw<&UScheme::drawDialogFrame>,
        draw<&UScheme::drawGroupFrame>,
        draw<&UScheme::drawButtonReleased>,
        draw<&UScheme::drawButtonPressed>,
        draw<&UScheme::drawDataFieldActive>,
        draw<&UScheme::drawDataFieldInactive>,
        draw<&UScheme::drawDataFieldButtonReleased>,
        draw<&UScheme::drawDataFieldButtonPressed>,
        draw<&UScheme::drawMultiPane>,
        draw<&UScheme::drawTopTab, true>,
        draw<&UScheme::drawTopTab, false>,
        draw<&UScheme::drawBottomTab, true>,
        draw<&UScheme::drawBottomTab, false>,
        draw<&UScheme::drawSeparator>,
        draw<&UScheme::drawProgressBar, 1>,
        draw<&UScheme::drawSimpleProgressBar, 1>,
        draw<&UScheme::drawCross>,
        draw<&UScheme::drawCrossBox>,
        draw<&UScheme::drawCheckmark>,
        draw<&UScheme::drawExpansionBox, false>,
        draw<&UScheme::drawExpansionBox, true>,
        draw<&UScheme::drawMenuArrow>,
        draw<&UScheme::drawShadow>,
        draw<&UScheme::drawSortMarker, false>,
        draw<&UScheme::drawSortMarker, true>,
        draw<&UScheme::drawViewSeparator>,
        draw<&UScheme::drawTransparentFrame>,
        draw<&UScheme::drawColumnHeader>,
        draw<&UScheme::drawColumnText>,
    };
    static_assert(std::size(kShapes) == kNumSchemeShapes);
    URect bounded(rect);
    if (size_t(shape) < kNumSchemeShapes && bounded.intersect({-kFarAway, -kFarAway, kFarAway, kFarAway}))
        kShapes[size_t(shape)](*this, device, bounded, text);
}

}  // namespace Tessarine
