#pragma once
#include "pluginterfaces/base/fvariant.h"
#include <type_traits>

/** Scripts: what a program shows to them, and what it asks of an engine, which is a component of the category
    "ScriptEngine".

    A start     engine = the component; engine.initialize(host context); context = engine.createContext();
                context.setErrorHook(hook); context.registerClass(...); context.registerObject(...).
    A run       context.compile(text) gives a script, context.invoke(script) runs it. The engine reads and writes properties and
                calls methods of the objects by their numbers; what fails is an error in the script.
    An end      context.close(), which gives back all objects. What is still held, functions and the context itself, answers
                kWrongState from then on.

    Texts       8-bit ones are ASCII or UTF-8; an engine hands out 16-bit text for what isn't ASCII. All end at their first 0, so
                that what a script has behind one stays behind.
    Threads     main. */

namespace Tessarine {
class IMemoryAllocator;
class IScriptContext;
class IScriptObject;

/** The memory of texts that cross, the host's. Each copy of this code has its own pointer and fills it before scripts run; as long
    as it is null no text can be handed over. */
extern IMemoryAllocator* gMemoryAllocator;

/** A value that crosses to the other side, which then has it: a record, without constructor or end. Its kinds are FVariant's;
    what it owns, text of gMemoryAllocator or a reference, sempty gives back. */
struct SVariant {
    uint16_t type;  // FVariant::Type
    union {
        int64_t integer;
        double number;
        char* string8;
        tchar* string16;
        FUnknown* object;
    } value;

    /** Whatever was in it. */
    void init() { *this = SVariant{}; }
    /** Frees what is owned; type and value are 0 then. */
    void sempty();
    void setInteger(int64_t integer);
    void setFloat(double number);
    /** Keep a copy; null is empty. false, and it is empty: no memory. */
    bool setString8(const char* text);
    bool setString16(const tchar* text);
    /** Shares it. */
    void setObject(FUnknown* object);
    uint16_t getType() const { return uint16_t(type & ~FVariant::kOwner); }
    /** The same value, borrowed. */
    void viewAs(FVariant& view) const;
};
static_assert(sizeof(SVariant) == 16 && std::is_trivial_v<SVariant>);

/** What a script hands over; borrowed for the call. */
struct SArgs {
    int32_t count;
    FVariant* variants;

    /** Null out of range. */
    const FVariant* at(int32_t index) const { return index >= 0 && index < count ? variants + index : nullptr; }
};

struct SMethod {
    int32_t number;  // 0 to 127
    const char* name;
    int32_t argumentCount;  // at most
};

/** What a script sees of a class. The tables are static. A method without a name is called by calling the object. */
struct SClassInfo {
    static constexpr int32_t kMaxProperties = 128, kMaxArguments = 8;

    const char* className;
    /** A new object with one reference; null: wrong arguments. Null pointer: scripts make none. */
    IScriptObject* (*constructor)(SArgs& args);
    int32_t propertyCount;
    const char* const* properties;  // a property's number is its row
    int32_t methodCount;
    const SMethod* methods;
};

/** Where a script comes from. */
struct SDebugInfo {
    const char* fileName;
    int32_t line;  // of its first line in the file, from 1 on
};

struct SErrorInfo {
    enum Number : int32_t { kSyntax = 1, kRuntime = 2, kMemory = 3, kTime = 4 };

    const char* fileName;
    int32_t line;    // 0: unknown
    int32_t number;  // 0: none
    const char* token;
    const char* message;
};

/** An object that a script can see. Results other than kResultOk are errors in the script, but one: a property that has no value
    answers kResultFalse. */
class IScriptObject : public FUnknown {
public:
    /** value is empty before. */
    virtual int32_t getProperty(char index, SVariant& value, IScriptContext* context) = 0;
    virtual int32_t setProperty(char index, FVariant& value, IScriptContext* context) = 0;
    /** index: the method's number. result is empty before. */
    virtual int32_t invoke(char index, SArgs& args, SVariant& result) = 0;
    /** Of its class, static. */
    virtual const SClassInfo* getTypeInfo() = 0;

    DECLARE_INTERFACE(IScriptObject)
};

/** Hears of errors; also of those that a script catches and throws again. */
class IScriptErrorHook : public FUnknown {
public:
    /** The texts are the engine's. */
    virtual int32_t onScriptError(IScriptContext* context, SErrorInfo* error) = 0;

    DECLARE_INTERFACE(IScriptErrorHook)
};

/** Where a context writes, if the error hook offers it. */
class IScriptConsole : public FUnknown {
public:
    virtual int32_t writeConsole(const char* text) = 0;

    DECLARE_INTERFACE(IScriptConsole)
};

/** Where scripts run that know each other: they have their globals in common.

    Results   kWrongState once it is closed; kResultFalse for an error that the hook has heard of; kInvalidArgument. */
class IScriptContext : public FUnknown {
public:
    static constexpr uint32_t kDefaultMs = 1000, kDefaultBytes = 16 << 20;

    /** A global, which shares the object. */
    virtual int32_t registerObject(const char* name, IScriptObject* object) = 0;
    /** A global with a plain value. */
    virtual int32_t setProperty(const char* name, FVariant& value) = 0;
    /** Runs a script of this context, or one of its functions by name, or a function that a script handed over. result is
        emptied first; true and false come back as 1 and 0. */
    virtual int32_t invoke(FUnknown* script, const char* function, SArgs& args, SVariant& result) = 0;
    /** length in bytes; -1: up to the terminator. The script has one reference for the caller. */
    virtual int32_t compile(const char* text, int32_t length, const SDebugInfo* info, FUnknown** script) = 0;
    virtual int32_t writeConsole(const char* text) = 0;

    /** A global by which scripts make objects, or that only makes its objects known. */
    virtual int32_t registerClass(const SClassInfo* info) = 0;
    /** Borrowed until null takes it back. */
    virtual void setErrorHook(IScriptErrorHook* hook) = 0;
    /** For one run from outside, and for all that the scripts keep; kDefaultMs and kDefaultBytes before. Neither is 0. */
    virtual int32_t setLimits(uint32_t milliseconds, uint32_t bytes) = 0;
    /** From within a run: as soon as that has ended, which is at once. */
    virtual void close() = 0;

    DECLARE_INTERFACE(IScriptContext)
};

/** The component, beside its IPluginBase. */
class IScriptEngine : public FUnknown {
public:
    /** With one reference; null: it isn't initialized, or there is no memory. */
    virtual IScriptContext* createContext() = 0;

    DECLARE_INTERFACE(IScriptEngine)
};

}  // namespace Tessarine
