#include "frame/source/graphics/cairo/cairofactory.h"
#include "frame/source/graphics/cairo/cairobitmapfactory.h"
#include "frame/source/graphics/cairo/cairodevice.h"
#include "frame/source/graphics/cairo/cairofontcollection.h"
#include "frame/source/graphics/cairo/cairopath.h"
#include "graphics/bitmapfilters/bitmapfilterfactory.h"
#include "graphics/platformgraphics.h"
#include "gui/drawing/hooks.h"

namespace Tessarine {
namespace Graphics {
namespace {
IFactory* newFactory() {
    return new CairoFactory;
}
}  // namespace

int32_t CairoFactory::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFactory>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

IBitmapFactory* CairoFactory::getBitmapFactory() {
    if (!bitmaps)
        bitmaps = OPtr<IBitmapFactory>(new CairoBitmapFactory);
    return bitmaps;
}

IFontCollection* CairoFactory::getFontCollection() {
    if (!fonts)
        fonts = OPtr<IFontCollection>(new CairoFontCollection);
    return fonts;
}

IGraphicsPath* CairoFactory::createPath() {
    return new CairoPath;
}

IDrawDevice* CairoFactory::createDrawDeviceForBitmap(IBitmap* bitmap) {
    return createScaledDrawDevice(bitmap, 1);
}

IBitmapFilterFactory* CairoFactory::getBitmapFilterFactory() {
    if (!filters)
        filters = OPtr<IBitmapFilterFactory>(new BitmapFilterFactory(getBitmapFactory()));
    return filters;
}

IDrawDevice* createScaledDrawDevice(IBitmap* bitmap, double scale) {
    return CairoDevice::create(CairoBitmap::behind(bitmap), scale);
}
}  // namespace Graphics

void installTessarinePlatformGraphics() {
    Graphics::keepPangoLoaded();
    gDrawingHooks.createFactory = Graphics::newFactory;
}

}  // namespace Tessarine
