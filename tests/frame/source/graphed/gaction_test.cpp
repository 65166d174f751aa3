#include "graphed/gaction.h"
#include "base/source/updatehandler.h"
#include "collect/cmobjectfilter.h"
#include "graphed/gactionviews.h"
#include "graphed/hooks.h"
#include "gui/values/uvaluehooks.h"
#include "pluginterfaces/gui/ieventhook.h"
#include "tests/support/uncounted.h"
#include <functional>
#include <gtest/gtest.h>
#include <sstream>

using namespace Tessarine;

namespace {
/** Says what is asked of it, fails at the operation told, and may do something unexpected when it is undone, or dies. */
struct Probe final : GActionTarget {
    Probe(std::string& log, std::string name, int32_t failsAt = -1)
        : log(log), name(std::move(name)), failsAt(failsAt) {
        ++living;
    }
    ~Probe() override {
        --living;
        if (died)
            died();
    }
    bool act(const char* verb, int32_t operation) {
        log += verb + (" " + name) + ",";
        return operation != failsAt;
    }
    bool execute() override {
        if (finishes)
            setState(kFinished);
        return act("do", kExecute);
    }
    bool undo() override {
        if (undone)
            undone();
        return act("undo", kUndo);
    }
    bool redo() override { return act("redo", kRedo); }
    bool getDescription(FString& text) override { return text.assign(name.c_str()), true; }
    bool uniteWith(IActionTarget*) override { return unites && act("unite", kExecute); }
    void revokeUnification(IActionTarget*) override { act("revoke", kExecute); }

    std::string& log;
    std::string name;
    int32_t failsAt;
    bool finishes = false, unites = false;
    std::function<void()> undone, died;
    inline static int32_t living = 0;
};

/** Does what the test says with each action. */
struct ActionFilter final : CmObjectFilter {
    explicit ActionFilter(std::function<bool(GAction&)> passes) : passes(std::move(passes)) {}
    bool test(CmObject* object) override { return passes(*static_cast<GAction*>(object)); }
    std::function<bool(GAction&)> passes;
};

/** Of changes, by their numbers, and of messages, as 0. */
struct Hears : CmObject {
    explicit Hears(std::function<void(int32_t)> hear) : hear(std::move(hear)) {}
    using CmObject::update;
    void update(FUnknown*, int32_t message) override { hear(message); }
    int32_t notify(FMessage* message) override { return message->isType("UpdateEditMenus") && (hear(0), true); }
    std::function<void(int32_t)> hear;
};

std::string nameOf(const GAction* action) {
    return action ? action->getName() : "-";
}

struct ActionTest : testing::Test {
    ActionTest() { GActionProcessor::unificationTimeout = 0; }
    ~ActionTest() override {
        GActionProcessor::unificationTimeout = 800;
        GActionProcessor::gAllowBranches = false;
        GActionProcessorBase::maxUndoSteps = -1;
        EXPECT_FALSE(GActionProcessor::gRunningGlobalMacro);
    }
    void TearDown() override { EXPECT_EQ(Probe::living, 0) << "targets left behind"; }

