#include "base/source/updatehandler.h"
#include "base/source/cmobject.h"
#include "base/source/hooks.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/support/uncounted.h"
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace Tessarine;

namespace {
using Log = std::vector<std::string>;

/** An object that notes when all have heard. */
class Subject : public FObject {
public:
    Subject(Log& log, std::string name) : log(log), name(std::move(name)) {}
    void updateDone(int32_t message) override { log.push_back(name + " done " + std::to_string(message)); }

    Log& log;
    const std::string name;
};

/** Notes what it hears, and then does what the test wants. Nobody may ask it for a face. */
class Listener final : public Uncounted<IDependent> {
public:
    Listener(Log& log, std::string name) : log(log), name(std::move(name)) {}
    int32_t queryInterface(const char*, void** obj) override {
        ADD_FAILURE() << name << " was queried";
        return noInterface(obj);
    }
    void update(FUnknown* changed, int32_t message) override {
        lastChanged = changed;
        log.push_back(name + " " + std::to_string(message));
        if (then)
            then();
    }

    Log& log;
    const std::string name;
    FUnknown* lastChanged = nullptr;
    std::function<void()> then;
};

struct Counting final : FObject {
    void update(FUnknown*, int32_t message) override { (message == 1 ? told : deferred)++; }
    std::atomic<int32_t> told{0}, deferred{0};
};

class UpdateHandlerTest : public testing::Test {
protected:
    UpdateHandlerTest() {
        wakes = 0;
        gRunLoopHooks.wakeUpdates = [] { ++wakes; };
    }
    ~UpdateHandlerTest() override {
        handler->removeDependent(object, nullptr);
        handler->removeDependent(other, nullptr);
        gRunLoopHooks = hooksBefore;
    }
    void comeBack(Listener& listener) {
        object->removeDependent(&listener);
        object->addDependent(&listener);
    }
    /** What was noted since the last time. */
    Log heard() { return std::exchange(log, {}); }
    int32_t flush(FUnknown* face = nullptr) { return handler->triggerDeferedUpdates(face); }

    Log log;
    OPtr<UpdateHandler> handler{new UpdateHandler};
    OPtr<Subject> object{new Subject(log, "object")}, other{new Subject(log, "other")};
    Listener a{log, "a"}, b{log, "b"}, c{log, "c"};
    RunLoopHooks hooksBefore = gRunLoopHooks;
    inline static std::atomic<int32_t> wakes;
};
}  // namespace

TEST_F(UpdateHandlerTest, TheFirstHandlerServesTheCopy) {
    OPtr<UpdateHandler>(new UpdateHandler);
    EXPECT_EQ(UpdateHandler::instance(), handler.get());
    EXPECT_EQ(FObject::gUpdateHandler, static_cast<IUpdateHandler*>(handler.get()));
    EXPECT_TRUE(FUnknownPtr<IUpdateManager>(FObject::gUpdateHandler));
    handler = static_cast<UpdateHandler*>(nullptr);
    EXPECT_FALSE(UpdateHandler::instance() || FObject::gUpdateHandler);
    handler = new UpdateHandler;
}

TEST_F(UpdateHandlerTest, TellsInTheOrderOfRegistration) {
    for (Listener* each : {&b, &a, &b, &c})
        object->addDependent(each);
    other->addDependent(&a);
    object->changed();
    EXPECT_EQ(heard(), (Log{"b 1", "a 1", "b 1", "c 1", "object done 1"}));
    comeBack(b);
    object->changed(kDestroyed);
    EXPECT_EQ(heard(), (Log{"a 2", "c 2", "b 2"})) << "all equal pairs had gone";
}

/** What a dependent may do to the others, and to itself, while it is told. */
TEST_F(UpdateHandlerTest, ARemovedDependentIsNotToldAnyMore) {
    // what a does, and who is told in this round and in the next
    const std::tuple<const char*, std::function<void()>, const char*, const char*> rows[] = {
        {"itself, from everywhere", [this] { handler->removeDependent(nullptr, &a); },     "abc",  "bc"    },
        {"a later one",             [this] { object->removeDependent(&b); },               "aca",  "aca"   },
        {"all",                     [this] { handler->removeDependent(object, nullptr); }, "a",    ""      },
        {"one that was new",        [this] { object->addDependent(&c); },                  "abca", "abcacc"},
        {"one of another object",   [this] { other->removeDependent(&b); },                "abca", "abca"  },
        {"one that comes back",     [this] { comeBack(c); },                               "aba",  "abac"  },
    };
    const auto round = [this] {
        handler->doTriggerUpdates(object, 1, true);
        std::string told;
        for (const std::string& each : heard())
            told += each[0];
        return told;
    };
    for (const auto& [name, then, thisRound, nextRound] : rows) {
        SCOPED_TRACE(name);
        for (Listener* each : {&a, &b, &c, &a})
            object->addDependent(each);
        a.then = then;
        EXPECT_EQ(round(), thisRound);
        a.then = nullptr;
        EXPECT_EQ(round(), nextRound);
        handler->removeDependent(object, nullptr);
    }
}

