#include "tests/frame/source/gui/os/linux/core/loopfixture.h"
#include <thread>

using namespace Tessarine;

namespace {
class RunLoopTest : public LoopTest {
public:
    using LoopTest::end;

protected:
    static gint countPoll(GPollFD* descriptors, guint count, gint timeout) {
        polls += timeout != 0;
        return g_poll(descriptors, count, timeout);
    }
    /** How often the loop went to sleep, and so woke, in that time. */
    static int32_t wakesWithin(int32_t ms) {
        polls = 0;
        g_main_context_set_poll_func(nullptr, countPoll);
        bool over = false;
        const auto end = [](gpointer flag) -> gboolean { return *static_cast<bool*>(flag) = true, G_SOURCE_REMOVE; };
        g_timeout_add(guint(ms), end, &over);
        while (!over)
            g_main_context_iteration(nullptr, TRUE);
        g_main_context_set_poll_func(nullptr, nullptr);
        return polls;
    }
    /** The loop of a modal window that is closed when the condition comes true. */
    void modalUntil(const std::function<bool()>& condition) {
        log.push_back("modal");
        EXPECT_TRUE(runUntil(condition));
        log.push_back("closed");
    }

    inline static int32_t polls;
};
}  // namespace

TEST_F(RunLoopTest, ServesPostsAndDeferredUpdatesOfOtherThreadsAtTheNextTurn) {
    const std::thread::id mainThread = std::this_thread::get_id();
    CmObject object;
    const auto note = [&](const char* what) {
        log.push_back(std::this_thread::get_id() == mainThread ? what : "wrong thread");
    };
    Dependent dependent([&] { note("update"); });
    Listener receiver([&](FMessage*) { note("message"); });
    object.addDependent(&dependent);
    std::thread([&] { object.deferUpdate(); }).join();
    EXPECT_TRUE(log.empty() && turn());
    std::thread([&] { post(receiver, "post"); }).join();
    EXPECT_TRUE(turn());
    EXPECT_EQ(log, (Log{"update", "message"}));
    EXPECT_FALSE(turn()) << "nothing is left to do";
    object.removeDependent(&dependent);
}

