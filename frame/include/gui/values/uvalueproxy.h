#pragma once
#include "collect/cmarray.h"
#include "gui/values/uintvalue.h"

namespace Tessarine {

/** Stands in for another value, which may be exchanged: what is bound once to the proxy follows a selection.

    Owns      its delegate, shared; the owner and tag of the delegate are copied, unowned.
    News      the proxy depends on its delegate and tells its own dependents at once: the delegate's turn was the wait.
    Without   a delegate getters answer 0, getMax 1, and setters do nothing.
    State     flags of its own are the silence (setUpdate, setStraightUpdate), automation and fine adjustment. */
class UValueProxy : public UValue, public IValueProxy {
public:
    DECLARE_CLASS(UValueProxy, UValue)
    DECLARE_NEWCOPY(UValueProxy)
    FORWARD_REFCOUNT(UValue)

    explicit UValueProxy(UValue* value = nullptr);
    /** Stands in for the same value. */
    UValueProxy(const UValueProxy& source);
    ~UValueProxy() override;
    /** What the proxy itself doesn't offer, the delegate may. */
    int32_t queryInterface(const char* iid, void** obj) override;
    using UValue::update;
    void update(CmObject* source, int32_t message) override;

    /** The delegate is connected as well, and owns what is owned. */
    void connect(CmObject* newOwner, int32_t newTag, bool owned) override;
    void connect(IPlugController* controller, int32_t newTag) override;
    void setTag(int32_t newTag) override;
    void setUpdate(bool state) override;
    void setStraightUpdate(bool state) override;
    /** An owner to whom the proxy itself was connected hears of it when the delegate has none. */
    void setTargetValue(int32_t newValue) override;
    void updateTarget() override;
    /** The delegate's, which may be another one already than the one that was taken over, and that one gone. */
    FUnknown* getOwner() override { return delegate && !isOwnOwner ? delegate->getOwner() : owner; }

    void setValue(int32_t newValue) override;
    int32_t getValue() override { return delegate ? delegate->getValue() : UValue::getValue(); }
    int32_t getMin() override { return delegate ? delegate->getMin() : UValue::getMin(); }
    void setMin(int32_t newMin) override;
    int32_t getMax() override { return delegate ? delegate->getMax() : UValue::getMax(); }
    void setMax(int32_t newMax) override;
    int32_t bound(int32_t wanted) override { return delegate ? delegate->bound(wanted) : 0; }
    float getNormalized() override { return delegate ? delegate->getNormalized() : 0; }
    void setNormalized(float position) override;
    void setNormalized(float position, bool update) override;
    void setActive(bool state) override;
    bool isActive() override { return delegate && delegate->isActive(); }
    void decrement() override;
    void increment() override;
    void assignTo(UValue* source) override;
    bool resetToDefaultValue() override;
    bool getDefaultValue(int32_t& standard) override { return delegate && delegate->getDefaultValue(standard); }
    bool setDefaultValue(int32_t standard) override { return delegate && delegate->setDefaultValue(standard); }
    void beginEdit() override;
    void endEdit(bool commit) override;
    void canAutomate(bool state) override;
    bool canAutomate() override { return delegate && delegate->canAutomate(); }
    void wheelStepwise(bool state) override;
    bool wheelStepwise() override { return delegate && delegate->wheelStepwise(); }
    void isCentered(bool state) override;
    bool isCentered() override { return delegate && delegate->isCentered(); }
    bool isLocked() override { return delegate && delegate->isLocked(); }
    void setLock(bool state) override;
    bool isWrapAround() override { return delegate && delegate->isWrapAround(); }
    void setWrapAround(bool state) override;
    void toString(FString& text) override;
    void toString(int32_t value, FString& text) override;
    void toString(float position, FString& text) override;
    void toShortString(FString& text, int32_t maxChars) override;
    void fromString(const tchar* text) override;
    void fromString2(const tchar* text, bool update) override;
    void setStyle(int32_t style) override;
    int32_t getStyle() override { return delegate ? delegate->getStyle() : 0; }
    int32_t getValueType() override { return delegate ? delegate->getValueType() : 0; }
    void setValue2(int32_t newValue, bool update) override;
    float getValueFloat() override { return delegate ? delegate->getValueFloat() : 0; }
    void setValueFloat(float newValue, bool update) override;
    float getFloatMin() override { return delegate ? delegate->getFloatMin() : 0; }
    float getFloatMax() override { return delegate ? delegate->getFloatMax() : 0; }
    void setFloatMin(float newMin) override;
    void setFloatMax(float newMax) override;
    bool setDefault(float standard) override { return delegate && delegate->setDefault(standard); }
    bool getDefault(float& standard) override { return delegate && delegate->getDefault(standard); }
    bool getValueFlag(uint32_t mask) override { return delegate && delegate->getValueFlag(mask); }
    void setValueFlag(uint32_t mask, bool state) override;

