#include "gui/uctrler.h"
#include "base/utimer.h"
#include "tests/frame/source/gui/controllerfixture.h"
#include <thread>

using namespace Tessarine;

namespace {
class Controller : public ControllerTest {
protected:
    Controller() : application(new UPluginApplication("controller test")) {}
    ~Controller() override {
        application->release();
        EXPECT_EQ(handler.closed, 1);
    }
    void add(Listener& listener) {
        gController->addIdle(&listener);
        idle.push_back(&listener);
    }
    void TearDown() override {
        for (Listener* listener : idle)
            gController->removeIdle(listener);
    }

    UApplication* application;
    Log log;
    std::vector<Listener*> idle;
};

class Handler final : public Uncounted<IIdleHandler> {
public:
    void onIdle() override { ++calls; }

    int32_t calls = 0;
};
}  // namespace

TEST_F(Controller, ThrottledStepsComeAtMostOnceInTenMilliseconds) {
    int32_t served = 0;
    Listener listener([&](FMessage* message) { served += message->isType("Idle"); });
    add(listener);
    uint32_t start = 0;
    do {  // a machine that was busy in between proves nothing
        UController::wait(11);
        served = 0;
        start = UController::getTicks();
        EXPECT_TRUE(gController->onIdle(true));
        UController::wait(2);
        EXPECT_TRUE(gController->onIdle(true));
    } while (UController::getTicks() - start > 3);
    EXPECT_EQ(served, 1);
    UController::wait(11);
    EXPECT_TRUE(gController->onIdle(true));
    EXPECT_EQ(served, 2);
    EXPECT_TRUE(gController->onIdle(false));
    EXPECT_EQ(served, 3);
}

TEST_F(Controller, StepsServeWhatIsAddedDuringThem) {
    Listener second([&](FMessage*) { log.push_back("second"); });
    Listener first([&](FMessage*) {
        log.push_back("first");
        add(second);
    });
    Handler plugin;
    EXPECT_EQ(gController->addIdleHandler(&plugin), kResultOk);
    add(first);
    EXPECT_EQ(idleWakes, 2);
    gController->onIdle(false);
    EXPECT_EQ(log, (Log{"first", "second"}));
    EXPECT_EQ(plugin.calls, 1);
    EXPECT_EQ(gController->removeIdleHandler(&plugin), kResultOk);
    EXPECT_EQ(gController->removeIdleHandler(&plugin), kInvalidArgument);
    gController->removeIdle(&first);
    gController->onIdle(false);
    EXPECT_EQ(log.back(), "second");
    EXPECT_EQ(log.size() + size_t(plugin.calls), 4u);
}

TEST_F(Controller, AStepWithinAStepDeliversButDoesNotServeAgain) {
    Listener receiver([&](FMessage* message) { log.push_back(message->getMessageID()); });
    Listener busy([&](FMessage*) {
        log.push_back("idle");
        gMessenger->postMessage(&receiver, new FMessage("post"));
        EXPECT_TRUE(gController->onIdle(false));
    });
    add(busy);
    gController->onIdle(false);
    EXPECT_EQ(log, (Log{"idle", "post"}));
    EXPECT_FALSE(gController->suspendIdle(true));
    gController->onIdle(false);
    EXPECT_EQ(log.size(), 2u);
}

TEST_F(Controller, MessagesSeeTheStateSettledAndTheirOwnChangesFollow) {
    CmObject before, after;
    Dependent first([&] { log.push_back("update before"); }), second([&] { log.push_back("update after"); });
    before.addDependent(&first);
    after.addDependent(&second);
    Listener receiver([&](FMessage*) {
        log.push_back("message");
        after.deferUpdate();
    });
    const auto prepare = [&] {
        log.clear();
        before.deferUpdate();
        gMessenger->postMessage(&receiver, new FMessage("post"));
    };
    prepare();
    gController->updateDependencies();
    EXPECT_EQ(log, (Log{"update before", "message", "update after"}));
    prepare();
    EXPECT_TRUE(gController->tryNextEvent());
    EXPECT_EQ(log, (Log{"message", "update before", "update after"}));
    prepare();
    handler.pending = 2;
    EXPECT_TRUE(gController->tryNextEvent()) << "an event goes before all else";
    EXPECT_EQ(log, Log());
    gController->flushEvent();
    EXPECT_EQ(handler.pending, 0);
    EXPECT_EQ(log.size(), 3u);
    before.removeDependent(&first);
    after.removeDependent(&second);
}

TEST_F(Controller, DeferredDestructionComesFromAnyThreadAndEndsWithTheController) {
    int32_t gone = 0;
    const auto doomed = [&gone] { return new Farewell([&gone] { ++gone; }); };
    std::thread([&] {
        EXPECT_FALSE(gController->isInMainThread());
        gController->deferDestruction(doomed());
    }).join();
    EXPECT_TRUE(gController->isInMainThread() && gController->wantsIdle());
    EXPECT_EQ(idleWakes, 1);
    EXPECT_EQ(gone, 0);
    gController->onIdle(false);
    EXPECT_EQ(gone, 1);
    EXPECT_FALSE(gController->wantsIdle());
    gController->deferDestruction(new Farewell([&] { gController->deferDestruction(doomed()); }));
    application->release();
    EXPECT_EQ(gone, 2) << "also what an object leaves behind at its end";
    handler.closed = 0;
    application = new UPluginApplication("next");
}

TEST_F(Controller, RunEndsAfterStartUpOrWhenTheLoopDoes) {
    static bool windowsClose;
    windowsClose = false;
    gControllerHooks.closeAllWindows = [] { return windowsClose; };
    handler.onStartup = [&] { log.push_back("startup"); };
    handler.onRun = [&] {
        log.push_back("loop");
        gController->deferDestruction(new Farewell([&] { log.push_back("gone"); }));
    };
    gController->run(application);
    EXPECT_EQ(log, (Log{"startup", "loop", "gone"}));
    EXPECT_FALSE(gController->quit(false)) << "a window refused";
    windowsClose = true;
    handler.onStartup = [] {
        gController->postQuitMessage();
        gController->updateDependencies();
    };
    gController->run(application);
    EXPECT_TRUE(gController->isDone());
    EXPECT_EQ(handler.quits, 1);
    gController->run(application);
    EXPECT_EQ(log.size(), 3u);
}

TEST_F(Controller, ShowsPostedTexts) {
    static Log shown;
    shown.clear();
    gControllerHooks.showText = [](const tchar* text, int32_t duration) {
        shown.push_back(std::string(String(text).text8()) + " " + std::to_string(duration));
    };
    std::thread([] { gController->deferAlert(u"alert"); }).join();
    gController->deferPopupMessage(u"popup", 250);
    EXPECT_EQ(shown, Log());
    gController->updateDependencies();
    EXPECT_EQ(shown, (Log{"alert 0", "popup 250"}));
}
