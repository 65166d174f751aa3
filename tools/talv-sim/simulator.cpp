#include "tools/talv-sim/simulator.h"
#include "tools/words/words.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace TalvSim {
namespace {
using namespace std::chrono_literals;

constexpr auto kFrameGap = 500ms;   // a host writes a frame in one go: what is still missing then, never comes
constexpr auto kPatience = 1000ms;  // twice the time in which a host looks at its port
constexpr auto kRetry = 5ms;        // the terminal doesn't tell when its reader has made room
constexpr size_t kMaxCommand = 65536;

std::map<uint8_t, Device> devicesOf(const Options& options) {
    std::map<uint8_t, Device> devices;
    for (const auto& [id, name] : options.devices)
        devices.emplace(id, Device(id, name));
    return devices;
}

/** Until all is taken, or there is a signal and nobody takes more. false: nobody reads it any more. */
bool writeAll(int handle, std::string_view text, int signals) {
    while (!text.empty()) {
        pollfd watched[] = {
            {handle,  POLLOUT, 0},
            {signals, POLLIN,  0},
        };
        ::poll(watched, std::size(watched), -1);
        if (watched[0].revents == 0 && watched[1].revents != 0)
            return true;
        // so much never blocks on a pipe that is ready
        const ssize_t count =
            watched[0].revents ? ::write(handle, text.data(), std::min<size_t>(text.size(), PIPE_BUF)) : 0;
        if (count < 0 && errno != EINTR && errno != EAGAIN)
            return false;
        text.remove_prefix(size_t(std::max<ssize_t>(count, 0)));
    }
    return true;
}

timespec timeUntil(TimePoint then) {
    const auto left = std::max<std::chrono::nanoseconds>(then - std::chrono::steady_clock::now(), 0s);
    return {time_t(left / 1s), long((left % 1s).count())};
}
}  // namespace

Simulator::Simulator(const Options& options)
    : rig{devicesOf(options), Line(options.link), Outbox(options.quality)}, commands(rig), logging(options.log) {}

Simulator::~Simulator() {
    if (signals >= 0)
        ::close(signals);
}

int Simulator::run(std::string& error) {
    if (!blockSignals()) {
        error = "no signal handle";
        return 1;
    }
    if (!rig.line.plug(error))
        return 1;
    print({
        {"event",    "line"             },
        {"path",     rig.line.path()    },
        {"terminal", rig.line.terminal()}
    });
    while (!ended && !outputFailed)
        waitForNews();
    rig.line.unplug();
    print({
        {"event", "stopped"}
    });
    if (outputFailed)
        error = "nobody reads the output";
    return outputFailed ? 1 : 0;
}

bool Simulator::blockSignals() {
    ::signal(SIGPIPE, SIG_IGN);  // a write tells as well
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    signals = signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
    return signals >= 0;
}

