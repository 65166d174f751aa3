#pragma once
#include "base/fattribute.h"
#include "base/fconsole.h"
#include "base/source/cmobject.h"
#include "collect/cmvariant.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/iscriptengine.h"
#include <vector>

/** Scripts of a program: engines that were found, the contexts that they run in, and the objects that they see. Main thread. */

namespace Tessarine {

/** The engines that are in use. */
class FScriptingManager : public CmObject {
public:
    static constexpr char kCategory[] = "ScriptEngine";

    FScriptingManager() = default;
    ~FScriptingManager() override;

    /** A new context of the engine of this name, or of the first one for null, with one reference. Null: there is no such
        engine, or it doesn't start. */
    IScriptContext* createContext(const tchar* name = nullptr);
    int32_t countEngines() const { return int32_t(engines.size()); }

    /** Makes gScriptManager if there is none. */
    static FScriptingManager* use();
    /** Ends it and its engines. Contexts that are left answer for themselves. */
    static void unuse();

    DECLARE_CLASS(FScriptingManager, CmObject)

private:
    struct Engine {
        FUID cid;
        IPtr<IPluginBase> component;
        IPtr<IScriptEngine> engine;
    };
    IScriptEngine* startEngine(const FUID& cid, FUnknown* component);

    std::vector<Engine> engines;
};

/** The program's; null before use(). */
extern FScriptingManager* gScriptManager;

class FScript;
class FScriptDebugPrint;

/** A context of an engine, whose errors and output it brings to a console.

    Console   a text is cut at kMaxText; of what scripts write within kWritingMs, which is as long as a run may take, all beyond
              kMaxWritten is left out. Where a text was cut, three dots stand. Errors are told in any case.
    Life      it closes the engine's context when it goes: no script runs afterwards. */
class FScriptContext : public CmObject, public IScriptErrorHook, public IScriptConsole {
public:
    DECLARE_ABSTRACT_CLASS(FScriptContext, CmObject)
    FORWARD_REFCOUNT(CmObject)
    static constexpr uint32_t kMaxText = 64 << 10, kMaxWritten = 1 << 20;  // units
    static constexpr uint32_t kWritingMs = IScriptContext::kDefaultMs;

    /** Takes the context over, as createContext gives it. */
    explicit FScriptContext(IScriptContext* context);
    ~FScriptContext() override;
    FScriptContext(const FScriptContext&) = delete;
    FScriptContext& operator=(const FScriptContext&) = delete;
    int32_t queryInterface(const char* iid, void** obj) override;

    int32_t onScriptError(IScriptContext* context, SErrorInfo* error) override;
    int32_t writeConsole(const char* text) override;

    /** Writes what a script wants to be shown, if there is a console. */
    void print(const ConstString& text);

    /** Makes known what scripts see; again, it changes nothing. false: something was refused. */
    virtual bool init();
    /** length in bytes, -1: all; the text is UTF-8. The script has one reference for the caller; null: the text is wrong, and
        the console says why. */
    virtual FScript* compile(const char* text, int32_t length, SDebugInfo* info);

    /** Shared; null: nothing is written. */
    void setConsole(FConsole* newConsole) { console = newConsole; }
    FConsole* getConsole() const { return console; }
    /** Borrowed; never null. */
    IScriptContext* getEngineContext() const { return context; }

protected:
    /** The engine's part of a script; null: wrong. */
    IPtr<FUnknown> compileText(const char* text, int32_t length, SDebugInfo* info);
    /** A global by the name of its class. */
    bool show(IScriptObject* object);

private:
    uint32_t takeRoom(uint32_t units);

    OPtr<IScriptContext> context;
    IPtr<FConsole> console;
    uint32_t written = 0;       // units, since writingSince
    uint32_t writingSince = 0;  // ticks
    IPtr<FScriptDebugPrint> debugPrint;
};

/** A script that was compiled, and can be run any number of times. It keeps its context. */
class FScript : public FObject {
public:
    FScript(FScriptContext* context, FUnknown* script) : script(script), context(context) {}

    /** result may be null; what it gets is its own. false: it failed. */
    bool execute(CmVariant* result);
    /** One of the functions that scripts of the context have defined. */
    bool call(const char* function, SArgs& args, CmVariant* result);

    FScriptContext* getContext() const { return context; }

protected:
    IPtr<FUnknown> script;
    IPtr<FScriptContext> context;
};

/** An object that scripts see. Each class has tables of its members; the default keeps properties by their numbers.

    Results   kResultFalse: the property has no value. kInvalidArgument: there is no such member, or it takes other values. */
class FScriptObject : public CmObject, public IScriptObject {
public:
    DECLARE_ABSTRACT_CLASS(FScriptObject, CmObject)
    FORWARD_REFCOUNT(CmObject)
    FScriptObject() = default;
    FScriptObject(const FScriptObject&) = delete;
    FScriptObject& operator=(const FScriptObject&) = delete;
    int32_t queryInterface(const char* iid, void** obj) override;

    int32_t getProperty(char index, SVariant& value, IScriptContext* context) override;
    int32_t setProperty(char index, FVariant& value, IScriptContext* context) override;
    int32_t invoke(char /*index*/, SArgs& /*args*/, SVariant& /*result*/) override { return kInvalidArgument; }

protected:
    /** The object of a property that is kept; null: it is none. Borrowed. */
    FUnknown* getObjectProperty(char index) const;

private:
    FAttributeList<FIntIDAttribute, int32_t, CmArray> properties;
};

/** Members that a class which scripts see declares of its tables. */
#define DECLARE_SCRIPT_CLASS(Class)                         \
    static const ::Tessarine::SClassInfo __classInfo;       \
    static const char* const __properties[];                \
    static const ::Tessarine::SMethod __methods[];          \
    const ::Tessarine::SClassInfo* getTypeInfo() override { \
        return &__classInfo;                                \
    }                                                       \
    /** Null: it isn't made of this. */                     \
    static ::Tessarine::IScriptObject* __constructor(::Tessarine::SArgs& args);

/** The text of an argument in either width; empty: it is none. */
ConstString textOf(const FVariant* argument);

/** Owns what it gets; the value is emptied. */
void takeResult(SVariant& value, CmVariant& result);

/** The global function "DebugPrint": a line of what it is given, on the console. */
class FScriptDebugPrint : public FScriptObject {
public:
    DECLARE_ABSTRACT_CLASS(FScriptDebugPrint, FScriptObject)
    static const SClassInfo __classInfo;
    static const SMethod __methods[];
    explicit FScriptDebugPrint(FScriptContext* context) : context(context) {}

    int32_t invoke(char index, SArgs& args, SVariant& result) override;
    const SClassInfo* getTypeInfo() override { return &__classInfo; }
    /** The context goes. */
    void detach() { context = nullptr; }

private:
    FScriptContext* context;  // borrowed
};

}  // namespace Tessarine
