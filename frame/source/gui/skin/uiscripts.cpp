#include "gui/skin/uiscripts.h"
#include "base/source/finitializer.h"
#include "gui/skin/uscriptobjects.h"
#include <utility>

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(UIScriptContext, FScriptContext)

UIScriptContext* gUIScriptContext = nullptr;

namespace {
constexpr const SClassInfo* kClasses[] = {&USRect::__classInfo, &USTimer::__classInfo};

bool endUIScripts() {
    UExitUIScripts();
    return true;
}
const OneTimeProcedure UIScriptsTerminator(false, endUIScripts, "UIScripts", 0);
}  // namespace

UIScriptContext::~UIScriptContext() {
    USTimer::killAllOf(getEngineContext());
    if (consoleObject)
        consoleObject->detach();
}

bool UIScriptContext::init() {
    if (!consoleObject)
        consoleObject = OPtr<USConsole>(new USConsole(this));
    const OPtr<USApplication> application(new USApplication);
    bool done = FScriptContext::init() && show(consoleObject) && show(application);
    for (const SClassInfo* each : kClasses)
        done = done && getEngineContext()->registerClass(each) == kResultOk;
    return done;
}

UIScript* UIScriptContext::compile(const char* text, int32_t length, SDebugInfo* info) {
    const IPtr<FUnknown> compiled = compileText(text, length, info);
    return compiled ? new UIScript(this, compiled) : nullptr;
}

bool UIScript::execute(CmObject* target) {
    auto* uiContext = classCast<UIScriptContext>(static_cast<CmObject*>(context.get()));
    if (!uiContext)
        return false;
    const IPtr<UIScriptContext> kept(uiContext);
    CmObject* before = uiContext->getTarget();
    uiContext->setTarget(target);
    const bool done = execute(static_cast<CmVariant*>(nullptr));
    uiContext->setTarget(before);
    return done;
}

bool UInitUIScripts() {
    if (gUIScriptContext)
        return true;
    IScriptContext* engineContext = FScriptingManager::use()->createContext();
    if (!engineContext)
        return false;
    OPtr<UIScriptContext> context(new UIScriptContext(engineContext));
    if (context->init())
        gUIScriptContext = context.detach();
    return gUIScriptContext != nullptr;
}

void UExitUIScripts() {
    if (UIScriptContext* ended = std::exchange(gUIScriptContext, nullptr))
        ended->release();
    FScriptingManager::unuse();
}

}  // namespace Tessarine
