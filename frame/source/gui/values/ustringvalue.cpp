#include "gui/values/ustringvalue.h"
#include "collect/cmstring.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include "valuenumbers.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr char kStringKey[] = "String";
constexpr char kStringsKey[] = "Strings";
constexpr char kMaxRecentKey[] = "Max Recent";

const CmString* stringOf(const CmObject* item) {
    return static_cast<const CmString*>(item);
}

/** Index of the first string that the test accepts, or -1. */
template <class Test>
int32_t indexWhere(const CmLinkedList& strings, Test test) {
    CmLinkedListIterator each(strings);
    for (int32_t index = 0; !each.done(); ++index)
        if (test(index, *stringOf(each.next())))
            return index;
    return -1;
}

/** A list that ends what it still holds. */
struct NewStrings : CmLinkedList {
    NewStrings() { _ownsObjects = kTakesOver; }
    bool append(const ConstString& text) {
        OPtr<CmString> string(new CmString(text));
        const bool added = CmLinkedList::append(string);
        if (added)
            string.detach();
        return added;
    }
};
}  // namespace

IMPLEMENT_CLASS(UStringValue, UValue)
IMPLEMENT_CLASS(UStringListValue, UIntDefValue)
IMPLEMENT_CLASS(URecentStringListValue, UStringListValue)

UStringValue::UStringValue(const ConstString& text) : string(text) {}

UStringValue& UStringValue::operator=(const ConstString& text) {
    setStringValue(text);
    return *this;
}

bool UStringValue::internalize(FArchive& archive) {
    if (!string.load(archive.getStream()))
        return false;
    updateTarget();
    changed();
    return true;
}

bool UStringValue::externalize(FArchive& archive) const {
    return string.store(archive.getStream());
}

bool UStringValue::storeAttributes(FAttributes& attributes) const {
    return attributes.set(kStringKey, string);
}

bool UStringValue::restoreAttributes(FAttributes& attributes) {
    String text;
    const bool hasText = attributes.get(kStringKey, text);
    if (hasText)
        setStringValue(text);
    return hasText;
}

void UStringValue::assignTo(UValue* source) {
    if (const auto* text = classCast<UStringValue>(source))
        setTargetStringValue(text->string);
}

void UStringValue::toString(FString& text) {
    if (!representAsText(text))
        text = string;
}

void UStringValue::fromString(const tchar* text) {
    if (!takeRepresentedText(text))
        setTargetStringValue(text);
}

void UStringValue::setStringValue(const ConstString& text) {
    if (string.compare(text) == 0)
        return;
    string.assign(text);
    changed();
}

void UStringValue::setTargetStringValue(const ConstString& text) {
    setStringValue(text);
    updateTarget();
}

UStringListValue::UStringListValue() : UIntDefValue(-1, -1, 0, -1) {
    strings._ownsObjects = CmContainer::kTakesOver;
}

UStringListValue::UStringListValue(const tchar* const* texts, int32_t count) : UStringListValue() {
    setStyle(kArrayStyle);
    UStringListValue::addStrings(texts, count);
}

int32_t UStringListValue::queryInterface(const char* iid, void** obj) {
    return answerInterface<IStringList>(this, iid, obj) ? kResultOk : UIntDefValue::queryInterface(iid, obj);
}

/** Instead of its own, in their order; the others' list is empty afterwards. */
void UStringListValue::takeStrings(CmLinkedList& others) {
    removeAll();
    while (CmObject* string = others.removeFirst())
        strings.append(string);
    if (!strings.isEmpty())
        adoptRange();
    changed();
}

bool UStringListValue::internalize(FArchive& archive) {
    FStream& stream = archive.getStream();
    int32_t count;
    if (!stream.readInt32(count) || count < 0)
        return false;
    NewStrings read;
    FString text;
    while (count > 0 && archive.hasLeft(sizeof count) && text.load(stream) && read.append(text))
        --count;
    if (count > 0)
        return false;
    takeStrings(read);
    return true;
}

bool UStringListValue::externalize(FArchive& archive) const {
    FStream& stream = archive.getStream();
    if (!stream.writeInt32(strings.total()))
        return false;
    return indexWhere(strings, [&](int32_t, const CmString& string) { return !string.store(stream); }) < 0;
}

bool UStringListValue::storeAttributes(FAttributes& attributes) const {
    attributes.removeAttribute(kStringsKey);
    const auto isRefused = [&](int32_t, const CmString& string) {
        return !attributes.queueString(kStringsKey, string);
    };
    return UIntDefValue::storeAttributes(attributes) && indexWhere(strings, isRefused) < 0;
}