    static OPtr<GAction> actionOf(const char* name, std::initializer_list<GActionTarget*> targets) {
        OPtr<GAction> made(new GAction("Test", name));
        for (GActionTarget* target : targets)
            made->addTarget(target, false);
        return made;
    }
    OPtr<GAction> action(const std::string& name) { return actionOf(name.c_str(), {new Probe(log, name)}); }
    OPtr<GAction> surprising(GActionProcessor& processor) {
        auto* target = new Probe(log, "s");
        surprise(processor, *target);
        return actionOf("s", {target});
    }
    static ActionFilter named(char name) {
        return ActionFilter([name](GAction& each) { return nameOf(&each) == std::string(1, name); });
    }
    void perform(GActionProcessorBase& processor, const std::string& names) {
        for (const char name : names)
            EXPECT_TRUE(processor.perform(action(std::string(1, name)), nullptr));
    }
    /** Small letters are performed, < undoes, > redoes, ! performs the surprise. A capital undoes or redoes that action, wherever
        it is; -a and =a go back and forth to a, ~a removes it. A digit is the maximum from there on; & allows branches, |
        drops them. */
    void play(GActionProcessor& processor, const char* script) {
        for (; *script; ++script) {
            const char step = *script;
            const bool isCapital = step >= 'A' && step <= 'Z';
            ActionFilter other = named(isCapital ? char(step + 'a' - 'A') : script[1]);
            GAction* found = processor.findAction(other);
            if (isCapital)
                EXPECT_TRUE(processor.undoThisAction(found) || processor.redoThisAction(found));
            else if (step >= '0' && step <= '9')
                GActionProcessorBase::maxUndoSteps = step - '0';
            else if (step == '!')
                processor.perform(surprising(processor), nullptr);
            else if (step == '&' || step == '|')
                GActionProcessor::enableBranches(step == '&');
            else if (step == '<' || step == '>')
                step == '<' ? processor.undo() : processor.redo();
            else if (step >= 'a' && step <= 'z')
                perform(processor, std::string(1, step));
            else {
                EXPECT_TRUE(step == '-'   ? processor.undoMultiple(other)
                            : step == '=' ? processor.redoMultiple(other)
                                          : processor.removeActions(other));
                ++script;
            }
        }
    }
    static std::string names(const GActionProcessor& processor, int32_t mode) {
        std::string all;
        for (const auto iterator = processor.createIterator(mode); !iterator->done();)
            all += nameOf(iterator->next());
        return all;
    }
    /** a: what is done, from the last one; b: what can be redone. */
    static std::string history(const GActionProcessor& processor) {
        return names(processor, GActionProcessor::kUndoable) + "|" + names(processor, GActionProcessor::kRedoable);
    }
    std::string takeCalls() { return std::exchange(log, {}); }

