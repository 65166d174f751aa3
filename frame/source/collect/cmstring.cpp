#include "collect/cmstring.h"

namespace Tessarine {

IMPLEMENT_CLASS(CmString, CmObject)

int32_t CmString::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IStringResult>(this, iid, obj) || answerInterface<IString>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

bool CmString::isEqual(const CmObject* other) const {
    const CmString* text = classCast<CmString>(other);
    return text ? FString::compare(*text) == 0 : CmObject::isEqual(other);
}

int32_t CmString::compare(const CmObject* other) const {
    const CmString* text = classCast<CmString>(other);
    return text ? FString::compare(*text) : CmObject::compare(other);
}

uint32_t CmString::hash(uint32_t buckets) const {
    return FString::isWideString() ? hashString16(text16(), buckets) : hashString8(text8(), buckets);
}

}  // namespace Tessarine
