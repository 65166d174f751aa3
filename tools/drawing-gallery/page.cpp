#include "tools/drawing-gallery/page.h"
#include "graphics/platformgraphics.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include "pluginterfaces/graphics/ifactory.h"

namespace Tessarine::Gallery {
namespace {
constexpr int32_t kGap = 12, kCaption = 16;

constexpr Page kPages[] = {
    {"shapes",     676, 642, drawShapes    },
    {"dialog",     520, 420, drawDialog    },
    {"lines",      676, 282, drawLines     },
    {"polygons",   676, 308, drawPolygons  },
    {"alignments", 676, 318, drawAlignments},
    {"scripts",    676, 424, drawScripts   },
    {"bitmaps",    676, 524, drawBitmaps   },
    {"weaver",     676, 556, drawWeaver    },
    {"filters",    676, 508, drawFilters   },
    {"colors",     676, 524, drawColors    },
};
}  // namespace

std::span<const Page> allPages() {
    return kPages;
}

Graphics::IBitmapFactory* bitmapFactory() {
    Graphics::IFactory* factory = UPhysicalDrawDevice::getFactory(true);
    return factory ? factory->getBitmapFactory() : nullptr;
}

OPtr<Graphics::IBitmap> pictureOf(const Page& page, int32_t scale) {
    Graphics::IBitmapFactory* bitmaps = bitmapFactory();
    OPtr<Graphics::IBitmap> bitmap(bitmaps ? bitmaps->create({double(page.width) * scale, double(page.height) * scale})
                                           : nullptr);
    const OPtr<Graphics::IDrawDevice> boundary(bitmap ? Graphics::createScaledDrawDevice(bitmap, scale) : nullptr);
    if (!boundary)
        return nullptr;
    const OPtr<UPhysicalDrawDevice> device(new UPhysicalDrawDevice(boundary));
    const OPtr<UScheme> scheme(new UScheme);
    device->setBrush(scheme->getBrush(kSchemeWindowBack));
    device->paintRect({0, 0, page.width, page.height});
    page.draw(*device, *scheme);
    return bitmap;
}

Sheet::Sheet(UDrawDevice& device, UScheme& scheme, const UPoint& cell, int32_t columns)
    : device(device), scheme(scheme), cell(cell), columns(columns) {}

URect Sheet::next(const char* caption) {
    const int32_t column = count % columns, row = count / columns;
    ++count;
    const URect place(UPoint(kGap + column * (cell.x + kGap), kGap + row * (cell.y + kCaption + kGap)), cell);
    device.setPen(scheme.getPen(kSchemeLabelColor));
    device.setFont(scheme.getFont(kSchemeSmallLabelFont));
    device.drawString(FString(caption).text16(), {place.left, place.bottom, place.right, place.bottom + kCaption},
                      kTextBottom, 0);
    return place;
}

URect Sheet::next(const char* caption, const UPoint& size) {
    const URect place = next(caption);
    return {UPoint(place.left + (cell.x - size.x) / 2, place.top + (cell.y - size.y) / 2), size};
}
}  // namespace Tessarine::Gallery
