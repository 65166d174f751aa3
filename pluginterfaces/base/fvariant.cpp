#include "pluginterfaces/base/fvariant.h"
#include <algorithm>
#include <limits>
#include <string>

namespace Tessarine {
namespace {
template <class Char>
const Char* duplicate(const Char* text) {
    const size_t units = std::char_traits<Char>::length(text) + 1;
    Char* copy = new Char[units];
    std::copy_n(text, units, copy);
    return copy;
}
}  // namespace

int64_t truncated64(double number) {
    constexpr double kBound = 0x1p63;
    if (number != number)
        return 0;
    return number >= kBound   ? std::numeric_limits<int64_t>::max()
           : number < -kBound ? std::numeric_limits<int64_t>::min()
                              : int64_t(number);
}

FVariant& FVariant::operator=(const FVariant& other) {
    if (this == &other)
        return *this;
    empty();
    copy(other);
    return *this;
}

void FVariant::empty() {
    if (type & kOwner) {
        if (type & kString8)
            delete[] value.string8;
        else if (type & kString16)
            delete[] value.string16;
        else if ((type & kObject) && value.object)
            value.object->release();
    }
    type = kEmpty;
    value.integer = 0;
}

void FVariant::setInteger(int64_t integer) {
    empty();
    type = kInteger;
    value.integer = integer;
}

void FVariant::setFloat(double number) {
    empty();
    type = kFloat;
    value.number = number;
}

void FVariant::setString8(const char* text) {
    empty();
    type = kString8;
    value.string8 = text;
}

void FVariant::setString16(const tchar* text) {
    empty();
    type = kString16;
    value.string16 = text;
}

void FVariant::setObject(FUnknown* object) {
    empty();
    type = kObject;
    value.object = object;
}

int64_t FVariant::getInteger() const {
    return type & kInteger ? value.integer : type & kFloat ? truncated64(value.number) : 0;
}

double FVariant::getFloat() const {
    return type & kFloat ? value.number : type & kInteger ? double(value.integer) : 0;
}

void FVariant::copy(const FVariant& other) {
    type = other.type;
    value = other.value;
    if ((type & kString8) && value.string8)
        value.string8 = duplicate(value.string8);
    else if ((type & kString16) && value.string16)
        value.string16 = duplicate(value.string16);
    else if ((type & kObject) && value.object)
        value.object->addRef();
    else
        return;
    type |= kOwner;
}

}  // namespace Tessarine
