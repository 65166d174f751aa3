#include "gui/values/uplugtarget.h"
#include "base/fmessage.h"
#include "gui/values/uvalue.h"
#include "pluginterfaces/base/smartpointer.h"

namespace Tessarine {
namespace {
using EditOperation = void (IPlugController4::*)(IParameter*);

EditOperation editOperationOf(const FMessage& message) {
    if (message.isType("BeginEdit"))
        return &IPlugController4::beginEdit;
    return message.isType("EndEdit") ? &IPlugController4::endEdit : nullptr;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(UPlugTarget, CmObject)

int32_t UPlugTarget::queryInterface(const char* iid, void** obj) {
    return answerInterface<IMessageReceiver>(this, iid, obj) ? kResultOk : CmObject::queryInterface(iid, obj);
}

void UPlugTarget::update(CmObject* changedObject, int32_t /*message*/) {
    if (auto* value = classCast<UValue>(changedObject))
        controller->parameterChanged(value, value->getTag());
}

int32_t UPlugTarget::notify(FMessage* message) {
    const EditOperation operation = message ? editOperationOf(*message) : nullptr;
    if (!operation)
        return CmObject::notify(message);
    auto* value = classCast<UValue>(message->get("Value"));
    FUnknownPtr<IPlugController4> editor(controller);
    if (value && editor)
        (editor.get()->*operation)(value);
    return 1;
}

int32_t UPlugTarget::notifyMessage(IMessage* message) {
    return message && message->hasMessageID("IsPlugTarget");
}

}  // namespace Tessarine
