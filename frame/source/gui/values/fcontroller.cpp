#include "gui/values/fcontroller.h"
#include "gui/values/uvalue.h"
#include "pluginterfaces/base/identifiers.h"

namespace Tessarine {
namespace {
IController* controllerOf(const FStringIDAttribute* attribute) {
    const bool isController = attribute && attribute->is(FAttributeValue::kUnknown);
    return isController ? static_cast<IController*>(attribute->getUnknown()) : nullptr;
}
}  // namespace

DEFINE_IID_ROW(IController, kIControllerID);
IMPLEMENT_CLASS(FController, CmObject)

int32_t FController::queryInterface(const char* iid, void** obj) {
    const bool found = answerInterface<IController>(this, iid, obj) || answerInterface<IHostController>(this, iid, obj);
    return found ? kResultOk : CmObject::queryInterface(iid, obj);
}

IController* FController::lookupSubController(const char* name) {
    return controllerOf(subControllers.getAttribute(name));
}

bool FController::injectSubController(IController* controller, const char* name, bool owned) {
    subControllers.setUnknownAttribute(name, controller, owned ? List::kShared : List::kBorrowed);
    return true;
}

IValue* FController::createParamInterface(const char* name) {
    return UValue::createParamInterface(lookupValue(name));
}

const FStringIDAttribute* FController::attributeAt(int32_t index) const {
    const CmArray* all = subControllers.getAttributeArray();
    return all ? static_cast<const FStringIDAttribute*>(all->at(index)) : nullptr;
}

const char* FController::getInjectedControllerNameByIndex(int32_t index) const {
    const FStringIDAttribute* attribute = attributeAt(index);
    return attribute ? attribute->getID() : nullptr;
}

IController* FController::getInjectedControllerByIndex(int32_t index) const {
    return controllerOf(attributeAt(index));
}

int32_t UDelegatingController::queryInterface(const char* iid, void** obj) {
    const bool found = answerInterface<IController>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj);
    return found ? kResultOk : noInterface(obj);
}

uint32_t UDelegatingController::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t UDelegatingController::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

/** The delegate may be exchanged while it answers. */
template <class Question>
auto UDelegatingController::ask(Question question) -> decltype(question(*delegate)) {
    const IPtr<IController> kept(delegate);
    return kept ? question(*kept) : decltype(question(*kept))();
}

int32_t UDelegatingController::onNotify(FMessage* message) {
    return ask([=](IController& controller) { return controller.onNotify(message); });
}

UValue* UDelegatingController::lookupValue(const char* name) {
    return ask([=](IController& controller) { return controller.lookupValue(name); });
}

bool UDelegatingController::testCondition(const char* name) {
    return ask([=](IController& controller) { return controller.testCondition(name); });
}

IController* UDelegatingController::lookupSubController(const char* name) {
    return ask([=](IController& controller) { return controller.lookupSubController(name); });
}

UView* UDelegatingController::createView(FViewNode* node, UIDescription* description) {
    return ask([=](IController& controller) { return controller.createView(node, description); });
}

UView* UDelegatingController::verifyView(UView* view, FViewNode* node) {
    return ask([=](IController& controller) { return controller.verifyView(view, node); });
}

void UDelegatingController::postCreateView(UBaseView* view, FTemplateNode* node) {
    ask([=](IController& controller) { controller.postCreateView(view, node); });
}

}  // namespace Tessarine
