#include "base/fcompreg.h"
#include "graphed/gcommandmanager.h"
#include "gui/skin/uiscripts.h"
#include "gui/skin/uscriptobjects.h"
#include "storage/hooks.h"
#include "tests/frame/source/gui/os/linux/core/loopfixture.h"
#include "tests/support/mapped.h"
#include "tests/support/testfolder.h"
#include "tests/support/uncounted.h"
#include "tests/support/utf8.h"
#include <chrono>
#include <thread>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

fs::path applicationFolder;

bool standardFolder(int32_t number, FNPath& folder) {
    return number == kApplicationFolder && folder.fromPlatformPath(applicationFolder.c_str());
}

class Console : public FConsole {
public:
    void deferWrite(const ConstString& text) override { written += utf8(text); }
    std::string written;
};

/** Keeps what it is given, and does what the test says when it is called. */
class Probe : public FScriptObject {
public:
    DECLARE_ABSTRACT_CLASS(Probe, FScriptObject)
    static const SClassInfo __classInfo;
    const SClassInfo* getTypeInfo() override { return &__classInfo; }
    Probe() { ++living; }
    ~Probe() override { --living; }
    int32_t invoke(char, SArgs& args, SVariant& result) override { return action(args, result); }

    std::function<int32_t(SArgs&, SVariant&)> action = [](SArgs&, SVariant&) { return kResultOk; };
    inline static int32_t living = 0;
};
IMPLEMENT_ABSTRACT_CLASS(Probe, FScriptObject)
constexpr const char* kProbeProperties[] = {"a", "b"};
constexpr SMethod kProbeMethods[] = {
    {0, "act", 3},
};
const SClassInfo Probe::__classInfo = {
    "Probe", [](SArgs&) -> IScriptObject* { return new Probe; }, 2, kProbeProperties, 1, kProbeMethods};

/** With the engine that was built, as the registry finds it in the application's folder. */
class Scripts : public LoopTest {
protected:
    Scripts() {
        const char* build = std::getenv("TALV_BUILD_DIR");
        applicationFolder = fs::path(build ? build : "build/debug") / "lib/tessarine";
        gStorageHooks.standardFolder = standardFolder;
        FComponentRegistry::use();
    }
    ~Scripts() override {
        UExitUIScripts();
        FComponentRegistry::unuse();
        gStorageHooks = before;
        EXPECT_EQ(Probe::living, 0);
    }
    void SetUp() override {
        ASSERT_TRUE(UInitUIScripts());
        gUIScriptContext->setConsole(console);
        probe = new Probe;
        engine()->registerObject("probe", probe);
        probe->release();  // the context has it
        engine()->registerClass(&Probe::__classInfo);
    }
    static IScriptContext* engine() { return gUIScriptContext->getEngineContext(); }
    /** The value of a script; of one that fails, empty. */
    static CmVariant run(const std::string& text) {
        SDebugInfo info = {"skin", 1};
        CmVariant value;
        const OPtr<FScript> script(gUIScriptContext->compile(text.c_str(), -1, &info));
        if (script)
            script->execute(&value);
        return value;
    }
    static std::string textOf(const std::string& script) {
        String text;
        run(script).getString(text);
        return utf8(text);
    }
    std::string takeWritten() { return std::exchange(console->written, ""); }

    const StorageHooks before = gStorageHooks;
    const OPtr<Console> console{new Console};
    Probe* probe = nullptr;
};

