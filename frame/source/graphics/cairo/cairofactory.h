#pragma once
#include "frame/source/graphics/cairo/cairocells.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ifactory.h"

namespace Tessarine::Graphics {

/** What is got is made when it is first wanted. Main thread. */
class CairoFactory : public FObject, public IFactory {
public:
    DECLARE_CLASS_NAME(CairoFactory, FObject)
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override;
    IBitmapFactory* getBitmapFactory() override;
    IFontCollection* getFontCollection() override;
    IGraphicsPath* createPath() override;
    IDrawDevice* createDrawDeviceForBitmap(IBitmap* bitmap) override;
    IBitmapFilterFactory* getBitmapFilterFactory() override;

private:
    const IPtr<StretchedCells> cells = StretchedCells::shared();  // kept from one device to the next
    IPtr<IBitmapFactory> bitmaps;
    IPtr<IFontCollection> fonts;
    IPtr<IBitmapFilterFactory> filters;
};

}  // namespace Tessarine::Graphics
