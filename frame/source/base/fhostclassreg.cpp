#include "base/fhostclasses.h"
#include "base/source/classfactory.h"

namespace Tessarine {

int32_t FHostClasses::queryInterface(const char* iid, void** obj) {
    return answerInterface<IHostClasses>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj)
               ? kResultOk
               : noInterface(obj);
}

uint32_t FHostClasses::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t FHostClasses::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

int32_t FHostClasses::createClassInstance(const char* iid, void** obj) {
    if (!iid || !obj)
        return kResultFalse;
    const ClassFactory* factory = ClassFactory::instance(false);
    *obj = factory ? factory->createObjectByID(iid) : nullptr;
    return *obj ? kResultOk : kResultFalse;
}

}  // namespace Tessarine
