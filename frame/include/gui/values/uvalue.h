#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/gui/ivalue.h"

namespace Tessarine {
class FString;
class IApplicationEventHook;

/** An observable unit of state. Everything that a control shows, a host automates or a preference keeps is one of
    these; this class itself holds on or off.

    News       goes two ways, kept strictly apart. Dependents (views, proxies) hear of every change by changed(), as a
               rule at the next turn of the main loop. The one owner, to whom the value means something, hears by
               updateTarget(), at once, and only of what a user did: setters named with Target. So setValue is model to
               view, setTargetValue is view to model.
    Sessions   beginEdit() ... endEdit(commit) frame what a hand does in one go.
    Owns       the representation, shared; the owner only when it was connected as owned.
    Results    none: a text of the wrong form, or a number out of range, gives some value of the range.
    Threads    the main thread. */
class UValue : public CmObject, public IValue2, public IStringRepresentationTarget {
public:
    DECLARE_CLASS(UValue, CmObject)
    DECLARE_NEWCOPY(UValue)

    enum State : uint32_t {
        kStyleMask = 0xF,
        kSilentUntilObserved = 0x10,  // nobody is told until the first addDependent
        kOwnerOwned = 0x20,
        kOwnerAway = 0x40,  // a text is being read that the owner doesn't hear of
        kStateOn = 0x100,
        kStateActive = 0x200,
        kStateLocked = 0x400,  // in an edit session
        kUpdatesDisabled = 0x800,
        kStraightUpdate = 0x1000,  // dependents are told at once
        kStateCanAutomate = 0x2000,
        kStateFlag2 = 0x4000,
        kStateWheelStepwise = 0x8000,
        kEditMessages = 0x10000,  // "BeginEdit" and "EndEdit" go to the owner
        kStateFlag4 = 0x20000,
        kStateFineAdjust = 0x40000,
        kEndEditUpdates = 0x80000,  // endEdit tells the owner even of a value that can't be automated
        kStateFlag8 = 0x100000,
        kNoHook = 0x200000,
        kStateWrapAround = 0x400000,
        kDiscarding = 0x800000,  // the owner is being told of endEdit(false)
        kStateCentered = 0x1000000,
        kStateAutomated = 0x2000000,
    };
    enum Update : int32_t {  // kChanged (1): value, range or presentation; kDestroyed (2)
        kLockChanged = 4,
        kAutomationChanged = 5,
    };

    static constexpr int32_t kNumberStyle = 2;

