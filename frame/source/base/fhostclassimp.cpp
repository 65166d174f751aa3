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

MetaClass hostServices[] = {
    {nullptr, createHostIUpdateHandler, IUpdateHandler::iid, nullptr},
    {nullptr, createHostIMessenger,     IMessenger::iid,     nullptr},
};
}  // namespace

}  // namespace Tessarine
