#pragma once
#include "frame/source/graphics/bitmapfilters/filterbase.h"

namespace Tessarine::Graphics::BitmapFilterImplementation {

/** Scales by the area that pixels cover; colours count by their alpha, so that transparent ones don't bleed. */
class PNMScale : public FilterBase {
public:
    explicit PNMScale(IBitmapFactory* bitmaps) : FilterBase(bitmaps) {}
    void init() override;

protected:
    bool resultSize(const Size& input, Size& result) override;
    void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) override;
    bool worksInPlace() const override { return false; }
};

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
