#pragma once
#include "collect/cmarray.h"
#include "gui/values/fcontroller.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/uintvalue.h"
#include "gui/values/ustringvalue.h"
#include "gui/values/uvalueproxy.h"

namespace Tessarine {
class FAttributes;
class FDefaults;

/** The values of a controller, in the order in which they came, by tag and by name. A search is a walk: containers hold
    tens of values.

    Owns      its values. What is handed out is borrowed, until the container is emptied or dies.
    Keys      of several values with one tag or name the first one counts. A value without a name, or with an empty one,
              is found by its tag only, and neither stored nor kept as a default. A proxy answers to the tag of its
              delegate.
    Results   an unknown key, or an index out of range: null, 0, false or -1, and nothing happens.
    Threads   the main thread. */
class UValueContainer : public FController {
public:
    DECLARE_CLASS(UValueContainer, FController)
    UValueContainer();
    ~UValueContainer() override { removeAll(); }

    /** A tag or a name, as they come. */
    class Key {
    public:
        Key(int32_t tag) : tag(tag) {}
        Key(const char* name) : name(name), isName(true) {}

    private:
        friend class UValueContainer;
        int32_t tag = 0;
        const char* name = nullptr;
        bool isName = false;
    };

    // new values, which start at their default where they have one
    UValue* newValue(CmObject* owner, int32_t tag, const char* name);
    UIntValue* newIntValue(int32_t min, int32_t max, CmObject* owner, int32_t tag, const char* name);
    UIntDefValue* newIntDefValue(int32_t min, int32_t max, int32_t standard, CmObject* owner, int32_t tag,
                                 const char* name);
    UFloatValue* newFloatValue(float min, float max, CmObject* owner, int32_t tag, const char* name);
    UFloatDefValue* newFloatDefValue(float min, float max, float standard, CmObject* owner, int32_t tag,
                                     const char* name);
    UStringValue* newStringValue(CmObject* owner, int32_t tag, const char* name);
    UStringListValue* newStringListValue(CmObject* owner, int32_t tag, const char* name);
    /** An alias for nothing yet has no owner. */
    UAliasValue* newAliasValue(CmObject* owner, int32_t tag, const char* name);
    UValueProxy* newValueProxy(CmObject* owner, int32_t tag, const char* name);
    /** Its owner is a command, shared, which it triggers; nobody when there is no such command. */
    UValue* newCommandValue(const char* category, const char* command, const char* name);

    /** Takes the caller's reference over, as does the next. */
    UValue* addValue(UValue* value, const char* name);
    /** Connects the value as well, or without an owner sets its tag. */
    UValue* addValue(UValue* value, CmObject* owner, int32_t tag, const char* name);
    void removeAll();

    int32_t total() const { return values.total(); }
    UValue* at(int32_t index) const { return static_cast<UValue*>(values.at(index)); }
    int32_t index(const UValue* value) const { return values.index(value); }
    const char* getName(int32_t index) const;
    const char* getName(const UValue* value) const { return getName(index(value)); }
    const char* getNameByTag(int32_t tag) const { return getName(getValueObject(tag)); }
    UValue* getValueObject(int32_t tag) const;
    UValue* lookupValue(const char* name) override;
    /** Null also when the value of that tag is no proxy. */
    UValueProxy* getValueProxy(int32_t tag) const { return classCast<UValueProxy>(getValueObject(tag)); }

    int32_t getValue(const Key& key) const;
    void setValue(const Key& key, int32_t value) const;
    void setTargetValue(const Key& key, int32_t value) const;
    /** From on to off and back, as a user does. */
    void toggleValue(const Key& key) const;
    float getNormalized(const Key& key) const;
    void setNormalized(const Key& key, float position) const;
    float getFloatValue(const Key& key) const;
    void setFloatValue(const Key& key, float value) const;
    /** Of a text value. */
    void setStringValue(const Key& key, const ConstString& text) const;
    void toString(const Key& key, FString& text) const;
    void fromString(const Key& key, const tchar* text) const;
    void fromString2(const Key& key, const tchar* text, bool update) const;
    bool isActive(const Key& key) const;
    void setActive(const Key& key, bool state) const;
    /** All of them. */
    void setActive(bool state) const;

    /** Each value under its name: texts as text, floats as float, all others as a whole number. */
    void store(FAttributes& attributes) const;
    /** The owners hear of each value that is there; the others stay. */
    void restore(FAttributes& attributes) const;

    // The same as settings of the program, section by section. False: no pool or section.
    bool saveDefault(const char* section) const;
    bool loadDefault(const char* section) const;
    void saveDefault(FDefaults* defaults) const;
    void loadDefault(FDefaults* defaults) const;
    /** One value, found by lookupValue, under the key or, without one, its name. False: no such value, an empty key, or
        none that is there. */
    bool saveDefault(const char* name, FDefaults* defaults, const char* key = nullptr);
    bool loadDefault(const char* name, FDefaults* defaults, const char* key = nullptr);
    static bool saveValueAsDefault(UValue* value, FDefaults* defaults, const char* key);
    static bool loadValueFromDefault(UValue* value, FDefaults* defaults, const char* key);

private:
    template <class Value>
    Value* addNew(Value* value, CmObject* owner, int32_t tag, const char* name);
    UValue* find(const Key& key) const;
    UValue* findName(const char* name) const;
    template <class Operation>
    auto with(const Key& key, Operation operation) const -> decltype(operation(*find(key)));

    CmArray values;  // of UValue, owned
    CmArray names;   // of CmString, owned; as many, in the same order
};

}  // namespace Tessarine