TEST_F(Scripts, ValuesComeBackInTheirKind) {
    const std::tuple<const char*, uint16_t, const char*> rows[] = {
        {"return 'a' .. 1.5",                                                             CmVariant::kString8,  "a1.5"                },
        {"return '\\xFF' .. ('\\xBF'):rep(2)",                                            CmVariant::kString16, "\uFFFD\uFFFD\uFFFD"  },
        {"return true",                                                                   CmVariant::kInteger,  "1"                   },
        {"probe.a = 'G\u00FCte \U0001F600' return probe.a",                               CmVariant::kString16, "G\u00FCte \U0001F600"},
        {"local m = {__index = {a = 7}} local t = setmetatable({}, m) m.__index = nil "
         "return getmetatable(t) == m and setmetatable({}, m).a == nil and t.a", CmVariant::kInteger,  "7"                   },
        {"probe.a = ('x'):rep(400000) .. '\u00E9' return #probe.a",                       CmVariant::kInteger,  "400002"              },
        {"probe.a = probe return probe.a == probe",                                       CmVariant::kInteger,  "1"                   },
        {"probe.b = function() return 7 end return probe.b()",                            CmVariant::kInteger,  "7"                   },
        {"probe.a = 1 probe.a = nil return probe.a",                                      CmVariant::kEmpty,    ""                    },
        {"local r = Rect(1, 2, 3, 1e300) r.width = 5 return r.right .. ' ' .. r.bottom",  CmVariant::kString8,
         "6 2147483647"                                                                                                               },
        {"local t = Timer(2.9) t.period = 7 return t.period",                             CmVariant::kInteger,  "7"                   },
        {"return theApp.name",                                                            CmVariant::kString8,  "loop test"           },
        {"local t = {} for i = 1, 20000 do t[i] = i end return #table.concat(t, ' ')",    CmVariant::kInteger,  "108893"              },
        {"return ('x-y'):find('-') .. table.concat({1, 2}, ',')",                         CmVariant::kString8,  "21,2"                },
        {"local t = {1, 3} table.insert(t, 2, 2) return table.remove(t, 1) + t[2] + #t",  CmVariant::kInteger,  "6"                   },
    };
    for (const auto& [script, type, text] : rows) {
        SCOPED_TRACE(script);
        EXPECT_EQ(run(script).getType(), type);
        EXPECT_EQ(textOf(script), text);
    }
    EXPECT_EQ(takeWritten(), "");
}

TEST_F(Scripts, WhatIsWrongIsSaidOnTheConsole) {
    const std::pair<const char*, const char*> rows[] = {
        {"x = = 1",                                                                                                 "(1): Error 1: '=' unexpected symbol near '='"                              },
        {"\nfoo()",                                                                                                 "(2): Error 2: 'foo' attempt to call a nil value (global 'foo')"            },
        {"error('f: 1: no')",                                                                                       "(1): Error 2: '' f: 1: no"                                                 },
        {"error(\"' it is\", 0)",                                                                                   "(0): Error 2: '' ' it is"                                                  },
        {"error(\"it's not what you'd think\")",                                                                    "(1): Error 2: '' it's not what you'd think"                                },
        {"return probe.x",                                                                                          "(1): Error 2: 'x' 'Probe' has no such member: 'x'"                         },
        {"probe:act({})",                                                                                           "(1): Error 2: 'act' bad argument #1 to 'act' (cannot be handed over)"      },
        {"probe.act(1)",                                                                                            "(1): Error 2: 'act' 'act' is called with a colon, on an object that has it"},
        {"Timer(5).period = 0.5",                                                                                   "(1): Error 2: 'Timer' a property of 'Timer' cannot be set to this: 2"      },
        {"Timer(5).onTimer = Timer(5)",                                                                             "(1): Error 2: 'Timer' a property of 'Timer' cannot be set to this: 2"      },
        {"theApp:command('Edit')",                                                                                  "(1): Error 2: 'theApp' command of 'theApp' refuses: 2"                     },
        {"('x'):rep(1 << 60)",                                                                                      "(1): Error 2: 'rep' bad argument #1 to 'rep' (the text would be too long)" },
        {"setmetatable({}, {__close = type})",                                                                      "(1): Error 2: '__close' a metatable cannot have '__close' here"            },
        {"setmetatable({}, {__call = setmetatable({}, {})})",
         "(1): Error 2: 'setmetatable' bad argument #2 to 'setmetatable' (what is called is no function)"                                                                                       },
        {"setmetatable(setmetatable({}, {__metatable = 1}), {})",
         "(1): Error 2: '' cannot change a protected metatable"                                                                                                                                 },
        {"setmetatable({}, {__mode = 'k'})",                                                                        "(1): Error 2: '__mode' a metatable cannot have '__mode' here"              },
        {"table.concat({}, '', 1, 1 << 60)",
         "(1): Error 2: 'concat' bad argument #3 to 'concat' (outside of the table)"                                                                                                            },
        {"local t = {} for k = 0, 62 do t[1 << k] = 1 end while #t < 1 << 30 do t[#t + 1] = 1 end table.concat(t)",
         "(1): Error 2: '' the value at 3 is no text"                                                                                                                                           },
        {"\x1BLua",                                                                                                 "(0): Error 1: 't' attempt to load a binary chunk (mode is 't')"            },
    };
    for (const auto& [script, error] : rows) {
        run(script);
        EXPECT_EQ(takeWritten(), std::string("skin") + error + "\n");
    }
    SDebugInfo info = {"G\u00FCte.lua", 70};
    EXPECT_FALSE(gUIScriptContext->compile("\n)", -1, &info));
    EXPECT_EQ(takeWritten(), "G\u00FCte.lua(71): Error 1: ')' unexpected symbol near ')'\n");
}

