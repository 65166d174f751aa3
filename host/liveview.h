#pragma once
#include "base/utimer.h"
#include "host/console.h"
#include <termios.h>

/** The devices with their channels on a terminal, as they change, and a line for commands. */
class LiveView : public FrontEnd {
public:
    LiveView();
    ~LiveView() override;

    void started(const ModuleHost& module) override;
    void run(Remote& remote, const ModuleHost& module) override;
    void stop() override;
    void stopped() override {}

    void readyChanged(bool ready) override;
    void deviceFound(int32_t device) override;
    void devicesGone() override { drawSoon(); }
    void valueChanged(const ParamAddress& /*address*/) override { drawSoon(); }
    void connectionChanged() override { drawSoon(); }

private:
    class Redraw;

    void drawSoon();
    void draw();
    void appendDevice(std::string& page, int32_t device) const;
    void say(const std::string& line);
    void readKeys();
    void takeKey(char key);
    std::string text(int32_t device, const char* param, int32_t channel = -1) const;

    Remote* remote = nullptr;  // borrowed
    Tessarine::OPtr<Commands> commands;
    Tessarine::OPtr<Redraw> redraw;
    std::unique_ptr<Tessarine::Watch> input;
    termios before{};  // the terminal's settings, put back at the end
    std::string title, typed, keys;
    std::vector<std::string> lastLines;
};
