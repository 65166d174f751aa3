#pragma once
#include "base/source/hooks.h"
#include "base/source/updatehandler.h"
#include "gui/hooks.h"
#include "gui/uctrler.h"
#include "pluginglue/uplugapp.h"
#include "tests/frame/source/gui/probes.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>

namespace Tessarine {

/** A window system that answers as the test says, and counts the questions. */
class ScriptedHandler final : public Uncounted<IPlatformEventHandler> {
public:
    bool open(int32_t) override { return opens; }
    bool close(bool) override { return ++closed > 0; }
    void startupFinished(UApplication*) override { onStartup(); }
    void runPlatformEventLoop() override { onRun(); }
    void quitPlatformEventLoop() override { ++quits; }
    void doUpdates() override {}
    void doNextEvent() override { --pending; }
    bool eventPending() override { return pending > 0; }
    void waitKeyReleased(const UKeyCode&) override {}
    bool waitMouseDoubleClick() override { return false; }
    tchar mapScanCodeToCharacter(uint32_t) override { return 0; }
    void getMouseLocation(UPoint&) override {}
    void setMouseLocation(const UPoint&) override {}
    int32_t getCurrentMouseButtons() override { return 0; }
    int32_t getCurrentModifiers() override { return 0; }
    bool checkEventQueueForUserCancel() override { return false; }
    void enableScreenSaver(bool) override {}
    void cancelMenuLoop() override {}
    void onLocalEventLoop(bool) override {}

    bool opens = true;
    int32_t closed = 0, quits = 0, pending = 0;
    std::function<void()> onStartup = [] {}, onRun = [] {};
};

/** A platform without a run loop, which counts the wake-ups. */
class ControllerTest : public testing::Test {
protected:
    ControllerTest() : controllerHooks(gControllerHooks), runLoopHooks(gRunLoopHooks) {
        platform = &handler;
        updateWakes = idleWakes = 0;
        gControllerHooks = {};
        gControllerHooks.eventHandler = [] { return platform; };
        gRunLoopHooks = {};
        gRunLoopHooks.wakeUpdates = [] { ++updateWakes; };
        gRunLoopHooks.wakeIdle = [] { ++idleWakes; };
    }
    ~ControllerTest() override {
        gControllerHooks = controllerHooks;
        gRunLoopHooks = runLoopHooks;
    }

    ScriptedHandler handler;
    inline static IPlatformEventHandler* platform;
    inline static int32_t updateWakes, idleWakes;

private:
    ControllerHooks controllerHooks;
    RunLoopHooks runLoopHooks;
};

}  // namespace Tessarine