TEST_F(UpdateHandlerTest, EqualDeferredChangesMerge) {
    object->addDependent(&a);
    other->addDependent(&b);
    object->deferUpdate();
    other->deferUpdate();
    object->deferUpdate(7);
    object->deferUpdate();
    EXPECT_TRUE(heard().empty() && wakes > 0);
    flush();
    flush();
    EXPECT_EQ(heard(), (Log{"a 1", "object done 1", "b 1", "other done 1", "a 7", "object done 7"}));
    other->removeDependent(&b);
    other->deferUpdate();
    EXPECT_EQ(heard(), (Log{"other done 1"})) << "nobody has to wait for the loop";
}

TEST_F(UpdateHandlerTest, DeferredChangesGoWithTheLastDependent) {
    const std::tuple<const char*, std::function<void()>, Log> rows[] = {
        {"one of two leaves",           [this] { object->removeDependent(&a); },                                        {"b 1", "object done 1"}       },
        {"both leave",                  [this] { handler->removeDependent(nullptr, &a), object->removeDependent(&b); }, {}                             },
        {"all at once",                 [this] { handler->removeDependent(object, nullptr); },                          {}                             },
        {"cancelled",                   [this] { handler->cancelUpdates(object); },                                     {}                             },
        {"the flush of another object", [this] { flush(other); },                                                       {"a 1", "b 1", "object done 1"}},
    };
    for (const auto& [name, step, flushed] : rows) {
        SCOPED_TRACE(name);
        object->addDependent(&a);
        object->addDependent(&b);
        object->deferUpdate();
        step();
        flush(object);
        EXPECT_EQ(heard(), flushed);
        handler->removeDependent(object, nullptr);
    }
}

TEST_F(UpdateHandlerTest, AFlushKeepsWhatADependentLetsGo) {
    object->addDependent(&a);
    object->deferUpdate();
    a.then = [this] { object = nullptr; };
    flush();
    EXPECT_EQ(heard(), (Log{"a 1", "object done 1"}));
}

TEST_F(UpdateHandlerTest, AFlushPassesOverAnObjectThatIsBeingTold) {
    object->addDependent(&a);
    other->addDependent(&b);
    a.then = [this] {
        a.then = nullptr;
        object->deferUpdate(7);
        object->deferUpdate(8);
        other->deferUpdate();
        for (int32_t turn = 0; turn < 2; ++turn)  // of a modal loop
            flush();
        object->deferUpdate(7);
        wakes = 0;
    };
    object->changed();
    EXPECT_EQ(heard(), (Log{"a 1", "b 1", "other done 1", "object done 1"}));
    EXPECT_EQ(wakes, 1) << "nothing else would tell the loop that the rest may go out now";
    flush();
    EXPECT_EQ(heard(), (Log{"a 7", "object done 7", "a 8", "object done 8"}));
}

TEST_F(UpdateHandlerTest, TellsNoMoreThanItsLimit) {
    Counting counting;
    for (int32_t i = 0; i < UpdateHandler::kMaxDependents + 5; ++i)
        object->addDependent(&counting);
    object->changed();
    EXPECT_EQ(counting.told, UpdateHandler::kMaxDependents);
}

TEST_F(UpdateHandlerTest, KnowsAnObjectByAnyOfItsFaces) {
    // a handler is an object with several faces itself
    IUpdateManager* manager = handler.get();
    IUpdateHandler* face = handler.get();
    handler->addDependent(manager, &a);
    EXPECT_EQ(handler->countDependencies(face), 1);
    handler->changed();
    EXPECT_EQ(a.lastChanged, static_cast<FObject*>(handler.get()));
    handler->deferUpdates(face, 7);
    flush(manager);
    handler->removeDependent(face, &a);
    EXPECT_EQ(handler->countDependencies(manager), 0);
    EXPECT_EQ(heard(), (Log{"a 1", "a 7"}));
}

/** Two threads tell of changes, a third comes and goes, and the main thread flushes what they deferred. Who stays hears of
    all, and nobody hears after it was taken off. */
TEST_F(UpdateHandlerTest, ServesManyThreads) {
    constexpr int32_t kRounds = 3000;
    const OPtr<FObject> subject(new FObject), second(new FObject);
    Counting staying, guest;
    for (const OPtr<FObject>& each : {subject, second})
        each->addDependent(&staying);
    std::atomic<int32_t> running{3};
    const auto notify = [&](FObject* of) {
        for (int32_t i = 0; i < kRounds; ++i) {
            i % 2 ? of->changed() : handler->triggerSelfUpdates(of, 1);
            i % 2 ? of->deferUpdate(7) : handler->deferSelfUpdates(of, 7);
        }
        --running;
    };
    const auto visit = [&] {
        for (int32_t i = 0; i < kRounds; ++i) {
            subject->addDependent(&guest);
            i % 2 ? subject->removeDependent(&guest) : void(handler->removeDependent(nullptr, &guest));
        }
        --running;
    };
    {
        const std::jthread threads[] = {std::jthread(notify, subject.get()), std::jthread(notify, second.get()),
                                        std::jthread(visit)};
        while (running > 0)
            flush();
    }
    flush();
    EXPECT_EQ(staying.told, 2 * kRounds);
    EXPECT_TRUE(staying.deferred >= 2 && staying.deferred <= 2 * kRounds);
    const int32_t toldGuest = guest.told;
    subject->changed();
    EXPECT_EQ(guest.told, toldGuest);
    handler->removeDependent(nullptr, &staying);
}