    UValue() = default;
    /** Shares owner, tag and representation; dependents stay with the source. */
    UValue(const UValue& source);
    /** Tells the dependents kDestroyed at once. */
    ~UValue() override;
    UValue& operator=(const UValue&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    FORWARD_REFCOUNT(CmObject)
    void changed(int32_t message = kChanged) override;
    /** The value alone; what is read goes through the setter, so that the owner doesn't hear of it. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    /** Value and range. A key that is missing leaves its field; false: there was no value. */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    /** owned: the caller's reference on the owner goes to the value. */
    virtual void connect(CmObject* owner, int32_t tag, bool owned);
    /** The number by which the owner tells its values apart. */
    virtual void setTag(int32_t newTag) { tag = newTag; }
    int32_t getTag() override { return tag; }
    virtual void setValue(int32_t value);
    virtual int32_t getValue() { return has(kStateOn); }
    virtual int32_t getMin() { return 0; }
    virtual void setMin(int32_t /*min*/) {}
    virtual int32_t getMax() { return 1; }
    virtual void setMax(int32_t /*max*/) {}
    /** What a setter makes of the number: clamped, or wrapped by the span max - min (max + 1 gives min; a whole
        multiple of the span above min gives min - 1). */
    virtual int32_t bound(int32_t value);
    /** The position in the range, 0 to 1; 0 in an empty range. */
    float getNormalized() override;
    virtual void setNormalized(float position);
    void setActive(bool state) override;
    bool isActive() override { return has(kStateActive); }
    /** Off: changes happen silently, and aren't made up for. */
    virtual void setUpdate(bool state) { set(kUpdatesDisabled, !state); }
    virtual void setStraightUpdate(bool state) { set(kStraightUpdate, state); }
    virtual void decrement();
    virtual void increment();
    virtual void assignTo(UValue* source);
    /** false: there is no default. */
    bool resetToDefaultValue() override;
    virtual bool getDefaultValue(int32_t& /*value*/) { return false; }
    virtual bool setDefaultValue(int32_t /*value*/) { return false; }
    void setTargetValue(int32_t value) override;
    virtual void updateTarget();
    virtual void beginEdit();
    /** commit false: the owner sees kDiscarding while it is told. */
    virtual void endEdit(bool commit);
    virtual void canAutomate(bool state) { set(kStateCanAutomate, state); }
    virtual bool canAutomate() { return has(kStateCanAutomate); }
    virtual void isAutomated(bool state);
    virtual bool isAutomated() { return has(kStateAutomated); }
    virtual void wheelStepwise(bool state) { set(kStateWheelStepwise, state); }
    virtual bool wheelStepwise() { return has(kStateWheelStepwise); }
    virtual void fineAdjust(bool state) { set(kStateFineAdjust, state); }
    virtual bool fineAdjust() { return has(kStateFineAdjust); }
    virtual void isCentered(bool state) { set(kStateCentered, state); }
    virtual bool isCentered() { return has(kStateCentered); }
    virtual bool isLocked() { return has(kStateLocked); }
    virtual void setLock(bool state);
    virtual bool isWrapAround() { return has(kStateWrapAround); }
    virtual void setWrapAround(bool /*state*/) {}
    virtual void toString(FString& text);
    /** As the value would look there; it moves there and back, unheard. */
    virtual void toString(int32_t value, FString& text);
    virtual void toString(float position, FString& text);
    virtual void toShortString(FString& text, int32_t maxChars);
    void fromString(const tchar* text) override;
    virtual void setStyle(int32_t style) { flags = (flags & ~kStyleMask) | (uint32_t(style) & kStyleMask); }
    virtual int32_t getStyle() { return int32_t(flags & kStyleMask); }

    // the faces that hosts and modules see
    void toString1(tchar* buffer) override;
    int32_t getValueInt() override { return getValue(); }
    int32_t getMinValue() override { return getMin(); }
    int32_t getMaxValue() override { return getMax(); }
    void connect(IPlugController* controller, int32_t tag) override;
    int32_t getValueType() override { return kOnOff; }
    void enableUpdates(bool state) override { setUpdate(state); }
    void setEditLock(bool state) override;
    bool isEditLocked() override { return isLocked(); }
    void toString2(tchar* buffer, int32_t* length) override;
    void fromString2(const tchar* text, bool update) override;
    void setValue2(int32_t value, bool update) override;
    void setMinValue(int32_t value) override { setMin(value); }
    void setMaxValue(int32_t value) override { setMax(value); }
    float getValueFloat() override { return float(getValue()); }
    void setValueFloat(float value, bool update) override;
    float getFloatMin() override { return float(getMin()); }
    float getFloatMax() override { return float(getMax()); }
    void setFloatMin(float value) override;
    void setFloatMax(float value) override;
    void setNormalized(float position, bool update) override;
    FUnknown* getOwner() override { return owner; }
    /** Rounded down after adding a half. */
    bool setDefault(float value) override;
    bool getDefault(float& value) override;
    bool getValueFlag(uint32_t mask) override;
    void setValueFlag(uint32_t mask, bool state) override;
    void setStringRepresentation(IValueStringRepresentation* representation) override;
    IValueStringRepresentation* getStringRepresentation() override { return stringRepresentation; }

    /** The value's outside face with one reference added; null for null. */
    static IValue* createParamInterface(UValue* value);
    /** Position of the default; false: there is none, or the range is empty. */
    bool getDefaultNormalized(float& position);
    void addDependent(IDependent* dependent);
    uint32_t getState() const { return flags; }

    /** Hooks hear of each value that a user touches. Borrowed; false: null, or there already, or not there. */
    static bool registerHook(IApplicationEventHook* hook);
    static bool unregisterHook(IApplicationEventHook* hook);
    static bool bypassAllHooks;

protected:
    static constexpr char kValueKey[] = "Value";
    static constexpr char kMinKey[] = "Min";
    static constexpr char kMaxKey[] = "Max";

    /** Puts a state back at the end of the block, also when an exception passes. */
    class StateRestored {
    public:
        StateRestored(UValue& value, State state) : value(value), state(state), before(value.has(state)) {}
        ~StateRestored() { value.set(state, before); }
        StateRestored(const StateRestored&) = delete;
        StateRestored& operator=(const StateRestored&) = delete;

    private:
        UValue& value;
        const State state;
        const bool before;
    };

    /** Borrowed; for those who stand in for the value. */
    static CmObject* ownerOf(const UValue& value) { return value.owner; }
    bool has(uint32_t state) const { return (flags & state) != 0; }
    void set(uint32_t state, bool on) { flags = on ? flags | state : flags & ~state; }
    /** The representation's text or parse; false: there is none, or it failed. */
    bool representAsText(FString& text);
    bool takeRepresentedText(const tchar* text);
    /** The owner, who hears of it three times, may let go of the value. */
    template <class Change>
    void changeInSession(Change change) {
        const IPtr<UValue> kept(this);
        if (canAutomate())
            beginEdit();
        change();
        if (canAutomate())
            endEdit(true);
    }

    uint32_t flags = kStateActive | 1;
    int32_t tag = 0;
    CmObject* owner = nullptr;  // counted only with kOwnerOwned
    IPtr<IValueStringRepresentation> stringRepresentation;

private:
    class OwnerAway;
    OPtr<CmObject> detachOwner();
    bool tellOwnerOfEdit(const char* messageID);
    template <class Move>
    void showMoved(Move moveAndShow);
};

/** On or off, shown as yes or no. Typed it is "On" or "Off" all the same. */
class UYesNoValue : public UValue {
public:
    DECLARE_CLASS(UYesNoValue, UValue)
    DECLARE_NEWCOPY(UYesNoValue)

    using UValue::toString;
    /** The representation isn't asked. */
    void toString(FString& text) override;
};

}  // namespace Tessarine
