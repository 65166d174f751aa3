#include "base/source/fstringobject.h"

namespace Tessarine {

int32_t StringObject::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IStringResult>(this, iid, obj) || answerInterface<IString>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

bool StringObject::isTypeOf(const char* name, bool askBaseClass) const {
    return name && (std::strcmp(name, "StringObject") == 0 || (askBaseClass && FObject::isTypeOf(name, askBaseClass)));
}

void StringObject::take(void* text, bool wide) {
    if (wide)
        assign(static_cast<const tchar*>(text));
    else
        assign(static_cast<const char*>(text));
}

}  // namespace Tessarine
