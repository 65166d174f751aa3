#include "host/liveview.h"
#include "base/fmessage.h"
#include "base/utimer.h"
#include "host/screentext.h"
#include "host/spoken.h"
#include "pluginterfaces/gui/ivalue.h"
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Tessarine;

namespace {
constexpr uint32_t kRedrawMs = 100;  // as often as an eye can follow
constexpr std::chrono::milliseconds kLit{1500};
constexpr size_t kMaxSaid = 12, kFewestSaid = 3;
constexpr size_t kLabelWidth = 7, kCellWidth = 8, kNumberWidth = 4, kNameWidth = 8;
constexpr size_t kHeadRows = 2, kPromptRows = 1;
constexpr const char* kPrompt = "> ";
constexpr const char* kEnter = "\x1b[?1049h\x1b[?7l\x1b[2J";  // the other page of the terminal, without breaking lines
constexpr const char* kLeave = "\x1b[?7h\x1b[?1049l";
constexpr const char* kHome = "\x1b[H";
constexpr const char* kEndLine = "\x1b[K\r\n";
constexpr const char* kClearRest = "\x1b[K\x1b[J";
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kDim = "\x1b[2m";
constexpr const char* kLitUp = "\x1b[1;33m";
constexpr const char* kRed = "\x1b[1;31m";
constexpr const char* kGreen = "\x1b[1;32m";

std::string styled(const char* style, const std::string& text) {
    return style + text + "\x1b[0m";
}

struct Size {
    size_t rows, columns;
};

Size terminalSize() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
        return {24, 80};
    return {size.ws_row, size.ws_col};
}

std::string onOff(IValue* value) {
    return value->getValueInt() ? "on" : "off";
}

std::string frequency(IValue* value) {
    const int32_t index = value->getValueInt();
    return index >= 0 && size_t(index) < std::size(TALV::kHPFFreqTexts) ? TALV::kHPFFreqTexts[index] : textOf(value);
}
}  // namespace

struct LiveView::ChannelRow {
    const char* label;
    const char* param;
    std::string (*text)(IValue* value);
    const char* onStyle;  // null: it is no switch
};
const LiveView::ChannelRow LiveView::kChannelRows[] = {
    {"gain", "gain",     textOf,    nullptr},
    {"+48V", "plus48V",  onOff,     kRed   },
    {"HPF",  "hpf",      onOff,     kGreen },
    {"freq", "hpfFreq",  frequency, nullptr},
    {"trim", "gainTrim", textOf,    nullptr},
};

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
    hasKeys = tcgetattr(STDIN_FILENO, &before) == 0;
    if (hasKeys) {
        termios keysAtOnce = before;
        keysAtOnce.c_lflag &= tcflag_t(~(ICANON | ECHO | ISIG));
        keysAtOnce.c_iflag &= tcflag_t(~IXON);  // Ctrl-S would stop more than the page
        tcsetattr(STDIN_FILENO, TCSANOW, &keysAtOnce);
    }
    write(kEnter);
}

LiveView::~LiveView() {
    write(kLeave);
    if (hasKeys)
        tcsetattr(STDIN_FILENO, TCSANOW, &before);
}

void LiveView::started(const ModuleHost& module) {
    title = "TALV remote " + module.getVersion();
}

void LiveView::run(Remote& watched, const ModuleHost& module) {
    redraw = OPtr<Redraw>(new Redraw(*this));
    resize = watchSignal(SIGWINCH, [this] { drawSoon(); });
    FrontEnd::run(watched, module);
    say("\"help\" lists the commands, \"quit\" ends; for instance: set 1 gain 0 40");
    draw();
}

void LiveView::stop() {
    FrontEnd::stop();
    resize = nullptr;
    draw();
    redraw = nullptr;
}

void LiveView::showReady(bool ready) {
    say(ready ? "ready" : "looking for devices");
}

void LiveView::showReply(const Json& reply) {
    say(spoken(reply));
}

void LiveView::showDevice(int32_t device) {
    say("found device " + std::to_string(device));
}

void LiveView::devicesGone() {
    changes.clear();
    say("the devices are gone");
}

void LiveView::valueChanged(const ParamAddress& address) {
    changes[remote->getValue(address)] = Clock::now() + kLit;
    drawSoon();
}

void LiveView::say(const std::string& line) {
    said.push_back(line);
    if (said.size() > kMaxSaid)
        said.erase(said.begin());
    drawSoon();
}

