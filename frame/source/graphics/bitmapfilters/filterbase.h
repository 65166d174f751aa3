#pragma once
#include "base/source/cmobject.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "pluginterfaces/graphics/ibitmap.h"
#include "pluginterfaces/graphics/ibitmapfilter.h"
#include <vector>

namespace Tessarine::Graphics::BitmapFilterImplementation {

/** The inputs of a filter, and its bitmaps. Names of values are literals. */
class FilterBase : public FObject, public IBitmapFilter {
public:
    DECLARE_CLASS_NAME(FilterBase, FObject)
    FORWARD_REFCOUNT(FObject)
    FilterBase(const FilterBase&) = delete;
    FilterBase& operator=(const FilterBase&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    unsigned countValues(ValueInputOrOutput side) override;
    const char* getValueName(unsigned index, ValueInputOrOutput side) override;
    int32_t getValueType(unsigned index, ValueInputOrOutput side) override;
    int32_t setInputValue(const char* name, const FVariant& value) override;
    int32_t getValue(const char* name, FVariant& value, ValueInputOrOutput side) override;
    int32_t runFilter(unsigned char inPlace) override;

    /** Registers the inputs. Once, by who makes the filter. */
    virtual void init();

protected:
    explicit FilterBase(IBitmapFactory* bitmaps) : bitmaps(bitmaps) {}

    void registerFloatInputValue(const char* name, double value);
    void registerColorSpecInputValue(const char* name, uint32_t spec);
    void registerBitmapInputValue(const char* name);
    void registerVectorInputValue(const char* name);
    void registerTransformMatrixInputValue(const char* name);

    double getFloat(const char* name) const;
    uint32_t getColorSpec(const char* name) const;
    /** Borrowed; null: none is set. */
    IVector* getVector(const char* name) const;
    ITransformMatrix* getTransformMatrix(const char* name) const;
    IBitmap* getInputBitmap() const;
    /** With a reference for the caller; null size: the input's. */
    IBitmap* createNewBitmap(const Size* size) const;

    /** The result's size; null: the input's. */
    virtual bool resultSize(const Size& /*input*/, Size& /*result*/) { return false; }
    /** Fills to from from; both may be one, when the sizes are the same and worksInPlace(). */
    virtual void process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) = 0;
    virtual bool worksInPlace() const { return true; }

private:
    struct Value {
        const char* name;
        FilterValueType type;
        FVariant value;
    };
    void registerInput(const char* name, FilterValueType type, const FVariant& value);
    const Value* find(const char* name, ValueInputOrOutput side) const;
    Value* findInput(const char* name) { return const_cast<Value*>(find(name, kInputValue)); }
    const FVariant& inputOf(const char* name) const;
    IBitmap* makeResult(IBitmap* input, bool inPlace);

    IPtr<IBitmapFactory> bitmaps;
    std::vector<Value> inputs;
    Value output = {"Bitmap", kFilterValueBitmap, FVariant()};
};

/** The filter of one of the names that come with the system; the factory of bitmaps stands behind its second argument. */
IBitmapFilter* CreateDefaultBitmapFilter(const char* name, FUnknown* bitmaps);

struct DefaultFilter {
    const char* name;
    FilterBase* (*make)(IBitmapFactory* bitmaps);
};
extern const DefaultFilter kDefaultFilters[7];

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