TEST_F(Scripts, TheConsoleIsNotFlooded) {
    EXPECT_TRUE(gUIScriptContext->init()) << "again";
    run("DebugPrint('a', 1) console:print('b') Timer(100):start()");
    EXPECT_EQ(takeWritten(), "a 1\nbTimer::onTimer not assigned!\n");
    run("error(('x'):rep(5000) .. ' ' .. ('y'):rep(5000))");
    const std::string error = takeWritten();
    EXPECT_TRUE(error.size() > 3000 && error.size() < 4096 && error.ends_with("x...\n")) << error.size();
    run("console:print('x' .. ('\U0001F600'):rep(100000))");
    EXPECT_EQ(takeWritten().size(), 1 + (FScriptContext::kMaxText / 2 - 1) * 4 + 4)
        << "whole characters, and three dots";
    engine()->setLimits(60000, 16 << 20);
    const auto start = std::chrono::steady_clock::now();
    run("for i = 1, 40 do console:print(('x'):rep(65536)) end error('told')");
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    const std::string flood = takeWritten();
    EXPECT_LE(double(flood.size()), FScriptContext::kMaxWritten * (took.count() + 2));
    EXPECT_TRUE(flood.ends_with("told\n"));
}

TEST_F(Scripts, NothingReachesOutside) {
    for (const char* name :
         {"io",          "os",         "load",        "loadstring",     "loadfile",        "dofile",
          "require",     "package",    "debug",       "collectgarbage", "xpcall",          "print",
          "warn",        "_G",         "string.gsub", "string.gmatch",  "string.match",    "string.dump",
          "string.pack", "table.move", "table.sort",  "coroutine.wrap", "coroutine.close", "('').match"})
        EXPECT_EQ(textOf(std::string("return type(") + name + ")"), "nil") << name;
    EXPECT_EQ(textOf("return tostring(getmetatable('')) .. tostring(getmetatable(probe))"), "falsefalse");
}

