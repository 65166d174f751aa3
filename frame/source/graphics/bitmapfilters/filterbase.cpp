#include "frame/source/graphics/bitmapfilters/filterbase.h"
#include <cmath>
#include <cstring>

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
template <class Interface>
bool offers(const FVariant& value) {
    return FUnknownPtr<Interface>(value.getObject());
}

template <class Interface>
Interface* borrowed(const FVariant& value) {
    return FUnknownPtr<Interface>(value.getObject());
}

bool fits(FilterValueType type, const FVariant& value) {
    switch (type) {
    case kFilterValueNone:
        return false;
    case kFilterValueFloat:
        return (value.getType() == FVariant::kFloat || value.getType() == FVariant::kInteger) &&
               std::isfinite(value.getFloat());
    case kFilterValueColorSpec:
        return value.getType() == FVariant::kInteger;
    case kFilterValueBitmap:
        return offers<IBitmap>(value);
    case kFilterValueVector:
        return offers<IVector>(value);
    case kFilterValueTransformMatrix:
        return offers<ITransformMatrix>(value);
    }
    return false;
}
}  // namespace

int32_t FilterBase::queryInterface(const char* iid, void** obj) {
    return answerInterface<IBitmapFilter>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

void FilterBase::init() {
    registerBitmapInputValue("Bitmap");
}

unsigned FilterBase::countValues(ValueInputOrOutput side) {
    return side == kInputValue ? unsigned(inputs.size()) : 1;
}

const char* FilterBase::getValueName(unsigned index, ValueInputOrOutput side) {
    if (index >= countValues(side))
        return nullptr;
    return side == kInputValue ? inputs[index].name : output.name;
}

int32_t FilterBase::getValueType(unsigned index, ValueInputOrOutput side) {
    if (index >= countValues(side))
        return kFilterValueNone;
    return side == kInputValue ? inputs[index].type : output.type;
}

int32_t FilterBase::setInputValue(const char* name, const FVariant& value) {
    Value* input = findInput(name);
    if (!input || !fits(input->type, value))
        return kInvalidArgument;
    input->value = value;
    return kResultOk;
}

int32_t FilterBase::getValue(const char* name, FVariant& value, ValueInputOrOutput side) {
    const Value* found = find(name, side);
    if (!found)
        return kInvalidArgument;
    value = found->value;
    return kResultOk;
}

int32_t FilterBase::runFilter(unsigned char inPlace) {
    const IPtr<IBitmap> input = getInputBitmap();
    const OPtr<IBitmap> result(makeResult(input, inPlace != 0));
    if (!result)
        return kResultFalse;
    const bool same = result.get() == input.get();
    const BitmapPixelAccessor to(result, same ? kLockRead | kLockWrite : kLockWrite);
    if (same) {
        if (!to.isValid())
            return kResultFalse;
        process(to, to);
    } else {
        const BitmapPixelAccessor from(input, kLockRead);
        if (!from.isValid() || !to.isValid())
            return kResultFalse;
        process(from, to);
    }
    output.value = FVariant(static_cast<FUnknown*>(result));
    return kResultOk;
}

/** With a reference. */
IBitmap* FilterBase::makeResult(IBitmap* input, bool inPlace) {
    if (!input)
        return nullptr;
    Size size;
    if (resultSize(input->getSize(), size))
        return createNewBitmap(&size);
    if (!inPlace || !worksInPlace())
        return createNewBitmap(nullptr);
    input->addRef();
    return input;
}

IBitmap* FilterBase::createNewBitmap(const Size* size) const {
    IBitmap* input = getInputBitmap();
    return bitmaps && input ? bitmaps->create(size ? *size : input->getSize()) : nullptr;
}

void FilterBase::registerInput(const char* name, FilterValueType type, const FVariant& value) {
    inputs.push_back({name, type, value});
}

void FilterBase::registerFloatInputValue(const char* name, double value) {
    registerInput(name, kFilterValueFloat, FVariant(value));
}

void FilterBase::registerColorSpecInputValue(const char* name, uint32_t spec) {
    registerInput(name, kFilterValueColorSpec, FVariant(int64_t(spec)));
}

void FilterBase::registerBitmapInputValue(const char* name) {
    registerInput(name, kFilterValueBitmap, FVariant());
}

void FilterBase::registerVectorInputValue(const char* name) {
    registerInput(name, kFilterValueVector, FVariant());
}

void FilterBase::registerTransformMatrixInputValue(const char* name) {
    registerInput(name, kFilterValueTransformMatrix, FVariant());
}

const FilterBase::Value* FilterBase::find(const char* name, ValueInputOrOutput side) const {
    if (!name)
        return nullptr;
    if (side == kOutputValue)
        return std::strcmp(output.name, name) == 0 ? &output : nullptr;
    for (const Value& input : inputs)
        if (std::strcmp(input.name, name) == 0)
            return &input;
    return nullptr;
}

const FVariant& FilterBase::inputOf(const char* name) const {
    static const FVariant none;
    const Value* input = find(name, kInputValue);
    return input ? input->value : none;
}

double FilterBase::getFloat(const char* name) const {
    return inputOf(name).getFloat();
}

uint32_t FilterBase::getColorSpec(const char* name) const {
    return uint32_t(inputOf(name).getInteger());
}

IVector* FilterBase::getVector(const char* name) const {
    return borrowed<IVector>(inputOf(name));
}

ITransformMatrix* FilterBase::getTransformMatrix(const char* name) const {
    return borrowed<ITransformMatrix>(inputOf(name));
}

IBitmap* FilterBase::getInputBitmap() const {
    return borrowed<IBitmap>(inputOf("Bitmap"));
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
