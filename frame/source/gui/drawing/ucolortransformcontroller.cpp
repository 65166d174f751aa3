#include "gui/drawing/ucolortransformcontroller.h"
#include "base/utranslatedstring.h"
#include <string_view>

namespace Tessarine {
namespace {
using Delta = UColorTransform::Delta;

struct DeltaRow {
    std::string_view name, shortName;
    UTranslatedString label;
};
constinit const DeltaRow kDeltas[] = {
    {"deltaHue", "deltaH", UTranslatedString("dH")},
    {"deltaSat", "deltaS", UTranslatedString("dS")},
    {"deltaLum", "deltaL", UTranslatedString("dL")},
};
static_assert(std::size(kDeltas) == UColorTransform::kNumDeltas);
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(UColorTransformController, FController)

UColorTransformController::UColorTransformController(UColorTransform* transform) : transform(transform) {
    for (int32_t delta = 0; transform && delta < UColorTransform::kNumDeltas; ++delta) {
        const int32_t range = UColorTransform::kRanges[delta];
        values[delta] = OPtr<UIntDefValue>(new UIntDefValue(-range, range, transform->getFactoryDelta(Delta(delta)),
                                                            transform->getDelta(Delta(delta))));
        values[delta]->connect(this, delta, false);
    }
    if (transform)
        transform->addDependent(this);
}

UColorTransformController::~UColorTransformController() {
    if (!transform)
        return;
    transform->removeDependent(this);
    for (const OPtr<UIntDefValue>& value : values)
        value->connect(static_cast<CmObject*>(nullptr), 0, false);
}

UValue* UColorTransformController::lookupValue(const char* name) {
    const std::string_view wanted(name ? name : "");
    for (size_t delta = 0; delta < std::size(kDeltas); ++delta)
        if (wanted == kDeltas[delta].name || wanted == kDeltas[delta].shortName)
            return values[delta];
    return FController::lookupValue(name);
}

const tchar* UColorTransformController::getLabel(Delta delta) {
    return kDeltas[delta].label;
}

void UColorTransformController::update(CmObject* changed, int32_t /*message*/) {
    if (!transform)
        return;
    if (changed == transform) {
        for (int32_t delta = 0; delta < UColorTransform::kNumDeltas; ++delta)
            values[delta]->setValue(transform->getDelta(Delta(delta)));
        return;
    }
    const auto* value = classCast<UIntDefValue>(changed);
    for (int32_t delta = 0; value && delta < UColorTransform::kNumDeltas; ++delta)
        if (values[delta] == value)
            transform->setDelta(Delta(delta), values[delta]->getValue());
    if (value)
        transform->saveDefaults();
}

}  // namespace Tessarine