/** Scripts with a limit that they meet. */
const struct {
    int32_t error;
    std::vector<const char*> scripts;
} kRunaways[] = {
    {SErrorInfo::kTime,
     {
         "while true do end",
         "local function f() while true do coroutine.resume(coroutine.create(f)) end end f()",
         "coroutine.resume(coroutine.create(function() while true do end end)) while true do end",
         "while true do ('x'):rep(1 << 20):upper() end",
         "local t = {} for i = 1, 60000 do t[i] = i end while true do table.insert(t, 1, 0) table.remove(t, 1) end",
         "local n, m, o = 20000, {}, {} local w = setmetatable({}, m) m.__mode = 'k' for i = 1, n do o[i] = {} end "
         "for i = n, 2, -1 do local j = math.random(i) o[i], o[j] = o[j], o[i] end for i = 1, n - 1 do "
         "w[o[i]] = o[i + 1] end first = o[1] o = nil while true do m.__mode = 'k' local t = {} end",
         "while true do Timer(100) end",
         "while true do probe:act('wait') end",
         "local t = {} for k = 0, 62 do t[1 << k] = 1 end while #t < 1 << 30 do t[#t + 1] = 1 end table.remove(t, 1)",
         "local function deep(n) return n > 0 and 1 + deep(n - 1) or 0 end pcall(deep, 1 << 20) local m = {} "
         "m.__call = setmetatable({}, m) while true do pcall(m.__call) end",
     }},
    {SErrorInfo::kMemory,
     {
         "local t = {} for i = 65537, 1 << 17 do t[i * ((1 << 18) - 1)] = 1 end t[1.5] = 1",
         "local s = 'x' while true do s = s .. s end",
         "local t = {} while true do t[#t + 1] = coroutine.create(type) end",
     }},
    {SErrorInfo::kRuntime,
     {
         "local s, t = ('\\0'):rep(1 << 17), {} for i = 1, 250 do t[i] = s end local function f(n, ...) if n == 0 then "
         "return math.max(...) end return f(n - 1, s, s, s, s, s, s, s, s, ...) end f(1000)",
         "local t = {} while true do t[#t + 1] = Timer(100) end",
         "local function f() return setmetatable({}, {__index = f})[f] end f()",
     }},
};

TEST_F(Scripts, WhoNeverEndsIsEnded) {
    probe->action = [](SArgs&, SVariant&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(9));
        return kResultOk;
    };
    for (const auto& [error, scripts] : kRunaways)
        for (const char* script : scripts) {
            SCOPED_TRACE(script);
            engine()->setLimits(error == SErrorInfo::kTime ? 100 : 20000, 4 << 20);
            const auto start = std::chrono::steady_clock::now();
            run(script);
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kSanitized ? 20 : 4));
            EXPECT_NE(takeWritten().find(": Error " + std::to_string(error) + ": "), std::string::npos);
            EXPECT_EQ(run("return 1").getLong(), 1) << "others go on";
        }
}

/** Functions within functions, each with as many names as there may be, and then names that none of them has. */
std::string slowToCompile() {
    std::string names, text, ends;
    for (int i = 0; i < 182; ++i)
        names += ",zz" + std::to_string(i);
    for (int i = 0; i < 100; ++i, ends += " end")
        text += "local " + names.substr(1) + " local function f() ";
    while (text.size() < 1000000)
        text += "A=A ";
    return text + ends;
}

TEST_F(Scripts, GarbageIsFoundBeforeTheMemoryIsGone) {
    const char* greedy =
        "local keep, words = {}, {} for i = 1, 90 do keep[i] = ('x'):rep(100000) .. 'y' end "
        "for i = 1, 300 do words[i] = 'word ' .. i end "
        "for i = 1, 5000 do table.concat(words, ', ') end return 1";
    const char* modest =
        "local t = {} for i = 1, 20 do t[i] = ('z'):rep(100000) end return #table.concat(t, '', 1, 10) // 1000000";
    engine()->setLimits(20000, IScriptContext::kDefaultBytes);
    for (const char* script : {greedy, modest, greedy, greedy, modest, modest})
        EXPECT_EQ(run(script).getLong(), 1);
    EXPECT_EQ(takeWritten(), "");
    run("local k = {} while true do k[#k + 1] = ('x'):rep(100000) .. #k end");
    EXPECT_NE(takeWritten().find("not enough memory"), std::string::npos);
    EXPECT_EQ(run("return #('x'):rep(200000)").getLong(), 200000) << "one greedy script spoils nothing for the next";
}

