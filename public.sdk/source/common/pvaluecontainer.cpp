#include "public.sdk/source/common/pvaluecontainer.h"
#include "collect/cmstring.h"
#include "pluginterfaces/gui/iplugcontroller.h"
#include "pluginterfaces/host/idefaultpool.h"
#include <algorithm>
#include <cstring>

namespace Tessarine {
namespace {
constexpr int32_t kNameSize = 128;    // of getValueName's buffer, terminator included
constexpr int32_t kMaxPrecision = 7;  // digits that a float can tell apart

void setDefault(IValue* value, float standard) {
    if (FUnknownPtr<IValue2> flags(value); flags)
        flags->setDefault(standard);
}

void setFlag(IValue* value, uint32_t flag, bool state) {
    if (FUnknownPtr<IValue2> flags(value); flags)
        flags->setValueFlag(flag, state);
}

/** How many digits it takes to tell the steps of the range apart. */
int32_t precisionOf(double span, int32_t steps) {
    int32_t digits = 0;
    for (double step = span / steps; step < 1 && digits < kMaxPrecision; step *= 10)
        ++digits;
    return digits;
}

String textOf(IValue* value) {
    int32_t size = 0;
    value->toString2(nullptr, &size);
    const std::unique_ptr<tchar[]> text(new tchar[size_t(std::max(size, 1))]());
    value->toString2(text.get(), &size);
    return String(text.get());
}

/** The pool, or the host's. */
IPtr<IDefaultPool> poolOr(IDefaultPool* pool, IHostClasses* hostClasses) {
    if (pool)
        return pool;
    return FInstancePtr<IDefaultPool>(hostClasses);
}

void storeText(IDefaultPool* pool, const char* section, const char* name, IValue* value) {
    if (FUnknownPtr<IDefaultPool3> texts(pool); texts)
        texts->setTString(section, name, textOf(value).text16());
}

void loadText(IDefaultPool* pool, const char* section, const char* name, IValue* value, bool update) {
    const FUnknownPtr<IDefaultPool3> texts(pool);
    OPtr<CmString> text(new CmString);
    if (texts && texts->getTString(section, name, text) == kResultOk)
        value->fromString2(text->text16(), update);
}

void store(IDefaultPool* pool, const char* section, const char* name, IValue* value) {
    switch (value->getValueType()) {
    case IValue::kFloat:
        pool->setDouble(section, name, double(value->getValueFloat()));
        return;
    case IValue::kString:
        storeText(pool, section, name, value);
        return;
    default:
        pool->setLong(section, name, value->getValueInt());
    }
}

void load(IDefaultPool* pool, const char* section, const char* name, IValue* value, bool update) {
    double real = 0;
    int32_t whole = 0;
    switch (value->getValueType()) {
    case IValue::kFloat:
        if (pool->getDouble(section, name, real) == kResultOk)
            value->setValueFloat(float(real), update);
        return;
    case IValue::kString:
        loadText(pool, section, name, value, update);
        return;
    default:
        if (pool->getLong(section, name, whole) == kResultOk)
            value->setValue2(whole, update);
    }
}
}  // namespace

PValueList::~PValueList() {
    for (PValueEntry* entry : *this)
        delete entry;
}

bool PValueContainer::append(IValue* value, const char* name) {
    auto entry = std::make_unique<PValueEntry>(PValueEntry{value, String(name)});
    if (!values->add(entry.get()))
        return false;
    static_cast<void>(entry.release());  // the list has it now
    return true;
}

IValue* PValueContainer::addValue(IValue* value, int32_t tag, const char* name) {
    const OPtr<IValue> given(value);
    if (value && controller)
        value->connect(controller, tag);
    return addExternValue(value, name);
}

IValue* PValueContainer::addExternValue(IValue* value, const char* name) {
    return value && append(value, name) ? value : nullptr;
}

/** A value of the host's, connected, and with what init makes of it. */
template <class Init>
IValue* PValueContainer::create(const char* iid, int32_t tag, const char* name, Init init) {
    void* made = nullptr;
    if (!hostClasses || hostClasses->createClassInstance(iid, &made) != kResultOk || !made)
        return nullptr;
    auto* value = static_cast<IValue*>(made);
    init(value);
    return addValue(value, tag, name);
}

IValue* PValueContainer::addOnOffValue(int32_t tag, const char* name, bool defaultValue, bool canAutomate) {
    return create(IHostOnOffValue_iid, tag, name, [=](IValue* value) {
        value->setValue2(defaultValue, false);
        setDefault(value, defaultValue);
        setFlag(value, IValue2::kCanAutomate, canAutomate);
    });
}

IValue* PValueContainer::addIntValue(int32_t tag, const char* name, int32_t min, int32_t max, int32_t defaultValue,
                                     bool canAutomate, bool wrapAround) {
    return create(IHostIntValue_iid, tag, name, [=](IValue* value) {
        value->setMinValue(min);
        value->setMaxValue(max);
        value->setValue2(defaultValue, false);
        setDefault(value, float(defaultValue));
        setFlag(value, IValue2::kCanAutomate, canAutomate);
        setFlag(value, IValue2::kWrapAround, wrapAround);
    });
}

IValue* PValueContainer::addFloatValue(int32_t tag, const char* name, float min, float max, float defaultValue,
                                       int32_t steps, bool canAutomate, bool wrapAround) {
    return create(IHostFloatValue_iid, tag, name, [=, this](IValue* value) {
        initFloatValue(value, min, max, defaultValue, steps, canAutomate, wrapAround);
    });
}

IValue* PValueContainer::addStringValue(int32_t tag, const char* name, const tchar* text, bool canAutomate) {
    return create(IHostStringValue_iid, tag, name, [=](IValue* value) {
        value->fromString2(text, false);
        setFlag(value, IValue2::kCanAutomate, canAutomate);
    });
}

IValue* PValueContainer::addStringListValue(int32_t tag, const char* name, const tchar** list, const tchar* defaultText,
                                            bool canAutomate) {
    return create(IHostStringListValue_iid, tag, name, [=](IValue* value) {
        const FUnknownPtr<IStringList> strings(value);
        for (const tchar** text = list; strings && text && *text; ++text)
            strings->addString(*text);
        value->fromString2(defaultText || !list ? defaultText : *list, false);
        setDefault(value, float(value->getValueInt()));
        setFlag(value, IValue2::kCanAutomate, canAutomate);
    });
}

void PValueContainer::initFloatValue(IValue* value, float min, float max, float defaultValue, int32_t steps,
                                     bool canAutomate, bool wrapAround) {
    value->setFloatMin(min);
    value->setFloatMax(max);
    value->setValueFloat(defaultValue, false);
    setDefault(value, defaultValue);
    if (FUnknownPtr<IFloatValue> text(value); text && steps > 0)
        text->setPrecision(precisionOf(double(max) - double(min), steps));
    setFlag(value, IValue2::kCanAutomate, canAutomate);
    setFlag(value, IValue2::kWrapAround, wrapAround);
}

template <class Match>
IValue* PValueContainer::firstThat(Match match) const {
    for (const PValueEntry* entry : *values)
        if (match(*entry))
            return entry->value;
    return nullptr;
}

IValue* PValueContainer::getValue(const char* name) const {
    const ConstString wanted(name);
    return firstThat([&](const PValueEntry& entry) { return entry.name.compare(wanted) == 0; });
}

IValue* PValueContainer::getValueByTag(int32_t tag) const {
    return firstThat([=](const PValueEntry& entry) { return entry.value->getTag() == tag; });
}

IValue* PValueContainer::getValueByIndex(int32_t index) const {
    const PValueEntry* entry = values->at(index);
    return entry ? entry->value.get() : nullptr;
}

bool PValueContainer::getValueName(int32_t index, char* buffer) const {
    const PValueEntry* entry = values->at(index);
    if (!entry)
        return false;
    const char* name = entry->name.text8();
    const size_t length = std::min(std::strlen(name), size_t(kNameSize - 1));
    *std::copy_n(name, length, buffer) = 0;
    return true;
}

void PValueContainer::setValueActive(const char* name, bool state) const {
    if (const IPtr<IValue> value = getValue(name))
        value->setActive(state);
}

void PValueContainer::setValueActive(int32_t tag, bool state) const {
    if (const IPtr<IValue> value = getValueByTag(tag))
        value->setActive(state);
}

void PValueContainer::removeAll() {
    values = std::make_unique<PValueList>();
}

bool PValueContainer::storeValues(const char* section, IDefaultPool* pool) const {
    const IPtr<IDefaultPool> target = poolOr(pool, hostClasses);
    if (!target)
        return false;
    for (const PValueEntry* entry : *values)
        store(target, section, entry->name.text8(), entry->value);
    return true;
}

bool PValueContainer::loadValues(const char* section, bool update, IDefaultPool* pool) const {
    const IPtr<IDefaultPool> source = poolOr(pool, hostClasses);
    if (!source)
        return false;
    for (int32_t i = 0; i < countValues(); ++i) {
        const PValueEntry entry(*values->at(i));  // the controller, who may hear of it, may empty the container
        load(source, section, entry.name.text8(), entry.value, update);
    }
    return true;
}

}  // namespace Tessarine
