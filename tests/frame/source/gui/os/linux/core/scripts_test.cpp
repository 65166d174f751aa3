#include "base/fcompreg.h"
#include "graphed/gcommandmanager.h"
#include "gui/skin/uiscripts.h"
#include "gui/skin/uscriptobjects.h"
#include "storage/hooks.h"
#include "tests/frame/source/gui/os/linux/core/loopfixture.h"
#include "tests/support/mapped.h"
#include "tests/support/testfolder.h"
#include "tests/support/uncounted.h"
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
    void deferWrite(const ConstString& text) override {
        String bytes(text);
        bytes.toMultiByte(kCodePageUTF8);
        written += bytes.text8();
    }
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
        text.toMultiByte(kCodePageUTF8);
        return text.text8();
    }
    std::string takeWritten() { return std::exchange(console->written, ""); }

    const StorageHooks before = gStorageHooks;
    const OPtr<Console> console{new Console};
    Probe* probe = nullptr;
};

TEST_F(Scripts, ValuesComeBackInTheirKind) {
    struct Row {
        const char* script;
        uint16_t type;
        const char* text;
    };
    const Row rows[] = {
        {"return 1 + 2",                                                                                          CmVariant::kInteger,  "3"                   },
        {"return 3 / 2",                                                                                          CmVariant::kFloat,    "1.50"                },
        {"return 'a' .. 'b'",                                                                                     CmVariant::kString8,  "ab"                  },
        {"return 'G\u00FCte \U0001F600'",                                                                         CmVariant::kString16, "G\u00FCte \U0001F600"},
        {"return '\\xFF\\xC3'",                                                                                   CmVariant::kString16, "\uFFFD\uFFFD"        },
        {"return '\\xFF' .. ('\\xBF'):rep(9)",                                                                    CmVariant::kString16,
         "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"                                                                                       },
        {"return true",                                                                                           CmVariant::kInteger,  "1"                   },
        {"return function() end",                                                                                 CmVariant::kObject,   ""                    },
        {"return {}",                                                                                             CmVariant::kEmpty,    ""                    },
        {"return tostring(1.5)",                                                                                  CmVariant::kString8,  "1.5"                 },
        {"probe.a = 'G\u00FCte' return probe.a",                                                                  CmVariant::kString16, "G\u00FCte"           },
        {"probe.a = 1.5 return probe.a",                                                                          CmVariant::kFloat,    "1.50"                },
        {"probe.a = probe return probe.a == probe",                                                               CmVariant::kInteger,  "1"                   },
        {"probe.b = function() return 7 end return probe.b()",                                                    CmVariant::kInteger,  "7"                   },
        {"probe.a = 1 probe.a = nil return probe.a",                                                              CmVariant::kEmpty,    ""                    },
        {"local r = Rect(1, 2, 30, 40) r.width = 5 return r.right .. ' ' .. r.height",                            CmVariant::kString8,  "6 38"                },
        {"local t = Timer(2.9) t.period = 7 return t.period",                                                     CmVariant::kInteger,  "7"                   },
        {"return theApp.name",                                                                                    CmVariant::kString8,  "loop test"           },
        {"return ('x-y'):find('-') .. ('ab'):rep(3, '.') .. table.concat({1, 2}, ',')",                           CmVariant::kString8,
         "2ab.ab.ab1,2"                                                                                                                                       },
        {"local t = {1, 3} table.insert(t, 2, 2) return table.remove(t, 1) + t[2] + #t",                          CmVariant::kInteger,  "6"                   },
        {"local co = coroutine.create(function() coroutine.yield(4) end) return select(2, coroutine.resume(co))",
         CmVariant::kInteger,                                                                                                           "4"                   },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.script);
        EXPECT_EQ(run(row.script).getType(), row.type);
        EXPECT_EQ(textOf(row.script), row.text);
    }
    EXPECT_EQ(takeWritten(), "");
}

