#include "frame/source/graphics/cairo/cairofast.h"

namespace Tessarine::Graphics {

int32_t CairoFastLines::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFastLines>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

int32_t CairoFastRects::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFastRects>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

}  // namespace Tessarine::Graphics
