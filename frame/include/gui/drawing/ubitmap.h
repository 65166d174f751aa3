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
class IAttributes;
class IList;
class UPhysicalDrawDevice;

/** Pixels to be drawn: an image, or what stands for one.

    Filters, masks and fills change the pixels behind getBitmap(), and so every place that shows them; those that copy take
    what this one shows, the alpha factor along with it. Without a graphics object a load has failed: then getBitmap() is
    null, and drawing does nothing. Main thread. */
class UBitmap : public CmObject {
public:
    enum ScalingAlgorithm : int32_t { kScaleByDrawing = 0, kScaleByArea = 1 };
    enum ColorFillMode : int32_t { kFillAll = 0, kFillKeepAlpha = 1, kFillClear = 2 };

    DECLARE_CLASS(UBitmap, CmObject)
    DECLARE_NEWCOPY(UBitmap)
    UBitmap() = default;
    explicit UBitmap(Graphics::IBitmap* bitmap);
    UBitmap(const UPoint& size, uint32_t depth);
    /** Pixels of its own, those that the other one shows. */
    UBitmap(const UBitmap& other);
    /** From where the stream stands; of a compressed one what it holds. */
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
    /** What this one stands for, or itself; borrowed, null: nothing. */
    virtual UBitmap* getTargetBitmap() { return this; }
    /** Pixels of just this colour, alpha included, become transparent, for good. */
    virtual bool makeColorTransparent(const UColor& color);
    /** The plain mode puts pixels in place of those that are there, the others draw over them. */
    virtual bool copyFrom(UBitmap* from, const URect& source, const URect& target, int16_t mode);
    /** A new bitmap of the rectangle's size, with a reference for the caller, transparent where there was nothing. Null: the
        rectangle or the bitmap is empty, or there is no memory. */
    virtual UBitmap* getSection(const URect& rect);
    /** mode of UBitmapMode; false: nothing was drawn. */
    virtual bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode);
    /** Where its pixels begin within those of getBitmap(). */
    virtual UPoint getOffset() { return origin; }
    /** A new bitmap with a reference for the caller, as all that copy; null: it failed. */
    virtual UBitmap* copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm);
    /** alpha 0 to 1, clamped, in place of the alpha factor. */
    virtual bool drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha);

    UBitmap* copyProcessed(Graphics::IBitmapFilter* filter);
    bool process(Graphics::IBitmapFilter* filter);
    static Graphics::IBitmapFilter* createFilter(const char* name);
    static Graphics::IBitmapFilterFactory* getFilterFactory();
    static Graphics::IBitmapFactory* getFactory();
    /** A part of a turn, to the left. The copy is as large as it takes. */
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
    /** Alpha of each pixel. */
    bool adjustAlpha(double factor);
    bool clearFill();
    bool colorFill(const UColor& color, ColorFillMode mode);

    /** In the format of the stream's file type, as PNG when it has none. false: there is no such encoder, or the stream
        took less. */
    bool saveToStream(FStream* stream, IAttributes* attributes);
    /** In the format of the path's extension, whole or not at all. */
    bool saveToFile(FPath* path, IAttributes* attributes);
    /** The extension is one of an image. */
    static bool isBitmapFile(FPath* path);
    /** Elements with IBitmapCodec; with a reference for the caller, as getCodec. Null: there is no platform. */
    static IList* getCodecs();
    static Graphics::IBitmapCodec* getCodec(const FFileType& type);
    /** Adds the type of each codec; the container must own what it holds. encoders: only of those that can write. */
    static bool getFileTypes(CmContainer& types, bool encoders);

    double getAlphaFactor() const { return alphaFactor; }
    void setAlphaFactor(double factor) { alphaFactor = factor; }
    /** Gives a copy what belongs to the pixels but isn't of them. */
    void describe(UBitmap& copy);
    /** What was made of a copy for good, since it was drawn in place of this one, is made of this one too. */
    void keepUpWith(const UBitmap& copy);

protected:
    friend class UBitmapCache;

    bool loadFromStream(IBStream* stream);
    void setGraphicsObject(Graphics::IBitmap* bitmap);
    URect bounds() { return {0, 0, getWidth(), getHeight()}; }
    static bool showsDisabled(int16_t mode);
    /** Transparent modes change the pixels, once. */
    void becomeShown(int16_t mode);
    /** What disabled modes show of a part; null: nothing. */
    OPtr<UBitmap> disabledSection(const URect& source);
    /** The one at the end of all targets; null: there is none. Borrowed. */
    UBitmap* pixelOwner();
    /** The bitmap, null or not, is this one or stands for it. */
    bool isBehind(UBitmap* bitmap) const;
    /** A copy of another size, into which it is drawn; null: that failed. */
    UBitmap* scaledByDrawing(const UPoint& newSize);

    IPtr<Graphics::IBitmap> graphicsObject;
    UPoint size;
    UPoint origin;
    uint32_t depth = 32;
    double alphaFactor = 1.0;
    bool madeTransparent = false;

private:
    /** From one that has pixels of its own, cut to what is there on both sides. */
    bool copyPixels(UBitmap* from, const URect& source, const UPoint& target);
    /** From any, of one size; what that doesn't show becomes transparent. */
    bool copyShown(UBitmap* from, const URect& source, const URect& target);
    UBitmap* scaledByArea(const UPoint& newSize);

    bool isInPool = false;  // as a source of processed bitmaps
};

/** Lets go of what bitmaps share, at the end of the program. */
bool termUBitmap();

}  // namespace Tessarine
