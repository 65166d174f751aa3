#pragma once
#include "host/commands.h"
#include "host/quitting.h"

/** What a user, or a script, has of the host: commands in, replies and events out.

    Life      started, run, stop, stopped; the remote is there from run to stop.
    Threads   main. */
class FrontEnd : public RemoteListener {
public:
    FrontEnd();
    virtual ~FrontEnd();
    FrontEnd(const FrontEnd&) = delete;
    /** The module is loaded; the first word. */
    virtual void started(const ModuleHost& module) = 0;
    /** Takes commands from now on. */
    virtual void run(Remote& remote, const ModuleHost& module);
    /** Nothing more comes in. */
    virtual void stop();
    /** The last word. */
    virtual void stopped() = 0;

    void readyChanged(bool ready) override;
    void deviceFound(int32_t device) override;

protected:
    virtual void showReady(bool ready) = 0;
    virtual void showDevice(int32_t device) = 0;
    virtual void showReply(const Json& reply) = 0;
    /** Reads what there is, and gives lines to take(). false: the end of the input. */
    virtual bool readInput() = 0;

    void take(const std::string& line) { commands->take(line); }
    /** To standard output. Quits when nobody reads it any more, and gives up when the program shall end. */
    void write(const std::string& text);
    Remote* remote = nullptr;  // borrowed

private:
    void onInput();
    void quitWhenIdle();

    Tessarine::OPtr<Commands> commands;
    std::unique_ptr<Tessarine::Watch> input;
    bool inputEnded = false;
    int output;  // standard output; owned when it is a terminal, which is opened once more
};
