// Texts typed into values. The first byte of the input chooses the value, the rest is the text, in UTF-8. Numbers are what
// sscanf makes of them.
#include "base/source/updatehandler.h"
#include "fuzz/demand.h"
#include "gui/values/ucolorvalue.h"
#include "gui/values/udatevalue.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/uformatedvalue.h"
#include "gui/values/urationalvalue.h"
#include "gui/values/ustringvalue.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <string>

using namespace Tessarine;

namespace {
constexpr int32_t kMin = -100, kMax = 1 << 30, kBefore = 10;
constexpr size_t kMaxText = 4000;

template <class Value, auto... arguments>
UValue* make() {
    return new Value(arguments...);
}

UValue* makeFloat() {
    return new UFloatValue(float(kMin), float(kMax), float(kBefore));
}

UValue* makeWrapping() {
    auto* value = new UIntValue(0, 10, 10);
    value->setWrapAround(true);
    return value;
}

UValue* makeList() {
    constexpr const tchar* kTexts[] = {u"", u"Gain", u"gain", u"3+", u"Gain"};
    return new UStringListValue(kTexts, int32_t(std::size(kTexts)));
}

template <UTextFormatType form>
UValue* makeFormated() {
    return new UFormatedValue(form, kMin, kMax);
}

struct Kind {
    UValue* (*make)();
    bool isStable;          // typing what is shown changes nothing
    bool isNumber = false;  // to which operators are applied
};

constexpr Kind kKinds[] = {
    {make<UValue>, true},
    {make<UYesNoValue>, false},
    {make<UIntValue, kMin, kMax, kBefore>, true, true},
    {makeWrapping, false},
    {makeFloat, true, true},
    {make<UStringValue>, true},
    {makeList, true},
    {make<URationalValue>, false}, // the magnitude of the lowest integer is none
    {make<URationalValue, 1, 1, URationalValue::kPositiveOnly>, true},
    {make<USecondsValue>, false},
    {make<UDateValue>, false},
    {make<UColorValue>, true},
    {makeFormated<kSampleRateFormat>, false},
    {makeFormated<kFileSizeFormat>, false},
    {makeFormated<kDateTimeFormat>, false},
    {makeFormated<kHexFormat>, false},
};

/** Counts how often it hears of its value. */
struct Owner : CmObject {
    using CmObject::update;
    void update(CmObject*, int32_t) override { ++told; }
    int32_t told = 0;
};

std::u16string shownBy(UValue& value) {
    int32_t size = 0;
    value.toString2(nullptr, &size);
    std::u16string text(size_t(size), u'#');
    value.toString2(text.data(), &size);
    demand(text.back() == 0);
    text.pop_back();
    return text;
}

/** By the rule written down once more; no double is a number between two that it stands for. */
double expectedNumber(const std::u16string& typed, double current, double ifNaN) {
    std::string text;
    for (const char16_t unit : typed)
        text += unit < 128 ? char(unit) : '?';
    const size_t comma = text.rfind(',');
    if (comma != text.npos)
        text[comma] = '.';
    double number = 0;
    if (std::sscanf(text.c_str(), "%lf", &number) != 1)
        number = 0;
    if (std::isnan(number))
        number = ifNaN;
    const char last = text.empty() ? 0 : typed.back() < 128 ? char(typed.back()) : '?';
    return last == '*'   ? current * number
           : last == '+' ? current + number
           : last == '-' ? current - number
           : last != '/' ? number
           : number == 0 ? current
                         : current / number;
}

void checkNumber(UValue& value, const std::u16string& typed) {
    const bool isFloat = value.getValueType() == IValue::kFloat;
    const double number = expectedNumber(typed, kBefore, isFloat ? kBefore : 0);
    if (isFloat)
        demand(std::isnan(number) ? value.getValueFloat() == kBefore
                                  : value.getValueFloat() == std::clamp(float(number), float(kMin), float(kMax)));
    else
        demand(value.getValue() ==
               (std::isnan(number) ? 0 : int32_t(std::clamp<double>(std::trunc(number), kMin, kMax))));
}

void checkStable(UValue& value) {
    const std::u16string shown = shownBy(value);
    value.fromString(shown.c_str());
    demand(shownBy(value) == shown);
}

/** The owner hears of what a user types, and of nothing else; the value is the same both ways. */
void checkQuiet(UValue& value, const Kind& kind, const std::u16string& typed) {
    Owner owner;
    const OPtr<UValue> quiet(kind.make());
    quiet->connect(&owner, 1, false);
    quiet->fromString2(typed.c_str(), false);
    demand(owner.told == 0 && quiet->getOwner() == static_cast<FUnknown*>(&owner));
    demand(shownBy(*quiet) == shownBy(value));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static UpdateHandler updates;
    String text;
    if (size == 0 || size > kMaxText || !text.fromUTF8(std::string(data + 1, data + size).c_str()))
        return 0;
    const std::u16string typed = text.text16();
    const Kind& kind = kKinds[data[0] % std::size(kKinds)];
    const OPtr<UValue> value(kind.make());
    value->fromString(typed.c_str());
    if (kind.isNumber)
        checkNumber(*value, typed);
    checkQuiet(*value, kind, typed);
    if (kind.isStable)
        checkStable(*value);
    return 0;
}
