#pragma once
#include "frame/source/graphics/bitmapfilters/filterbase.h"
#include "frame/source/graphics/bitmapfilters/hslrows.h"

namespace Tessarine::Graphics::BitmapFilterImplementation {

class ReplaceColor : public FilterBase {
public:
    explicit ReplaceColor(IBitmapFactory* bitmaps) : FilterBase(bitmaps) {}
    void init() override;

protected:
    void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) override;
};

class Desaturate : public FilterBase {
public:
    explicit Desaturate(IBitmapFactory* bitmaps) : FilterBase(bitmaps) {}
    void init() override;

protected:
    void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) override;
};

/** Inputs are 0.5 in the middle: a turn of hue, twice 100 percent of the others. */
class AdjustHSL : public FilterBase {
public:
    explicit AdjustHSL(IBitmapFactory* bitmaps) : FilterBase(bitmaps) {}
    void init() override;
    int32_t setInputValue(const char* name, const FVariant& value) override;

protected:
    void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) override;

private:
    void buildTable(double percent);

    HSLRows::Lightness lightness{};
    bool tableIsBuilt = false;
};

class Tint : public FilterBase {
public:
    explicit Tint(IBitmapFactory* bitmaps) : FilterBase(bitmaps) {}
    void init() override;

protected:
    void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) override;
};

class Mirror : public FilterBase {
public:
    explicit Mirror(IBitmapFactory* bitmaps) : FilterBase(bitmaps) {}
    void init() override;

protected:
    void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) override;
};

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
