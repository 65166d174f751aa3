#include "base/source/finitializer.h"
#include "base/source/classfactory.h"
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <unistd.h>

// The lists are those of the whole program and are used up by a run: each scenario has a process of its own, and tells
// on its error output which steps ran.

using namespace Tessarine;

namespace {
bool say(const char* word) {
    std::fputs(word, stderr);
    return true;
}
template <char name>
bool step() {
    constexpr char kWord[] = {name, 0};
    return say(kWord);
}
bool fail() {
    say("!");
    return false;
}

/** Static objects in the programs; here they only outlive the scenario. */
void add(bool isInitializer, OneTimeProcedure::Procedure procedure, uint32_t priority) {
    new OneTimeProcedure(isInitializer, procedure, "step", priority);
}
void start(OneTimeProcedure::Procedure procedure, uint32_t priority) {
    add(true, procedure, priority);
}
void end(OneTimeProcedure::Procedure procedure, uint32_t priority) {
    add(false, procedure, priority);
}
void initialize(uint32_t maxPriority) {
    say(OneTimeProcedure::initialize(maxPriority) ? "+" : "-");
}
bool initializeAgain() {
    say("(");
    initialize(100);
    return say(")");
}
bool cancelAll() {
    OneTimeProcedure::cancel();
    return say("x");
}

struct ScenarioRow {
    const char* name;
    void (*run)();
    const char* said;  // + and - are the results of initialize
};
const ScenarioRow kScenarios[] = {
    {"nothing to do",                      [] { initialize(100); }, "\\+"               },
    {"by priority, ties in order",
     [] {
         start(step<'c'>, 50);
         start(step<'a'>, 0);
         start(step<'d'>, 50);
         start(step<'b'>, 25);
         initialize(100);
     },                                                             "abcd\\+"           },
    {"each once, in stages",
     [] {
         start(step<'a'>, 0);
         start(step<'b'>, 50);
         start(step<'c'>, 51);
         initialize(0);
         initialize(0);
         initialize(50);
         initialize(100);
         initialize(100);
     },                                                             "a\\+\\+b\\+c\\+\\+"},
    {"a failure ends it for ever",
     [] {
         start(step<'a'>, 0);
         start(fail, 1);
         start(step<'b'>, 2);
         initialize(100);
         initialize(100);
     },                                                             "a!-\\+"            },
    {"a step comes back",
     [] {
         start(initializeAgain, 0);
         start(step<'a'>, 1);
         initialize(100);
     },                                                             "\\(a\\+\\)\\+"     },
    {"a step cancels",
     [] {
         start(cancelAll, 0);
         start(step<'a'>, 1);
         initialize(100);
     },                                                             "x\\+"              },
    {"a step that came late",
     [] {
         initialize(0);
         start(step<'a'>, 0);
         initialize(0);
     },                                                             "\\+a\\+"           },
    {"the end, whatever the steps answer",
     [] {
         initialize(0);
         end(step<'b'>, 9);
         end(fail, 0);
         OneTimeProcedure::terminate();
         OneTimeProcedure::terminate();
     },                                                             "\\+!b"             },
    {"the end of what never began",
     [] {
         end(step<'a'>, 0);
         OneTimeProcedure::terminate();
         initialize(0);
         OneTimeProcedure::terminate();
     },                                                             "\\+"               },
    {"the end after a failed start",
     [] {
         start(fail, 0);
         end(step<'a'>, 0);
         initialize(0);
         OneTimeProcedure::terminate();
     },                                                             "!-a"               },
    {"cancelled",
     [] {
         start(step<'a'>, 0);
         end(step<'b'>, 0);
         OneTimeProcedure::cancel();
         initialize(100);
         OneTimeProcedure::terminate();
     },                                                             "\\+"               },
};

[[noreturn]] void runAlone(void (*scenario)()) {
    OneTimeProcedure::cancel();  // what the program itself has registered
    scenario();
    _exit(0);
}

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
    for (const ScenarioRow& row : kScenarios) {
        SCOPED_TRACE(row.name);
        EXPECT_EXIT(runAlone(row.run), testing::ExitedWithCode(0), "^" + std::string(row.said) + "$");
    }
}

TEST(SingletonDeathTest, IsReleasedAtTheEndOfTheProgram) {
    EXPECT_EXIT(exitWithSingletons(), testing::ExitedWithCode(0), "^first\\.$");
}
