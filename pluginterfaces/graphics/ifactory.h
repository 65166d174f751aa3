#pragma once
#include "pluginterfaces/graphics/ibitmapfilter.h"
#include "pluginterfaces/graphics/idrawdevice.h"

namespace Tessarine::Graphics {

/** All that draws, of one platform. */
class IFactory : public FUnknown {
public:
    /** Borrowed, as the other two that are got. */
    virtual IBitmapFactory* getBitmapFactory() = 0;
    virtual IFontCollection* getFontCollection() = 0;
    /** With a reference for the caller, as createDrawDeviceForBitmap. */
    virtual IGraphicsPath* createPath() = 0;
    /** Null: the bitmap is of another factory, or locked for writing. */
    virtual IDrawDevice* createDrawDeviceForBitmap(IBitmap* bitmap) = 0;
    virtual IBitmapFilterFactory* getBitmapFilterFactory() = 0;

    DECLARE_INTERFACE(IFactory)
};

}  // namespace Tessarine::Graphics
