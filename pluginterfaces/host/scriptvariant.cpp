#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/host/ihosttools.h"
#include "pluginterfaces/host/iscriptengine.h"
#include <cstring>
#include <limits>
#include <string>

namespace Tessarine {

DEFINE_IID_ROW(IScriptObject, kIScriptObjectID);
DEFINE_IID_ROW(IScriptContext, kIScriptContextID);
DEFINE_IID_ROW(IScriptErrorHook, kIScriptErrorHookID);
DEFINE_IID_ROW(IScriptConsole, kIScriptConsoleID);
DEFINE_IID_ROW(IScriptEngine, kIScriptEngineID);

IMemoryAllocator* gMemoryAllocator = nullptr;

namespace {
template <class Char>
Char* duplicate(const Char* text) {
    const size_t bytes = (std::char_traits<Char>::length(text) + 1) * sizeof(Char);
    const bool possible = gMemoryAllocator && bytes <= std::numeric_limits<uint32_t>::max();
    void* copy = possible ? gMemoryAllocator->allocate(uint32_t(bytes)) : nullptr;
    return copy ? static_cast<Char*>(std::memcpy(copy, text, bytes)) : nullptr;
}
}  // namespace

void SVariant::sempty() {
    const SVariant held = *this;
    init();
    if (!(held.type & FVariant::kOwner))
        return;
    if ((held.type & FVariant::kObject) && held.value.object)
        held.value.object->release();
    else if (gMemoryAllocator && (held.type & (FVariant::kString8 | FVariant::kString16)))
        gMemoryAllocator->free(held.value.string8);
}

void SVariant::setInteger(int64_t integer) {
    sempty();
    type = FVariant::kInteger;
    value.integer = integer;
}

void SVariant::setFloat(double number) {
    sempty();
    type = FVariant::kFloat;
    value.number = number;
}

bool SVariant::setString8(const char* text) {
    char* copy = duplicate(text ? text : "");
    sempty();
    if (!copy)
        return false;
    type = FVariant::kString8 | FVariant::kOwner;
    value.string8 = copy;
    return true;
}

bool SVariant::setString16(const tchar* text) {
    tchar* copy = duplicate(text ? text : u"");
    sempty();
    if (!copy)
        return false;
    type = FVariant::kString16 | FVariant::kOwner;
    value.string16 = copy;
    return true;
}

void SVariant::setObject(FUnknown* object) {
    if (object)
        object->addRef();
    sempty();
    type = FVariant::kObject | FVariant::kOwner;
    value.object = object;
}

void SVariant::viewAs(FVariant& view) const {
    switch (getType()) {
    case FVariant::kInteger:
        return view.setInteger(value.integer);
    case FVariant::kFloat:
        return view.setFloat(value.number);
    case FVariant::kString8:
        return view.setString8(value.string8);
    case FVariant::kString16:
        return view.setString16(value.string16);
    case FVariant::kObject:
        return view.setObject(value.object);
    default:
        return view.empty();
    }
}

}  // namespace Tessarine