TEST_F(RunLoopTest, WakesFromItsSleepForEveryOneOfManyPosts) {
    constexpr int32_t kThreads = 3, kPosts = 300;
    int32_t got = 0;
    Listener receiver([&](FMessage*) { ++got; });
    std::vector<std::thread> threads;
    for (int32_t i = 0; i < kThreads; ++i)
        threads.emplace_back([&receiver] {
            for (int32_t n = 0; n < kPosts; ++n) {
                post(receiver, "post");
                if (n % 8 == 0)
                    g_usleep(100);  // now and then the loop falls asleep
            }
        });
    const guint guard = g_timeout_add(
        10000, [](gpointer) -> gboolean { std::abort(); }, nullptr);
    while (got < kThreads * kPosts)
        g_main_context_iteration(nullptr, TRUE);  // a lost wake-up would hang here
    g_source_remove(guard);
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(RunLoopTest, SleepsWhenThereIsNothingToDo) {
    EXPECT_LE(wakesWithin(150), 2);
    Listener receiver([](FMessage*) {});
    UTimer* timer = new UTimer(&receiver, 0, 50);
    EXPECT_LE(wakesWithin(220), 6) << "the timer's own pace, nothing faster";
    timer->kill();
    gController->addIdle(&receiver);
    EXPECT_GE(wakesWithin(100), 3);
    gController->removeIdle(&receiver);
    wakesWithin(20);
    EXPECT_LE(wakesWithin(100), 2);
}

TEST_F(RunLoopTest, GoesOnInTheModalLoopOfAMessage) {
    bool idle = false, timer = false;
    CmObject object;
    Dependent dependent([&] { log.push_back("update"); });
    object.addDependent(&dependent);
    Listener idler([&](FMessage*) { idle = true; }), ticker([&](FMessage*) { timer = true; });
    Listener receiver([&](FMessage* message) {
        if (!message->isType("open"))
            return log.push_back(message->getMessageID());
        gController->addIdle(&idler);
        post(receiver, "within");
        object.deferUpdate();
        modalUntil([&] { return idle && timer && log.size() >= 3; });
    });
    UTimer* running = new UTimer(&ticker, 0, 5);
    post(receiver, "open");
    EXPECT_TRUE(runUntil([&] { return log.size() >= 4; }));
    EXPECT_EQ(log, (Log{"modal", "update", "within", "closed"}));
    running->kill();
    gController->removeIdle(&idler);
    object.removeDependent(&dependent);
}

TEST_F(RunLoopTest, ServesInAModalLoopWhatWaitedBesideItsCause) {
    CmObject first, second;
    Dependent opening([&] { modalUntil([&] { return log.size() == 2; }); });
    Dependent waiting([&] { log.push_back("update"); });
    first.addDependent(&opening);
    second.addDependent(&waiting);
    first.deferUpdate();
    second.deferUpdate();
    EXPECT_TRUE(runUntil([&] { return log.size() == 3; }));
    EXPECT_EQ(log, (Log{"modal", "update", "closed"}));
    first.removeDependent(&opening);
    second.removeDependent(&waiting);
}

TEST_F(RunLoopTest, IdleObjectsGoOnWhenAnIdleStepDeliversWhatOpensAModalLoop) {
    int32_t steps = 0;
    Listener receiver([&](FMessage*) {
        const int32_t before = steps;
        modalUntil([&] { return steps > before + 1; });
    });
    Listener idler([&](FMessage*) {
        if (++steps == 1)
            post(receiver, "open");  // delivered by this very step
    });
    gController->addIdle(&idler);
    EXPECT_TRUE(runUntil([&] { return log.size() == 2; }));
    gController->removeIdle(&idler);
}

TEST_F(RunLoopTest, ComesBackForWhatSuspensionHeldUp) {
    Listener receiver([&](FMessage* message) { log.push_back(message->getMessageID()); });
    gController->suspendUpdates(true);
    post(receiver, "suspended");
    runFor(15);
    gController->suspendUpdates(false);
    EXPECT_EQ(log, Log());
    EXPECT_TRUE(turn());
    gMessenger->lockMessageDeliverance(true);
    post(receiver, "locked");
    runFor(15);
    gMessenger->lockMessageDeliverance(false);
    EXPECT_TRUE(turn());
    EXPECT_EQ(log, (Log{"suspended", "locked"}));
}

TEST_F(RunLoopTest, IsQuietAfterTheEndAndServesTheNextApplication) {
    Listener receiver([&](FMessage* message) { log.push_back(message->getMessageID()); });
    end();
    post(receiver, "between");
    std::thread([&] { post(receiver, "from a thread"); }).join();
    runFor(15);
    EXPECT_EQ(log, Log());
    start();
    EXPECT_TRUE(turn());
    EXPECT_EQ(log, (Log{"between", "from a thread"}));
}

TEST_F(RunLoopTest, EndsInTheSameTurnInWhichItsSourcesAreReady) {
    Listener receiver([](FMessage*) { ADD_FAILURE() << "after the end"; });
    UTimer* timer = new UTimer(&receiver, 0, 1);
    gController->addIdle(&receiver);
    UController::wait(3);
    const auto finish = [](gpointer self) -> gboolean {
        static_cast<RunLoopTest*>(self)->end();
        return G_SOURCE_REMOVE;
    };
    g_idle_add_full(G_PRIORITY_HIGH, finish, static_cast<RunLoopTest*>(this), nullptr);
    while (turn()) {}
    EXPECT_EQ(gController, nullptr);
    timer->kill();
}

TEST_F(RunLoopTest, TurnsUntilItIsQuit) {
    std::thread quitter([] {
        g_usleep(5000);
        gController->postQuitMessage();
    });
    gController->run(application);
    quitter.join();
    EXPECT_TRUE(gController->isDone());
    gController->run(application);
}
