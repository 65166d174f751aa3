#include "gui/drawing/ubitmapfill.h"
#include "gui/drawing/ubitmapweaver.h"
#include "gui/drawing/ufilmstrip.h"
#include "gui/drawing/uoffscreen.h"
#include "tools/drawing-gallery/page.h"
#include <string>

namespace Tessarine::Gallery {
namespace {
constexpr int32_t kSide = 64, kFrames = 5, kMargin = 12;

using BitmapHolder = OPtr<UBitmap>;

UColor standard(UStandardColor color) {
    return UColor(UColor::getStandardColorSpec(color));
}

UBrush brush(const UColor& color) {
    return UBrush(color, true);
}

/** Transparent around a card with a white stripe, all hues and a round corner of half alpha. */
BitmapHolder samplePicture() {
    BitmapHolder bitmap(new UBitmap(UPoint(kSide, kSide), 32));
    const OPtr<UOffscreen> device(new UOffscreen(bitmap));
    device->setBrush(brush(standard(kDarkBlue)));
    device->paintRoundRect({2, 2, 62, 62}, 10);
    for (int32_t column = 0; column < 52; ++column) {
        UColor color;
        color.fromHSL(column * 5, 255, 128);
        device->setBrush(brush(color));
        device->paintRect({6 + column, 10, 7 + column, 26});
    }
    device->setBrush(UBrush(standard(kWhite)));
    device->paintRect({6, 30, 58, 38});
    device->setBrush(brush(UColor(0x80FFD564)));
    device->paintOval({28, 28, 60, 60}, 0, kWholeTurn);
    device->setBrush(brush(standard(kLightGreen)));
    device->paintOval({8, 42, 24, 58}, 0, kWholeTurn);
    return bitmap;
}

/** With corners and sides that can be told apart. */
BitmapHolder framePicture() {
    BitmapHolder bitmap(new UBitmap(UPoint(40, 40), 32));
    const OPtr<UOffscreen> device(new UOffscreen(bitmap));
    device->setBrush(brush(standard(kDarkRed)));
    device->paintRoundRect({0, 0, 40, 40}, 10);
    device->setBrush(brush(standard(kLightOrange)));
    device->paintRoundRect({3, 3, 37, 37}, 8);
    device->setBrush(brush(standard(kDarkOrange)));
    device->paintOval({15, 15, 25, 25}, 0, kWholeTurn);
    for (const int32_t place : {17, 21}) {
        device->paintRect({place, 5, place + 2, 10});
        device->paintRect({5, place, 10, place + 2});
    }
    return bitmap;
}

BitmapHolder dialPicture() {
    BitmapHolder bitmap(new UBitmap(UPoint(kFrames * 32, 32), 32));
    const OPtr<UOffscreen> device(new UOffscreen(bitmap));
    for (int32_t frame = 0; frame < kFrames; ++frame) {
        const URect dial(UPoint(frame * 32 + 2, 2), UPoint(28, 28));
        device->setBrush(brush(standard(kGray70)));
        device->paintOval(dial, 0, kWholeTurn);
        device->setBrush(brush(standard(kLightYellow)));
        device->paintOval(dial, 2.4F, 0.2F + 4.5F * float(frame) / (kFrames - 1));
    }
    return bitmap;
}

/** What shows through. */
void checker(UDrawDevice& device, const URect& rect) {
    constexpr int32_t kStep = 8;
    for (int32_t y = rect.top; y < rect.bottom; y += kStep)
        for (int32_t x = rect.left; x < rect.right; x += kStep) {
            URect square(UPoint(x, y), UPoint(kStep, kStep));
            square.intersect(rect);
            device.setBrush((x / kStep + y / kStep) % 2 ? kGray20 : kGray40);
            device.paintRect(square);
        }
}

void drawPicture(Sheet& sheet, UDrawDevice& device, const char* caption, UBitmap* bitmap) {
    if (!bitmap)
        return;
    const URect place = sheet.next(caption, UPoint(bitmap->getWidth(), bitmap->getHeight()));
    checker(device, place);
    device.drawBitmap(bitmap, place.getOrigin(), kBitmapPlain);
}

using Change = UBitmap* (*)(UBitmap*);

/** A changed copy. */
template <class Operation>
UBitmap* changed(UBitmap* source, Operation operation) {
    auto* copy = new UBitmap(*source);
    operation(*copy);
    return copy;
}

UBitmap* whiteReplaced(UBitmap* source) {
    const OPtr<Graphics::IBitmapFilter> filter(UBitmap::createFilter("ReplaceColor"));
    if (!filter)
        return nullptr;
    filter->setInputValue("colorToReplace", FVariant(int64_t(0xFFFFFFFF)));
    filter->setInputValue("replaceColor", FVariant(int64_t(0xFFC00000)));
    return source->copyProcessed(filter);
}

struct FilterRow {
    const char* caption;
    Change change;
};
const FilterRow kFilters[] = {
    {"as it is",                 [](UBitmap* b) { return changed(b, [](UBitmap&) {}); }                                       },
    {"desaturated",              [](UBitmap* b) { return b->copyDesaturate(1, 1); }                                           },
    {"desaturated, half",        [](UBitmap* b) { return b->copyDesaturate(0.5F, 0.5F); }                                     },
    {"tint orange, 0.5",
     [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.tintImage(standard(kOrange), 0.5F); }); }                          },
    {"tint blue, 1",             [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.tintImage(standard(kBlue), 1.0F); }); }},
    {"hue +120",                 [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.adjustHSL(120, 0, 0); }); }            },
    {"saturation -60",           [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.adjustHSL(0, -60, 0); }); }            },
    {"luminance +50",            [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.adjustHSL(0, 0, 50); }); }             },
    {"luminance -50",            [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.adjustHSL(0, 0, -50); }); }            },
    {"alpha, 0.4",               [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.adjustAlpha(0.4); }); }                },
    {"mirrored across",          [](UBitmap* b) { return b->mirrorCopy(true, false); }                                        },
    {"mirrored down",            [](UBitmap* b) { return b->mirrorCopy(false, true); }                                        },
    {"turned by 1/12",           [](UBitmap* b) { return b->copyRotated(1 / 12.0F, true); }                                   },
    {"the same, unsmoothed",     [](UBitmap* b) { return b->copyRotated(1 / 12.0F, false); }                                  },
    {"scaled to 30, by area",
     [](UBitmap* b) {
         return b->copyScaled({30, 30}, UBitmap::kScaleByArea);
     }                                                                                                                        },
    {"scaled to 90, by area",
     [](UBitmap* b) {
         return b->copyScaled({90, 90}, UBitmap::kScaleByArea);
     }                                                                                                                        },
    {"scaled to 90, by drawing",
     [](UBitmap* b) {
         return b->copyScaled({90, 90}, UBitmap::kScaleByDrawing);
     }                                                                                                                        },
    {"white turned to red",      whiteReplaced                                                                                },
    {"filled, alpha kept",
     [](UBitmap* b) { return changed(b, [](UBitmap& c) { c.colorFill(standard(kRed), UBitmap::kFillKeepAlpha); }); }          },
};

