#include "luacontext.h"
#include "lualibrary.h"
#include "luaobjects.h"
#include "luavalues.h"
#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace Tessarine {
namespace {
constexpr int kInstructions = 100;  // between two looks at the clock
constexpr int32_t kMaxObjects = 20000;
constexpr int32_t kMaxLine = 100000;
constexpr size_t kMaxSource = 1 << 20;  // bytes
constexpr size_t kPiece = 512;          // of it, that are read at once
constexpr int kNeededStack = 16;
constexpr const char* kNoFile = "script";

locale_t ownLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);  // never freed, which is allowed for this one
    return locale;
}

// --- requests, and what is done with them in the state; the bodies may raise

struct GlobalRequest {
    const char* name;
    SVariant value;
    const SClassInfo* info;  // or a class
};

int setGlobalBody(lua_State* state) {
    const auto& request = *static_cast<const GlobalRequest*>(lua_touserdata(state, 1));
    lua_pushglobaltable(state);
    lua_pushstring(state, request.name);
    if (request.info)
        pushClass(state, request.info);
    else
        pushVariant(state, request.value);
    lua_rawset(state, -3);  // whatever scripts have made of their globals
    return 0;
}

struct CallRequest {
    int reference;
    const char* function;  // of the globals; null: the script itself
    const SArgs* args;
    SVariant* result;
};

int callBody(lua_State* state) {
    const auto& request = *static_cast<const CallRequest*>(lua_touserdata(state, 1));
    const SArgs& args = *request.args;
    luaL_checkstack(state, args.count + kNeededStack, nullptr);
    if (request.function)
        lua_getglobal(state, request.function);
    else
        lua_rawgeti(state, LUA_REGISTRYINDEX, request.reference);
    for (int32_t i = 0; i < args.count; ++i)
        pushVariant(state, recordOf(args.variants[i]));
    lua_call(state, args.count, 1);
    toResult(state, -1, *request.result);
    return 0;
}

/** Gives the interpreter a text with as many empty lines before it as stand there in its file. */
struct CompileRequest {
    const char* file;
    const char* text;
    size_t length;
    int32_t linesBefore;
    int reference;  // the result
    int status;     // of reading it
};

const char* readSource(lua_State* state, void* data, size_t* size) {
    static constexpr char kLines[] = "\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n";
    auto& request = *static_cast<CompileRequest*>(data);
    if (request.linesBefore > 0) {
        *size = std::min(size_t(request.linesBefore), sizeof(kLines) - 1);
        request.linesBefore -= int32_t(*size);
        return kLines;
    }
    LuaContext::of(state).checkTime(state);  // what names mean can take long to find out
    const char* piece = request.text;
    *size = std::min(request.length, kPiece);
    request.text += *size;
    request.length -= *size;
    return *size ? piece : nullptr;
}

int compileBody(lua_State* state) {
    auto& request = *static_cast<CompileRequest*>(lua_touserdata(state, 1));
    lua_pushfstring(state, "=%s", request.file);
    request.status = lua_load(state, readSource, &request, lua_tostring(state, -1), "t");
    if (request.status != LUA_OK)
        return lua_error(state);
    request.reference = LuaContext::of(state).refer(state, -1);
    return 0;
}

// --- messages

/** "file:line: what is wrong near 'token'" taken apart. */
struct Message {
    explicit Message(std::string_view text, const char* usualFile) : file(usualFile), message(text) {
        for (size_t colon = text.find(':'); colon != std::string_view::npos; colon = text.find(':', colon + 1)) {
            const char* digits = text.data() + colon + 1;
            const auto number = std::from_chars(digits, text.data() + text.size(), line);
            const size_t end = size_t(number.ptr - text.data());
            if (number.ec == std::errc() && text.substr(end, 2) == ": ") {
                file = text.substr(0, colon);
                message = text.substr(end + 2);
                break;
            }
            line = 0;
        }
        const size_t close = message.rfind('\''), open = openingQuote(close);
        if (open != std::string::npos)
            token = message.substr(open + 1, close - open - 1);
    }

    /** The last one before that could open something, as an apostrophe can't. */
    size_t openingQuote(size_t close) const {
        size_t open = close;
        do
            open = open == 0 || open == std::string::npos ? std::string::npos : message.rfind('\'', open - 1);
        while (open != std::string::npos && open > 0 && message[open - 1] != ' ');
        return open;
    }

    std::string file, message, token;
    int32_t line = 0;
};
}  // namespace

/** A run from outside, or one within it; to the end of the block. One within has the time of what calls it, or its own if that
    has waited for long: then somebody works with the program. */