TEST_F(Scripts, WhatTakesLongToCompileIsGivenUp) {
    engine()->setLimits(100, 16 << 20);
    run(slowToCompile());
    EXPECT_NE(takeWritten().find(": Error 4: "), std::string::npos);
    EXPECT_FALSE(gUIScriptContext->compile(std::string(2 << 20, ' ').c_str(), -1, nullptr));
    engine()->setLimits(1000, 256 << 10);
    run("return '" + std::string(512 << 10, 'x') + "'");
    EXPECT_NE(takeWritten().find(": Error 3: "), std::string::npos);
}

TEST_F(Scripts, ObjectsThatGoWhereNoCallIsLeftAreGivenBack) {
    run("local function f() if not pcall(f) then for i = 1, 5000 do Probe() local t = {{}, {}} end end end f()");
    EXPECT_EQ(takeWritten(), "");
    UExitUIScripts();
    EXPECT_EQ(Probe::living, 0);
}

TEST_F(Scripts, AreCompiledOnceAndCalledByName) {
    const char text[] = "calls = (calls or 0) + 1 function double(x) return x * 2 end return calls -- and no more";
    const OPtr<FScript> script(gUIScriptContext->compile(text, sizeof(text) - 13, nullptr));
    ASSERT_TRUE(script);
    CmVariant value;
    for (const int64_t calls : {1, 2}) {
        ASSERT_TRUE(script->execute(&value));
        EXPECT_EQ(value.getLong(), calls);
    }
    FVariant argument(int64_t(21));
    SArgs args = {1, &argument};
    ASSERT_TRUE(script->call("double", args, &value));
    EXPECT_EQ(value.getLong(), 42);
    EXPECT_FALSE(script->call("triple", args, &value));
    CmObject* seen = nullptr;
    probe->action = [&](SArgs&, SVariant&) {
        seen = gUIScriptContext->getTarget();
        return kResultOk;
    };
    const OPtr<UIScript> looking(gUIScriptContext->compile("probe:act()", -1, nullptr));
    EXPECT_TRUE(looking->execute(console.get()));
    EXPECT_EQ(seen, console.get());
    EXPECT_EQ(gUIScriptContext->getTarget(), nullptr);
}

TEST_F(Scripts, TimersTickUntilTheFunctionSaysOrFails) {
    run("function start(f) local t = Timer(1) t.onTimer = f t:start() return t end ticks, fails, lives = 0, 0, 0 "
        "start(function() ticks = ticks + 1 return ticks < 3 end) start(function() fails = fails + 1 error('no') end) "
        "t = start(function() lives = lives + 1 end)");
    EXPECT_TRUE(runUntil([] { return run("return lives").getLong() > 5; }));
    EXPECT_EQ(textOf("return ticks .. ' ' .. fails"), "3 1");
    EXPECT_EQ(takeWritten(), "skin(1): Error 2: '' no\n");
    const int64_t lives = run("t:kill() return lives").getLong();
    runFor(20);
    EXPECT_EQ(run("return lives").getLong(), lives);
    run("started = 0 for i = 1, 1000 do local t = Timer(10000) t.onTimer = type started = started + t:start() end");
    EXPECT_EQ(run("return started").getLong(), USTimer::kMaxRunning);
}

TEST_F(Scripts, TimersLeaveHalfOfTheTime) {
    probe->action = [](SArgs&, SVariant&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return kResultOk;
    };
    run("ticks = 0 function start() local t = Timer(1) t.onTimer = tick t:start() end "
        "function tick() ticks = ticks + 1 probe:act() start() return false end start() start()");
    runFor(400);
    const int64_t ticks = run("return ticks").getLong();
    EXPECT_GT(ticks, 2);
    EXPECT_LE(ticks, 24) << "of 40";
    probe->action = [](SArgs&, SVariant&) {
        UExitUIScripts();
        return kResultOk;
    };
    EXPECT_TRUE(runUntil([] { return !gUIScriptContext; })) << "a tick may end all";
}

