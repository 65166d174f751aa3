#pragma once
#include "tools/talv-sim/commands.h"
#include "tools/talv-sim/options.h"

namespace TalvSim {
/** The program: one thread, one loop over signals, commands and the line. Reads standard input, writes standard
    output. */
class Simulator {
public:
    explicit Simulator(const Options& options);
    ~Simulator();
    Simulator(const Simulator&) = delete;

    /** Until quit, a signal, or an output that nobody reads. Returns the exit status; error is for a person. */
    int run(std::string& error);

private:
    bool blockSignals();
    void waitForNews();
    void takeSignal(short news);
    void takeInput(short news, TimePoint now);
    void takeCommand(const std::string& text, TimePoint now);
    void takeLine(short news, TimePoint now);
    void takeFrame(const Bytes& frame, TimePoint now);
    void forgetHalfFrame(TimePoint now);
    void deliver(TimePoint now);
    void moveOn(size_t count, bool dropped);
    bool givesUp(TimePoint now);
    std::optional<TimePoint> nextWake() const;
    void log(const char* event, const Bytes& bytes, const std::string& text, bool corrupted = false);
    void logDelivered(const Outbox::Item& item);
    void print(const Json& event);

    Rig rig;
    Commands commands;
    FrameScanner scanner;
    const bool logging;
    std::string input;  // what has come of a command whose line isn't complete
    bool inputEnded = false, ended = false, outputFailed = false;
    int signals = -1;                     // owned: a handle that tells of signals
    TimePoint lastHeard{};                // when the host's last byte came
    std::optional<TimePoint> stuckSince;  // the terminal takes no more, since nobody reads it
};
}  // namespace TalvSim
