#pragma once
#include "gui/os/linux/core/watches.h"
#include "host/commands.h"
#include "host/linereader.h"

/** What a user, or a script, has of the host: commands in, replies and events out. */
class FrontEnd : public RemoteListener {
public:
    virtual ~FrontEnd() = default;
    /** The module is loaded; the first word. */
    virtual void started(const ModuleHost& module) = 0;
    /** The remote runs from now on. */
    virtual void run(Remote& remote, const ModuleHost& module) = 0;
    /** Nothing more comes in. */
    virtual void stop() = 0;
    /** The last word. */
    virtual void stopped() = 0;
};

/** Commands from standard input, JSON Lines to standard output. */
class Console : public FrontEnd {
public:
    void started(const ModuleHost& module) override;
    void run(Remote& remote, const ModuleHost& module) override;
    void stop() override;
    void stopped() override;

    void readyChanged(bool ready) override;
    void deviceFound(int32_t device) override;
    void devicesGone() override;
    void valueChanged(const ParamAddress& address) override;
    void connectionChanged() override;

private:
    void put(const Json& object);
    void readInput();
    void quitWhenIdle();

    Remote* remote = nullptr;  // borrowed
    Tessarine::OPtr<Commands> commands;
    LineReader reader{0};
    std::unique_ptr<Tessarine::Watch> input;
    bool inputEnded = false;
};

/** Ends the main loop in order. */
void quitHost();
