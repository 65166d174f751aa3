#include "base/fdefaults.h"
#include "gui/values/uvaluecontainer.h"
#include "gui/values/uvalueforms.h"

namespace Tessarine {
namespace {
constexpr int32_t kVersion = 0;  // of a new section

/** Of whatever version, as one that is asked for by another would be dropped. */
FDefaults* sectionOf(const char* name, bool create) {
    FDefaults* found = gDefaults ? gDefaults->findDefaults(name) : nullptr;
    return found || !create || !gDefaults ? found : gDefaults->getDefaults(name, kVersion, true);
}

bool isKey(UValue* value, FDefaults* defaults, const char* key) {
    return value && defaults && key && *key;
}

/** Sets what is there under the key. */
template <class Saved, class Set>
bool passOn(const FDefaults& defaults, bool (FDefaults::*get)(const char*, Saved&) const, const char* key, Set set) {
    Saved saved{};
    const bool found = (defaults.*get)(key, saved);
    if (found)
        set(saved);
    return found;
}
}  // namespace

bool UValueContainer::saveValueAsDefault(UValue* value, FDefaults* defaults, const char* key) {
    if (!isKey(value, defaults, key))
        return false;
    return byForm(
        *value, [&](UStringValue& text) { return defaults->setString(key, text.getStringValue()); },
        [&](UFloatValue& number) { return defaults->setDouble(key, double(number.getFloatValue())); },
        [&](UValue& whole) { return defaults->setLong(key, whole.getValue()); });
}

bool UValueContainer::loadValueFromDefault(UValue* value, FDefaults* defaults, const char* key) {
    if (!isKey(value, defaults, key))
        return false;
    const IPtr<UValue> kept(value);  // its owner hears of it
    return byForm(
        *value,
        [&](UStringValue& text) {
            return passOn(*defaults, &FDefaults::getString, key,
                          [&](const String& saved) { text.setTargetStringValue(saved); });
        },
        [&](UFloatValue& number) {
            return passOn(*defaults, &FDefaults::getDouble, key,
                          [&](double saved) { number.setTargetFloatValue(float(saved)); });
        },
        [&](UValue& whole) {
            return passOn(*defaults, &FDefaults::getLong, key, [&](int32_t saved) { whole.setTargetValue(saved); });
        });
}

void UValueContainer::saveDefault(FDefaults* defaults) const {
    for (int32_t i = 0; i < total(); ++i)
        saveValueAsDefault(at(i), defaults, getName(i));
}

void UValueContainer::loadDefault(FDefaults* defaults) const {
    const IPtr<FDefaults> kept(defaults);  // an owner may remove the section
    for (int32_t i = 0; i < total(); ++i)
        loadValueFromDefault(at(i), defaults, getName(i));
}

bool UValueContainer::saveDefault(const char* section) const {
    FDefaults* defaults = sectionOf(section, true);
    saveDefault(defaults);
    return defaults != nullptr;
}

bool UValueContainer::loadDefault(const char* section) const {
    FDefaults* defaults = sectionOf(section, false);
    loadDefault(defaults);
    return defaults != nullptr;
}

bool UValueContainer::saveDefault(const char* name, FDefaults* defaults, const char* key) {
    return saveValueAsDefault(lookupValue(name), defaults, key ? key : name);
}

bool UValueContainer::loadDefault(const char* name, FDefaults* defaults, const char* key) {
    return loadValueFromDefault(lookupValue(name), defaults, key ? key : name);
}

}  // namespace Tessarine
