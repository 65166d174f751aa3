#pragma once
#include "base/source/fobject.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/iportregistry.h"
#include <vector>

/** The ports of a workstation that this host stands in for: so many audio inputs, and nothing else. */
class PortRegistry : public Tessarine::FObject, public Tessarine::IPortRegistry2 {
public:
    explicit PortRegistry(int32_t inputs);
    FORWARD_REFCOUNT(FObject)

    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t countPorts() override { return int32_t(ports.size()); }
    Tessarine::IPort* getPort(int32_t index) override;

private:
    std::vector<Tessarine::OPtr<Tessarine::IPort>> ports;
};
