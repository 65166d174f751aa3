#include "gui/values/uvalue.h"
#include "base/fmessage.h"
#include "base/source/updatehandler.h"
#include "base/utranslatedstring.h"
#include "collect/cmstring.h"
#include "gui/values/uplugtarget.h"
#include "gui/values/uvaluehooks.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include "valuenumbers.h"
#include <algorithm>
#include <cmath>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kParameterTextSize = 128;  // of toString1's buffer, terminator included

constexpr UTranslatedString kOnText("On");
constexpr UTranslatedString kOffText("Off");
constexpr UTranslatedString kYesText("Yes");
constexpr UTranslatedString kNoText("No");
}  // namespace

/** To the end of the block the value has no owner. Then it has the old one again, unless it was connected meanwhile. */
class UValue::OwnerAway {
public:
    explicit OwnerAway(UValue& value)
        : value(value), owner(std::exchange(value.owner, nullptr)), owned(value.has(kOwnerOwned)) {
        value.set(kOwnerAway, true);
    }
    ~OwnerAway() {
        if (value.has(kOwnerAway))
            value.owner = owner;
        else if (owned)
            owner->release();
        value.set(kOwnerAway, false);
    }
    OwnerAway(const OwnerAway&) = delete;
    OwnerAway& operator=(const OwnerAway&) = delete;

private:
    UValue& value;
    CmObject* const owner;
    const bool owned;
};

IMPLEMENT_CLASS(UValue, CmObject)
IMPLEMENT_CLASS(UYesNoValue, UValue)

constinit bool UValue::bypassAllHooks = false;

UValue::UValue(const UValue& source)
    : CmObject(source), IValue2(source), IStringRepresentationTarget(source), flags(source.flags), tag(source.tag),
      owner(source.owner), stringRepresentation(source.stringRepresentation) {
    if (!owner)
        set(kOwnerOwned | kOwnerAway, false);
    else if (has(kOwnerOwned))
        owner->addRef();
}

UValue::~UValue() {
    stringRepresentation = nullptr;
    detachOwner();
    UpdateHandler* handler = UpdateHandler::instance();
    if (!handler)
        return;
    CmObject* self = this;
    handler->triggerUpdates(self, kDestroyed);
    handler->cancelUpdates(self);
}

/** The value's reference on its owner, if it had one. */
OPtr<CmObject> UValue::detachOwner() {
    CmObject* old = std::exchange(owner, nullptr);
    const bool wasOwned = has(kOwnerOwned);
    set(kOwnerOwned | kOwnerAway, false);
    return wasOwned ? old : nullptr;
}

int32_t UValue::queryInterface(const char* iid, void** obj) {
    if (CmObject::queryInterface(iid, obj) == kResultOk)  // first: notification asks for these all the time
        return kResultOk;
    const bool found = answerInterface<IParameter>(this, iid, obj) || answerInterface<IValue>(this, iid, obj) ||
                       answerInterface<IValue2>(this, iid, obj) ||
                       answerInterface<IStringRepresentationTarget>(this, iid, obj);
    return found ? kResultOk : noInterface(obj);
}

void UValue::changed(int32_t message) {
    if (has(kSilentUntilObserved | kUpdatesDisabled))
        return;
    UpdateHandler* handler = UpdateHandler::instance();
    if (!handler || handler != gUpdateHandler)
        has(kStraightUpdate) ? CmObject::changed(message) : deferUpdate(message);
    else if (has(kStraightUpdate))
        handler->triggerSelfUpdates(this, message);
    else
        handler->deferSelfUpdates(this, message);
}

bool UValue::internalize(FArchive& archive) {
    int32_t value;
    const bool done = archive.getStream().readInt32(value);
    if (done)
        setValue(value);
    return done;
}

bool UValue::externalize(FArchive& archive) const {
    return archive.getStream().writeInt32(const_cast<UValue*>(this)->getValue());
}

bool UValue::storeAttributes(FAttributes& attributes) const {
    auto* self = const_cast<UValue*>(this);
    return attributes.set(kValueKey, self->getValue()) && attributes.set(kMinKey, self->getMin()) &&
           attributes.set(kMaxKey, self->getMax());
}

