#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/graphics/ibitmap.h"
#include <vector>

namespace Tessarine::Testing {

/** Pixels in memory, for what works on any bitmap. Rows stand further apart than they are long. */
class MemoryBitmap : public FObject, public Graphics::IBitmap {
public:
    FORWARD_REFCOUNT(FObject)
    MemoryBitmap(int32_t width, int32_t height)
        : width(width), height(height), pixels(size_t(stride() / 4) * size_t(height), kGap) {
        for (int32_t y = 0; y < height; ++y)
            std::fill_n(row(y), width, 0);
    }

    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<Graphics::IBitmap>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
    }
    Graphics::Size getSize() override { return {double(width), double(height)}; }
    Graphics::IBitmapPixelAccessor* lockPixels(unsigned /*flags*/) override { return new Accessor(*this); }

    uint32_t* row(int32_t y) { return pixels.data() + ptrdiff_t(y) * stride() / 4; }
    /** Without the gaps between rows. */
    std::vector<uint32_t> all() {
        std::vector<uint32_t> result;
        for (int32_t y = 0; y < height; ++y)
            result.insert(result.end(), row(y), row(y) + width);
        return result;
    }
    void set(const std::vector<uint32_t>& content) {
        for (int32_t y = 0; y < height; ++y)
            std::copy_n(content.data() + ptrdiff_t(y) * width, width, row(y));
    }
    /** Nobody wrote between the rows. */
    bool gapsAreUntouched() {
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = width; x < stride() / 4; ++x)
                if (row(y)[x] != kGap)
                    return false;
        return true;
    }

private:
    static constexpr uint32_t kGap = 0x0BADF00D;

    class Accessor : public FObject, public Graphics::IBitmapPixelAccessor {
    public:
        FORWARD_REFCOUNT(FObject)
        explicit Accessor(MemoryBitmap& bitmap) : bitmap(&bitmap) {}
        int32_t queryInterface(const char* iid, void** obj) override { return FObject::queryInterface(iid, obj); }
        int32_t getPixelFormat() override { return Graphics::kPixelFormatARGB32; }
        uint32_t getRowByteCount() override { return uint32_t(bitmap->stride()); }
        void* getRowAddress(unsigned row) override {
            return row < unsigned(bitmap->height) ? bitmap->row(int32_t(row)) : nullptr;
        }

    private:
        IPtr<MemoryBitmap> bitmap;
    };

    int32_t stride() const { return (width + 3) * 4; }

    const int32_t width;
    const int32_t height;
    std::vector<uint32_t> pixels;
};

class MemoryBitmapFactory : public FObject, public Graphics::IBitmapFactory {
public:
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<Graphics::IBitmapFactory>(this, iid, obj) ? kResultOk
                                                                         : FObject::queryInterface(iid, obj);
    }
    Graphics::IBitmap* createFromPath(IPath* /*path*/) override { return nullptr; }
    Graphics::IBitmap* createFromStream(IBStream* /*stream*/) override { return nullptr; }
    Graphics::IBitmap* create(Graphics::Size size) override {
        const bool fits = size.width >= 1 && size.height >= 1 && size.width <= kMaxSide && size.height <= kMaxSide;
        return fits ? new MemoryBitmap(int32_t(size.width), int32_t(size.height)) : nullptr;
    }
    int32_t getCodecs(IList* /*codecs*/) override { return kResultOk; }
};

}  // namespace Tessarine::Testing
