#pragma once
#include "frame/source/graphics/bitmapfilters/filterbase.h"

namespace Tessarine::Graphics::BitmapFilterImplementation {

/** Pixels by the matrix from places of the input to those of the result. What comes from outside is 0. */
class MatrixTransform : public FilterBase {
public:
    explicit MatrixTransform(IBitmapFactory* bitmaps) : FilterBase(bitmaps) {}
    void init() override;

protected:
    void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) override;
    bool worksInPlace() const override { return false; }

    virtual bool interpolates() const { return true; }
    virtual TransformMatrix getMatrix(const Size& input) const;
};

/** "angle" is a part of a turn; a result that is to hold all moves to where the turned corners begin. */
class Rotate : public MatrixTransform {
public:
    explicit Rotate(IBitmapFactory* bitmaps) : MatrixTransform(bitmaps) {}
    void init() override;

protected:
    bool resultSize(const Size& input, Size& result) override;
    bool interpolates() const override;
    TransformMatrix getMatrix(const Size& input) const override;

private:
    TransformMatrix turn(const Size& input) const;
};

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