bool UValue::restoreAttributes(FAttributes& attributes) {
    int32_t number;
    if (attributes.get(kMinKey, number))
        setMin(number);
    if (attributes.get(kMaxKey, number))
        setMax(number);
    const bool hasValue = attributes.get(kValueKey, number);
    if (hasValue)
        setValue(number);
    return hasValue;
}

void UValue::addDependent(IDependent* dependent) {
    set(kSilentUntilObserved, false);
    CmObject::addDependent(dependent);
}

void UValue::connect(CmObject* newOwner, int32_t newTag, bool owned) {
    const OPtr<CmObject> old = detachOwner();  // goes last: its end may connect the value once more
    owner = newOwner;
    tag = newTag;
    set(kOwnerOwned, owned && newOwner);
}

void UValue::connect(IPlugController* controller, int32_t newTag) {
    if (!controller) {
        connect(nullptr, newTag, false);
        return;
    }
    auto* target = new UPlugTarget(controller);
    if (FUnknownPtr<IPlugController4>(controller))
        set(kEditMessages, true);
    connect(target, newTag, true);
}

void UValue::setValue(int32_t value) {
    if (has(kStateOn) == (value != 0))
        return;
    set(kStateOn, value != 0);
    changed();
}

int32_t UValue::bound(int32_t value) {
    const int32_t min = getMin();
    const int32_t max = getMax();
    if (value >= min && value <= max)
        return value;
    if (isWrapAround() && min < max)
        return wrapped(value, min, max);
    return value < min ? min : max;
}

float UValue::getNormalized() {
    const double min = getMin();
    const double max = getMax();
    return max == min ? 0.f : float((getValue() - min) / (max - min));
}

void UValue::setNormalized(float position) {
    const double min = getMin();
    setValue(truncated(std::trunc((getMax() - min) * position) + min));
}

void UValue::setActive(bool state) {
    const uint32_t before = flags;
    set(kStateActive, state);
    if (flags != before)
        changed();
}

void UValue::decrement() {
    if (getValue() > getMin())
        setTargetValue(getValue() - 1);
}

void UValue::increment() {
    if (getValue() < getMax())
        setTargetValue(getValue() + 1);
}

void UValue::assignTo(UValue* source) {
    if (source)
        setTargetValue(source->getValue());
}

bool UValue::resetToDefaultValue() {
    int32_t standard = 0;
    if (!getDefaultValue(standard))
        return false;
    changeInSession([&] { setTargetValue(standard); });
    return true;
}

void UValue::setTargetValue(int32_t value) {
    setValue(value);
    updateTarget();
}

void UValue::updateTarget() {
    if (!bypassAllHooks && !has(kNoHook))
        UValueHooks::tellValueChanged(this);
    if (owner)
        owner->update(this, kChanged);
}

/** Whether the owner stands for a plug-in, which then has heard all there is to hear. */
bool UValue::tellOwnerOfEdit(const char* messageID) {
    if (!has(kEditMessages) || !owner)
        return false;
    const bool isPlugTarget = owner->isTypeOf(UPlugTarget::className(), true);
    FMessage message(messageID);
    message.add("Value", this, false);
    owner->notify(&message);
    return isPlugTarget;
}

void UValue::beginEdit() {
    setLock(true);
    if (!tellOwnerOfEdit("BeginEdit") && canAutomate())
        updateTarget();
}

void UValue::endEdit(bool commit) {
    const IPtr<UValue> kept(this);
    setLock(false);
    if (tellOwnerOfEdit("EndEdit") || !(has(kEndEditUpdates) || canAutomate()))
        return;
    const StateRestored marker(*this, kDiscarding);
    set(kDiscarding, !commit);
    updateTarget();
}

void UValue::isAutomated(bool state) {
    if (has(kStateAutomated) == state)
        return;
    set(kStateAutomated, state);
    changed(kAutomationChanged);
}

void UValue::setLock(bool state) {
    if (has(kStateLocked) == state)
        return;
    set(kStateLocked, state);
    changed(kLockChanged);
}

void UValue::toString(FString& text) {
    if (!representAsText(text))
        text.assign(getValue() ? kOnText : kOffText);
}

/** Moves the value, shows it and moves it back, with nobody hearing of it. */
template <class Move>
void UValue::showMoved(Move moveAndShow) {
    const bool wasHeard = !has(kUpdatesDisabled);
    if (wasHeard)
        setUpdate(false);
    moveAndShow();
    if (wasHeard)
        setUpdate(true);
}

