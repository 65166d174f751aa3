#include "collect/cmvariant.h"
#include "gui/values/uvalueforms.h"
#include <algorithm>
#include <limits>

namespace Tessarine {

void CmVariant::assignTo(UValue& target) const {
    String text;
    if (!is(kInteger | kFloat | kString8 | kString16) || !getString(text))
        return;
    const auto asTyped = [&](UValue& value) { value.fromString(text.text16()); };
    byForm(
        target, [&](UStringValue& value) { value.setStringValue(text); },
        [&](UFloatValue& value) { isString() ? asTyped(value) : value.setFloatValue(float(getFloat())); },
        [&](UValue& value) {
            constexpr int64_t kMin = std::numeric_limits<int32_t>::min(), kMax = std::numeric_limits<int32_t>::max();
            isString() ? asTyped(value) : value.setValue(int32_t(std::clamp(getLong(), kMin, kMax)));
        });
}

}  // namespace Tessarine
