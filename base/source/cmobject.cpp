#include "base/source/cmobject.h"
#include "pluginterfaces/base/smartpointer.h"

namespace Tessarine {

MetaClass CmObject::__fClass("CmObject", &CmObject::__fCreate, nullptr, nullptr, 0);

FUnknown* CmObject::__fCreate() {
    return new CmObject;
}

bool CmObject::isTypeOf(const char* name, bool askBaseClass) const {
    return name && (std::strcmp(name, "CmObject") == 0 || (askBaseClass && FObject::isTypeOf(name, askBaseClass)));
}

int32_t CmObject::compare(const CmObject* other) const {
    if (this == other)
        return 0;
    return reinterpret_cast<uintptr_t>(this) > reinterpret_cast<uintptr_t>(other) ? 1 : -1;
}

uint32_t CmObject::hash(uint32_t buckets) const {
    return uint32_t((reinterpret_cast<uintptr_t>(this) >> 4) % buckets);
}

void CmObject::update(FUnknown* changedUnknown, int32_t message) {
    FUnknownPtr<FObject> object(changedUnknown);  // held while it is told
    if (object && object->isTypeOf("CmObject", true))
        update(static_cast<CmObject*>(object.get()), message);
}

CmObject* commonObject(FUnknown* unknown) {
    FObject* object = frameworkObject(unknown);
    return object && object->isTypeOf("CmObject", true) ? static_cast<CmObject*>(object) : nullptr;
}

}  // namespace Tessarine
