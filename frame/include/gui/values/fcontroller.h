#pragma once
#include "base/fattribute.h"
#include "base/source/cmobject.h"
#include "gui/values/icontroller.h"
#include "pluginterfaces/gui/ihostcontroller.h"

namespace Tessarine {

/** The usual base of controllers: has sub-controllers by name, and no values yet. */
class FController : public CmObject, public IController, public IHostController {
public:
    DECLARE_CLASS(FController, CmObject)
    FORWARD_REFCOUNT(CmObject)
    FController() = default;
    FController(const FController&) = delete;
    FController& operator=(const FController&) = delete;
    int32_t queryInterface(const char* iid, void** obj) override;

    /** As notify. */
    int32_t onNotify(FMessage* message) override { return notify(message); }
    UValue* lookupValue(const char* /*name*/) override { return nullptr; }
    IController* lookupSubController(const char* name) override;
    /** Takes the place of one of that name; null only removes it. */
    bool injectSubController(IController* controller, const char* name, bool owned) override;
    /** By lookupValue. */
    IValue* createParamInterface(const char* name) override;

    int32_t countInjectedControllers() const { return subControllers.countAttributes(); }
    /** Null out of range, as the next. */
    const char* getInjectedControllerNameByIndex(int32_t index) const;
    IController* getInjectedControllerByIndex(int32_t index) const;

private:
    using List = FAttributeList<FStringIDAttribute, const char*, CmArray>;

    const FStringIDAttribute* attributeAt(int32_t index) const;

    List subControllers;
};

/** Passes all questions on to another controller, which it shares and which may be exchanged. Without one, and for
    sub-controllers that are injected, the answer is 0. */
class UDelegatingController : public IController {
public:
    /** Starts with one reference. */
    explicit UDelegatingController(IController* controller = nullptr) : delegate(controller) {}
    UDelegatingController(const UDelegatingController&) = delete;
    UDelegatingController& operator=(const UDelegatingController&) = delete;
    virtual ~UDelegatingController() = default;

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;

    int32_t onNotify(FMessage* message) override;
    UValue* lookupValue(const char* name) override;
    bool testCondition(const char* name) override;
    IController* lookupSubController(const char* name) override;
    bool injectSubController(IController* /*controller*/, const char* /*name*/, bool /*owned*/) override {
        return false;
    }
    UView* createView(FViewNode* node, UIDescription* description) override;
    UView* verifyView(UView* view, FViewNode* node) override;
    void postCreateView(UBaseView* view, FTemplateNode* node) override;

    void delegateTo(IController* controller) { delegate = controller; }

private:
    IPtr<IController> delegate;
    int32_t refCount = 1;

    template <class Question>
    auto ask(Question question) -> decltype(question(*delegate));
};

}  // namespace Tessarine
