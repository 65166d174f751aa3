#include "gui/values/ucolorvalue.h"
#include "base/source/fstring.h"
#include "gui/values/uintvalue.h"

namespace Tessarine {

IMPLEMENT_CLASS(UColorValue, UIntValue)

void UColorValue::toString(FString& text) {
    if (!representAsText(text))
        getColor().colorToString(text);
}

void UColorValue::fromString(const tchar* text) {
    if (takeRepresentedText(text))
        return;
    String narrow(text);
    UColor color(spec);
    if (UColor::colorFromString(narrow.text8(), color))
        setColor(color, true);
}

void UColorValue::setColorSpec(uint32_t newSpec, bool update) {
    if (newSpec != spec) {
        spec = newSpec;
        changed();
    }
    if (update)
        updateTarget();
}

}  // namespace Tessarine