struct WeaveRow {
    const char* caption;
    WeaveForm form;
};
constexpr WeaveRow kForms[] = {
    {"tiled across",              kTiledHoriz      },
    {"tiled down",                kTiledVerti      },
    {"tiled across with margins", kTiledMarginHoriz},
    {"tiled down with margins",   kTiledMarginVerti},
    {"tiled area",                kTiledArea       },
    {"tiled with margins",        kTiledMarginArea },
    {"tiled edges",               kTiledMarginEdge },
    {"scaled with margins",       kScaledMarginArea},
    {"scaled edges",              kScaledMarginEdge},
};

void drawModes(Sheet& sheet, UDrawDevice& device) {
    constexpr struct {
        const char* caption;
        UBitmapMode mode;
    } kModes[] = {
        {"plain",                    kBitmapPlain              },
        {"disabled",                 kBitmapDisabled           },
        {"white is transparent",     kBitmapTransparent        },
        {"transparent and disabled", kBitmapTransparentDisabled},
    };
    for (const auto& row : kModes) {
        const BitmapHolder picture = samplePicture();
        const URect place = sheet.next(row.caption, {kSide, kSide});
        checker(device, place);
        device.drawBitmap(picture, place.getOrigin(), row.mode);
    }
}

void drawAlphas(Sheet& sheet, UDrawDevice& device) {
    const BitmapHolder picture = samplePicture();
    for (const uint8_t alpha : {64, 128, 192, 255}) {
        const std::string caption = "alpha " + std::to_string(alpha);
        const URect place = sheet.next(caption.c_str(), {kSide, kSide});
        checker(device, place);
        device.alphaBlend(picture, {0, 0, kSide, kSide}, place, alpha);
    }
}