TEST_F(Scripts, WhatIsWrongIsSaidOnTheConsole) {
    const std::pair<const char*, const char*> rows[] = {
        {"x = = 1",                                                                         "skin(1): Error 1: '=' unexpected symbol near '='\n"                              },
        {"\nfoo()",                                                                         "skin(2): Error 2: 'foo' attempt to call a nil value (global 'foo')\n"            },
        {"error('f: 1: no')",                                                               "skin(1): Error 2: '' f: 1: no\n"                                                 },
        {"error({})",                                                                       "skin(0): Error 2: '' an error that is no text\n"                                 },
        {"probe.c = 1",                                                                     "skin(1): Error 2: 'c' 'Probe' has no such member: 'c'\n"                         },
        {"console.x = 1",                                                                   "skin(1): Error 2: 'x' 'console' has no such member: 'x'\n"                       },
        {"return console.x",                                                                "skin(1): Error 2: 'x' 'console' has no such member: 'x'\n"                       },
        {"probe:act({})",                                                                   "skin(1): Error 2: 'act' bad argument #1 to 'act' (cannot be handed over)\n"      },
        {"probe:act(1, 2, 3, 4)",                                                           "skin(1): Error 2: '' takes 3 values, not 4\n"                                    },
        {"probe.act(1)",                                                                    "skin(1): Error 2: 'act' 'act' is called with a colon, on an object that has it\n"},
        {"Timer()",                                                                         "skin(1): Error 2: 'Timer' 'Timer' cannot be made of this\n"                      },
        {"Timer(5).period = 0.5",                                                           "skin(1): Error 2: 'Timer' a property of 'Timer' cannot be set to this: 2\n"      },
        {"Rect(1, 2)",                                                                      "skin(1): Error 2: 'Rect' 'Rect' cannot be made of this\n"                        },
        {"theApp:command('Edit')",                                                          "skin(1): Error 2: 'theApp' command of 'theApp' refuses: 2\n"                     },
        {"('x'):rep(1 << 60)",                                                              "skin(1): Error 2: 'rep' bad argument #1 to 'rep' (the text would be too long)\n" },
        {"setmetatable({}, {__gc = print})",                                                ""                                                                                },
        {"setmetatable({}, {__gc = type})",                                                 "skin(1): Error 2: '__gc' a metatable cannot have '__gc' here\n"                  },
        {"setmetatable({}, {__mode = 'k'})",                                                "skin(1): Error 2: '__mode' a metatable cannot have '__mode' here\n"              },
        {"return table.concat(setmetatable({}, {__index = table.concat}), '', 1, 1 << 60)",
         "skin(1): Error 2: 'concat' bad argument #3 to 'concat' (outside of the table)\n"                                                                                    },
        {"\x1BLua",                                                                         "skin(0): Error 1: 't' attempt to load a binary chunk (mode is 't')\n"            },
        {"DebugPrint('a', 1) console:print('b')",                                           "a 1\nb"                                                                          },
        {"local t = Timer(100) t.onTimer = t",
         "skin(1): Error 2: 'Timer' a property of 'Timer' cannot be set to this: 2\n"                                                                                         },
        {"Timer(100):start()",                                                              "Timer::onTimer not assigned!\n"                                                  },
    };
    for (const auto& [script, written] : rows) {
        SCOPED_TRACE(script);
        run(script);
        EXPECT_EQ(takeWritten(), written);
    }
    SDebugInfo info = {"G\u00FCte.lua", 70};
    EXPECT_FALSE(gUIScriptContext->compile("\n)", -1, &info));
    EXPECT_EQ(takeWritten(), "G\u00FCte.lua(71): Error 1: ')' unexpected symbol near ')'\n");
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

/** A script with a limit that it meets. */
struct Runaway {
    const char* script;
    int32_t error;
};
const Runaway kRunaways[] = {
    {"while true do end",                                                                                          SErrorInfo::kTime   },
    {"::a:: goto a",                                                                                               SErrorInfo::kTime   },
    {"while true do pcall(function() while true do end end) end",                                                  SErrorInfo::kTime   },
    {"local function f() pcall(f) while true do end end f()",                                                      SErrorInfo::kTime   },
    {"while true do coroutine.resume(coroutine.create(function() while true do end end)) end",                     SErrorInfo::kTime   },
    {"local function f() while true do coroutine.resume(coroutine.create(f)) end end f()",                         SErrorInfo::kTime   },
    {"coroutine.resume(coroutine.create(function() local x <close> = setmetatable({}, {__close = function() "
     "while true do end end}) while true do end end)) while true do end",                                     SErrorInfo::kTime   },
    {"local x <close> = setmetatable({}, {__close = function() while true do end end})",                           SErrorInfo::kTime   },
    {"return tostring(setmetatable({}, {__tostring = function() while true do end end}))",                         SErrorInfo::kTime   },
    {"return setmetatable({}, {__index = function() while true do end end}).x",                                    SErrorInfo::kTime   },
    {"while true do ('x'):rep(1 << 20):upper() end",                                                               SErrorInfo::kTime   },
    {"local t = {} for i = 1, 60000 do t[i] = i end while true do table.insert(t, 1, 0) table.remove(t, 1) end",
     SErrorInfo::kTime                                                                                                                 },
    {"local n, m, o = 20000, {}, {} local w = setmetatable({}, m) m.__mode = 'k' for i = 1, n do o[i] = {} end "
     "for i = n, 2, -1 do local j = math.random(i) o[i], o[j] = o[j], o[i] end for i = 1, n - 1 do w[o[i]] = o[i + 1] end "
     "first = o[1] o = nil while true do m.__mode = 'k' local t = {} end",                                    SErrorInfo::kTime   },
    {"while true do Timer(100) end",                                                                               SErrorInfo::kTime   },
    {"while true do probe:act('wait') end",                                                                        SErrorInfo::kTime   },
    {"local t = {} for k = 0, 62 do t[1 << k] = 1 end while #t < 1 << 30 do t[#t + 1] = 1 end table.remove(t, 1)",
     SErrorInfo::kTime                                                                                                                 },
    {"local function deep(n) return n > 0 and 1 + deep(n - 1) or 0 end pcall(deep, 1 << 20) local m = {} "
     "m.__call = setmetatable({}, m) while true do pcall(m.__call) end",                                      SErrorInfo::kTime   },
    {"local t = {} for i = 65537, 1 << 17 do t[i * ((1 << 18) - 1)] = 1 end t[1.5] = 1",                           SErrorInfo::kMemory },
    {"while true do probe:act(function() end) end",                                                                SErrorInfo::kTime   },
    {"local s = 'x' while true do s = s .. s end",                                                                 SErrorInfo::kMemory },
    {"local t = {} while true do t[#t + 1] = ('x'):rep(1000) .. #t end",                                           SErrorInfo::kMemory },
    {"local t = {} while true do t[#t + 1] = coroutine.create(type) end",                                          SErrorInfo::kMemory },
    {"local t = {} while true do t[#t + 1] = Timer(100) end",                                                      SErrorInfo::kRuntime},
    {"local function f() return 1 + f() end f()",                                                                  SErrorInfo::kMemory },
    {"local function f() return setmetatable({}, {__index = f})[f] end f()",                                       SErrorInfo::kRuntime},
};

TEST_F(Scripts, WhoNeverEndsIsEnded) {
    for (const Runaway& row : kRunaways) {
        SCOPED_TRACE(row.script);
        probe->action = [](SArgs& args, SVariant&) {
            if (args.count > 0 && args.variants[0].getType() == FVariant::kString8)
                std::this_thread::sleep_for(std::chrono::milliseconds(9));
            return kResultOk;
        };
        engine()->setLimits(row.error == SErrorInfo::kTime ? 100 : 20000, 4 << 20);
        const auto start = std::chrono::steady_clock::now();
        run(row.script);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kSanitized ? 20 : 4));
        const std::string written = takeWritten();
        EXPECT_NE(written.find(": Error " + std::to_string(row.error) + ": "), std::string::npos) << written;
        EXPECT_EQ(run("return 1").getLong(), 1) << "others go on";
    }
}

