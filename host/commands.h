#pragma once
#include "base/source/cmobject.h"
#include "host/editor.h"
#include "host/modulehost.h"
#include <deque>
#include <functional>
#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

/** Runs the console's commands, one after the other, and answers each with exactly one object.

    Life      commands that wait leave the main loop running; those behind them wait too.
    Threads   main. */
class Commands : public Tessarine::CmObject {
public:
    using Answer = std::function<void(const Json& reply)>;

    Commands(Remote& remote, const ModuleHost& module, Answer answer, std::function<void()> quit);
    ~Commands() override;

    /** An empty line, or one that begins with '#', is no command; nothing is behind a quit. */
    void take(const std::string& line);
    /** Something changed that a command may be waiting for. */
    void look();
    /** What is linked with it is connected again. */
    void deviceFound(int32_t device) { editor.getLinks().deviceFound(device); }
    /** Nothing is waited for any more: a command that waits is refused, and what is behind it doesn't come. */
    void end();
    bool isIdle() const { return !waiting && queue.empty(); }
    int32_t notify(Tessarine::FMessage* message) override;

    /** A line that is longer is refused. */
    static constexpr size_t kMaxLine = 65536;

private:
    using Words = std::vector<std::string>;
    struct Row;
    static const Row kCommands[];

    void runQueue();
    void run(const std::string& line);
    void reply(bool ok, const Json& more);
    /** Each fills the reply's fields; false: refused, and error says why. */
    bool ready(const Words& words);
    bool wait(const Words& words);
    bool devices(const Words& words);
    bool get(const Words& words);
    bool set(const Words& words);
    bool assign(const Words& words);
    bool connection(const Words& words);
    bool undo(const Words& words);
    bool redo(const Words& words);
    bool history(const Words& words);
    bool scene(const Words& words);
    bool scenes(const Words& words);
    bool link(const Words& words);
    bool unlink(const Words& words);
    bool links(const Words& words);
    bool sleep(const Words& words);
    bool factory(const Words& words);
    bool help(const Words& words);
    bool quit(const Words& words);

    bool scanAddress(const Words& words, size_t more, ParamAddress& address);
    bool tellSetting(const ParamAddress& address);
    bool scanChannel(const Words& words, size_t at, ChannelAddress& address);
    bool recall(const Words& words);
    bool tell(const Editor::Result& result, Setting Change::*side);
    bool refuse(const std::string& why);
    void startWaiting(int64_t milliseconds, bool forReady);
    void endWaiting(bool ok, const char* error);

    Remote& remote;
    Editor editor;
    const ModuleHost& module;
    Answer answer;
    std::function<void()> quitProgram;
    std::deque<std::string> queue;
    Tessarine::UTimer* timer = nullptr;  // owned; of the command that waits
    bool waiting = false, waitsForReady = false, running = false, quitting = false;
    int64_t number = 0;  // of the command that runs, from 1
    Json fields;
    std::string error;
};

/** As in replies and events: id, param, ch and value; of an assignment id and channel. */
Json describe(const Place& place, const Setting& setting);
/** id and ch. */
Json describe(const ChannelAddress& channel);
/** One line, UTF-8 whatever the texts hold. */
std::string lineOf(const Json& object);