void drawParts(Sheet& sheet, UDrawDevice& device) {
    const struct {
        const char* caption;
        URect source;
        UPoint size;
    } kParts[] = {
        {"a part, as large", {6, 6, 38, 38},       {32, 32} },
        {"a part, enlarged", {6, 6, 38, 38},       {96, 96} },
        {"stretched",        {0, 0, kSide, kSide}, {140, 40}},
        {"reduced",          {0, 0, kSide, kSide}, {24, 24} },
    };
    const BitmapHolder picture = samplePicture();
    for (const auto& row : kParts) {
        const URect place = sheet.next(row.caption, row.size);
        checker(device, place);
        device.drawBitmap(picture, row.source, place, kBitmapPlain);
    }
}

void drawStripAndFill(Sheet& sheet, UDrawDevice& device) {
    const OPtr<UFilmStrip> strip(new UFilmStrip(dialPicture(), kFrames, UFilmStrip::kHorizontal));
    for (const float value : {0.0F, 0.5F, 1.0F}) {
        const std::string caption = "film strip at " + std::to_string(int32_t(value * 100)) + " %";
        strip->drawFrame(device, sheet.next(caption.c_str(), {32, 32}).getOrigin(), value, kBitmapPlain);
    }
    const OPtr<UBitmapFill> tint(new UBitmapFill(1, 1, standard(kOrange), 0.5));
    const URect place = sheet.next("fill, half", {96, 64});
    checker(device, place);
    device.drawBitmap(tint, {0, 0, 1, 1}, place, kBitmapPlain);
}
}  // namespace

void drawBitmaps(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {154, 100}, 4);
    drawModes(sheet, device);
    drawAlphas(sheet, device);
    drawParts(sheet, device);
    drawStripAndFill(sheet, device);
}

void drawWeaver(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {209, 108}, 3);
    const BitmapHolder picture = framePicture();
    const auto captioned = [&](const char* caption) {
        const URect place = sheet.next(caption, {190, 96});
        checker(device, place);
        return place;
    };
    for (const WeaveRow& row : kForms) {
        const URect place = captioned(row.caption);
        UBitmapWeaver::weave(device, picture, row.form, place, place, {kMargin, kMargin, kMargin, kMargin});
    }
    for (const bool smaller : {false, true})
        UBitmapWeaver::drawKeepAspectRatio(device, picture,
                                           captioned(smaller ? "stretched in its ratio" : "in its ratio"), smaller);
    const URect place = captioned("scaled, clipped");
    UBitmapWeaver::weave(device, picture, kScaledMarginArea, place, URect(place).inset(30, 20),
                         {kMargin, kMargin, kMargin, kMargin});
}

void drawFilters(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {121, 96}, 5);
    const BitmapHolder picture = samplePicture();
    for (const FilterRow& row : kFilters)
        drawPicture(sheet, device, row.caption, BitmapHolder(row.change(picture)));
}
}  // namespace Tessarine::Gallery
