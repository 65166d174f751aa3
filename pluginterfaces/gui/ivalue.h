#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IPlugController;

/** A value as automation sees it. Texts are 16-bit. */
class IParameter : public FUnknown {
public:
    /** At most 127 characters and a terminator: the buffer has room for 128. */
    virtual void toString1(tchar* buffer) = 0;
    /** Reads the value from a text and sets it, owner included. */
    virtual void fromString(const tchar* text) = 0;
    virtual int32_t getValueInt() = 0;
    /** Sets the value, then tells its owner. */
    virtual void setTargetValue(int32_t value) = 0;
    virtual int32_t getMinValue() = 0;
    virtual int32_t getMaxValue() = 0;
    /** Makes the controller the owner, under this tag; null connects to nobody. */
    virtual void connect(IPlugController* controller, int32_t tag) = 0;

    DECLARE_INTERFACE(IParameter)
};

/** An observable value. `update` says whether the owner hears of a setting; dependents always do. */
class IValue : public IParameter {
public:
    enum ValueType : int32_t { kOnOff = 0, kInteger = 1, kFloat = 2, kString = 3 };

    virtual int32_t getValueType() = 0;
    virtual int32_t getTag() = 0;
    /** Off: changes happen silently, and aren't made up for. */
    virtual void enableUpdates(bool state) = 0;
    virtual void setActive(bool state) = 0;
    virtual bool isActive() = 0;
    /** Begins or ends an edit session. */
    virtual void setEditLock(bool state) = 0;
    virtual bool isEditLocked() = 0;
    /** A null buffer: length receives the text's length plus one. Otherwise at most *length - 1 characters and a
        terminator are written, without a length all. */
    virtual void toString2(tchar* buffer, int32_t* length) = 0;
    virtual void fromString2(const tchar* text, bool update) = 0;
    virtual void setValue2(int32_t value, bool update) = 0;
    virtual void setMinValue(int32_t value) = 0;
    virtual void setMaxValue(int32_t value) = 0;
    virtual float getValueFloat() = 0;
    virtual void setValueFloat(float value, bool update) = 0;
    virtual float getFloatMin() = 0;
    virtual float getFloatMax() = 0;
    virtual void setFloatMin(float value) = 0;
    virtual void setFloatMax(float value) = 0;
    /** The position in the range, 0 to 1. */
    virtual float getNormalized() = 0;
    virtual void setNormalized(float value, bool update) = 0;

    DECLARE_INTERFACE(IValue)
};

class IValue2 : public IValue {
public:
    /** Exactly one of these at a time; 2, 4 and 8 are carried for the host. */
    enum ValueFlag : uint32_t { kCanAutomate = 1, kFlag2 = 2, kFlag4 = 4, kFlag8 = 8, kWrapAround = 16 };

    /** Borrowed. */
    virtual FUnknown* getOwner() = 0;
    /** false: the value has no default. */
    virtual bool resetToDefaultValue() = 0;
    virtual bool setDefault(float value) = 0;
    virtual bool getDefault(float& value) = 0;
    virtual bool getValueFlag(uint32_t mask) = 0;
    /** Serves kCanAutomate, kFlag2 and kWrapAround; the others are readable only. */
    virtual void setValueFlag(uint32_t mask, bool state) = 0;

    DECLARE_INTERFACE(IValue2)
};

/** What a value of float type offers besides. */
class IFloatValue : public FUnknown {
public:
    /** Digits behind the decimal point in its text. */
    virtual void setPrecision(int32_t digits) = 0;
    virtual int32_t getPrecision() = 0;

    DECLARE_INTERFACE(IFloatValue)
};

/** A scale between a number and its position in the range. */
class IValueTransformer : public FUnknown {
public:
    virtual float valueToNormalized(float value) = 0;
    /** 0 and 1 give the ends of the range. */
    virtual float normalizedToValue(float position) = 0;

    DECLARE_INTERFACE(IValueTransformer)
};

class IValueTransformTarget : public FUnknown {
public:
    /** Shared, and the range becomes the transformer's; null takes it off, and the range stays. */
    virtual void setTransformer(IValueTransformer* transformer) = 0;

    DECLARE_INTERFACE(IValueTransformTarget)
};

/** A value that stands in for another one, which may be exchanged. Values are borrowed; null: there is none. */
class IValueProxy : public FUnknown {
public:
    /** Shared. A value of another copy of the framework, or one that stands in for this proxy, counts as null. */
    virtual void setDelegated(IValue* value) = 0;
    virtual IValue* getDelegated() = 0;
    /** The same through all proxies: the value at the end. */
    virtual IValue* getRepresented() = 0;

    DECLARE_INTERFACE(IValueProxy)
};

/** The strings of a list value. Indices from 0; a text that is handed out is borrowed. */
class IStringList : public FUnknown {
public:
    virtual int32_t countStrings() = 0;
    virtual const tchar* getStringAt(int32_t index) = 0;
    virtual bool addString(const tchar* text) = 0;
    virtual bool removeStringAt(int32_t index) = 0;
    virtual void removeAllStrings() = 0;
    virtual bool containsString(const tchar* text) = 0;

    DECLARE_INTERFACE(IStringList)
};

/** Another text form of a value. */
class IValueStringRepresentation : public FUnknown {
public:
    /** kResultOk: result holds the text. */
    virtual int32_t valueToString(IValue* value, FUnknown* result) = 0;
    /** kResultOk: the text was taken care of. */
    virtual int32_t stringToValue(IValue* value, const tchar* text) = 0;

    DECLARE_INTERFACE(IValueStringRepresentation)
};

class IStringRepresentationTarget : public FUnknown {
public:
    /** Shared; null takes it off. */
    virtual void setStringRepresentation(IValueStringRepresentation* representation) = 0;
    /** Borrowed. */
    virtual IValueStringRepresentation* getStringRepresentation() = 0;

    DECLARE_INTERFACE(IStringRepresentationTarget)
};

/** Identifiers under which a host makes values; what comes back is the new object's IValue. */
extern const FUID IHostOnOffValue_iid;
extern const FUID IHostIntValue_iid;
extern const FUID IHostFloatValue_iid;
extern const FUID IHostStringValue_iid;
extern const FUID IHostStringListValue_iid;
extern const FUID IHostTransformerValue_iid;
extern const FUID IHostValueProxy_iid;
extern const FUID IHostAliasValue_iid;

}  // namespace Tessarine
