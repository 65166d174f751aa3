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
            FString saved;
            const bool found = defaults->getString(key, saved);
            if (found)
                text.setTargetStringValue(saved);
            return found;
        },
        [&](UFloatValue& number) {
            double saved = 0;
            const bool found = defaults->getDouble(key, saved);
            if (found)
                number.setTargetFloatValue(float(saved));
            return found;
        },
        [&](UValue& whole) {
            int32_t saved = 0;
            const bool found = defaults->getLong(key, saved);
            if (found)
                whole.setTargetValue(saved);
            return found;
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

bool UValueContainer::saveDefault(const char* name, FDefaults* defaults, const char* key) const {
    return saveValueAsDefault(findName(name), defaults, key ? key : name);
}

bool UValueContainer::loadDefault(const char* name, FDefaults* defaults, const char* key) const {
    return loadValueFromDefault(findName(name), defaults, key ? key : name);
}

}  // namespace Tessarine
