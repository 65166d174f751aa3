#pragma once
#include "gui/drawing/ucolorgroup.h"
#include "gui/values/fcontroller.h"
#include "gui/values/uintvalue.h"

namespace Tessarine {

/** Values "deltaHue", "deltaSat" and "deltaLum" (or "deltaH", "deltaS", "deltaL") that move with a transform, and it with
    them. What a user sets is kept. Main thread. */
class UColorTransformController : public FController {
public:
    DECLARE_ABSTRACT_CLASS(UColorTransformController, FController)
    explicit UColorTransformController(UColorTransform* transform);
    ~UColorTransformController() override;
    UColorTransformController(const UColorTransformController&) = delete;
    UColorTransformController& operator=(const UColorTransformController&) = delete;

    UValue* lookupValue(const char* name) override;
    UValue* getValue(UColorTransform::Delta delta) const { return values[delta]; }
    /** For the user, short. */
    static const tchar* getLabel(UColorTransform::Delta delta);
    using FController::update;
    void update(CmObject* changed, int32_t message) override;

private:
    const IPtr<UColorTransform> transform;
    OPtr<UIntDefValue> values[UColorTransform::kNumDeltas];
};

}  // namespace Tessarine
