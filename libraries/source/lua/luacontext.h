#pragma once
#include "lualimits.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/iscriptengine.h"
#include <locale.h>
#include <lua.hpp>
#include <vector>

namespace Tessarine {

/** A state of the interpreter behind its interface.

    Raising   the interpreter leaves a function by longjmp. So whatever may raise is called from functions whose locals have no
              destructors, within runProtected; what has destructors, calls of objects above all, is in functions that never raise.
    Limits    a hook that counts instructions raises from the deadline on, at each instruction, so that nobody can catch it for
              long; the library has nothing that runs for long without instructions, nor are values large enough for that.
    Garbage   is looked for when we say so. No table is weak: finding out what keys of weak tables keep alive can take hours. */
class LuaContext final : public IScriptContext {
public:
    /** Null: no memory. */
    static LuaContext* create();
    static LuaContext& of(lua_State* state) { return **static_cast<LuaContext**>(lua_getextraspace(state)); }

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;
    int32_t registerObject(const char* name, IScriptObject* object) override;
    int32_t setProperty(const char* name, FVariant& value) override;
    int32_t invoke(FUnknown* script, const char* function, SArgs& args, SVariant& result) override;
    int32_t compile(const char* text, int32_t length, const SDebugInfo* info, FUnknown** script) override;
    int32_t writeConsole(const char* text) override;
    int32_t registerClass(const SClassInfo* info) override;
    void setErrorHook(IScriptErrorHook* hook) override { errorHook = hook; }
    int32_t setLimits(uint32_t milliseconds, uint32_t bytes) override;
    void close() override;

    /** Raises when the run takes too long. For library functions whose work grows with what they are given. */
    void checkTime(lua_State* state);
    /** Looks for garbage when it is time for it. */
    void searchWhenDue();
    /** After close() or the end of the time, nothing that follows is run. */
    void stopWhenOver(lua_State* state) const;
    /** Raises when there are too many. */
    void makeRoomForObject(lua_State* state);
    void countObject() { ++objectCount; }
    /** One that was counted has gone. */
    void forgetObject() { --objectCount; }
    /** Raises without memory. The registry keeps a value, by the number that is returned. */
    int refer(lua_State* state, int index);
    /** A number that nobody wants any longer; it goes with the next one that is made. */
    void dropReference(int reference) { dropped.push_back(reference); }

    /** An object of the host is called, to the end of the block: it sees the host's locale, may run scripts again, and most of
        its own time isn't the script's. */
    class HostCall {
    public:
        explicit HostCall(lua_State* state);
        ~HostCall();
        HostCall(const HostCall&) = delete;
        HostCall& operator=(const HostCall&) = delete;

        lua_State* getState() const { return state; }
        int64_t getMilliseconds() const { return LuaLimits::now() - began; }
        /** Scripts ran meanwhile, in the caller's time. */
        void exclude(int64_t milliseconds) { began += milliseconds; }

    private:
        LuaContext& context;
        lua_State* const state;
        HostCall* const outer;
        const locale_t own;
        int64_t began;
    };
    /** An object of the host is given back, to the end of the block: the interpreter's hook is off, so nothing may run. */
    class Finalizing {
    public:
        explicit Finalizing(LuaContext& context) : context(context) { ++context.finalizing; }
        ~Finalizing() { --context.finalizing; }
        Finalizing(const Finalizing&) = delete;
        Finalizing& operator=(const Finalizing&) = delete;

    private:
        LuaContext& context;
    };

private:
    class Run;
    static constexpr size_t kFirstCollection = 256 << 10;  // bytes

    static int prepare(lua_State* state);
    void collect();
    LuaContext() = default;
    virtual ~LuaContext();
    bool open();
    void closeState();
    lua_State* running() const { return call ? call->getState() : state; }
    bool isReady() const { return state && !closing && finalizing == 0; }
    /** reason: where the body says why it raised; null: it says nothing. */
    int32_t runProtected(lua_CFunction body, void* request, const char* file, const int* reason = nullptr);
    void report(lua_State* failed, int status, const char* file);
    static void onCount(lua_State* state, lua_Debug* record);
    /** level: how far above is the script, of what is running. */
    [[noreturn]] void raiseTime(lua_State* state, int level) const;

    int32_t refCount = 1;
    LuaLimits limits;
    lua_State* state = nullptr;    // owned; null once it is closed
    HostCall* call = nullptr;      // the innermost one
    lua_State* cleaner = nullptr;  // another one, to look for garbage on
    size_t collectAt = kFirstCollection;
    IScriptErrorHook* errorHook = nullptr;
    locale_t hostLocale = LC_GLOBAL_LOCALE;
    std::vector<int> dropped;
    int32_t depth = 0;  // runs within runs
    int32_t objectCount = 0, finalizing = 0;
    bool closing = false;
};

}  // namespace Tessarine
