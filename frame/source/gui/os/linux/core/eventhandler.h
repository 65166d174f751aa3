#pragma once
#include "gui/uctrler.h"

namespace Tessarine {

/** The event loop of a program without a window system: GLib's default main context. In a module the loop is the host's, and
    this copy only has its sources there. */
class CoreEventHandler final : public IPlatformEventHandler {
public:
    static CoreEventHandler* instance();

    // a static object: the counts say that it never goes
    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }

    bool open(int32_t flags) override;
    bool close(bool force) override;
    void startupFinished(UApplication* /*application*/) override {}
    void runPlatformEventLoop() override;
    void quitPlatformEventLoop() override;
    void doUpdates() override {}
    void doNextEvent() override;
    bool eventPending() override;
    void waitKeyReleased(const UKeyCode& /*key*/) override {}
    bool waitMouseDoubleClick() override { return false; }
    tchar mapScanCodeToCharacter(uint32_t /*scanCode*/) override { return 0; }
    void getMouseLocation(UPoint& location) override { location = UPoint(); }
    void setMouseLocation(const UPoint& /*location*/) override {}
    int32_t getCurrentMouseButtons() override { return 0; }
    int32_t getCurrentModifiers() override { return 0; }
    bool checkEventQueueForUserCancel() override { return false; }
    void enableScreenSaver(bool /*state*/) override {}
    void cancelMenuLoop() override {}
    void onLocalEventLoop(bool /*starts*/) override {}

private:
    bool quitting = false;
};

}  // namespace Tessarine
