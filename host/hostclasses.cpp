#include "host/hostclasses.h"
#include "gui/uctrler.h"
#include "gui/values/uvalue.h"
#include "pluginterfaces/gui/iplatform.h"

using namespace Tessarine;

namespace {
/** A new value, when this is one, takes its changes out at once from now on. */
void makeStraight(FUnknown* made) {
    CmObject* object = commonObject(made);
    if (object && object->isTypeOf("UValue", true))
        static_cast<UValue*>(object)->setStraightUpdate(true);
}
}  // namespace

HostClasses::HostClasses(SerialNaming& naming, int32_t inputs)
    : serialNaming(naming), devices(new DeviceList), ports(new PortRegistry(inputs)) {}

int32_t HostClasses::createClassInstance(const char* iid, void** obj) {
    if (!iid || !obj)
        return kResultFalse;
    FUnknown* const services[] = {&serialNaming, static_cast<FObject*>(devices.get()),
                                  static_cast<FObject*>(ports.get()), static_cast<CmObject*>(gController)};
    constexpr const FUID* kOffered[] = {&IDeviceList::iid,       &IDeviceList2::iid, &IPortRegistry2::iid,
                                        &ISerialPortNaming::iid, &IPlatform::iid,    &IPlatform2::iid};
    for (const FUID* offered : kOffered)
        for (FUnknown* service : services)
            if (service && FUID::same(iid, *offered) && service->queryInterface(iid, obj) == kResultOk)
                return kResultOk;
    const int32_t result = FHostClasses::createClassInstance(iid, obj);
    if (result == kResultOk)
        makeStraight(static_cast<FUnknown*>(*obj));
    return result;
}
