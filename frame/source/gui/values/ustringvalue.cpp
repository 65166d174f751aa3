#include "gui/values/ustringvalue.h"
#include "collect/cmstring.h"

namespace Tessarine {
namespace {
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
}  // namespace

IMPLEMENT_CLASS(UStringValue, UValue)
IMPLEMENT_CLASS(UStringListValue, UIntDefValue)

UStringValue::UStringValue(const ConstString& text) : string(text) {}

UStringValue& UStringValue::operator=(const ConstString& text) {
    setStringValue(text);
    return *this;
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

void UStringListValue::toString(FString& text) {
    if (representAsText(text))
        return;
    const CmString* selected = value < min ? nullptr : stringOf(strings.at(value - min));
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
    setValue(getValue() + 1);
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

}  // namespace Tessarine
