#pragma once
#include "gui/values/ufloatvalue.h"
#include "gui/values/ustringvalue.h"

namespace Tessarine {

/** The form in which a value is kept under its name goes by its class: a text, a float, or for all others a whole
    number. Calls the one of the three that fits; a proxy is one of the others, whatever it stands for. */
template <class Text, class Float, class Whole>
auto byForm(UValue& value, Text asText, Float asFloat, Whole asWhole) {
    if (auto* text = classCast<UStringValue>(&value))
        return asText(*text);
    if (auto* number = classCast<UFloatValue>(&value))
        return asFloat(*number);
    return asWhole(value);
}

}  // namespace Tessarine
