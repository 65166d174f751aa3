#include "base/fdefaults.h"
#include "base/fmessage.h"
#include "base/source/classfactory.h"

namespace Tessarine {
namespace {
/** The one object that serves, not a new one: a reference more for the caller. */
FUnknown* shared(FUnknown* face) {
    if (face)
        face->addRef();
    return face;
}

FUnknown* createHostIUpdateHandler() {
    return shared(FObject::gUpdateHandler);
}

FUnknown* createHostIMessenger() {
    IMessenger* face = gMessenger;
    return shared(face);
}

FUnknown* createHostIDefaultPool() {
    IDefaultPool3* face = gDefaults;
    return shared(face);
}

MetaClass hostServices[] = {
    {nullptr, createHostIUpdateHandler, IUpdateHandler::iid, nullptr},
    {nullptr, createHostIMessenger,     IMessenger::iid,     nullptr},
    {nullptr, createHostIDefaultPool,   IDefaultPool::iid,   nullptr},
    {nullptr, createHostIDefaultPool,   IDefaultPool2::iid,  nullptr},
    {nullptr, createHostIDefaultPool,   IDefaultPool3::iid,  nullptr},
};
}  // namespace

}  // namespace Tessarine