bool LiveView::readInput() {
    char block[256];
    const ssize_t count = ::read(STDIN_FILENO, block, sizeof(block));
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return true;
    if (count == 0 && !hasKeys && !editor.getText().empty())
        take(editor.takeLine());  // the last line of a file
    if (count <= 0)
        return false;
    drawSoon();
    for (const char byte : std::string(block, size_t(count))) {
        const LineEditor::Result result = editor.take(byte);
        if (result == LineEditor::kEnd)
            return false;
        if (result == LineEditor::kLine)
            take(editor.takeLine());
        else if (result == LineEditor::kPageUp)
            firstShown -= std::min(firstShown, shown);
        else if (result == LineEditor::kPageDown)
            firstShown += shown;
    }
    return true;
}

// --- the page

void LiveView::drawSoon() {
    if (redraw)
        redraw->soon();
}

void LiveView::draw() {
    const Size size = terminalSize();
    std::erase_if(changes, [now = Clock::now()](const auto& each) { return each.second <= now; });
    Lines messages;
    for (const std::string& line : said)
        for (const std::string& piece : wrapped(line, size.columns))
            messages.push_back(piece);
    Lines page;
    const size_t room = size.rows - std::min(size.rows, kHeadRows + kPromptRows);
    appendDevices(page, room - std::min(room, kFewestSaid));
    const size_t free = room - std::min(room, page.size());
    messages.erase(messages.begin(), messages.end() - std::ptrdiff_t(std::min(messages.size(), free)));
    page.resize(room - std::min(room, messages.size()));
    std::string output = kHome + styled(kBold, headOf(shown)) + kEndLine + kEndLine;
    for (const Lines* part : {&page, &messages})
        for (const std::string& line : *part)
            output += line + kEndLine;
    output += kPrompt + tailOf(editor.getText(), size.columns - std::min<size_t>(size.columns, 3)) + kClearRest;
    write(output);
    if (!changes.empty())
        drawSoon();  // until nothing is lit any more
}

std::string LiveView::headOf(size_t devices) const {
    const size_t total = remote->getDevices().size();
    std::string head = title + (remote->isReady() ? "  ready" : "  looking for devices");
    if (total == 0)
        return head + (remote->isReady() ? ", there are none" : "");
    if (total > devices)
        head += "  " + std::to_string(firstShown + 1) + " to " + std::to_string(firstShown + devices) + " of " +
                std::to_string(total) + " devices (Page Up, Page Down)";
    return head;
}

/** As many whole devices as there is room for. */
void LiveView::appendDevices(Lines& page, size_t rows) {
    const std::vector<int32_t> all(remote->getDevices().begin(), remote->getDevices().end());
    const size_t rowsOfDevice = std::size(kChannelRows) + 1;
    const bool spaced = all.size() * (rowsOfDevice + 1) <= rows + 1;
    shown = std::clamp<size_t>(rows / (rowsOfDevice + spaced), 1, std::max<size_t>(all.size(), 1));
    if (spaced)
        shown = std::max<size_t>(all.size(), 1);
    firstShown = std::min(firstShown, all.size() - std::min(all.size(), shown));
    for (size_t i = firstShown; i < std::min(firstShown + shown, all.size()); ++i) {
        appendDevice(page, all[i]);
        if (spaced && i + 1 < all.size())
            page.emplace_back();
    }
}

void LiveView::appendDevice(Lines& page, int32_t device) const {
    const int32_t first = remote->getChannel(device);
    const std::string place =
        first < 0 ? "unassigned"
                  : "inputs " + std::to_string(first) + "-" + std::to_string(first + TALV::kNumChannels - 1);
    const std::string name = fitted(std::to_string(device), kNumberWidth) + fitted(text(device, "devName"), kNameWidth);
    page.push_back(styled(kBold, name) + "  " + place + "  mode " + text(device, "devMode") + "  clock " +
                   text(device, "wordClock") + "  light " + text(device, "brightness") + "  lock " +
                   text(device, "panelLock") + "  +48V master " + text(device, "plus48VMaster"));
    for (const ChannelRow& row : kChannelRows) {
        std::string line = "  " + fitted(row.label, kLabelWidth);
        for (int32_t channel = 0; channel < TALV::kNumChannels; ++channel)
            line += cell({device, findParam(row.param), channel}, row);
        page.push_back(line);
    }
}

std::string LiveView::cell(const ParamAddress& address, const ChannelRow& row) const {
    IValue* value = remote->getValue(address);
    if (!value)
        return fitted("", kCellWidth);
    const std::string shownText = fitted(row.text(value), kCellWidth);
    if (changes.contains(value))
        return styled(kLitUp, shownText);
    return row.onStyle ? styled(value->getValueInt() ? row.onStyle : kDim, shownText) : shownText;
}

std::string LiveView::text(int32_t device, const char* param) const {
    const ParamAddress address = {device, findParam(param), -1};
    IValue* value = remote->getValue(address);
    if (!value)
        return "";
    const std::string shownText = printable(textOf(value));
    return changes.contains(value) && !address.param->isText ? styled(kLitUp, shownText) : shownText;
}
