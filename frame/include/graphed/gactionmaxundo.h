#pragma once
#include "gui/values/uintvalue.h"

namespace Tessarine {

/** The number of undo steps that a user may set: 0 none, -1 all, which has a word of its own as its text. */
class GMaxUndoValue : public UIntValue {
public:
    DECLARE_CLASS(GMaxUndoValue, UIntValue)
    DECLARE_NEWCOPY(GMaxUndoValue)
    static constexpr int32_t kUnlimitedSteps = -1;

    explicit GMaxUndoValue(int32_t steps = kUnlimitedSteps);
    using UIntValue::toString;
    void toString(FString& text) override;
    /** The word in any case, or a number. */
    void fromString(const tchar* text) override;
};

}  // namespace Tessarine
