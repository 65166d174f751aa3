#include "graphed/gactionmaxundo.h"
#include "base/source/fstring.h"

namespace Tessarine {
namespace {
constexpr tchar kUnlimitedText[] = u"Unlimited";
}  // namespace

IMPLEMENT_CLASS(GMaxUndoValue, UIntValue)

GMaxUndoValue::GMaxUndoValue(int32_t steps) : UIntValue(kUnlimitedSteps, kUnlimited, steps) {}

void GMaxUndoValue::toString(FString& text) {
    if (value == kUnlimitedSteps)
        text.assign(kUnlimitedText);
    else
        UIntValue::toString(text);
}

void GMaxUndoValue::fromString(const tchar* text) {
    if (ConstString(text).compare(kUnlimitedText, kIgnoreCase) == 0)
        setTargetValue(kUnlimitedSteps);
    else
        UIntValue::fromString(text);
}

}  // namespace Tessarine
