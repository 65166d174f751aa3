#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/base/imessage.h"
#include "pluginterfaces/gui/iplugcontroller.h"

namespace Tessarine {

/** The owner of a value that belongs to a plug-in: passes news on to its controller, which is borrowed. Main thread. */
class UPlugTarget : public CmObject, public IMessageReceiver {
public:
    DECLARE_ABSTRACT_CLASS(UPlugTarget, CmObject)
    explicit UPlugTarget(IPlugController* plugController) : controller(plugController) {}

    int32_t queryInterface(const char* iid, void** obj) override;
    FORWARD_REFCOUNT(CmObject)
    using CmObject::update;
    void update(CmObject* changedObject, int32_t message) override;
    /** "BeginEdit" and "EndEdit" with the value under "Value", when the controller takes part in edit sessions. */
    int32_t notify(FMessage* message) override;
    /** Handles "IsPlugTarget": so a foreign module can tell. */
    int32_t notifyMessage(IMessage* message) override;

protected:
    IPlugController* controller;
};

}  // namespace Tessarine