class LuaContext::Run {
public:
    explicit Run(LuaContext& context)
        : context(&context), usedState(context.running()), top(lua_gettop(usedState)), before(uselocale(ownLocale())),
          began(LuaLimits::now()), caller(context.call), hasOwnTime(!caller || isWaiting(*caller)) {
        if (hasOwnTime)
            deadlineBefore = context.limits.start();
        if (context.depth++ > 0)
            return;
        context.hostLocale = before;
        lua_sethook(context.state, onCount, LUA_MASKCOUNT, kInstructions);
    }
    ~Run() {
        lua_settop(usedState, top);
        if (context->depth == 1)
            context->searchWhenDue();
        if (--context->depth == 0 && context->closing)
            context->closeState();
        if (hasOwnTime)
            context->limits.resume(deadlineBefore);
        else
            caller->exclude(LuaLimits::now() - began);
        uselocale(before);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

private:
    bool isWaiting(const HostCall& call) const { return context->limits.isLongCall(call.getMilliseconds()); }

    const IPtr<LuaContext> context;
    lua_State* const usedState;
    const int top;
    const locale_t before;
    const int64_t began;
    HostCall* const caller;  // null: the run is from outside
    const bool hasOwnTime;
    int64_t deadlineBefore = 0;
};

// --- life

LuaContext* LuaContext::create() {
    auto* context = new (std::nothrow) LuaContext;
    if (context && context->open())
        return context;
    if (context)
        context->release();
    return nullptr;
}

bool LuaContext::open() {
    state = lua_newstate(LuaLimits::allocate, &limits);
    if (!state)
        return false;
    *static_cast<LuaContext**>(lua_getextraspace(state)) = this;  // coroutines get a copy
    const Run run(*this);
    return runProtected(prepare, nullptr, kNoFile) == kResultOk;
}

int LuaContext::prepare(lua_State* state) {
    LuaContext& context = of(state);
    openLuaLibrary(state);
    lua_State* thread = lua_newthread(state);
    luaL_ref(state, LUA_REGISTRYINDEX);
    context.cleaner = thread;
    // what the standard library is refused, it doesn't ask for again after a search: the next chance for one is taken
    context.limits.setRefusal([](void* self) { static_cast<LuaContext*>(self)->collectAt = 0; }, &context);
    lua_gc(state, LUA_GCSTOP);
    return 0;
}

LuaContext::~LuaContext() {
    closeState();
}

void LuaContext::closeState() {
    const locale_t before = uselocale(ownLocale());
    limits.setRefusal(nullptr, nullptr);
    limits.setLifted(true);
    if (lua_State* ended = std::exchange(state, nullptr))
        lua_close(ended);
    uselocale(before);
}

void LuaContext::close() {
    closing = true;
    errorHook = nullptr;
    limits.end();
    if (depth == 0)
        closeState();
}

int32_t LuaContext::queryInterface(const char* iid, void** obj) {
    return answerInterface<IScriptContext>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj)
               ? kResultOk
               : noInterface(obj);
}

uint32_t LuaContext::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t LuaContext::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

// --- globals

int32_t LuaContext::registerObject(const char* name, IScriptObject* object) {
    FVariant value(static_cast<FUnknown*>(object));
    return object ? setProperty(name, value) : int32_t(kInvalidArgument);
}

int32_t LuaContext::setProperty(const char* name, FVariant& value) {
    if (!isReady())
        return kWrongState;
    if (!name)
        return kInvalidArgument;
    const Run run(*this);
    GlobalRequest request = {name, recordOf(value), nullptr};
    return runProtected(setGlobalBody, &request, kNoFile);
}

int32_t LuaContext::registerClass(const SClassInfo* info) {
    if (!isReady())
        return kWrongState;
    if (!info || !info->className || info->propertyCount > SClassInfo::kMaxProperties)
        return kInvalidArgument;
    for (int32_t i = 0; i < info->methodCount; ++i)
        if (info->methods[i].argumentCount > SClassInfo::kMaxArguments)
            return kInvalidArgument;
    const Run run(*this);
    GlobalRequest request = {info->className, {}, info};
    return runProtected(setGlobalBody, &request, kNoFile);
}

// --- runs

int32_t LuaContext::compile(const char* text, int32_t length, const SDebugInfo* info, FUnknown** script) {
    if (!script || !text)
        return kInvalidArgument;
    *script = nullptr;
    if (!isReady())
        return kWrongState;
    const char* file = info && info->fileName ? info->fileName : kNoFile;
    const int32_t linesBefore = info ? std::clamp(info->line, 1, kMaxLine) - 1 : 0;
    CompileRequest request = {file,        text,      length < 0 ? std::strlen(text) : size_t(length),
                              linesBefore, LUA_NOREF, LUA_OK};
    if (request.length > kMaxSource)
        return kInvalidArgument;
    const Run run(*this);
    const int32_t answer = runProtected(compileBody, &request, file, &request.status);
    if (answer == kResultOk)
        *script = new LuaFunction(*this, request.reference, file);
    return answer;
}