void UStringListValue::restoreStrings(FAttributes& attributes) {
    int32_t storedMax = 0;
    const bool wasEmpty = attributes.get(kMaxKey, storedMax) && storedMax < 0;  // then there is no key for the strings
    if (!attributes.resetList(kStringsKey) && !wasEmpty)
        return;
    NewStrings stored;
    FString text;
    for (int32_t left = attributes.countQueueItems(kStringsKey); left > 0; --left)
        if (attributes.unqueueString(kStringsKey, text))
            stored.append(text);
    takeStrings(stored);
}

bool UStringListValue::restoreAttributes(FAttributes& attributes) {
    restoreStrings(attributes);  // before the value, which they would move
    return UIntDefValue::restoreAttributes(attributes);
}

void UStringListValue::toString(FString& text) {
    if (representAsText(text))
        return;
    const int64_t index = int64_t(value) - min;
    const bool isThere = index >= 0 && index < strings.total();
    const CmString* selected = isThere ? stringOf(strings.at(int32_t(index))) : nullptr;
    text = selected ? ConstString(*selected) : ConstString();
}

/** Index of the first exact match from min to max, or -1. */
int32_t UStringListValue::selectable(const tchar* text) const {
    const ConstString wanted(text);
    return indexWhere(strings, [&](int32_t index, const CmString& string) {
        return index >= min && index <= max && string.compare(wanted) == 0;
    });
}

void UStringListValue::fromString(const tchar* text) {
    if (takeRepresentedText(text))
        return;
    const int32_t index = selectable(text);
    if (index >= 0)
        setTargetValue(index);
}

void UStringListValue::initFromString(const tchar* text) {
    if (takeRepresentedText(text))
        return;
    const int32_t index = selectable(text);
    if (index >= 0 && index != getValue())
        setTargetValue(index);
}

bool UStringListValue::insertAt(int32_t index, const tchar* text) {
    OPtr<CmString> string(new CmString(text));
    if (!strings.insertAt(string, index))
        return false;
    string.detach();
    return true;
}

void UStringListValue::adoptRange() {
    setMin(0);
    setMax(strings.total() - 1);
}

bool UStringListValue::addString(const tchar* text) {
    return insertString(strings.total(), text);
}

bool UStringListValue::addSortedString(const tchar* text) {
    const ConstString added(text);
    const int32_t greater =
        indexWhere(strings, [&](int32_t, const CmString& string) { return string.compare(added) > 0; });
    return insertString(greater < 0 ? strings.total() : greater, text);
}

bool UStringListValue::addStrings(const tchar* const* texts, int32_t count) {
    for (int32_t i = 0; i < count; ++i)
        if (!addString(texts[i]))
            return false;
    return true;
}

bool UStringListValue::replaceStringAt(int32_t index, const tchar* text) {
    if (index < 0 || index >= strings.total())
        return false;
    if (stringOf(strings.at(index))->compare(text) == 0)
        return true;
    OPtr<CmString> string(new CmString(text));
    if (!strings.replaceAt(string, index))
        return false;
    string.detach();
    changed();
    return true;
}

bool UStringListValue::prependString(const tchar* text) {
    if (!insertAt(0, text))
        return false;
    adoptRange();
    setValue(truncated(getValue() + 1.0));
    changed();
    return true;
}

bool UStringListValue::insertString(int32_t index, const tchar* text) {
    if (!insertAt(index, text))
        return false;
    adoptRange();
    changed();
    return true;
}

void UStringListValue::removeAll() {
    strings.removeAll();
    setMin(-1);
    setMax(-1);
    setValue(-1);  // a list whose strings went one by one has that max already
    changed();
}

bool UStringListValue::removeAt(int32_t index) {
    if (!strings.removeAt(index))
        return false;
    setMax(strings.total() - 1);
    return true;
}

const tchar* UStringListValue::getStringAt(int32_t index) {
    const CmString* string = stringOf(strings.at(index));
    return string ? string->text16() : nullptr;
}

int32_t UStringListValue::getIndex(const tchar* text) const {
    const ConstString wanted(text);
    return indexWhere(strings, [&](int32_t, const CmString& string) { return string.compare(wanted) == 0; });
}

bool URecentStringListValue::storeAttributes(FAttributes& attributes) const {
    return UStringListValue::storeAttributes(attributes) && attributes.set(kMaxRecentKey, maxRecent);
}

bool URecentStringListValue::restoreAttributes(FAttributes& attributes) {
    attributes.get(kMaxRecentKey, maxRecent);
    return UStringListValue::restoreAttributes(attributes);
}

bool URecentStringListValue::addString(const tchar* text) {
    const FString added(text);  // what is passed may be the string that goes
    removeAt(getIndex(text));
    if (countStrings() == maxRecent)
        removeAt(maxRecent);  // one past the last: nothing goes
    return insertString(0, added.text16());
}

void URecentStringListValue::setMaxRecent(int32_t count) {
    maxRecent = count;
    const int32_t firstTooMany = std::max(count, 0);  // the last one would be a walk through the whole list each time
    while (countStrings() > count && removeAt(firstTooMany)) {}
}

}  // namespace Tessarine
