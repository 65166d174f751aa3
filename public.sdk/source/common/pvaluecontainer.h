#pragma once
#include "base/source/fstring.h"
#include "base/source/tlinkedlist.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/gui/ivalue.h"
#include <memory>

namespace Tessarine {
class IDefaultPool;
class IPlugController;

/** A value under its name. */
struct PValueEntry {
    IPtr<IValue> value;
    String name;
};

/** Owns its entries. */
class PValueList : public TLinkedList<PValueEntry*> {
public:
    ~PValueList() override;
};

/** The values of a module, which the host makes, in the order in which they came.

    Owns      its values and shares the host's classes; the controller is borrowed. What is handed out is borrowed,
              until the container is emptied or dies.
    Keys      names are compared exactly; of several values with one name or tag the first one counts.
    Results   null, false or nothing for a miss; a value isn't made without a host, or when the host can't.
    Threads   the main thread. */
class PValueContainer {
public:
    explicit PValueContainer(IHostClasses* hostClasses = nullptr, IPlugController* controller = nullptr)
        : hostClasses(hostClasses), controller(controller), values(new PValueList) {}
    virtual ~PValueContainer() { removeAll(); }
    PValueContainer(const PValueContainer&) = delete;
    PValueContainer& operator=(const PValueContainer&) = delete;

    void setHostClasses(IHostClasses* newHostClasses) { hostClasses = newHostClasses; }

    /** Connects the value to the controller, if there is one. Takes the caller's reference over. */
    IValue* addValue(IValue* value, int32_t tag, const char* name);
    /** Somebody else's value, shared as it is. */
    IValue* addExternValue(IValue* value, const char* name);
    // new values, which start at their default
    IValue* addOnOffValue(int32_t tag, const char* name, bool defaultValue, bool canAutomate);
    IValue* addIntValue(int32_t tag, const char* name, int32_t min, int32_t max, int32_t defaultValue, bool canAutomate,
                        bool wrapAround);
    /** steps: into how many the range can be told apart in the text; 0: the host's own precision. */
    IValue* addFloatValue(int32_t tag, const char* name, float min, float max, float defaultValue, int32_t steps,
                          bool canAutomate, bool wrapAround);
    IValue* addStringValue(int32_t tag, const char* name, const tchar* text, bool canAutomate);
    /** The list ends with null. Without a default text the first one is selected. */
    IValue* addStringListValue(int32_t tag, const char* name, const tchar** list, const tchar* defaultText,
                               bool canAutomate);
    /** Range, default and flags of a value of any kind of number. */
    void initFloatValue(IValue* value, float min, float max, float defaultValue, int32_t steps, bool canAutomate,
                        bool wrapAround);

    IValue* getValue(const char* name) const;
    IValue* getValueByTag(int32_t tag) const;
    IValue* getValueByIndex(int32_t index) const;
    int32_t countValues() const { return values->total(); }
    /** At most 127 characters and a terminator: the buffer has room for 128. */
    bool getValueName(int32_t index, char* buffer) const;
    void setValueActive(const char* name, bool state) const;
    void setValueActive(int32_t tag, bool state) const;
    void removeAll();

    /** Into the section of the pool, or without one of the host's; false: there is none. */
    bool storeValues(const char* section, IDefaultPool* pool) const;
    /** Values that the section hasn't stay. update: the owners hear of the others. */
    bool loadValues(const char* section, bool update, IDefaultPool* pool) const;

private:
    template <class Match>
    IValue* firstThat(Match match) const;
    template <class Init>
    IValue* create(const char* iid, int32_t tag, const char* name, Init init);
    bool append(IValue* value, const char* name);

    IPtr<IHostClasses> hostClasses;
    IPlugController* controller;
    std::unique_ptr<PValueList> values;
};

}  // namespace Tessarine
