#pragma once
#include "host/frontend.h"
#include "host/linereader.h"

/** Commands from standard input, JSON Lines to standard output. */
class Console : public FrontEnd {
public:
    void started(const ModuleHost& module) override;
    void stopped() override;

    void devicesGone() override;
    void valueChanged(const ParamAddress& address) override;
    void connectionChanged() override;

protected:
    void showReady(bool ready) override;
    void showDevice(int32_t device) override;
    void showReply(const Json& reply) override { put(reply); }
    bool readInput() override;

private:
    void put(const Json& object);

    LineReader reader{0};
};
