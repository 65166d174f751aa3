#pragma once
#include "base/source/updatehandler.h"
#include "base/utimer.h"
#include "gui/os/linux/core/platformcore.h"
#include "gui/uctrler.h"
#include "pluginglue/uplugapp.h"
#include "tests/frame/source/gui/probes.h"
#include <glib.h>
#include <gtest/gtest.h>

namespace Tessarine {

/** The real loop, turned by hand. */
class LoopTest : public testing::Test {
protected:
    LoopTest() {
        installTessarinePlatformCore();
        start();
        while (turn()) {}
    }
    ~LoopTest() override { end(); }
    void start() { application = new UPluginApplication("loop test"); }
    void end() {
        if (application)
            application->release();
        application = nullptr;
    }

    /** What is ready now, without waiting; whether there was any. */
    static bool turn() { return g_main_context_iteration(nullptr, FALSE); }
    static void runFor(int32_t ms) {
        for (const int32_t end = UTicks::future(ms); !UTicks::reachedFuture(end);)
            if (!turn())
                g_usleep(500);
    }
    /** false: it didn't come true in a time that is long enough on any machine. */
    static bool runUntil(const std::function<bool()>& condition) {
        const int32_t end = UTicks::future(5000);
        while (!condition() && !UTicks::reachedFuture(end))
            if (!turn())
                g_usleep(500);
        return condition();
    }
    static void post(CmObject& receiver, const char* id) { gMessenger->postMessage(&receiver, new FMessage(id)); }

    UApplication* application = nullptr;
    Log log;
};

}  // namespace Tessarine
