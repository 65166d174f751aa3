#include "collect/cmobjectfilter.h"

namespace Tessarine {

bool CmHasInterfaceFilter::test(CmObject* object) {
    void* face = nullptr;
    if (!object || object->queryInterface(iid, &face) != kResultOk)
        return false;
    static_cast<FUnknown*>(face)->release();  // the face may have a count of its own
    return true;
}

}  // namespace Tessarine
