#pragma once
#include "host/frontend.h"
#include "host/lineeditor.h"
#include <chrono>
#include <termios.h>

/** The devices with their channels on a terminal, as they change, and a line for commands. What has just changed is
    lit for a moment. Standard input may be no terminal: then it is read as it comes. */
class LiveView : public FrontEnd {
public:
    LiveView();
    ~LiveView() override;

    void started(const ModuleHost& module) override;
    void run(Remote& remote, const ModuleHost& module) override;
    void stop() override;
    void stopped() override {}

    void devicesGone() override;
    void valueChanged(const ParamAddress& address) override;
    void connectionChanged() override { drawSoon(); }

protected:
    void showReady(bool ready) override;
    void showDevice(int32_t device) override;
    void showReply(const Json& reply) override;
    bool readInput() override;

private:
    class Redraw;
    struct ChannelRow;
    static const ChannelRow kChannelRows[];
    using Clock = std::chrono::steady_clock;
    using Lines = std::vector<std::string>;

    void say(const std::string& line);
    void drawSoon();
    void draw();
    void appendDevices(Lines& page, size_t rows);
    void appendDevice(Lines& page, int32_t device) const;
    std::string cell(const ParamAddress& address, const ChannelRow& row) const;
    std::string headOf(size_t shown) const;
    std::string text(int32_t device, const char* param) const;

    Tessarine::OPtr<Redraw> redraw;
    std::unique_ptr<Tessarine::Watch> resize;
    bool hasKeys = false;  // standard input is a terminal
    termios before{};      // its settings, put back at the end
    std::string title;
    LineEditor editor;
    Lines said;
    std::map<Tessarine::IValue*, Clock::time_point> changes;  // of what is still lit; keys are only compared
    size_t firstShown = 0, shown = 1;                         // devices on the page
};