/** Functions within functions, each with as many names as there may be, and then names that none of them has. */
std::string slowToCompile() {
    std::string text, names;
    for (char first = 'a'; first < 'h'; ++first)
        for (char second = 'a'; second <= 'z'; ++second)
            names += std::string(",z") + first + second;
    constexpr int kDepth = 100;
    for (int i = 0; i < kDepth; ++i)
        text += "local " + names.substr(1) + " local function f() ";
    while (text.size() < 1000000)
        text += "A=A ";
    for (int i = 0; i < kDepth; ++i)
        text += " end";
    return text;
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
    probe->action = [&](SArgs&, SVariant& result) {
        result.setInteger(gUIScriptContext->getTarget() == console.get());
        return kResultOk;
    };
    run("function seen() sawTarget = probe:act() end");
    const OPtr<UIScript> looking(gUIScriptContext->compile("sawTarget = probe:act()", -1, nullptr));
    EXPECT_TRUE(looking->execute(console.get()));
    EXPECT_EQ(run("return sawTarget").getLong(), 1);
    EXPECT_EQ(script->getContext()->getEngineContext(), engine());
    EXPECT_EQ(gUIScriptContext->getTarget(), nullptr);
}

TEST_F(Scripts, TimersTickUntilTheFunctionSaysOrFails) {
    run("ticks = 0 local t = Timer(1) t.onTimer = function() ticks = ticks + 1 return ticks < 3 end "
        "started = t:start()");
    EXPECT_EQ(run("return started").getLong(), 1);
    EXPECT_TRUE(runUntil([] { return run("return ticks").getLong() == 3; }));
    runFor(20);
    EXPECT_EQ(run("return ticks").getLong(), 3);
    run("fails = 0 local t = Timer(1) t.onTimer = function() fails = fails + 1 error('no') end t:start()");
    EXPECT_TRUE(runUntil([] { return run("return fails").getLong() > 0; }));
    runFor(20);
    EXPECT_EQ(takeWritten(), "skin(1): Error 2: '' no\n");
    run("lives = 0 t = Timer(1) t.onTimer = function() lives = lives + 1 end t:start()");
    EXPECT_TRUE(runUntil([] { return run("return lives").getLong() > 2; }));
    const int64_t lives = run("t:kill() return lives").getLong();
    runFor(20);
    EXPECT_EQ(run("return lives").getLong(), lives);
    EXPECT_LE(
        run("local n = 0 for i = 1, 1000 do local t = Timer(10000) t.onTimer = type n = n + t:start() end return n")
            .getLong(),
        USTimer::kMaxRunning);
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
    const CmVariant function = run("return function() return 1 end");
    const CmVariant heldConsole = run("return console");
    const IPtr<IScriptContext> context(engine());
    SArgs none = {0, nullptr};
    SVariant value;
    value.init();
    EXPECT_EQ(context->invoke(function.getUnknown(), nullptr, none, value), kResultOk);
    EXPECT_EQ(context->invoke(console, nullptr, none, value), kInvalidArgument);
    run("t = Timer(60000) t.onTimer = function() end t:start() probe.a = t probe.b = function() return t end");
    const IPtr<USTimer> timer(classCast<USTimer>(commonObject(run("return t").getUnknown())));
    ASSERT_TRUE(timer);
    EXPECT_TRUE(timer->isRunning());
    UExitUIScripts();
    EXPECT_EQ(context->invoke(function.getUnknown(), nullptr, none, value), kWrongState);
    FVariant text("text");
    SArgs args = {1, &text};
    EXPECT_EQ(FUnknownPtr<IScriptObject>(heldConsole.getUnknown())->invoke(0, args, value), kResultOk);
    EXPECT_FALSE(timer->isRunning());
}

