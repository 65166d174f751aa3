#include "gui/values/uvaluecontainer.h"
#include "collect/cmstring.h"
#include "gui/values/hooks.h"
#include "gui/values/uvalueforms.h"
#include "storage/fpersistent.h"
#include <cstring>

namespace Tessarine {
namespace {
constexpr int32_t kPlaces = 10;

bool isText(const char* text) {
    return text && *text;
}

void storeValue(UValue& value, FAttributes& attributes, const char* key) {
    byForm(
        value, [&](UStringValue& text) { return attributes.setString(key, text.getStringValue()); },
        [&](UFloatValue& number) { return attributes.set(key, double(number.getFloatValue())); },
        [&](UValue& whole) { return attributes.set(key, whole.getValue()); });
}

/** Reads into a Kept, and sets that. */
template <class Kept, class Set>
void restoreInto(const FAttributes& attributes, const char* key, Set set) {
    Kept kept{};
    if (attributes.get(key, kept))
        set(kept);
}

void restoreValue(UValue& value, const FAttributes& attributes, const char* key) {
    byForm(
        value,
        [&](UStringValue& text) {
            restoreInto<String>(attributes, key, [&](const String& kept) { text.setTargetStringValue(kept); });
        },
        [&](UFloatValue& number) {
            restoreInto<float>(attributes, key, [&](float kept) { number.setTargetFloatValue(kept); });
        },
        [&](UValue& whole) {
            restoreInto<int32_t>(attributes, key, [&](int32_t kept) { whole.setTargetValue(kept); });
        });
}
}  // namespace

IMPLEMENT_CLASS(UValueContainer, FController)

UValueContainer::UValueContainer() : values(kPlaces), names(kPlaces) {
    values._ownsObjects = CmContainer::kTakesOver;
    names._ownsObjects = CmContainer::kTakesOver;
}

template <class Value>
Value* UValueContainer::addNew(Value* value, CmObject* owner, int32_t tag, const char* name) {
    addValue(value, owner, tag, name);
    return value;
}

UValue* UValueContainer::newValue(CmObject* owner, int32_t tag, const char* name) {
    return addNew(new UValue, owner, tag, name);
}

UIntValue* UValueContainer::newIntValue(int32_t min, int32_t max, CmObject* owner, int32_t tag, const char* name) {
    return addNew(new UIntValue(min, max), owner, tag, name);
}

UIntDefValue* UValueContainer::newIntDefValue(int32_t min, int32_t max, int32_t standard, CmObject* owner, int32_t tag,
                                              const char* name) {
    return addNew(new UIntDefValue(min, max, standard, standard), owner, tag, name);
}

UFloatValue* UValueContainer::newFloatValue(float min, float max, CmObject* owner, int32_t tag, const char* name) {
    return addNew(new UFloatValue(min, max), owner, tag, name);
}

UFloatDefValue* UValueContainer::newFloatDefValue(float min, float max, float standard, CmObject* owner, int32_t tag,
                                                  const char* name) {
    return addNew(new UFloatDefValue(min, max, standard, standard), owner, tag, name);
}

UStringValue* UValueContainer::newStringValue(CmObject* owner, int32_t tag, const char* name) {
    return addNew(new UStringValue, owner, tag, name);
}

UStringListValue* UValueContainer::newStringListValue(CmObject* owner, int32_t tag, const char* name) {
    return addNew(new UStringListValue, owner, tag, name);
}

UAliasValue* UValueContainer::newAliasValue(CmObject* owner, int32_t tag, const char* name) {
    UAliasValue* alias = addNew(new UAliasValue, owner, tag, name);
    alias->setTag(tag);  // it can't be connected, as it has no delegate yet
    return alias;
}

UValueProxy* UValueContainer::newValueProxy(CmObject* owner, int32_t tag, const char* name) {
    return addNew(new UValueProxy, owner, tag, name);
}

UValue* UValueContainer::newCommandValue(const char* category, const char* command, const char* name) {
    IPtr<CmObject> owner(gValueHooks.commandByName ? gValueHooks.commandByName(category, command) : nullptr);
    UValue* value = addNew(new UValue, nullptr, 0, name);
    value->connect(owner.detach(), 0, true);  // commands may be taken away
    return value;
}

UValue* UValueContainer::addValue(UValue* value, const char* name) {
    if (values.add(value))
        names.add(new CmString(name));
    return value;
}

UValue* UValueContainer::addValue(UValue* value, CmObject* owner, int32_t tag, const char* name) {
    if (value && owner)
        value->connect(owner, tag, false);
    else if (value)
        value->setTag(tag);
    return addValue(value, name);
}

void UValueContainer::removeAll() {
    names.removeAll();  // first: who hears of a value's end may come back and search or add
    values.removeAll();
}

const char* UValueContainer::getName(int32_t index) const {
    const auto* name = static_cast<const CmString*>(names.at(index));
    return name ? name->text8() : nullptr;
}

UValue* UValueContainer::getValueObject(int32_t tag) const {
    for (CmObject* object : values) {
        auto* value = static_cast<UValue*>(object);
        if (value->getTag() == tag)
            return value;
    }
    return nullptr;
}

UValue* UValueContainer::findName(const char* name) const {
    if (!isText(name))
        return nullptr;
    for (int32_t i = 0; i < total(); ++i)
        if (std::strcmp(getName(i), name) == 0)
            return at(i);
    return nullptr;
}

UValue* UValueContainer::lookupValue(const char* name) {
    return findName(name);
}

UValue* UValueContainer::find(const Key& key) const {
    return key.isName ? findName(key.name) : getValueObject(key.tag);
}

/** The owner, who may hear of it, may empty the container. */
template <class Operation>
auto UValueContainer::with(const Key& key, Operation operation) const -> decltype(operation(*find(key))) {
    const IPtr<UValue> value(find(key));
    return value ? operation(*value) : decltype(operation(*value))();
}

int32_t UValueContainer::getValue(const Key& key) const {
    return with(key, [](UValue& value) { return value.getValue(); });
}

void UValueContainer::setValue(const Key& key, int32_t newValue) const {
    with(key, [=](UValue& value) { value.setValue(newValue); });
}

void UValueContainer::setTargetValue(const Key& key, int32_t newValue) const {
    with(key, [=](UValue& value) { value.setTargetValue(newValue); });
}

void UValueContainer::toggleValue(const Key& key) const {
    with(key, [](UValue& value) { value.setTargetValue(!value.getValue()); });
}

float UValueContainer::getNormalized(const Key& key) const {
    return with(key, [](UValue& value) { return value.getNormalized(); });
}

void UValueContainer::setNormalized(const Key& key, float position) const {
    with(key, [=](UValue& value) { value.setNormalized(position); });
}

float UValueContainer::getFloatValue(const Key& key) const {
    return with(key, [](UValue& value) { return value.getValueFloat(); });
}

void UValueContainer::setFloatValue(const Key& key, float newValue) const {
    with(key, [=](UValue& value) { value.setValueFloat(newValue, false); });
}

void UValueContainer::setStringValue(const Key& key, const ConstString& text) const {
    const IPtr<UStringValue> value(classCast<UStringValue>(find(key)));
    if (value)
        value->setStringValue(text);
}

void UValueContainer::toString(const Key& key, FString& text) const {
    with(key, [&](UValue& value) { value.toString(text); });
}

void UValueContainer::fromString(const Key& key, const tchar* text) const {
    with(key, [=](UValue& value) { value.fromString(text); });
}

void UValueContainer::fromString2(const Key& key, const tchar* text, bool update) const {
    with(key, [=](UValue& value) { value.fromString2(text, update); });
}

bool UValueContainer::isActive(const Key& key) const {
    return with(key, [](UValue& value) { return value.isActive(); });
}

void UValueContainer::setActive(const Key& key, bool state) const {
    with(key, [=](UValue& value) { value.setActive(state); });
}

void UValueContainer::setActive(bool state) const {
    for (int32_t i = 0; i < total(); ++i)
        IPtr<UValue>(at(i))->setActive(state);  // who hears of it may empty the container
}

void UValueContainer::store(FAttributes& attributes) const {
    for (int32_t i = 0; i < total(); ++i)
        if (isText(getName(i)))
            storeValue(*at(i), attributes, getName(i));
}

void UValueContainer::restore(FAttributes& attributes) const {
    for (int32_t i = 0; i < total(); ++i) {
        const IPtr<UValue> value(at(i));  // its owner may empty the container
        if (isText(getName(i)))
            restoreValue(*value, attributes, getName(i));
    }
}

}  // namespace Tessarine