TEST_F(Scripts, CommandsAreCheckedAndExecuted) {
    struct Handler final : Uncounted<IActionHandler> {
        int32_t handleAction(const char*, const char* name, bool perform) override {
            heard += (perform ? "!" : "?") + std::string(name) + " ";
            return 1;
        }
        std::string heard;
    } handler;
    GCommandManager manager;
    manager.addActionHandler(&handler);
    manager.addCommand("Edit", "Cut", nullptr, UKeyCode());
    EXPECT_EQ(textOf("return theApp:command('Edit', 'Cut', 0) .. theApp:command('Edit', 'Cut')"), "11");
    EXPECT_EQ(handler.heard, "?Cut !Cut ");
    manager.removeActionHandler(&handler);
}

TEST_F(Scripts, ObjectsAndFunctionsOutliveTheContextHarmlessly) {
    const CmVariant function = run("return function() end"), heldConsole = run("return console");
    const IPtr<IScriptContext> context(engine());
    FVariant text("text");
    SArgs args = {1, &text};
    SVariant value;
    value.init();
    EXPECT_EQ(context->invoke(function.getUnknown(), nullptr, args, value), kResultOk);
    EXPECT_EQ(context->invoke(console, nullptr, args, value), kInvalidArgument);
    run("t = Timer(60000) t.onTimer = function() end t:start() probe.a = t probe.b = function() return t end");
    const IPtr<USTimer> timer(classCast<USTimer>(commonObject(run("return t").getUnknown())));
    ASSERT_TRUE(timer && timer->isRunning());
    UExitUIScripts();
    EXPECT_EQ(context->invoke(function.getUnknown(), nullptr, args, value), kWrongState);
    EXPECT_EQ(FUnknownPtr<IScriptObject>(heldConsole.getUnknown())->invoke(0, args, value), kResultOk);
    EXPECT_FALSE(timer->isRunning());
}

TEST_F(Scripts, AnObjectMayWaitAndRunScriptsAndEndTheContext) {
    engine()->setLimits(100, 16 << 20);
    probe->action = [](SArgs&, SVariant& result) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        result.setInteger(run("for i = 1, 1000 do end return 1").getLong());
        return kResultOk;
    };
    EXPECT_EQ(run("return probe:act() + probe:act()").getLong(), 2) << "which takes no time from scripts";
    engine()->setLimits(20000, 16 << 20);
    probe->action = [](SArgs&, SVariant& result) {
        const CmVariant value = run("depth = (depth or 0) + 1 return probe:act(depth)");
        result.setInteger(value.isEmpty() ? -1 : value.getLong());
        return kResultOk;
    };
    EXPECT_EQ(run("return probe:act()").getLong(), -1) << "as deep as the interpreter lets it";
    EXPECT_GT(run("return depth").getLong(), 3);
    EXPECT_NE(takeWritten().find("overflow"), std::string::npos);
    const IPtr<IScriptContext> context(engine());
    probe->action = [&](SArgs&, SVariant&) {
        context->close();
        return kResultOk;
    };
    run("coroutine.resume(coroutine.create(function() probe:act() end)) while true do pcall(type, probe) end");
    FVariant value(1.);
    EXPECT_EQ(context->setProperty("late", value), kWrongState);
    EXPECT_EQ(Probe::living, 0) << "all is given back";
}

TEST_F(Scripts, WithoutAnEngineThereIsNoContext) {
    UExitUIScripts();
    FComponentRegistry::unuse();
    EXPECT_FALSE(UInitUIScripts()) << "nor without a registry";
    const TemporaryFolder empty;
    applicationFolder = empty.path;
    FComponentRegistry::use();
    EXPECT_FALSE(UInitUIScripts());
    EXPECT_FALSE(FScriptingManager::use()->createContext(u"Lua"));
}

}  // namespace
}  // namespace Tessarine
