#pragma once
#include "pluginterfaces/base/fvariant.h"
#include "pluginterfaces/graphics/graphicstypes.h"

namespace Tessarine::Graphics {

/** Two to four numbers in an object: a size, a place. */
class IVector : public FUnknown {
public:
    virtual int32_t countComponents() = 0;
    /** 0 out of range. */
    virtual double getComponent(int32_t index) = 0;

    DECLARE_INTERFACE(IVector)
};

/** A transformation in an object. */
class ITransformMatrix : public FUnknown {
public:
    virtual int32_t getMatrix(TransformMatrix& matrix) = 0;

    DECLARE_INTERFACE(ITransformMatrix)
};

enum ValueInputOrOutput : int32_t { kInputValue, kOutputValue };
enum FilterValueType : int32_t {
    kFilterValueNone,
    kFilterValueFloat,
    kFilterValueColorSpec,  // 0xAARRGGBB, as an integer
    kFilterValueBitmap,     // an object with IBitmap, as those below with their interfaces
    kFilterValueVector,
    kFilterValueTransformMatrix,
};

/** Turns a bitmap into another one. Inputs and results have names; the bitmap's is "Bitmap" on either side. */
class IBitmapFilter : public FUnknown {
public:
    virtual unsigned countValues(ValueInputOrOutput side) = 0;
    /** Borrowed; null out of range. */
    virtual const char* getValueName(unsigned index, ValueInputOrOutput side) = 0;
    /** A FilterValueType. */
    virtual int32_t getValueType(unsigned index, ValueInputOrOutput side) = 0;
    /** kInvalidArgument: there is no such input, or the value is of another type. */
    virtual int32_t setInputValue(const char* name, const FVariant& value) = 0;
    virtual int32_t getValue(const char* name, FVariant& value, ValueInputOrOutput side) = 0;
    /** inPlace: the input bitmap is to be changed. kResultFalse: no bitmap, or no memory for the result. */
    virtual int32_t runFilter(unsigned char inPlace) = 0;

    DECLARE_INTERFACE(IBitmapFilter)
};

class IBitmapFilterFactory : public FUnknown {
public:
    /** Makes the filter of a name, with a reference for the caller. Behind bitmaps stands the IBitmapFactory of its results. */
    using Creator = IBitmapFilter* (*)(const char* name, FUnknown* bitmaps);

    virtual unsigned countFilters() = 0;
    /** Borrowed; null out of range. */
    virtual const char* getFilterName(unsigned index) = 0;
    /** With a reference for the caller; null: the name is unknown. */
    virtual IBitmapFilter* createBitmapFilter(const char* name) = 0;
    /** In place of what has the name. */
    virtual int32_t registerFilter(Creator creator, const char* name) = 0;
    /** kResultFalse: the name is unknown. */
    virtual int32_t unregisterFilter(const char* name) = 0;

    DECLARE_INTERFACE(IBitmapFilterFactory)
};

}  // namespace Tessarine::Graphics
