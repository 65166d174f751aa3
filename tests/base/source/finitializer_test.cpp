#include "base/source/finitializer.h"
#include "base/source/classfactory.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

// The lists are those of the whole program and are used up by a run: each scenario has a process of its own, and tells
// on its error output which steps ran.

using namespace Tessarine;

namespace {
bool say(const char* word) {
    std::fputs(word, stderr);
    return true;
}
void initialize(uint32_t maxPriority) {
    say(OneTimeProcedure::initialize(maxPriority) ? "+" : "-");
}

constexpr std::pair<char, bool (*)()> kSteps[] = {
    {'a', [] { return say("a"); }                            },
    {'b', [] { return say("b"); }                            },
    {'c', [] { return say("c"); }                            },
    {'d', [] { return say("d"); }                            },
    {'!', [] { return !say("!"); }                           }, // fails
    {'x', [] { return OneTimeProcedure::cancel(), say("x"); }},
    {'(', [] { return say("("), initialize(100), say(")"); } },
};

/** Words of a script: "<a50" registers step a as an initializer of priority 50, ">a50" as a terminator; "i50" initializes up
    to 50, "t" terminates, "x" cancels. */
[[noreturn]] void play(const char* script) {
    OneTimeProcedure::cancel();  // what the program itself has registered
    std::istringstream words(script);
    for (std::string word; words >> word;) {
        const auto number = [&](size_t at) { return uint32_t(std::atoi(word.c_str() + at)); };
        if (word[0] == 'i')
            initialize(number(1));
        else if (word[0] == 't')
            OneTimeProcedure::terminate();
        else if (word[0] == 'x')
            OneTimeProcedure::cancel();
        else  // a static object in the programs; here it only outlives the scenario
            new OneTimeProcedure(word[0] == '<',
                                 std::ranges::find(kSteps, word[1], [](auto& step) { return step.first; })->second, "",
                                 number(2));
    }
    _exit(0);
}

// what is said: + and - are the results of initialize
constexpr std::tuple<const char*, const char*, const char*> kScenarios[] = {
    {"by priority, ties in order",         "<c50 <a0 <d50 <b25 i100",           "abcd\\+"           },
    {"each once, in stages",               "<a0 <b50 <c51 i0 i0 i50 i100 i100", "a\\+\\+b\\+c\\+\\+"},
    {"a failure ends it for ever",         "<a0 <!1 <b2 i100 i100",             "a!-\\+"            },
    {"a step comes back",                  "<(0 <a1 i100",                      "\\(a\\+\\)\\+"     },
    {"a step cancels",                     "<x0 <a1 i100",                      "x\\+"              },
    {"a step that came late",              "i0 <a0 i0",                         "\\+a\\+"           },
    {"the end, whatever the steps answer", "i0 >b9 >!0 t t",                    "\\+!b"             },
    {"the end of what never began",        ">a0 t i0 t",                        "\\+"               },
    {"the end after a failed start",       "<!0 >a0 i0 t",                      "!-a"               },
    {"cancelled",                          "<a0 >b0 x i100 t",                  "\\+"               },
};

class Last : public FObject {
public:
    explicit Last(const char* word) : word(word) {}
    ~Last() override {
        say(word);
        // A class that comes and goes this late finds no factory.
        const MetaClass late(
            "Late", [] { return static_cast<FUnknown*>(new FObject); }, nullptr, nullptr);
        say(Singleton::isTerminated() && !ClassFactory::instance(true) ? "." : "?");
        FObject* another = this;
        Singleton::registerInstance(&another);  // ignored
    }

private:
    const char* word;
};
FObject *firstInstance, *secondInstance, *givenUp, *heldElsewhere;

[[noreturn]] void exitWithSingletons() {
    firstInstance = new Last("first");
    secondInstance = new Last("second");
    heldElsewhere = secondInstance;
    heldElsewhere->addRef();
    for (FObject** each : {&firstInstance, &secondInstance, &givenUp})
        Singleton::registerInstance(each);
    std::exit(Singleton::isTerminated() ? 1 : 0);
}
}  // namespace

TEST(OneTimeProcedureDeathTest, RunsEachStepOnceInItsTurn) {
    for (const auto& [name, script, said] : kScenarios) {
        SCOPED_TRACE(name);
        EXPECT_EXIT(play(script), testing::ExitedWithCode(0), std::string("^").append(said).append("$"));
    }
}

TEST(SingletonDeathTest, IsReleasedAtTheEndOfTheProgram) {
    EXPECT_EXIT(exitWithSingletons(), testing::ExitedWithCode(0), "^first\\.$");
}
