#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class ConstString;

/** Truncated towards zero; what no integer can hold becomes the nearest one, and no number 0. */
int32_t truncated(double number);

/** The place of a number outside of min to max on the circle that wrapping values run on. min is below max. */
int32_t wrapped(int32_t number, int32_t min, int32_t max);
float wrapped(float number, float min, float max);

/** The number that a typed text begins with; its last comma counts as the decimal mark. False, and number as it was:
    there is none. */
bool scanTyped(const ConstString& text, double& number);
/** What a text typed into a number field makes of the current number: the text's number, or, with an operator as its
    last character, that number applied to the current one. No number counts as 0; "nan" as ifNaN. */
double typedNumber(const tchar* text, double current, double ifNaN);

}  // namespace Tessarine
