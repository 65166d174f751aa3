#pragma once
#include "gui/drawing/urect.h"
#include "gui/values/ucolor.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ibitmap.h"
#include "pluginterfaces/graphics/ibitmapfilter.h"

namespace Tessarine {
class CmContainer;
class FFileType;
class FPath;
class FStream;
class UPhysicalDrawDevice;

/** Pixels to be drawn: an image, or what stands for one.

    Filters, masks and pixels change every place that shows the bitmap. Without a graphics object a load has failed: then
    getBitmap() is null, and drawing does nothing. Main thread. */
class UBitmap : public CmObject {
public:
    enum ScalingAlgorithm : int32_t { kScaleByDrawing = 0, kScaleByArea = 1 };
    enum ColorFillMode : int32_t { kFillAll = 0, kFillKeepAlpha = 1, kFillClear = 2 };

    DECLARE_CLASS(UBitmap, CmObject)
    DECLARE_NEWCOPY(UBitmap)
    UBitmap() = default;
    explicit UBitmap(Graphics::IBitmap* bitmap);
    UBitmap(const UPoint& size, uint32_t depth);
    /** Pixels of its own. */
    UBitmap(const UBitmap& other);
    /** Compressed image data is expanded on the way. */
    explicit UBitmap(IBStream* stream);
    explicit UBitmap(IPath* path);
    ~UBitmap() override;
    UBitmap& operator=(const UBitmap&) = delete;

    /** Borrowed; null: nothing is loaded. */
    virtual Graphics::IBitmap* getGraphicsObject() { return graphicsObject; }
    virtual int32_t getWidth() { return size.x; }
    virtual int32_t getHeight() { return size.y; }
    virtual uint32_t getBitDepth() { return depth; }
    virtual Graphics::IBitmap* getBitmap() { return graphicsObject; }
    /** What the pixels are of, borrowed. */
    virtual UBitmap* getTargetBitmap() { return this; }
    /** Pixels of the colour become transparent, for good. */
    virtual bool makeColorTransparent(const UColor& color);
    virtual bool copyFrom(UBitmap* from, const URect& source, const URect& target, int16_t mode);
    /** A new bitmap with a reference for the caller; null: nothing of the rectangle is there. */
    virtual UBitmap* getSection(const URect& rect);
    /** mode of UBitmapMode; false: nothing was drawn. */
    virtual bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode);
    virtual UPoint getOffset() { return {}; }
    /** A new bitmap with a reference for the caller, as all that begin with copy; null: it failed. */
    virtual UBitmap* copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm);
    virtual bool drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha);

    UBitmap* copyProcessed(Graphics::IBitmapFilter* filter);
    bool process(Graphics::IBitmapFilter* filter);
    static Graphics::IBitmapFilter* createFilter(const char* name);
    static Graphics::IBitmapFilterFactory* getFilterFactory();
    static Graphics::IBitmapFactory* getFactory();
    /** A part of a turn. */
    UBitmap* copyRotated(float angle, bool interpolate);
    UBitmap* mirrorCopy(bool horizontal, bool vertical);
    bool mirror(bool horizontal, bool vertical);
    /** Degrees and percent. */
    bool adjustHSL(int32_t hue, int32_t saturation, int32_t luminance);
    UBitmap* copyDesaturate(float grayFactor, float alphaFactor);
    bool desaturate(float grayFactor, float alphaFactor);
    bool tintImage(const UColor& color, float factor);
    /** Percent, modulo 101. */
    bool tintImage(const UColor& color, int32_t percent);
    bool adjustAlpha(double factor);
    bool clearFill();
    bool colorFill(const UColor& color, ColorFillMode mode);

    double getAlphaFactor() const { return alphaFactor; }
    void setAlphaFactor(double factor) { alphaFactor = factor; }
    bool isTransparent() const { return madeTransparent; }

protected:
    bool loadFromStream(IBStream* stream);
    void setGraphicsObject(Graphics::IBitmap* bitmap);

    IPtr<Graphics::IBitmap> graphicsObject;
    UPoint size;
    uint32_t depth = 32;
    double alphaFactor = 1.0;
    bool madeTransparent = false;
};

}  // namespace Tessarine
