#include "graphed/gaction.h"
#include "base/source/updatehandler.h"
#include "graphed/gactionmaxundo.h"
#include "graphed/gactionviews.h"
#include "graphed/hooks.h"
#include "gui/values/uvaluehooks.h"
#include "pluginterfaces/gui/ieventhook.h"
#include "tests/frame/source/graphed/actionprobes.h"
#include "tests/support/uncounted.h"
#include <sstream>

using namespace Tessarine;

namespace {
using Log = std::vector<std::string>;

struct Hears : CmObject {
    explicit Hears(std::function<void(int32_t)> hear) : hear(std::move(hear)) {}
    using CmObject::update;
    void update(FUnknown*, int32_t message) override { hear(message); }
    std::function<void(int32_t)> hear;
};

struct ActionTest : testing::Test {
    ActionTest() { GActionProcessor::unificationTimeout = 0; }
    ~ActionTest() override {
        GActionProcessor::unificationTimeout = 800;
        GActionProcessor::gAllowBranches = false;
        GActionProcessorBase::maxUndoSteps = -1;
        EXPECT_FALSE(GActionProcessor::gRunningGlobalMacro);
    }
    void TearDown() override { EXPECT_EQ(AddTarget::living, 0) << "targets left behind"; }

    OPtr<GAction> action(const char* name) {
        OPtr<GAction> made(new GAction("Test", name));
        made->addTarget(new AddTarget(log, name), false);
        return made;
    }
    void perform(GActionProcessorBase& processor, const std::string& names) {
        for (const char name : names)
            EXPECT_TRUE(processor.perform(action(std::string(1, name).c_str()), nullptr));
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

    UpdateHandler handler;
    Log log;
};

struct OperationRow {
    const char* name;
    int32_t secondFailsAt;
    const char* calls;  // on three targets
    bool executed, undone, redone;
    IActionTarget::ExecutionState state;
};

TEST_F(ActionTest, AFailingTargetTakesTheOthersBack) {
    constexpr OperationRow kRows[] = {
        {"none",    -1, "do a,do b,do c,undo c,undo b,undo a,redo a,redo b,redo c,", true,  true,  true,
         IActionTarget::kExecuted                                                                                                 },
        {"execute", 0,  "do a,do b,undo a,",                                         false, false, false, IActionTarget::kFailed  },
        {"undo",    1,  "do a,do b,do c,undo c,undo b,redo c,",                      true,  false, false, IActionTarget::kExecuted},
        {"redo",    2,  "do a,do b,do c,undo c,undo b,undo a,redo a,redo b,undo a,", true,  true,  false,
         IActionTarget::kUndone                                                                                                   },
    };
    for (const OperationRow& row : kRows) {
        SCOPED_TRACE(row.name);
        log.clear();
        GAction action("Test", "three");
        for (const char* name : {"a", "b", "c"})
            action.addTarget(new AddTarget(log, name, *name == 'b' ? row.secondFailsAt : AddTarget::kNever), false);
        EXPECT_EQ(action.execute(), row.executed);
        EXPECT_EQ(action.undo(), row.undone);
        EXPECT_EQ(action.redo(), row.redone);
        EXPECT_EQ(action.getState(), row.state);
        std::string calls;
        for (const std::string& call : log)
            calls += call + ",";
        EXPECT_EQ(calls, row.calls);
    }
}

TEST_F(ActionTest, FinishedTargetsLeaveAndAnEmptyActionIsNotKept) {
    GActionProcessor processor;
    GAction empty, finished("Test", "finished"), half("Test", "half"), unknown;
    for (GAction* each : {&finished, &half}) {
        const OPtr<AddTarget> target(new AddTarget(log, "gone"));
        target->finishes = true;
        EXPECT_TRUE(each->addTarget(target, true));
    }
    half.addTarget(new AddTarget(log, "stays"), false);
    EXPECT_FALSE(processor.perform(&empty, nullptr));
    EXPECT_FALSE(processor.perform(&finished, nullptr)) << "although the work is done";
    EXPECT_EQ(empty.getState(), IActionTarget::kFinished);
    EXPECT_EQ(finished.getState(), IActionTarget::kFinished);
    EXPECT_TRUE(processor.perform(&half, u"Half"));
    EXPECT_EQ(half.countTargets(), 1);
    FString text;
    EXPECT_TRUE(half.getDescription(text));
    EXPECT_STREQ(text.text8(), "stays");
    EXPECT_FALSE(processor.pushUndo(&half)) << "it is there already";
    EXPECT_FALSE(processor.pushUndo(&unknown)) << "not executed";

    GAction done("Test", "done");  // the first target's state is the action's
    const OPtr<AddTarget> target(new AddTarget(log, "done"));
    target->performOperation(IActionTarget::kExecute);
    done.addTarget(target, true);
    EXPECT_TRUE(processor.pushUndo(&done));
    EXPECT_FALSE(target->performOperation(IActionTarget::Operation(7)));
    EXPECT_EQ(target->getState(), IActionTarget::kFailed);
    processor.removeAll();
    EXPECT_EQ(half.getNode(), nullptr);
}

/** Letters perform; < undoes, > redoes, x removes the oldest. */
struct HistoryRow {
    const char* name;
    int32_t maxSteps;
    bool branches;
    const char* script;
    const char* history;
    int32_t branchCount;
};

TEST_F(ActionTest, ScriptsLeadToHistories) {
    constexpr HistoryRow kRows[] = {
        {"nothing",                            -1, false, "<>",          "|",    1},
        {"undo and redo",                      -1, false, "abc<<>",      "ba|c", 1},
        {"a new one discards what was undone", -1, false, "abc<<d",      "da|",  1},
        {"with branches it stays",             -1, true,  "abc<<d",      "da|",  2},
        {"a branch grows where one stood",     -1, true,  "ab<c<d<",     "a|d",  3},
        {"three of four steps",                3,  false, "abcd",        "dcb|", 1},
        {"trimming drops branches too",        2,  true,  "ab<c<<d<aef", "fe|",  1},
        {"no undo at all",                     0,  false, "abc",         "|",    1},
        {"undone steps don't count",           3,  false, "abc<d<e",     "eba|", 1},
        {"a removed one",                      3,  false, "abcx<d",      "db|",  1},
        {"trimmed after a removal",            2,  false, "abxcd",       "dc|",  1},
    };
    for (const HistoryRow& row : kRows) {
        SCOPED_TRACE(row.name);
        GActionProcessorBase::maxUndoSteps = row.maxSteps;
        GActionProcessor::gAllowBranches = row.branches;
        GActionProcessor processor;
        for (const char* step = row.script; *step; ++step) {
            if (*step == '<')
                processor.undo();
            else if (*step == '>')
                processor.redo();
            else if (*step == 'x')
                processor.removeAction(processor.getRootNode()->getActiveSuccessor()->getAction());
            else
                perform(processor, std::string(1, *step));
        }
        EXPECT_EQ(history(processor), row.history);
        EXPECT_EQ(processor.countBranches(), row.branchCount);
        EXPECT_EQ(processor.undo(), *row.history != '|');
    }
}

TEST_F(ActionTest, LoweredMaximumCutsTheOldOnesAtTheNextPush) {
    GActionProcessor processor;
    perform(processor, "abcdef");
    GAction* oldest = processor.getRootNode()->getActiveSuccessor()->getAction();
    const IPtr<GAction> held(oldest);
    GActionProcessorBase::maxUndoSteps = 2;
    perform(processor, "g");
    EXPECT_EQ(history(processor), "gf|");
    EXPECT_EQ(oldest->getNode(), nullptr);
    EXPECT_FALSE(processor.undoThisAction(oldest));
}

TEST_F(ActionTest, OutOfOrderAnActionMovesToTheEnd) {
    GActionProcessor processor, other;
    perform(processor, "abcd");
    ActionFilter isB([](GAction& each) { return isNamed(&each, "b"); });
    GAction* b = processor.findAction(isB);
    EXPECT_FALSE(other.undoThisAction(b));
    EXPECT_TRUE(processor.undoThisAction(b));
    EXPECT_EQ(history(processor), "dca|b");
    EXPECT_TRUE(processor.undo());
    EXPECT_EQ(history(processor), "ca|db");
    EXPECT_TRUE(processor.redoThisAction(b));
    EXPECT_EQ(history(processor), "bca|d");
    EXPECT_TRUE(processor.undoMultiple(isB));
    ActionFilter isD([](GAction& each) { return isNamed(&each, "d"); });
    EXPECT_TRUE(processor.redoMultiple(isD));
    EXPECT_FALSE(processor.redoMultiple(isD));
    EXPECT_EQ(history(processor), "dbca|");
    EXPECT_TRUE(processor.removeActions(isB));
    EXPECT_FALSE(processor.removeActions(isB));
    EXPECT_EQ(history(processor), "dca|");
}

TEST_F(ActionTest, BranchesAreNumberedDepthFirstAndCanBeGoneTo) {
    GActionProcessor::enableBranches(true);
    GActionProcessor processor;
    EXPECT_TRUE(processor.setActiveBranch(0));
    perform(processor, "ab");
    processor.undo();
    perform(processor, "cd");
    processor.undo();
    perform(processor, "e");  // a(b, c(d, e))
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

    processor.undo();
    GAction* d = processor.getRootNode()->getActiveSuccessor()->getActiveSuccessor()->getSuccessor(0)->getAction();
    GAction* e = d->getNode()->getParent()->getSuccessor(1)->getAction();
    EXPECT_TRUE(processor.redoThisAction(e)) << "a sibling that isn't active";
    EXPECT_EQ(processor.getActiveBranch(), 2);
    EXPECT_EQ(d->getNode()->getParent()->getActiveSuccessor(), d->getNode()) << "redo stays with the other one";
    EXPECT_EQ(e->getPrevious()->countSuccessors(), 2);
    EXPECT_TRUE(processor.removeAction(d));
    EXPECT_EQ(processor.countBranches(), 2);
    GActionProcessor::enableBranches(false);
    EXPECT_FALSE(processor.anyBranchesPresent());
    EXPECT_EQ(names(processor, GActionProcessor::kAllActions), "ace");
    EXPECT_EQ(names(processor, GActionProcessor::kActivePath), "ace");
}

struct UnificationRow {
    const char* name;
    int32_t timeout;
    bool sameCount, firstUnites, secondUnites, united;
    const char* calls;
};

TEST_F(ActionTest, ActionsUniteWhenTimeAndTargetsAgree) {
    constexpr UnificationRow kRows[] = {
        {"soon",          100000, true,  true, true,  true,  "unite a,unite b," },
        {"too late",      0,      true,  true, true,  false, ""                 },
        {"one refuses",   100000, true,  true, false, false, "unite a,revoke a,"},
        {"another count", 100000, false, true, true,  false, ""                 },
    };
    for (const UnificationRow& row : kRows) {
        SCOPED_TRACE(row.name);
        GActionProcessor::unificationTimeout = row.timeout;
        GActionProcessor processor;
        for (const bool later : {false, true}) {
            const OPtr<GAction> pair(new GAction("Test", "pair"));
            for (const char* name : {"a", "b"}) {
                auto* target = new AddTarget(log, name);
                target->unites = *name == 'a' ? row.firstUnites : row.secondUnites;
                pair->addTarget(target, false);
            }
            if (later && !row.sameCount)
                pair->addTarget(new AddTarget(log, "c"), false);
            pair->execute();
            log.clear();
            pair->setTitle(later ? u"later" : u"first");
            EXPECT_TRUE(processor.pushUndo(pair));
        }
        std::string calls;
        for (const std::string& call : log)
            calls += call + ",";
        EXPECT_EQ(calls, row.calls);
        EXPECT_EQ(names(processor, GActionProcessor::kUndoable), row.united ? "pair" : "pairpair");
        EXPECT_EQ(processor.peekUndo()->getTitle().compare(u"later"), 0);
    }
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
    ASSERT_TRUE(processor.peekUndo());
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
    EXPECT_EQ(other.peekUndo()->countTargets(), 2);
    log.clear();
    EXPECT_TRUE(other.undo());
    EXPECT_EQ(log, (Log{"undo f", "undo d"}));
    GActionProcessor::beginMacroGlobal();
    {
        GActionProcessor third;
        perform(third, "g");
    }
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
    struct Menus : CmObject {
        explicit Menus(int32_t& count) : count(count) {}
        int32_t notify(FMessage* message) override { return count += message->isType("UpdateEditMenus"), 1; }
        int32_t& count;
    } menus(menuUpdates);
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
    ActionFilter isVowel([](GAction& each) { return isNamed(&each, "a") || isNamed(&each, "e"); });
    auto processor = std::make_unique<GActionProcessor>();
    GFilteredActionProcessor view(processor.get(), isVowel);
    int32_t heard = 0;
    Hears dependent([&](int32_t) { ++heard; });
    view.addDependent(&dependent);
    perform(view, "abecd");
    EXPECT_EQ(heard, 5);
    EXPECT_TRUE(view.undo());
    EXPECT_TRUE(view.undo());
    EXPECT_FALSE(view.undo());
    EXPECT_EQ(history(*processor), "dcb|ae");
    EXPECT_TRUE(view.redo());
    EXPECT_EQ(history(*processor), "adcb|e");
    processor->lock(true);
    EXPECT_FALSE(view.undo());
    processor->lock(false);
    EXPECT_FALSE(view.removeAction(processor->getRootNode()->getActiveSuccessor()->getAction()));
    view.removeAll();
    EXPECT_EQ(history(*processor), "dcb|");

    GActionProcessor::gAllowBranches = true;
    perform(view, "ex");
    view.undo();
    processor->undo();
    perform(view, "yz");
    EXPECT_EQ(view.peekUndo(), nullptr);
    ActionFilter isB([](GAction& each) { return isNamed(&each, "b"); });
    EXPECT_TRUE(processor->peekUndoFiltered(isB, false));
    EXPECT_FALSE(processor->peekUndoFiltered(isB, true)) << "beyond the fork";
    ActionFilter isD([](GAction& each) { return isNamed(&each, "d"); });
    EXPECT_TRUE(processor->peekUndoFiltered(isD, true)) << "the fork itself, or nobody could go on from there";
    processor.reset();
    EXPECT_FALSE(view.undo());
    EXPECT_FALSE(view.pushUndo(action("a")));
    handler.removeDependent(nullptr, &dependent);
}

TEST_F(ActionTest, ACombinedViewFollowsItsParts) {
    GCombinedActionProcessor all;
    GActionProcessor first;
    auto second = std::make_unique<GActionProcessor>();
    EXPECT_TRUE(all.addActionProcessor(&first));
    EXPECT_TRUE(all.addActionProcessor(second.get()));
    EXPECT_FALSE(all.addActionProcessor(&first));
    EXPECT_FALSE(all.addActionProcessor(&all));
    EXPECT_FALSE(all.pushUndo(action("n"))) << "nowhere to push to";
    all.setExecutionProcessor(second.get());
    perform(first, "a");
    perform(all, "b");
    perform(first, "c");
    for (const char* expected : {"c", "b", "a"}) {
        EXPECT_EQ(nameOf(all.peekUndo()), expected);
        EXPECT_TRUE(all.undo());
    }
    EXPECT_FALSE(all.undo());
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
    EXPECT_TRUE(all.undo());
    EXPECT_FALSE(all.undo());
    all.setExecutionProcessor(&first);
    EXPECT_TRUE(all.removeActionProcessor(&first));
    EXPECT_FALSE(all.redo());
    EXPECT_FALSE(all.pushUndo(action("n"))) << "nobody would tell when it goes";

    GActionProcessor third;
    for (GActionProcessor* part : {&first, &third})
        all.addActionProcessor(part);
    perform(third, "g");
    Hears leaving([&](int32_t) { all.removeActionProcessor(&third); });
    first.addDependent(&leaving);
    all.removeAll();
    first.removeDependent(&leaving);
    EXPECT_EQ(history(third), "g|");
}

TEST_F(ActionTest, SoonAfterAnUndoAPushUnitesWithTheOlderOne) {
    GActionProcessor::unificationTimeout = 100000;
    GActionProcessor processor;
    const OPtr<AddTarget> older(new AddTarget(log, "a"));
    const OPtr<GAction> first(new GAction("Test", "a"));
    first->addTarget(older, true);
    processor.perform(first, nullptr);
    perform(processor, "b");
    processor.undo();
    older->unites = true;
    perform(processor, "c");
    EXPECT_EQ(history(processor), "a|b") << "what can be redone stands";
}

/** Does something unexpected when it is undone, or dies. */
struct Surprise final : GActionTarget {
    explicit Surprise(std::function<void()> undone, std::function<void()> died = {})
        : undone(std::move(undone)), died(std::move(died)) {}
    ~Surprise() override {
        if (died)
            died();
    }
    bool execute() override { return true; }
    bool undo() override { return undone ? (undone(), true) : true; }
    bool redo() override { return true; }
    std::function<void()> undone, died;
};

TEST_F(ActionTest, WhoComesBackFindsTheHistoryInOrder) {
    const auto performSurprise = [](GActionProcessor& processor, Surprise* target) {
        const OPtr<GAction> made(new GAction("Test", "s"));
        made->addTarget(target, false);
        EXPECT_TRUE(processor.perform(made, nullptr));
    };
    {
        SCOPED_TRACE("a target that is trimmed away undoes");
        GActionProcessorBase::maxUndoSteps = 2;
        GActionProcessor processor;
        performSurprise(processor, new Surprise({}, [&] { processor.undo(); }));
        perform(processor, "ab");
        EXPECT_EQ(history(processor), "a|b");
        GActionProcessorBase::maxUndoSteps = -1;
    }
    {
        SCOPED_TRACE("a target of lost steps undoes, so that there is a fork");
        GActionProcessorBase::maxUndoSteps = 3;
        GActionProcessor processor;
        perform(processor, "ab");
        const IPtr<GAction> b(processor.peekUndo());
        performSurprise(processor, new Surprise({}, [&] { processor.undo(); }));
        processor.undo();
        perform(processor, "c");
        EXPECT_TRUE(processor.undo() && processor.redoThisAction(b));
        perform(processor, "de");
        EXPECT_EQ(history(processor), "edb|");
        GActionProcessorBase::maxUndoSteps = -1;
    }
    {
        SCOPED_TRACE("a target of a lost branch empties the history");
        GActionProcessor::enableBranches(true);
        GActionProcessor processor;
        performSurprise(processor, new Surprise({}, [&] { processor.removeAll(); }));
        processor.undo();
        perform(processor, "ab");
        GActionProcessor::enableBranches(false);
        EXPECT_EQ(history(processor), "|");
    }
    {
        SCOPED_TRACE("a target removes the action that many undos lead to");
        GActionProcessor processor;
        perform(processor, "abc");
        ActionFilter isB([](GAction& each) { return isNamed(&each, "b"); });
        performSurprise(processor, new Surprise([&] { processor.removeActions(isB); }));
        EXPECT_TRUE(processor.undoMultiple(isB));
        EXPECT_EQ(history(processor), "ca|s");
    }
    {
        SCOPED_TRACE("targets leave while they are undone");
        GActionProcessor processor;
        const OPtr<GAction> made(new GAction("Test", "s"));
        made->addTarget(new AddTarget(log, "first"), false);
        made->addTarget(new Surprise([&] { made->removeAll(); }), false);
        processor.perform(made, nullptr);
        EXPECT_TRUE(processor.undo());
    }
    {
        SCOPED_TRACE("others have undone what is done again");
        GActionProcessorBase::maxUndoSteps = 1;
        GActionProcessor processor;
        perform(processor, "a");
        for (int32_t i = 0; i < 3; ++i)
            EXPECT_TRUE(processor.peekUndo()->undo() && processor.redoThisAction(processor.peekUndo()));
        perform(processor, "b");
        EXPECT_EQ(history(processor), "b|");
    }
    GActionProcessorBase::maxUndoSteps = -1;
    struct Mirror final : IActionProcessorHook {
        void actionPushed(GAction* action) override { other.pushUndo(action); }
        void actionUndone(GAction*) override {}
        void actionRedone(GAction*) override {}
        GActionProcessor other;
    } mirror;
    GActionProcessor processor;
    processor.setHook(&mirror);
    perform(processor, "ab");
    EXPECT_EQ(history(processor), "|");
    EXPECT_EQ(history(mirror.other), "ba|") << "an action has one place";
}

TEST_F(ActionTest, AVeryLongChainNeedsNoStack) {
    constexpr int32_t kMany = 100000;
    GActionProcessor::gAllowBranches = true;
    GActionProcessor processor;
    for (int32_t i = 0; i < kMany; ++i)
        perform(processor, "a");
    log.clear();
    EXPECT_EQ(processor.countBranches(), 1);
    GAction* oldest = processor.getRootNode()->getActiveSuccessor()->getAction();
    CmIdentityFilter isOldest(oldest);
    EXPECT_TRUE(processor.undoMultiple(isOldest));
    perform(processor, "b");
    EXPECT_EQ(processor.countBranches(), 2);
    EXPECT_TRUE(processor.setActiveBranch(0));
    EXPECT_EQ(nameOf(processor.peekUndo()), "a");
    GActionProcessorBase::maxUndoSteps = 3;
    perform(processor, "c");
    EXPECT_EQ(history(processor), "caa|");
}

TEST_F(ActionTest, MaxUndoHasAWordForAll) {
    GMaxUndoValue value;
    FString text;
    for (const auto& [typed, steps, shown] : {
             std::tuple(u"20", 20, "20"), {u"unlimited", -1, "Unlimited"},
                {u"0",         0,  "0"        },
                {u"-7",        -1, "Unlimited"}
    }) {
        value.fromString(typed);
        EXPECT_EQ(value.getValue(), steps);
        value.toString(text);
        EXPECT_STREQ(text.text8(), shown);
    }
}

}  // namespace
