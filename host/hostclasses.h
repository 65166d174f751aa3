#pragma once
#include "base/fhostclasses.h"
#include "host/devicelist.h"
#include "host/portregistry.h"
#include "host/serialnaming.h"

/** What this host offers to a module: the framework's own classes, and the services of a workstation that it stands
    in for. Its values deliver their changes at once, so that a report that goes into a value never comes back as a
    setting although the host listens too, and settings keep their order.

    Threads   main. */
class HostClasses : public Tessarine::FHostClasses {
public:
    HostClasses(SerialNaming& naming, int32_t inputs);

    int32_t createClassInstance(const char* iid, void** obj) override;
    DeviceList& getDevices() { return *devices; }

private:
    SerialNaming& serialNaming;
    Tessarine::OPtr<DeviceList> devices;
    Tessarine::OPtr<PortRegistry> ports;
};
