#include "tools/drawing-gallery/page.h"

namespace Tessarine::Gallery {
namespace {
struct ShapeRow {
    const char* caption;
    USchemeShape shape;
    int32_t width, height;
    const tchar* text;
};
constexpr ShapeRow kShapes[] = {
    {"work area frame",        kShapeWorkAreaFrame,           110, 54, nullptr    },
    {"dialog frame",           kShapeDialogFrame,             110, 54, nullptr    },
    {"group frame",            kShapeGroupFrame,              110, 54, u"Group"   },
    {"transparent frame",      kShapeTransparentFrame,        110, 54, nullptr    },
    {"shadow",                 kShapeShadow,                  110, 54, nullptr    },
    {"button released",        kShapeButtonReleased,          82,  28, u"Apply"   },
    {"button pressed",         kShapeButtonPressed,           82,  28, u"Apply"   },
    {"data field active",      kShapeDataFieldActive,         90,  20, u"48000"   },
    {"data field inactive",    kShapeDataFieldInactive,       90,  20, u"48000"   },
    {"field button released",  kShapeDataFieldButtonReleased, 16,  16, nullptr    },
    {"field button pressed",   kShapeDataFieldButtonPressed,  16,  16, nullptr    },
    {"multi pane",             kShapeMultiPane,               110, 54, nullptr    },
    {"top tab",                kShapeTopTab,                  70,  23, u"Level"   },
    {"top tab inactive",       kShapeTopTabInactive,          70,  23, u"Meter"   },
    {"bottom tab",             kShapeBottomTab,               70,  23, u"Level"   },
    {"bottom tab inactive",    kShapeBottomTabInactive,       70,  23, u"Meter"   },
    {"separator",              kShapeSeparator,               90,  4,  nullptr    },
    {"separator upright",      kShapeSeparator,               4,   50, nullptr    },
    {"progress bar",           kShapeProgressBar,             110, 16, u"Finished"},
    {"simple progress bar",    kShapeSimpleProgressBar,       110, 12, nullptr    },
    {"cross",                  kShapeCross,                   14,  14, nullptr    },
    {"cross box",              kShapeCrossBox,                14,  14, nullptr    },
    {"checkmark",              kShapeCheckmark,               14,  14, nullptr    },
    {"expansion box",          kShapeExpansionBox,            11,  11, nullptr    },
    {"expansion box open",     kShapeExpansionBoxOpen,        11,  11, nullptr    },
    {"menu arrow",             kShapeMenuArrow,               16,  16, nullptr    },
    {"sort marker",            kShapeSortMarker,              16,  16, nullptr    },
    {"sort marker down",       kShapeSortMarkerDown,          16,  16, nullptr    },
    {"view separator",         kShapeViewSeparator,           110, 8,  nullptr    },
    {"view separator upright", kShapeViewSeparator,           8,   54, nullptr    },
    {"column header",          kShapeColumnHeader,            90,  16, nullptr    },
    {"column text",            kShapeColumnText,              90,  16, u"Channel" },
    {"cross, large",           kShapeCross,                   32,  32, nullptr    },
    {"checkmark, large",       kShapeCheckmark,               32,  32, nullptr    },
    {"expansion box, even",    kShapeExpansionBox,            16,  16, nullptr    },
};

/** Shapes put together as a window has them. */
struct DialogPainter {
    UDrawDevice& device;
    UScheme& scheme;

    void shape(USchemeShape what, const URect& rect, const tchar* text = nullptr) const {
        scheme.drawShape(device, rect, what, text);
    }
    void label(const tchar* text, const URect& rect, int32_t flags = kTextRight) const {
        device.setPen(scheme.getPen(kSchemeLabelColor));
        device.setFont(scheme.getFont(kSchemeLabelFont));
        device.drawString(text, rect, flags, 0);
    }

