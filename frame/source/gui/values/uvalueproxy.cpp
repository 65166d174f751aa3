#include "gui/values/uvalueproxy.h"
#include "gui/values/hooks.h"

namespace Tessarine {
namespace {
constexpr int32_t kNoTag = -1;
constexpr int32_t kPlaces = 10;
}  // namespace

IMPLEMENT_CLASS(UValueProxy, UValue)
IMPLEMENT_CLASS(UAliasValue, UValueProxy)
IMPLEMENT_CLASS(UValueGuard, UValueProxy)
IMPLEMENT_CLASS(UValueSelector, UValueProxy)

UValueProxy::UValueProxy(UValue* value) {
    set(kNoHook, true);
    tag = kNoTag;
    UValueProxy::delegateTo(value);
}

UValueProxy::UValueProxy(const UValueProxy& source) : UValue(source), IValueProxy(source) {
    UValueProxy::delegateTo(source.delegate);
}

UValueProxy::~UValueProxy() {
    UValueProxy::delegateTo(nullptr);
}

int32_t UValueProxy::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IValueProxy>(this, iid, obj) || UValue::queryInterface(iid, obj) == kResultOk)
        return kResultOk;
    return delegate ? delegate->queryInterface(iid, obj) : noInterface(obj);
}

void UValueProxy::update(CmObject* source, int32_t message) {
    if (!source || source != delegate)
        return;
    const IPtr<UValueProxy> kept(this);  // who hears of it may let go of the proxy
    if (message == kDestroyed) {
        delegateTo(nullptr);
        return;
    }
    if ((delegate->getState() & kOwnerAway) == 0)
        followConnection();
    CmObject::changed(message);
}

template <class Operation>
auto UValueProxy::act(Operation operation) -> decltype(operation(*delegate)) {
    const IPtr<UValue> kept(delegate);
    return kept ? operation(*kept) : decltype(operation(*kept))();
}

/** An owner that goes may exchange the delegate, and let go of the proxy. */
void UValueProxy::connect(CmObject* newOwner, int32_t newTag, bool owned) {
    const IPtr<UValueProxy> kept(this);
    const IPtr<UValue> target(delegate);
    isOwnOwner = !owned;
    UValue::connect(newOwner, newTag, owned && !target);
    if (target)
        target->connect(newOwner, newTag, owned);
    CmObject::changed();
}

void UValueProxy::connect(IPlugController* controller, int32_t newTag) {
    if (!delegate) {
        UValue::connect(controller, newTag);
        return;
    }
    const IPtr<UValueProxy> kept(this);
    act([=](UValue& value) { value.connect(controller, newTag); });
    followConnection();
    CmObject::changed();
}

void UValueProxy::setTag(int32_t newTag) {
    UValue::setTag(newTag);
    act([=](UValue& value) { value.setTag(newTag); });
}

void UValueProxy::setUpdate(bool state) {
    UValue::setUpdate(state);
    act([=](UValue& value) { value.setUpdate(state); });
}

void UValueProxy::setStraightUpdate(bool state) {
    UValue::setStraightUpdate(state);
    act([=](UValue& value) { value.setStraightUpdate(state); });
}

/** An owner that was the delegate's may be gone with that connection, unheard. */
bool UValueProxy::speaksForDelegate() const {
    return delegate && !ownerOf(*delegate) && owner && isOwnOwner;
}

void UValueProxy::setTargetValue(int32_t newValue) {
    const IPtr<UValueProxy> kept(this);
    act([=](UValue& value) { value.setTargetValue(newValue); });
    if (speaksForDelegate())
        updateTarget();
}

void UValueProxy::updateTarget() {
    if (!delegate)
        return;
    const IPtr<UValueProxy> kept(this);
    const StateRestored marker(*this, kDiscarding);
    set(kDiscarding, (delegate->getState() & kDiscarding) != 0);
    act([](UValue& value) { value.updateTarget(); });
    if (speaksForDelegate())
        owner->update(this, kChanged);
}