TEST_F(Scripts, AnObjectMayEndTheContextOrRunScriptsWithinIt) {
    const OPtr<FScript> inner(
        gUIScriptContext->compile("depth = (depth or 0) + 1 return probe:act(depth)", -1, nullptr));
    probe->action = [&](SArgs&, SVariant& result) {
        CmVariant value;
        const bool done = inner->execute(&value);
        result.setInteger(done ? value.getLong() : -1);
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

TEST_F(Scripts, AnObjectThatWaitsTakesNoTimeFromScripts) {
    engine()->setLimits(100, 16 << 20);
    probe->action = [](SArgs&, SVariant& result) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        result.setInteger(run("for i = 1, 1000 do end return 1").getLong());
        return kResultOk;
    };
    EXPECT_EQ(run("local n = 0 for i = 1, 3 do n = n + probe:act() end return n").getLong(), 3);
}

TEST_F(Scripts, WithoutAnEngineThereIsNoContext) {
    UExitUIScripts();
    FComponentRegistry::unuse();
    const TemporaryFolder empty;
    applicationFolder = empty.path;
    for (const bool registry : {false, true}) {
        if (registry)
            FComponentRegistry::use();
        EXPECT_FALSE(FScriptingManager::use()->createContext());
        EXPECT_FALSE(FScriptingManager::use()->createContext(u"Lua"));
        EXPECT_FALSE(UInitUIScripts());
        EXPECT_FALSE(gUIScriptContext);
    }
}

}  // namespace
}  // namespace Tessarine
