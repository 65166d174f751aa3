#pragma once
#include "base/fscripts.h"

namespace Tessarine {
class USConsole;

/** A script of a skin. */
class UIScript : public FScript {
public:
    using FScript::execute;
    using FScript::FScript;
    /** Runs it on the target. */
    bool execute(CmObject* target);
};

/** Where the scripts of skins run: it shows them the objects of a program, and what they are about to work on. */
class UIScriptContext : public FScriptContext {
public:
    DECLARE_ABSTRACT_CLASS(UIScriptContext, FScriptContext)

    using FScriptContext::FScriptContext;
    ~UIScriptContext() override;
    bool init() override;
    UIScript* compile(const char* text, int32_t length, SDebugInfo* info) override;

    /** What a script works on, while it runs. Borrowed, null outside of a run. */
    void setTarget(CmObject* object) { target = object; }
    CmObject* getTarget() const { return target; }

private:
    CmObject* target = nullptr;
    IPtr<USConsole> consoleObject;
};

/** Makes gUIScriptContext, once. false: there is no engine, or it refuses; skins then do without scripts. */
bool UInitUIScripts();
/** Ends it, and the manager. Comes by itself when the application ends. */
void UExitUIScripts();

/** The program's; null before UInitUIScripts, and without an engine. */
extern UIScriptContext* gUIScriptContext;

}  // namespace Tessarine