int32_t LuaContext::invoke(FUnknown* script, const char* function, SArgs& args, SVariant& result) {
    result.sempty();
    if (!isReady())
        return kWrongState;
    LuaFunction* called = LuaFunction::of(script, *this);
    if (!called || args.count < 0)
        return kInvalidArgument;
    const IPtr<FUnknown> kept(called);
    const Run run(*this);
    CallRequest request = {called->getReference(), function, &args, &result};
    const int32_t answer = runProtected(callBody, &request, called->getFile());
    if (isReady())
        return answer;
    result.sempty();
    return kWrongState;
}

int32_t LuaContext::runProtected(lua_CFunction body, void* request, const char* file, const int* reason) {
    lua_State* used = running();
    if (!lua_checkstack(used, kNeededStack))
        return kResultFalse;
    lua_pushcfunction(used, body);
    lua_pushlightuserdata(used, request);
    const int status = lua_pcall(used, 1, 0, 0);
    if (status == LUA_OK)
        return kResultOk;
    report(used, reason && *reason != LUA_OK ? *reason : status, file);
    lua_pop(used, 1);
    return kResultFalse;
}

void LuaContext::report(lua_State* failed, int status, const char* file) {
    const bool isText = lua_type(failed, -1) == LUA_TSTRING;
    const Message parts(isText ? lua_tostring(failed, -1) : "an error that is no text", file);
    const int32_t number = limits.isExpired()        ? SErrorInfo::kTime
                           : status == LUA_ERRMEM    ? SErrorInfo::kMemory
                           : status == LUA_ERRSYNTAX ? SErrorInfo::kSyntax
                                                     : SErrorInfo::kRuntime;
    SErrorInfo error = {parts.file.c_str(), parts.line, number, parts.token.c_str(), parts.message.c_str()};
    const HostCall call(failed);
    if (errorHook)
        errorHook->onScriptError(this, &error);
}

int32_t LuaContext::writeConsole(const char* text) {
    if (closing || !errorHook)
        return kWrongState;
    const FUnknownPtr<IScriptConsole> console(errorHook);
    return console ? console->writeConsole(text ? text : "") : int32_t(kResultFalse);
}

// --- limits

int32_t LuaContext::setLimits(uint32_t milliseconds, uint32_t bytes) {
    if (milliseconds == 0 || bytes == 0)
        return kInvalidArgument;
    limits.set(milliseconds, bytes);
    collectAt = limits.nextSearch(kFirstCollection);
    return kResultOk;
}

void LuaContext::onCount(lua_State* state, lua_Debug* /*record*/) {
    LuaContext& context = of(state);
    if (context.limits.isExpired())
        context.raiseTime(state, 0);
    context.searchWhenDue();
    if (lua_gethookcount(state) != kInstructions)  // a coroutine that met the end of an earlier run
        lua_sethook(state, onCount, LUA_MASKCOUNT, kInstructions);
}

void LuaContext::raiseTime(lua_State* state, int level) const {
    lua_sethook(state, onCount, LUA_MASKCOUNT, 1);  // who catches it comes no further
    luaL_where(state, level);
    lua_pushfstring(state, "runs for more than %d ms", int(limits.getMilliseconds()));
    lua_concat(state, 2);
    lua_error(state);
    __builtin_unreachable();
}

void LuaContext::checkTime(lua_State* state) {
    if (limits.isExpired())
        raiseTime(state, 1);
}

void LuaContext::searchWhenDue() {
    if (limits.getUsedBytes() > collectAt)
        collect();
}

void LuaContext::stopWhenOver(lua_State* state) const {
    if (limits.isExpired())
        lua_sethook(state, onCount, LUA_MASKCOUNT, 1);
}

int LuaContext::refer(lua_State* state, int index) {
    while (!dropped.empty()) {
        const int reference = dropped.back();
        dropped.pop_back();
        luaL_unref(state, LUA_REGISTRYINDEX, reference);
    }
    lua_pushvalue(state, index);
    return luaL_ref(state, LUA_REGISTRYINDEX);
}

void LuaContext::makeRoomForObject(lua_State* state) {
    if (objectCount >= kMaxObjects) {
        checkTime(state);
        collect();
    }
    if (objectCount >= kMaxObjects)
        luaL_error(state, "has more than %d objects", int(kMaxObjects));
}

// --- garbage

/** On the cleaner: where scripts have nested as deep as they may, the objects that go couldn't be given back. */
void LuaContext::collect() {
    limits.setLifted(true);
    lua_gc(cleaner, LUA_GCCOLLECT);
    limits.setLifted(false);
    collectAt = limits.nextSearch(kFirstCollection);
}

// --- the host's turn

LuaContext::HostCall::HostCall(lua_State* state)
    : context(of(state)), state(state), outer(std::exchange(context.call, this)), own(uselocale(context.hostLocale)),
      began(LuaLimits::now()) {}

LuaContext::HostCall::~HostCall() {
    uselocale(own);
    context.call = outer;
    context.limits.spare(getMilliseconds());
    context.stopWhenOver(state);
}

}  // namespace Tessarine
