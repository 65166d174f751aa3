#include "frame/source/graphics/cairo/cairofast.h"

namespace Tessarine::Graphics {
namespace {
template <class Fast>
const Fast* ours(FUnknown* unknown) {
    FObject* object = frameworkObject(unknown);
    return object && object->isA(Fast::className()) ? static_cast<const Fast*>(object) : nullptr;
}
}  // namespace

const CairoFastLines* CairoFastLines::behind(IFastLines* lines) {
    return ours<CairoFastLines>(lines);
}

int32_t CairoFastLines::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFastLines>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

const CairoFastRects* CairoFastRects::behind(IFastRects* rects) {
    return ours<CairoFastRects>(rects);
}

int32_t CairoFastRects::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFastRects>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

}  // namespace Tessarine::Graphics
