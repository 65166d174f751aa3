#include "collect/cmstring.h"
#include "base/source/fstringconvert.h"
#include "collect/cmcontainer.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <string_view>

namespace Tessarine {
namespace {
constexpr char kTextKey[] = "s";

void addPart(OPtr<CmString> part, CmContainer& container, bool trim, bool evenEmpty) {
    if (trim)
        part->trim();
    if ((evenEmpty || !part->isEmpty()) && container.add(part))
        part.detach();  // a refused one ends here
}

template <class Char>
int32_t splitUnits(std::basic_string_view<Char> text, CmContainer& container, Char delimiter, bool trim,
                   bool keepEmptyTail) {
    container._ownsObjects = CmContainer::kTakesOver;
    for (size_t end; (end = text.find(delimiter)) != text.npos; text.remove_prefix(end + 1))
        addPart(OPtr<CmString>(new CmString(text.data(), int32_t(end))), container, trim, false);
    addPart(OPtr<CmString>(new CmString(text.data(), int32_t(text.size()))), container, trim, !keepEmptyTail);
    return container.total();
}
}  // namespace

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

bool CmString::internalize(FArchive& archive) {
    return load(archive.getStream());
}

bool CmString::externalize(FArchive& archive) const {
    return store(archive.getStream());
}

bool CmString::storeAttributes(FAttributes& attributes) const {
    return attributes.set(kTextKey, *this);
}

bool CmString::restoreAttributes(FAttributes& attributes) {
    return attributes.get(kTextKey, *this);
}

int32_t CmString::split(const ConstString& text, CmContainer& container, tchar delimiter, bool trim,
                        bool keepEmptyTail) {
    if (!text.isWideString() && isCharAscii(delimiter))
        return splitUnits(units8(text), container, char(delimiter), trim, keepEmptyTail);
    return splitUnits(std::u16string_view(WideText(text)), container, delimiter, trim, keepEmptyTail);
}

int32_t CmString::split8(const char* text, CmContainer& container, char delimiter, bool trim, bool keepEmptyTail) {
    return splitUnits(std::string_view(text ? text : ""), container, delimiter, trim, keepEmptyTail);
}

int32_t CmString::split16(const tchar* text, CmContainer& container, tchar delimiter, bool trim, bool keepEmptyTail) {
    return splitUnits(std::u16string_view(text ? text : u""), container, delimiter, trim, keepEmptyTail);
}

}  // namespace Tessarine