    UpdateHandler handler;
    std::string log;
    std::function<void(GActionProcessor&, Probe&)> surprise;
};

TEST_F(ActionTest, AFailingTargetTakesTheOthersBack) {
    using enum IActionTarget::ExecutionState;
    struct Row {
        const char* name;
        int32_t secondFailsAt;
        const char* calls;  // on three targets
        bool executed, undone, redone;
        IActionTarget::ExecutionState state;
    };
    constexpr Row kRows[] = {
        {"none",    -1, "do a,do b,do c,undo c,undo b,undo a,redo a,redo b,redo c,", true,  true,  true,  kExecuted},
        {"execute", 0,  "do a,do b,undo a,",                                         false, false, false, kFailed  },
        {"undo",    1,  "do a,do b,do c,undo c,undo b,redo c,",                      true,  false, false, kExecuted},
        {"redo",    2,  "do a,do b,do c,undo c,undo b,undo a,redo a,redo b,undo a,", true,  true,  false, kUndone  },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        const auto three =
            actionOf("three", {new Probe(log, "a"), new Probe(log, "b", row.secondFailsAt), new Probe(log, "c")});
        EXPECT_EQ(three->execute(), row.executed);
        EXPECT_EQ(three->undo(), row.undone);
        EXPECT_EQ(three->redo(), row.redone);
        EXPECT_EQ(three->getState(), row.state);
        EXPECT_EQ(takeCalls(), row.calls);
    }
}

TEST_F(ActionTest, FinishedTargetsLeaveAndAnEmptyActionIsNotKept) {
    GActionProcessor processor;
    GAction empty, finished("Test", "finished"), half("Test", "half"), unknown, done("Test", "done");
    for (GAction* each : {&finished, &half}) {
        const OPtr<Probe> target(new Probe(log, "gone"));
        target->finishes = true;
        EXPECT_TRUE(each->addTarget(target, true));
    }
    half.addTarget(new Probe(log, "stays"), false);
    EXPECT_FALSE(processor.perform(&empty, nullptr));
    EXPECT_FALSE(processor.perform(&finished, nullptr)) << "although the work is done";
    EXPECT_EQ(finished.getState(), IActionTarget::kFinished);
    EXPECT_TRUE(processor.perform(&half, u"Half"));
    EXPECT_EQ(half.countTargets(), 1);
    EXPECT_FALSE(processor.pushUndo(&half)) << "it is there already";
    EXPECT_FALSE(processor.pushUndo(&unknown)) << "not executed";
    const OPtr<Probe> target(new Probe(log, "done"));
    target->performOperation(IActionTarget::kExecute);
    done.addTarget(target, true);
    EXPECT_TRUE(processor.pushUndo(&done)) << "the first target's state is the action's";
    processor.removeAll();
    EXPECT_EQ(half.getNode(), nullptr);
}

TEST_F(ActionTest, ScriptsLeadToHistories) {
    struct Row {
        const char *name, *script, *history;
        int32_t branchCount = 1;
    };
    constexpr Row kRows[] = {
        {"nothing", "<>", "|"},
        {"undo and redo", "abc<<>", "ba|c"},
        {"a new one discards what was undone", "abc<<d", "da|"},
        {"with branches it stays", "&abc<<d", "da|", 2},
        {"a branch grows where one stood", "&ab<c<d<", "a|d", 3},
        {"three of four steps", "3abcd", "dcb|"},
        {"trimming drops branches too", "2&ab<c<d<aef", "fe|"},
        {"no undo at all", "0abc", "|"},
        {"undone steps don't count", "3abc<d<e", "eba|"},
        {"a removed one", "3abc~a<d", "db|"},
        {"trimmed after a removal", "2ab~acd", "dc|"},
        {"a lowered maximum", "abcdef2g", "gf|"},
        {"undone out of order", "abcdB", "dca|b"},
        {"and in order", "abcdB<", "ca|db"},
        {"redone out of order", "abcdB<B", "bca|d"},
        {"many at once", "abcdB<B-b=d", "dbca|"},
        {"one is removed", "abcdB<B-b=d~b", "dca|"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        GActionProcessorBase::maxUndoSteps = -1;
        GActionProcessor::gAllowBranches = false;
        GActionProcessor processor, other;
        play(processor, row.script);
        EXPECT_EQ(history(processor), row.history);
        EXPECT_EQ(processor.countBranches(), row.branchCount);
        EXPECT_FALSE(other.undoThisAction(processor.peekUndo()));
        EXPECT_EQ(processor.undo(), *row.history != '|');
    }
}

TEST_F(ActionTest, BranchesAreNumberedDepthFirstAndCanBeGoneTo) {
    GActionProcessor processor;
    EXPECT_TRUE(processor.setActiveBranch(0));
    play(processor, "&ab<cd<e");  // a(b, c(d, e))
    ASSERT_EQ(processor.countBranches(), 3);
    EXPECT_EQ(processor.getActiveBranch(), 2);
    constexpr const char* kHistories[] = {"ba|", "dca|", "eca|"};
    for (const int32_t number : {0, 1, 2, 0, 2, 1}) {
        SCOPED_TRACE(number);
        EXPECT_TRUE(processor.setActiveBranch(number));
        EXPECT_EQ(history(processor), kHistories[number]);
        EXPECT_EQ(processor.getActiveBranch(), number);
    }
    EXPECT_FALSE(processor.setActiveBranch(3));
    processor.lock(true);
    EXPECT_FALSE(processor.setActiveBranch(0));
    processor.lock(false);
    play(processor, "<E");  // a sibling that isn't active
    EXPECT_EQ(processor.getActiveBranch(), 2);
    ActionFilter isD = named('d');
    GAction* d = processor.findAction(isD);
    EXPECT_EQ(d->getNode()->getParent()->getActiveSuccessor(), d->getNode()) << "redo stays with the other one";
    EXPECT_TRUE(processor.removeAction(d));
    EXPECT_EQ(processor.countBranches(), 2);
    static int32_t warnings;
    gActionHooks.showText = [](const tchar*) { ++warnings; };
    play(processor, "||");
    gActionHooks = {};
    EXPECT_EQ(warnings, 1) << "where something is lost";
    EXPECT_FALSE(processor.anyBranchesPresent());
    EXPECT_EQ(names(processor, GActionProcessor::kAllActions), "ace");
    EXPECT_EQ(names(processor, GActionProcessor::kActivePath), "ace");
}

TEST_F(ActionTest, ActionsUniteWhenTimeAndTargetsAgree) {
    struct Row {
        const char* name;
        int32_t timeout;
        bool sameCount, secondUnites, united;
        const char* calls;
    };
    constexpr Row kRows[] = {
        {"soon",          100000, true,  true,  true,  "unite a,unite b," },
        {"too late",      0,      true,  true,  false, ""                 },
        {"one refuses",   100000, true,  false, false, "unite a,revoke a,"},
        {"another count", 100000, false, true,  false, ""                 },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        GActionProcessor::unificationTimeout = row.timeout;
        GActionProcessor processor;
        for (const bool later : {false, true}) {
            auto *a = new Probe(log, "a"), *b = new Probe(log, "b");
            a->unites = true;
            b->unites = row.secondUnites;
            const auto pair = actionOf("p", {a, b});
            if (later && !row.sameCount)
                pair->addTarget(new Probe(log, "c"), false);
            pair->execute();
            takeCalls();
            pair->setTitle(later ? u"later" : u"first");
            EXPECT_TRUE(processor.pushUndo(pair));
        }
        EXPECT_EQ(takeCalls(), row.calls);
        EXPECT_EQ(history(processor), row.united ? "p|" : "pp|");
        EXPECT_EQ(processor.peekUndo()->getTitle().compare(u"later"), 0);
    }
    GActionProcessor::unificationTimeout = 100000;
    GActionProcessor processor;
    auto* older = new Probe(log, "a");
    processor.perform(actionOf("a", {older}), nullptr);
    play(processor, "b<");
    older->unites = true;
    play(processor, "c");
    EXPECT_EQ(history(processor), "a|b") << "soon after an undo; what can be redone stands";
}

TEST_F(ActionTest, AMacroIsOneStepAndAnEmptyOneNone) {
    GActionProcessor processor, other;
    perform(processor, "a");
    processor.beginMacro();
    EXPECT_FALSE(processor.finishMacro(u"empty"));
    processor.beginMacro();
    perform(processor, "b");
    processor.beginMacro();
    perform(processor, "c");
    EXPECT_FALSE(processor.finishMacro(u"inner")) << "the outer one is open";
    EXPECT_EQ(nameOf(processor.peekUndo()), "a");
    EXPECT_TRUE(processor.finishMacro(u"outer"));
    EXPECT_FALSE(processor.finishMacro(u"none"));
    EXPECT_EQ(processor.peekUndo()->getTitle().compare(u"outer"), 0);
    EXPECT_EQ(processor.peekUndo()->countTargets(), 2);

    EXPECT_FALSE(GActionProcessor::finishMacroGlobal(u"none"));
    EXPECT_TRUE(GActionProcessor::beginMacroGlobal());
    EXPECT_FALSE(GActionProcessor::beginMacroGlobal());
    perform(other, "d");
    perform(processor, "e");
    perform(other, "f");
    EXPECT_EQ(nameOf(processor.peekUndo()), "e") << "the macro is the other one's";
    EXPECT_EQ(other.peekUndo(), nullptr);
    EXPECT_TRUE(GActionProcessor::finishMacroGlobal(u"global"));
    takeCalls();
    EXPECT_TRUE(other.undo());
    EXPECT_EQ(takeCalls(), "undo f,undo d,");
    GActionProcessor::beginMacroGlobal();
    perform(*std::make_unique<GActionProcessor>(), "g");
    EXPECT_FALSE(GActionProcessor::finishMacroGlobal(u"gone"));
}

struct Ears final : IActionProcessorHook {
    void actionPushed(GAction* action) override { heard.append("+").append(nameOf(action)); }
    void actionUndone(GAction* action) override { heard.append("<").append(nameOf(action)); }
    void actionRedone(GAction* action) override { heard.append(">").append(nameOf(action)); }
    std::string heard;
};

struct EventEars final : Uncounted<IApplicationEventHook> {
    void onCommandFired(const char*, const char*, const tchar*) override {}
    void onActionExecuted(const char* category, const char* action, const tchar* title,
                          const tchar* description) override {
        heard += std::string(category) + "/" + action + FString(title).text8() + FString(description).text8() + " ";
    }
    void onValueChanged(IValue*) override {}
    void notifyEvent(const char*, FUnknown*) override {}
    std::string heard;
};

TEST_F(ActionTest, WhoHearsOfWhat) {
    static CmObject* application;
    int32_t menuUpdates = 0;
    Hears menus([&](int32_t) { ++menuUpdates; });
    application = &menus;
    gActionHooks.application = [] { return application; };
    Ears ears;
    EventEars events;
    UValueHooks::add(&events);
    std::ostringstream changes;
    Hears dependent([&](int32_t message) { changes << message << " "; });
    {
        GActionProcessor processor;
        processor.addDependent(&dependent);
        processor.setHook(&ears);
        perform(processor, "ab");
        processor.beginMacro();
        perform(processor, "c");
        processor.finishMacro(u"macro");
        processor.undo();
        processor.redo();
        for (const bool state : {true, true, false, false, false})
            processor.lock(state);
        processor.removeAction(processor.peekUndo());
        gMessenger->deliverMessages();
        EXPECT_EQ(menuUpdates, 1) << "one for all";
        processor.lock(true);
        processor.lock(true);
        EXPECT_FALSE(processor.undo());
        gMessenger->deliverMessages();
        EXPECT_EQ(menuUpdates, 2);
    }
    handler.removeDependent(nullptr, &dependent);
    UValueHooks::remove(&events);
    gActionHooks = {};
    gMessenger->killMessages(&menus);
    EXPECT_EQ(changes.str(), "1000 1000 1000 1001 1002 1 1003 2 ");
    EXPECT_EQ(ears.heard, "+a+b+c<>") << "before the macro takes it; the macro itself has no name";
    EXPECT_EQ(events.heard, "Test/aa Test/bb ") << "targets describe an action that has no description";
}

TEST_F(ActionTest, AFilteredViewUndoesItsOwnOnly) {
    ActionFilter isVowel([](GAction& each) { return nameOf(&each) == "a" || nameOf(&each) == "e"; });
    auto processor = std::make_unique<GActionProcessor>();
    GFilteredActionProcessor view(processor.get(), isVowel);
    int32_t heard = 0;
    Hears dependent([&](int32_t) { ++heard; });
    view.addDependent(&dependent);
    perform(view, "abecd");
    EXPECT_EQ(heard, 5);
    for (const bool undone : {true, true, false})
        EXPECT_EQ(view.undo(), undone);
    EXPECT_EQ(history(*processor), "dcb|ae");
    EXPECT_TRUE(view.redo());
    EXPECT_EQ(history(*processor), "adcb|e");
    processor->lock(true);
    EXPECT_FALSE(view.undo());
    processor->lock(false);
    EXPECT_FALSE(view.removeAction(processor->getRootNode()->getActiveSuccessor()->getAction()));
    view.removeAll();
    EXPECT_EQ(history(*processor), "dcb|");

    play(*processor, "&ex<<yz");
    EXPECT_EQ(view.peekUndo(), nullptr);
    ActionFilter isB = named('b'), isD = named('d');
    EXPECT_TRUE(processor->peekUndoFiltered(isB, false));
    EXPECT_FALSE(processor->peekUndoFiltered(isB, true)) << "beyond the fork";
    EXPECT_TRUE(processor->peekUndoFiltered(isD, true)) << "the fork itself, or nobody could go on from there";
    processor.reset();
    EXPECT_FALSE(view.undo() || view.pushUndo(action("a")));
    handler.removeDependent(nullptr, &dependent);
}

TEST_F(ActionTest, ACombinedViewFollowsItsParts) {
    GCombinedActionProcessor all;
    GActionProcessor first;
    auto second = std::make_unique<GActionProcessor>();
    for (GActionProcessorBase* part : std::initializer_list<GActionProcessorBase*>{&first, second.get(), &first, &all})
        all.addActionProcessor(part);  // the last ones are refused
    EXPECT_FALSE(all.pushUndo(action("n"))) << "nowhere to push to";
    all.setExecutionProcessor(second.get());
    perform(first, "a");
    perform(all, "b");
    perform(first, "c");
    for (const char* expected : {"c", "b", "a"}) {
        EXPECT_EQ(nameOf(all.peekUndo()), expected);
        EXPECT_TRUE(all.undo());
    }
    for (const char* expected : {"a", "b"}) {
        EXPECT_EQ(nameOf(all.peekRedo()), expected);
        EXPECT_TRUE(all.redo());
    }
    perform(*second, "d");
    EXPECT_EQ(all.peekRedo(), nullptr) << "also of the other part";
    first.removeAll();
    EXPECT_EQ(nameOf(all.peekUndo()), "d");
    perform(first, "e");
    second.reset();
    EXPECT_EQ(nameOf(all.peekUndo()), "e");
    EXPECT_FALSE(all.pushUndo(action("n"))) << "it would go to who has gone";
    EXPECT_TRUE(all.removeActionProcessor(&first));
    EXPECT_FALSE(all.undo());
}

TEST_F(ActionTest, WhoComesBackFindsTheHistoryInOrder) {
    struct Row {
        const char* name;
        bool whenItDies;  // else when it is undone
        void (*comesBack)(GActionProcessor& processor);
        const char *script, *history;
    };
    constexpr auto kUndo = [](GActionProcessor& processor) { processor.undo(); };
    const Row rows[] = {
        {"a target that is trimmed away undoes",                   true,  kUndo, "2!ab",       "a|b" },
        {"a target of lost steps undoes, so that there is a fork", true,  kUndo, "3ab!<c<Bde", "edb|"},
        {"a target of a lost branch empties the history",          true,
         [](GActionProcessor& processor) { processor.removeAll(); },             "&!<ab|",     "|"   },
        {"a target removes the action that many undos lead to",    false,
         [](GActionProcessor& processor) {
             ActionFilter isB = named('b');
             processor.removeActions(isB);
         },                                                                      "abc!-b",     "ca|s"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        GActionProcessorBase::maxUndoSteps = -1;
        surprise = [&](GActionProcessor& processor, Probe& target) {
            (row.whenItDies ? target.died : target.undone) = [&] { row.comesBack(processor); };
        };
        GActionProcessor processor;
        play(processor, row.script);
        EXPECT_EQ(history(processor), row.history);
    }
}

TEST_F(ActionTest, AVeryLongChainNeedsNoStack) {
    GActionProcessor processor;
    play(processor, "&");
    perform(processor, std::string(100'000, 'a'));
    CmIdentityFilter isOldest(processor.getRootNode()->getActiveSuccessor()->getAction());
    EXPECT_TRUE(processor.undoMultiple(isOldest));
    play(processor, "b");
    EXPECT_EQ(processor.countBranches(), 2);
    EXPECT_TRUE(processor.setActiveBranch(0));
    play(processor, "3c");
    EXPECT_EQ(history(processor), "caa|");
}

}  // namespace