void UValueProxy::setValue(int32_t newValue) {
    act([=](UValue& value) { value.setValue(newValue); });
}

void UValueProxy::setMin(int32_t newMin) {
    act([=](UValue& value) { value.setMin(newMin); });
}

void UValueProxy::setMax(int32_t newMax) {
    act([=](UValue& value) { value.setMax(newMax); });
}

void UValueProxy::setNormalized(float position) {
    act([=](UValue& value) { value.setNormalized(position); });
}

void UValueProxy::setNormalized(float position, bool update) {
    act([=](UValue& value) { value.setNormalized(position, update); });
}

void UValueProxy::setActive(bool state) {
    act([=](UValue& value) { value.setActive(state); });
}

void UValueProxy::decrement() {
    act([](UValue& value) { value.decrement(); });
}

void UValueProxy::increment() {
    act([](UValue& value) { value.increment(); });
}

void UValueProxy::assignTo(UValue* source) {
    act([=](UValue& value) { value.assignTo(source); });
}

bool UValueProxy::resetToDefaultValue() {
    return act([](UValue& value) { return value.resetToDefaultValue(); });
}

void UValueProxy::beginEdit() {
    act([](UValue& value) { value.beginEdit(); });
}

void UValueProxy::endEdit(bool commit) {
    act([=](UValue& value) { value.endEdit(commit); });
}

void UValueProxy::canAutomate(bool state) {
    act([=](UValue& value) { value.canAutomate(state); });
}

void UValueProxy::wheelStepwise(bool state) {
    act([=](UValue& value) { value.wheelStepwise(state); });
}

void UValueProxy::isCentered(bool state) {
    act([=](UValue& value) { value.isCentered(state); });
}

void UValueProxy::setLock(bool state) {
    act([=](UValue& value) { value.setLock(state); });
}

void UValueProxy::setWrapAround(bool state) {
    act([=](UValue& value) { value.setWrapAround(state); });
}

void UValueProxy::toString(FString& text) {
    act([&](UValue& value) { value.toString(text); });
}

void UValueProxy::toString(int32_t number, FString& text) {
    act([&](UValue& value) { value.toString(number, text); });
}

void UValueProxy::toString(float position, FString& text) {
    act([&](UValue& value) { value.toString(position, text); });
}

void UValueProxy::toShortString(FString& text, int32_t maxChars) {
    act([&](UValue& value) { value.toShortString(text, maxChars); });
}

void UValueProxy::fromString(const tchar* text) {
    act([=](UValue& value) { value.fromString(text); });
}

void UValueProxy::fromString2(const tchar* text, bool update) {
    act([=](UValue& value) { value.fromString2(text, update); });
}

void UValueProxy::setStyle(int32_t style) {
    act([=](UValue& value) { value.setStyle(style); });
}

void UValueProxy::setValue2(int32_t newValue, bool update) {
    act([=](UValue& value) { value.setValue2(newValue, update); });
}

void UValueProxy::setValueFloat(float newValue, bool update) {
    act([=](UValue& value) { value.setValueFloat(newValue, update); });
}

void UValueProxy::setFloatMin(float newMin) {
    act([=](UValue& value) { value.setFloatMin(newMin); });
}

void UValueProxy::setFloatMax(float newMax) {
    act([=](UValue& value) { value.setFloatMax(newMax); });
}

void UValueProxy::setValueFlag(uint32_t mask, bool state) {
    act([=](UValue& value) { value.setValueFlag(mask, state); });
}

/** Takes over the delegate's owner and tag, or none; false: they were these already. */
bool UValueProxy::followConnection() {
    CmObject* newOwner = delegate ? ownerOf(*delegate) : nullptr;
    const int32_t newTag = delegate ? delegate->getTag() : kNoTag;
    const bool moved = owner != newOwner || tag != newTag;
    isOwnOwner = isOwnOwner && !moved;
    UValue::connect(newOwner, newTag, false);  // not this class's own, which would connect the delegate too
    return moved;
}

