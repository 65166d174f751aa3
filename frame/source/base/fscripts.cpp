#include "base/fscripts.h"
#include "base/cmunknown.h"
#include "base/fcompreg.h"
#include "base/fmodule.h"
#include "pluginterfaces/host/ihosttools.h"
#include <algorithm>

namespace Tessarine {

IMPLEMENT_CLASS(FScriptingManager, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FScriptContext, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FScriptObject, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FScriptDebugPrint, FScriptObject)

FScriptingManager* gScriptManager = nullptr;

namespace {
constexpr const tchar* stringScriptError = u"%s(%d): Error %s: '%s' %s\n";

String fromEngine(const char* text) {
    String wide;
    if (!wide.fromUTF8(text)) {
        wide.assign(text);
        wide.toWideString();
    }
    return wide;
}

/** The allocator that all engines of the program are lent too. */
void shareAllocator() {
    const FUnknownPtr<IHostClasses> host(StandardPluginContext::getInstance());
    gMemoryAllocator = FInstancePtr<IMemoryAllocator>(host);
}

FComponentDescription* findEngine(const tchar* name) {
    if (!gComponentRegistry || gComponentRegistry->countComponentClasses(FScriptingManager::kCategory) == 0)
        return nullptr;
    return name ? gComponentRegistry->getComponentDescription(FScriptingManager::kCategory, name)
                : gComponentRegistry->getComponentDescription(FScriptingManager::kCategory, 0);
}
}  // namespace

// --- engines

FScriptingManager::~FScriptingManager() {
    for (const Engine& each : engines)
        each.component->terminate();
}

FScriptingManager* FScriptingManager::use() {
    if (!gScriptManager)
        gScriptManager = new FScriptingManager;
    return gScriptManager;
}

void FScriptingManager::unuse() {
    if (FScriptingManager* ended = std::exchange(gScriptManager, nullptr))
        ended->release();
}

IScriptContext* FScriptingManager::createContext(const tchar* name) {
    FComponentDescription* description = findEngine(name);
    if (!description || !description->isAvailable())
        return nullptr;
    const auto known = std::ranges::find(engines, description->getCID(), &Engine::cid);
    if (known != engines.end())
        return known->engine->createContext();
    const OPtr<FUnknown> component(description->createUnknown(false));  // its code stays for objects that are left
    IScriptEngine* engine = startEngine(description->getCID(), component);
    return engine ? engine->createContext() : nullptr;
}

IScriptEngine* FScriptingManager::startEngine(const FUID& cid, FUnknown* component) {
    const FUnknownPtr<IPluginBase> base(component);
    const FUnknownPtr<IScriptEngine> engine(component);
    if (!base || !engine)
        return nullptr;
    shareAllocator();
    if (base->initialize(StandardPluginContext::getInstance()) != kResultOk) {
        base->terminate();
        return nullptr;
    }
    engines.push_back({cid, base, engine});
    return engine;
}

// --- contexts

FScriptContext::FScriptContext(IScriptContext* context) : context(context) {
    context->setErrorHook(this);
}

FScriptContext::~FScriptContext() {
    context->close();
    context->setErrorHook(nullptr);
    if (debugPrint)
        debugPrint->detach();
}

int32_t FScriptContext::queryInterface(const char* iid, void** obj) {
    return answerInterface<IScriptErrorHook>(this, iid, obj) || answerInterface<IScriptConsole>(this, iid, obj)
               ? int32_t(kResultOk)
               : CmObject::queryInterface(iid, obj);
}

int32_t FScriptContext::onScriptError(IScriptContext* /*context*/, SErrorInfo* error) {
    if (!console)
        return kResultFalse;
    String number, text;
    if (error->number != 0)
        number.printf(u"%d", error->number);
    text.printf(stringScriptError, fromEngine(error->fileName).text16(), error->line, number.text16(),
                fromEngine(error->token).text16(), fromEngine(error->message).text16());
    console->deferWrite(text);
    return kResultOk;
}

int32_t FScriptContext::writeConsole(const char* text) {
    if (!console)
        return kResultFalse;
    console->deferWrite(fromEngine(text));
    return kResultOk;
}

bool FScriptContext::init() {
    const OPtr<FScriptDebugPrint> print(new FScriptDebugPrint(this));
    debugPrint = print.get();
    return context->registerObject(FScriptDebugPrint::__classInfo.className, print) == kResultOk;
}

bool FScriptContext::registerOwned(const char* name, IScriptObject* object) {
    const OPtr<IScriptObject> owned(object);
    return context->registerObject(name, owned) == kResultOk;
}

IPtr<FUnknown> FScriptContext::compileText(const char* text, int32_t length, SDebugInfo* info) {
    FUnknown* compiled = nullptr;
    context->compile(text, length, info, &compiled);
    return OPtr<FUnknown>(compiled);
}

FScript* FScriptContext::compile(const char* text, int32_t length, SDebugInfo* info) {
    const IPtr<FUnknown> script = compileText(text, length, info);
    return script ? new FScript(this, script) : nullptr;
}

// --- scripts

bool FScript::execute(CmVariant* result) {
    SArgs none = {0, nullptr};
    return call(nullptr, none, result);
}

bool FScript::call(const char* function, SArgs& args, CmVariant* result) {
    const IPtr<FScriptContext> kept(context);
    SVariant value;
    value.init();
    const int32_t answer = context->getEngineContext()->invoke(script, function, args, value);
    CmVariant taken;
    takeResult(value, taken);
    if (result)
        *result = std::move(taken);
    return answer == kResultOk;
}

void takeResult(SVariant& value, CmVariant& result) {
    FVariant view;
    value.viewAs(view);
    result.assign(view);
    result.emancipate();
    value.sempty();
}

// --- objects

int32_t FScriptObject::queryInterface(const char* iid, void** obj) {
    return answerInterface<IScriptObject>(this, iid, obj) ? int32_t(kResultOk) : CmObject::queryInterface(iid, obj);
}

FUnknown* FScriptObject::getObjectProperty(char index) const {
    const FIntIDAttribute* attribute = properties.getAttribute(index);
    const auto* wrapper = attribute ? classCast<CmDelegatingUnknown>(attribute->getObj()) : nullptr;
    return wrapper ? wrapper->getObject() : nullptr;
}

int32_t FScriptObject::getProperty(char index, SVariant& value, IScriptContext* /*context*/) {
    const FIntIDAttribute* attribute = properties.getAttribute(index);
    if (!attribute)
        return kResultFalse;
    if (attribute->is(FAttributeValue::kLong))
        value.setInteger(attribute->getLong());
    else if (attribute->is(FAttributeValue::kFloat))
        value.setFloat(attribute->getFloat());
    else if (attribute->is(FAttributeValue::kString) && attribute->isWide())
        value.setString16(attribute->getText().text16());
    else if (attribute->is(FAttributeValue::kString))
        value.setString8(attribute->getText().text8());
    else
        value.setObject(getObjectProperty(index));
    return kResultOk;
}

int32_t FScriptObject::setProperty(char index, FVariant& value, IScriptContext* /*context*/) {
    const int32_t key = index;
    switch (value.getType()) {
    case FVariant::kInteger:
        return properties.setLongAttribute(key, value.getInteger()) ? kResultOk : kResultFalse;
    case FVariant::kFloat:
        return properties.setFloatAttribute(key, value.getFloat()) ? kResultOk : kResultFalse;
    case FVariant::kString8:
    case FVariant::kString16:
        return properties.setStringAttribute(key, ConstString(value)) ? kResultOk : kResultFalse;
    case FVariant::kObject:
        return properties.setObjAttribute(key, new CmDelegatingUnknown(value.getObject()), properties.kOwned)
                   ? kResultOk
                   : kResultFalse;
    default:
        properties.removeAttribute(key);
        return kResultOk;
    }
}

ConstString textOf(const FVariant* argument) {
    return argument ? ConstString(*argument) : ConstString();
}

constinit const SMethod FScriptDebugPrint::__methods[] = {
    {0, "", SClassInfo::kMaxArguments},
};
constinit const SClassInfo FScriptDebugPrint::__classInfo = {"DebugPrint",         nullptr,  0, nullptr,
                                                             std::size(__methods), __methods};

int32_t FScriptDebugPrint::invoke(char /*index*/, SArgs& args, SVariant& /*result*/) {
    FConsole* console = context ? context->getConsole() : nullptr;
    if (!console)
        return kResultOk;
    String line;
    for (int32_t i = 0; i < args.count; ++i) {
        String text;
        CmVariant(args.variants[i]).getString(text);
        line.append(i > 0 ? " " : "").append(text);
    }
    console->deferWrite(line.append("\n"));
    return kResultOk;
}

}  // namespace Tessarine
