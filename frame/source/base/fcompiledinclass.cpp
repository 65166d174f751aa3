#include "base/fcompiledinclass.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include <cstring>

namespace Tessarine {
namespace {
constinit FCompiledInClass* gFirst = nullptr;

int32_t compareRecords(const FCompiledInClass& a, const FCompiledInClass& b) {
    const int32_t types = std::strcmp(a.type, b.type);
    return types ? types : ConstString(a.name).compare(b.name, kIgnoreCase);
}
}  // namespace

void FCompiledInClass::registerClass(FCompiledInClass& record) {
    FCompiledInClass** place = &gFirst;
    while (*place && compareRecords(**place, record) < 0)
        place = &(*place)->next;
    for (const FCompiledInClass* same = *place; same; same = same->next)
        if (same == &record)
            return;
    record.next = *place;
    *place = &record;
}

const FCompiledInClass* FCompiledInClass::first() {
    return gFirst;
}

const FCompiledInClass* FCompiledInClass::find(const char* type, const char* className) {
    for (const FCompiledInClass* each = gFirst; each; each = each->next)
        if (std::strcmp(each->type, type) == 0 && OPtr<FObject>(each->create())->isTypeOf(className, true))
            return each;
    return nullptr;
}

}  // namespace Tessarine