void UValue::toString(int32_t value, FString& text) {
    showMoved([&] {
        const int32_t before = getValue();
        setValue(value);
        toString(text);
        setValue(before);
    });
}

void UValue::toString(float position, FString& text) {
    showMoved([&] {
        const float before = getNormalized();
        setNormalized(position);
        toString(text);
        setNormalized(before);
    });
}

void UValue::toShortString(FString& text, int32_t /*maxChars*/) {
    toString(text);
}

void UValue::fromString(const tchar* text) {
    if (!takeRepresentedText(text))
        setTargetValue(ConstString(text).compare(kOnText.text()) == 0);
}

void UValue::toString1(tchar* buffer) {
    int32_t size = kParameterTextSize;
    toString2(buffer, &size);
}

void UValue::setEditLock(bool state) {
    if (state)
        beginEdit();
    else
        endEdit(true);
}

void UValue::toString2(tchar* buffer, int32_t* length) {
    FString text;
    toString(text);
    const tchar* units = text.text16();
    int32_t count = int32_t(text.length());
    if (!buffer) {
        if (length)
            *length = count + 1;
        return;
    }
    if (length && *length < 1)
        return;
    if (length)
        count = std::min(count, *length - 1);
    *std::copy_n(units, count, buffer) = 0;
}

void UValue::fromString2(const tchar* text, bool update) {
    if (!text)
        return;
    if (update || !owner) {
        fromString(text);
        return;
    }
    const OwnerAway quiet(*this);
    fromString(text);
}

void UValue::setValue2(int32_t value, bool update) {
    setValue(value);
    if (update)
        updateTarget();
}

void UValue::setValueFloat(float value, bool update) {
    setValue2(truncated(value), update);
}

void UValue::setFloatMin(float value) {
    setMin(truncated(value));
}

void UValue::setFloatMax(float value) {
    setMax(truncated(value));
}

void UValue::setNormalized(float position, bool update) {
    setNormalized(position);
    if (update)
        updateTarget();
}

bool UValue::setDefault(float value) {
    return setDefaultValue(truncated(std::floor(value + 0.5)));
}

bool UValue::getDefault(float& value) {
    int32_t standard = 0;
    if (!getDefaultValue(standard))
        return false;
    value = float(standard);
    return true;
}

bool UValue::getValueFlag(uint32_t mask) {
    switch (mask) {
    case kCanAutomate:
        return canAutomate();
    case kFlag2:
        return has(kStateFlag2);
    case kFlag4:
        return has(kStateFlag4);
    case kFlag8:
        return has(kStateFlag8);
    case kWrapAround:
        return isWrapAround();
    default:
        return false;
    }
}

void UValue::setValueFlag(uint32_t mask, bool state) {
    switch (mask) {
    case kCanAutomate:
        return canAutomate(state);
    case kFlag2:
        return set(kStateFlag2, state);
    case kWrapAround:
        return setWrapAround(state);
    default:
        return;
    }
}

void UValue::setStringRepresentation(IValueStringRepresentation* representation) {
    if (stringRepresentation == representation)
        return;
    stringRepresentation = representation;
    changed();
}

IValue* UValue::createParamInterface(UValue* value) {
    if (value)
        value->addRef();
    return value;
}

bool UValue::getDefaultNormalized(float& position) {
    float standard = 0;
    const float min = getFloatMin();
    const float span = getFloatMax() - min;
    if (!getDefault(standard) || span == 0)
        return false;
    position = (standard - min) / span;
    return true;
}

bool UValue::registerHook(IApplicationEventHook* hook) {
    return UValueHooks::add(hook);
}

bool UValue::unregisterHook(IApplicationEventHook* hook) {
    return UValueHooks::remove(hook);
}

bool UValue::representAsText(FString& text) {
    if (!stringRepresentation)
        return false;
    OPtr<CmString> result(new CmString);
    CmObject* target = result;
    if (stringRepresentation->valueToString(this, target) != kResultOk)
        return false;
    text.take(*result);
    return true;
}

bool UValue::takeRepresentedText(const tchar* text) {
    return stringRepresentation && stringRepresentation->stringToValue(this, text) == kResultOk;
}

void UYesNoValue::toString(FString& text) {
    text.assign(getValue() ? kYesText : kNoText);
}

}  // namespace Tessarine
