#include "host/liveview.h"
#include "base/fmessage.h"
#include "pluginterfaces/gui/ivalue.h"
#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Tessarine;

namespace {
constexpr uint32_t kRedrawMs = 100;  // as often as an eye can follow
constexpr size_t kLastLines = 4;
constexpr size_t kLabelWidth = 8, kCellWidth = 8;
constexpr char kEndOfInput = 4, kBackspace = 127, kOldBackspace = 8, kClearLine = 21;
constexpr const char* kEnter = "\x1b[?1049h\x1b[2J";   // the other page of the terminal
constexpr const char* kLeave = "\x1b[?1049l";
constexpr const char* kHome = "\x1b[H";
constexpr const char* kEndLine = "\x1b[K\r\n";
constexpr const char* kClearRest = "\x1b[J";

struct ChannelRow {
    const char* label;
    const char* param;
    bool isSwitch;
};
constexpr ChannelRow kChannelRows[] = {
    {"gain",  "gain",     false},
    {"+48V",  "plus48V",  true },
    {"HPF",   "hpf",      true },
    {"freq",  "hpfFreq",  false},
    {"trim",  "gainTrim", false},
};

std::string cell(std::string text, size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

size_t terminalRows() {
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 4 ? size.ws_row : 24;
}
}  // namespace

/** Draws at most so often, and only after a change. */
class LiveView::Redraw : public CmObject {
public:
    explicit Redraw(LiveView& drawn) : view(drawn), timer(new UTimer(this, 0, kRedrawMs)) { timer->stop(); }
    ~Redraw() override { timer->kill(); }

    void soon() {
        if (!timer->isAlive())
            timer->restart(0);
    }
    int32_t notify(FMessage* message) override {
        if (!message || !message->isType("Timer"))
            return CmObject::notify(message);
        timer->stop();
        view.draw();
        return 1;
    }

private:
    LiveView& view;
    UTimer* timer;
};

LiveView::LiveView() {
    tcgetattr(STDIN_FILENO, &before);
    termios keysAtOnce = before;
    keysAtOnce.c_lflag &= tcflag_t(~(ICANON | ECHO));
    tcsetattr(STDIN_FILENO, TCSANOW, &keysAtOnce);
    writeAll(STDOUT_FILENO, kEnter);
}

LiveView::~LiveView() {
    writeAll(STDOUT_FILENO, kLeave);
    tcsetattr(STDIN_FILENO, TCSANOW, &before);
}

void LiveView::started(const ModuleHost& module) {
    title = "TALV remote " + module.getVersion();
}

void LiveView::run(Remote& watched, const ModuleHost& module) {
    remote = &watched;
    redraw = new Redraw(*this);
    commands = new Commands(watched, module, [this](const Json& reply) { say(reply.dump(-1, ' ', false, Json::error_handler_t::replace)); },
                            quitHost);
    input = watchInput(STDIN_FILENO, [this] { readKeys(); });
    say("type help for the commands, quit to end");
}

void LiveView::stop() {
    input = nullptr;
    commands = nullptr;
    redraw = nullptr;
}

void LiveView::readyChanged(bool ready) {
    say(ready ? "ready" : "looking for devices");
    if (commands)
        commands->look();
}

void LiveView::deviceFound(int32_t device) {
    say("found device " + std::to_string(device));
}

void LiveView::say(const std::string& line) {
    lastLines.push_back(line);
    if (lastLines.size() > kLastLines)
        lastLines.erase(lastLines.begin());
    drawSoon();
}

void LiveView::drawSoon() {
    if (redraw)
        redraw->soon();
}

std::string LiveView::text(int32_t device, const char* param, int32_t channel) const {
    const ParamAddress address = {device, findParam(param), channel};
    IValue* value = remote->getValue(address);
    return value ? textOf(value) : "";
}

void LiveView::appendDevice(std::string& page, int32_t device) const {
    const int32_t first = remote->getChannel(device);
    const std::string place = first < 0 ? "not assigned"
                                        : "inputs " + std::to_string(first + 1) + " - " + std::to_string(first + 8);
    page += "Device " + std::to_string(device) + "  " + cell(text(device, "devName"), kCellWidth) + "  " + place +
            "  mode " + text(device, "devMode") + "  clock " + text(device, "wordClock") + "  lock " +
            text(device, "panelLock") + "  brightness " + text(device, "brightness") + "  +48V master " +
            text(device, "plus48VMaster") + kEndLine;
    for (const ChannelRow& row : kChannelRows) {
        page += "  " + cell(row.label, kLabelWidth);
        for (int32_t channel = 0; channel < TALV::kNumChannels; ++channel)
            page += cell(text(device, row.param, channel), kCellWidth);
        page += kEndLine;
    }
    page += kEndLine;
}

void LiveView::draw() {
    const size_t roomForDevices = terminalRows() - kLastLines - 3;
    std::string page = kHome + title + (remote->isReady() ? "  ready" : "  looking for devices") + kEndLine + kEndLine;
    size_t lines = 2;
    for (const int32_t device : remote->getDevices()) {
        lines += std::size(kChannelRows) + 2;
        if (lines > roomForDevices) {
            page += std::string("  ... more devices than lines") + kEndLine;
            break;
        }
        appendDevice(page, device);
    }
    for (const std::string& line : lastLines)
        page += line.substr(0, 200) + kEndLine;
    if (!writeAll(STDOUT_FILENO, page + "> " + typed + "\x1b[K" + kClearRest))
        quitHost();
}

void LiveView::readKeys() {
    char block[256];
    const ssize_t count = ::read(STDIN_FILENO, block, sizeof(block));
    if (count <= 0)
        return quitHost();
    for (const char key : std::string(block, size_t(count)))
        takeKey(key);
    drawSoon();
}

void LiveView::takeKey(char key) {
    if (key == kEndOfInput)
        quitHost();
    else if (key == '\n' || key == '\r')
        commands->take(std::exchange(typed, std::string()));
    else if (key == kBackspace || key == kOldBackspace)
        typed.resize(typed.empty() ? 0 : typed.size() - 1);
    else if (key == kClearLine)
        typed.clear();
    else if (uint8_t(key) >= ' ' && typed.size() < Commands::kMaxLine)
        typed += key;
}
