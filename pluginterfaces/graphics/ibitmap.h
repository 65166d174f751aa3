#pragma once
#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/graphics/graphicstypes.h"

namespace Tessarine {
class IList;
class IPath;
}  // namespace Tessarine

namespace Tessarine::Graphics {

/** A bitmap's pixels, until it is released. */
class IBitmapPixelAccessor : public FUnknown {
public:
    virtual int32_t getPixelFormat() = 0;
    virtual uint32_t getRowByteCount() = 0;
    /** The first byte of a row, counted from the top; null out of range. */
    virtual void* getRowAddress(unsigned row) = 0;

    DECLARE_INTERFACE(IBitmapPixelAccessor)
};

class IBitmap : public FUnknown {
public:
    /** In whole pixels. */
    virtual Size getSize() = 0;
    /** flags of PixelLock; with a reference for the caller. Null: the bitmap is locked for writing, or is to be while it is
        locked. What is drawn onto it meanwhile is lost. */
    virtual IBitmapPixelAccessor* lockPixels(unsigned flags) = 0;

    DECLARE_INTERFACE(IBitmap)
};

/** A kind of image file. */
class IBitmapCodec : public FUnknown {
public:
    /** Lower-case extension without a dot; borrowed, as the others. */
    virtual const char* getExtension() = 0;
    virtual const char* getName() = 0;
    virtual const char* getMimeType() = 0;
    virtual bool canEncode() = 0;
    /** kResultFalse: it only reads, or the stream took less. */
    virtual int32_t encode(IBitmap* bitmap, IBStream* stream) = 0;

    DECLARE_INTERFACE(IBitmapCodec)
};

/** Bitmaps of up to 16,384 pixels a side and 67,108,864 in all. What is made has a reference for the caller. */
class IBitmapFactory : public FUnknown {
public:
    static constexpr int32_t kMaxSide = 16384;
    static constexpr int64_t kMaxPixels = 67108864;

    /** Null, as createFromStream: missing, no image, broken, or too large. */
    virtual IBitmap* createFromPath(IPath* path) = 0;
    /** Reads on from where the stream stands, in blocks, so that it ends up behind the image; it needs no seeking. */
    virtual IBitmap* createFromStream(IBStream* stream) = 0;
    /** All pixels 0; null: a side below 1, too large, or there is no memory. */
    virtual IBitmap* create(Size size) = 0;
    /** Adds an IBitmapCodec for each kind of file. */
    virtual int32_t getCodecs(IList* codecs) = 0;

    DECLARE_INTERFACE(IBitmapFactory)
};

}  // namespace Tessarine::Graphics