UValue* UValueProxy::unlessCircular(UValue* value) {
    UValue* each = value;
    while (auto* proxy = classCast<UValueProxy>(each)) {
        if (proxy == this)
            return nullptr;
        each = proxy->delegate;
    }
    return value;
}

OPtr<UValue> UValueProxy::exchange(UValue* value, bool counted) {
    UValue* old = delegate;
    if (counted && value)
        value->addRef();  // the old one may hold it
    if (old)
        old->removeDependent(this);
    delegate = value;
    if (value)
        value->addDependent(this);
    return counted ? old : nullptr;
}

void UValueProxy::redirect(UValue* wanted, bool counted) {
    UValue* value = unlessCircular(wanted);
    const bool isSame = value == delegate;
    if (isSame && !value)
        return;
    const IPtr<UValueProxy> kept(this);
    const OPtr<UValue> old = isSame ? OPtr<UValue>() : exchange(value, counted);
    if (!followConnection() && isSame)
        return;
    if (gValueHooks.isInUpdatePhase && gValueHooks.isInUpdatePhase())
        CmObject::changed();
    else
        changed();
}

void UValueProxy::delegateTo(UValue* value) {
    redirect(value, true);
}

UValue* UValueProxy::getRepresentedObject() {
    auto* next = classCast<UValueProxy>(delegate);
    return next ? next->getRepresentedObject() : delegate;
}

void UValueProxy::setDelegated(IValue* value) {
    delegateTo(classCast<UValue>(commonObject(value)));
}

UAliasValue::UAliasValue(UValue* value) {
    UAliasValue::delegateTo(value);
}

UAliasValue::UAliasValue(const UAliasValue& source) : UValueProxy(source) {
    UValue::connect(nullptr, source.tag, false);
}

UAliasValue::~UAliasValue() {
    UAliasValue::delegateTo(nullptr);
}

void UAliasValue::update(CmObject* source, int32_t message) {
    if (!source || source != delegate)
        return;
    const IPtr<UAliasValue> kept(this);
    if (message == kDestroyed)
        delegateTo(nullptr);
    else
        CmObject::changed(message);
}

void UAliasValue::connect(CmObject* newOwner, int32_t newTag, bool owned) {
    if (delegate)
        act([=](UValue& value) { value.connect(newOwner, newTag, owned); });
    else if (owned && newOwner)
        newOwner->release();
}

void UAliasValue::connect(IPlugController* controller, int32_t newTag) {
    act([=](UValue& value) { value.connect(controller, newTag); });
}

void UAliasValue::delegateTo(UValue* wanted) {
    UValue* value = unlessCircular(wanted);
    const IPtr<UAliasValue> kept(this);
    const OPtr<UValue> old = exchange(value, true);
    changed();
}

UValueGuard::UValueGuard(UValue* value) {
    UValueGuard::delegateTo(value);
}

UValueGuard::UValueGuard(const UValueGuard& source) : UValueProxy(source) {
    if (delegate)
        delegate->release();  // what the copied proxy took
}

UValueGuard::~UValueGuard() {
    UValueGuard::delegateTo(nullptr);
}

UValueSelector::UValueSelector() : selector(new UIntValue), choices(kPlaces) {
    choices._ownsObjects = CmContainer::kShares;
    selector->addDependent(this);
}

UValueSelector::UValueSelector(const UValueSelector& source)
    : UValueProxy(source), selector(new UIntValue(*source.selector)), choices(source.choices) {
    selector->addDependent(this);
}

UValueSelector::~UValueSelector() {
    selector->removeDependent(this);
}

void UValueSelector::update(CmObject* source, int32_t message) {
    if (source != selector.get())
        UValueProxy::update(source, message);
    else if (message != kDestroyed)
        delegateTo(static_cast<UValue*>(choices.at(selector->getValue())));
}

void UValueSelector::addValue(UValue* value) {
    if (choices.add(value))
        selector->setMax(choices.total() - 1);
}

}  // namespace Tessarine