    void frame() const;
    void tabs() const;
    void fields() const;
    void switches() const;
    void list() const;
    void foot() const;
};

void DialogPainter::frame() const {
    shape(kShapeShadow, {16, 18, 504, 412});
    shape(kShapeDialogFrame, {24, 20, 496, 402});
}

void DialogPainter::tabs() const {
    shape(kShapeMultiPane, {40, 58, 480, 346});
    shape(kShapeTopTabInactive, {125, 36, 200, 59}, u"Routing");
    shape(kShapeTopTabInactive, {197, 36, 272, 59}, u"Clock");
    shape(kShapeTopTab, {50, 36, 128, 59}, u"Preamps");
}

void DialogPainter::fields() const {
    shape(kShapeGroupFrame, {54, 72, 260, 184}, u"Input");
    const struct {
        const tchar* title;
        const tchar* value;
        USchemeShape field;
        USchemeShape button;
    } kRows[] = {
        {u"Gain",      u"42 dB",       kShapeDataFieldActive,   kShapeDataFieldButtonReleased},
        {u"Low cut",   u"80 Hz",       kShapeDataFieldActive,   kShapeDataFieldButtonPressed },
        {u"Impedance", u"2.4 k\u03A9", kShapeDataFieldInactive, kShapeDataFieldButtonReleased},
    };
    int32_t y = 92;
    for (const auto& row : kRows) {
        label(row.title, {60, y, 126, y + 20});
        shape(row.field, {134, y, 244, y + 20}, row.value);
        const URect button(226, y + 2, 242, y + 17);
        shape(row.button, button);
        shape(kShapeMenuArrow, button);
        y += 29;
    }
}

void DialogPainter::switches() const {
    shape(kShapeGroupFrame, {274, 72, 466, 184}, u"Switches");
    const tchar* const kTitles[] = {u"Phantom power", u"Pad", u"Phase"};
    int32_t y = 94;
    for (const tchar* title : kTitles) {
        shape(kShapeCrossBox, {288, y, 302, y + 14});
        label(title, {310, y - 2, 450, y + 16}, kTextLeft);
        y += 29;
    }
    shape(kShapeCheckmark, {440, 92, 454, 106});
    shape(kShapeCross, {440, 121, 454, 135});
}

void DialogPainter::list() const {
    shape(kShapeWorkAreaFrame, {54, 198, 466, 330});
    shape(kShapeColumnHeader, {56, 200, 216, 216});
    shape(kShapeColumnText, {56, 200, 216, 216}, u"Channel");
    shape(kShapeSortMarkerDown, {198, 200, 214, 216});
    shape(kShapeColumnHeader, {216, 200, 464, 216});
    shape(kShapeColumnText, {216, 200, 464, 216}, u"State");
    const tchar* const kTitles[] = {u"Stage left", u"Vocals", u"Stage right"};
    int32_t y = 222;
    for (const tchar* title : kTitles) {
        shape(y == 222 ? kShapeExpansionBoxOpen : kShapeExpansionBox, {62, y, 73, y + 11});
        label(title, {80, y - 4, 200, y + 15}, kTextLeft);
        y += 20;
    }
    scheme.drawProgressBar(device, {222, 219, 400, 235}, u"Reading 62 %", 0.62F);
    scheme.drawSimpleProgressBar(device, {222, 242, 400, 254}, 0.3F);
    shape(kShapeViewSeparator, {56, 286, 464, 294});
    shape(kShapeTransparentFrame, {222, 300, 400, 322});
}

void DialogPainter::foot() const {
    shape(kShapeSeparator, {40, 352, 480, 356});
    shape(kShapeButtonReleased, {306, 364, 388, 392}, u"Cancel");
    shape(kShapeButtonPressed, {396, 364, 478, 392}, u"OK");
}
}  // namespace

void drawShapes(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {121, 62}, 5);
    for (const ShapeRow& row : kShapes)
        scheme.drawShape(device, sheet.next(row.caption, UPoint(row.width, row.height)), row.shape, row.text);
}

void drawDialog(UDrawDevice& device, UScheme& scheme) {
    const DialogPainter painter{device, scheme};
    painter.frame();
    painter.tabs();
    painter.fields();
    painter.switches();
    painter.list();
    painter.foot();
}

void drawColors(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {121, 36}, 5);
    for (int32_t color = 0; color < kNumSchemeColors; ++color) {
        const URect place = sheet.next(UScheme::colorNames[size_t(color)]);
        device.setBrush(scheme.getBrush(USchemeColor(color)));
        device.paintRect(place);
        device.setPen(scheme.getPen(kSchemeFrameBottom));
        device.frameRect(place);
    }
}
}  // namespace Tessarine::Gallery