void Simulator::waitForNews() {
    pollfd watched[] = {
        {signals,                        POLLIN, 0},
        {inputEnded ? -1 : STDIN_FILENO, POLLIN, 0},
        {STDOUT_FILENO,                  0,      0},
        {rig.line.pollHandle(),          POLLIN, 0},
    };
    const std::optional<TimePoint> wake = nextWake();
    const timespec left = wake ? timeUntil(*wake) : timespec{};
    if (ppoll(watched, std::size(watched), wake ? &left : nullptr, nullptr) < 0)
        return;
    const TimePoint now = std::chrono::steady_clock::now();
    outputFailed = outputFailed || (watched[2].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0;
    takeSignal(watched[0].revents);
    takeLine(watched[3].revents, now);
    takeInput(watched[1].revents, now);
    forgetHalfFrame(now);
    deliver(now);
}

void Simulator::takeSignal(short news) {
    ended = ended || news != 0;
}

void Simulator::takeInput(short news, TimePoint now) {
    if (news == 0)
        return;
    char chunk[4096];
    const ssize_t count = ::read(STDIN_FILENO, chunk, sizeof chunk);
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    inputEnded = count <= 0;
    input.append(inputEnded ? "\n" : std::string_view(chunk, size_t(count)));
    size_t start = 0;
    for (size_t end; !ended && (end = input.find('\n', start)) != std::string::npos; start = end + 1)
        takeCommand(input.substr(start, end - start), now);
    input.erase(0, start);
    if (input.size() > kMaxCommand) {
        input.clear();
        print({
            {"event", "error"                   },
            {"error", "a command without an end"}
        });
    }
}

void Simulator::takeCommand(const std::string& text, TimePoint now) {
    if (isComment(text))
        return;
    const std::optional<std::vector<std::string>> words = wordsOf(text);
    ended = words && words->front() == "quit";
    if (ended)
        return;
    const bool wasPlugged = rig.line.isPlugged();
    print(commands.run(text, now));
    if (wasPlugged != rig.line.isPlugged()) {
        scanner.takeRest();
        stuckSince.reset();
    }
}

void Simulator::takeLine(short news, TimePoint now) {
    if (news == 0 || !rig.line.isPlugged())
        return;
    scanner.append(rig.line.read());
    lastHeard = now;
    while (const std::optional<Bytes> frame = scanner.next())
        takeFrame(*frame, now);
}

void Simulator::takeFrame(const Bytes& frame, TimePoint now) {
    log("rx", frame, describe(frame));
    for (auto& [id, device] : rig.devices) {
        const Bytes answer = device.answer(frame);
        if (!answer.empty())
            rig.outbox.say(answer, now);
    }
}

void Simulator::forgetHalfFrame(TimePoint now) {
    if (scanner.isWaiting() && now - lastHeard >= kFrameGap)
        log("rx", scanner.takeRest(), "half a frame");
}

void Simulator::deliver(TimePoint now) {
    while (rig.outbox.due().value_or(TimePoint::max()) <= now) {
        const std::span<const uint8_t> piece = rig.outbox.piece();
        const bool dropped = rig.outbox.head().fate == Outbox::kDropped;
        const size_t count = dropped ? piece.size() : rig.line.write(piece);
        if (count > 0)
            moveOn(count, dropped);
        else if (!givesUp(now))
            return;
    }
}

void Simulator::moveOn(size_t count, bool dropped) {
    if (!dropped)
        stuckSince.reset();
    if (const std::optional<Outbox::Item> item = rig.outbox.advance(count))
        logDelivered(*item);
}

bool Simulator::givesUp(TimePoint now) {
    stuckSince = stuckSince.value_or(now);
    if (now - *stuckSince < kPatience)
        return false;
    const Outbox::Item lost = rig.outbox.discard(now);
    log("lost", lost.bytes, lost.text);
    return true;
}

std::optional<TimePoint> Simulator::nextWake() const {
    std::optional<TimePoint> wake = rig.outbox.due();
    if (wake && stuckSince)
        wake = std::max(*wake, std::chrono::steady_clock::now() + kRetry);
    if (scanner.isWaiting())
        wake = std::min(wake.value_or(TimePoint::max()), lastHeard + kFrameGap);
    return wake;
}

void Simulator::log(const char* event, const Bytes& bytes, const std::string& text, bool corrupted) {
    if (!logging)
        return;
    Json line = {
        {"event", event       },
        {"bytes", toHex(bytes)},
        {"text",  text        }
    };
    if (bytes.size() > 2 && isFrame(bytes))
        line["id"] = bytes[2];
    if (corrupted)
        line["corrupted"] = true;
    print(line);
}

void Simulator::logDelivered(const Outbox::Item& item) {
    log(item.fate == Outbox::kDropped ? "dropped" : "tx", item.bytes, item.text, item.fate == Outbox::kCorrupted);
}

void Simulator::print(const Json& event) {
    const std::string text = event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    outputFailed = outputFailed || !writeAll(STDOUT_FILENO, text, signals);
}
}  // namespace TalvSim