    /** Null: from now on for nothing. A value that stands in for this proxy counts as null. */
    virtual void delegateTo(UValue* value);
    /** Unowned. */
    virtual void connect(CmObject* newOwner, int32_t newTag) { connect(newOwner, newTag, false); }
    virtual UValue* getValueObject() { return delegate; }
    /** The value at the end of a chain of proxies. */
    virtual UValue* getRepresentedObject();
    void setDelegated(IValue* value) override;
    IValue* getDelegated() override { return getValueObject(); }
    IValue* getRepresented() override { return getRepresentedObject(); }

protected:
    /** Exchanges the dependency and, when counted, the reference; the old one's is the result. */
    OPtr<UValue> exchange(UValue* value, bool counted);
    /** All of delegateTo, which is the same for those that hold a reference and those that don't. */
    void redirect(UValue* value, bool counted);
    /** The delegate, or null when this proxy is behind the value, which would go round in circles. */
    UValue* unlessCircular(UValue* value);

    UValue* delegate = nullptr;  // counted, but in a UValueGuard

    /** Does something that may reach an owner, who may exchange the delegate meanwhile. */
    template <class Operation>
    auto act(Operation operation) -> decltype(operation(*delegate));

private:
    bool followConnection();
    bool speaksForDelegate() const;

    bool isOwnOwner = false;  // it was connected here, not taken over from the delegate
};

/** A proxy with an identity of its own: its tag stays, and owner and connections are the delegate's alone. */
class UAliasValue : public UValueProxy {
public:
    DECLARE_CLASS(UAliasValue, UValueProxy)
    DECLARE_NEWCOPY(UAliasValue)

    explicit UAliasValue(UValue* value = nullptr);
    UAliasValue(const UAliasValue& source);
    ~UAliasValue() override;
    void update(CmObject* source, int32_t message) override;
    using UValueProxy::connect;
    using UValueProxy::update;
    /** Nothing happens without a delegate; an owner that was given away then goes. */
    void connect(CmObject* newOwner, int32_t newTag, bool owned) override;
    void connect(IPlugController* controller, int32_t newTag) override;
    void setTag(int32_t newTag) override { UValue::setTag(newTag); }
    FUnknown* getOwner() override { return owner; }
    void delegateTo(UValue* value) override;
};

/** A proxy that watches somebody else's value: it holds no reference and lets go when the value dies. */
class UValueGuard : public UValueProxy {
public:
    DECLARE_CLASS(UValueGuard, UValueProxy)
    DECLARE_NEWCOPY(UValueGuard)

    explicit UValueGuard(UValue* value = nullptr);
    UValueGuard(const UValueGuard& source);
    ~UValueGuard() override;
    void delegateTo(UValue* value) override { redirect(value, false); }
};

/** Stands in for one of several values: the one whose index the selector holds, or none when that is out of range. */
class UValueSelector : public UValueProxy {
public:
    DECLARE_CLASS(UValueSelector, UValueProxy)
    DECLARE_NEWCOPY(UValueSelector)

    UValueSelector();
    /** Has the same choices, and a selector of its own. */
    UValueSelector(const UValueSelector& source);
    ~UValueSelector() override;
    using UValueProxy::update;
    void update(CmObject* source, int32_t message) override;

    /** Shares the value; the selector's range follows. */
    virtual void addValue(UValue* value);
    UIntValue* getSelector() const { return selector; }

private:
    OPtr<UIntValue> selector;
    CmArray choices;  // of UValue, shared
};

}  // namespace Tessarine
