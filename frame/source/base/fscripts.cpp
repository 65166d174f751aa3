#include "base/fscripts.h"
#include "base/cmunknown.h"
#include "base/fcompreg.h"
#include "base/fmodule.h"
#include "base/utimer.h"
#include "pluginterfaces/host/ihosttools.h"
#include <algorithm>
#include <utility>

namespace Tessarine {

IMPLEMENT_CLASS(FScriptingManager, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FScriptContext, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FScriptObject, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FScriptDebugPrint, FScriptObject)

FScriptingManager* gScriptManager = nullptr;

namespace {
constexpr const tchar* stringScriptError = u"%s(%d): Error %s: '%s' %s\n";
constexpr uint32_t kMaxName = 250, kMaxMessage = 3000;  // units; an error must fit into one printed text

/** Cuts behind a whole character. */
void shorten(String& text, uint32_t most, const char* end) {
    if (text.length() <= most)
        return;
    const bool splitsPair = most > 0 && text.isWideString() && (text.getChar16(most - 1) & 0xFC00) == 0xD800;
    text.remove(most - uint32_t(splitsPair)).append(end);
}

String fromEngine(const char* text) {
    String wide;
    if (!wide.fromUTF8(text)) {
        wide.assign(text);
        wide.toWideString();
    }
    return wide;
}

String partOfError(const char* text, uint32_t most) {
    String wide = fromEngine(text);
    shorten(wide, most, "...");
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
    text.printf(stringScriptError, partOfError(error->fileName, kMaxName).text16(), error->line, number.text16(),
                partOfError(error->token, kMaxName).text16(), partOfError(error->message, kMaxMessage).text16());
    console->deferWrite(text);
    return kResultOk;
}

int32_t FScriptContext::writeConsole(const char* text) {
    if (!console)
        return kResultFalse;
    print(fromEngine(text));
    return kResultOk;
}

void FScriptContext::print(const ConstString& text) {
    const uint32_t room = console ? takeRoom(text.length()) : 0;
    if (room == 0)
        return;
    if (room == text.length())
        return console->deferWrite(text);
    String cut(text);
    shorten(cut, room, "...\n");
    console->deferWrite(cut);
}

uint32_t FScriptContext::takeRoom(uint32_t units) {
    const uint32_t now = SystemTime::getTicks();
    if (now - writingSince > kWritingMs) {
        writingSince = now;
        written = 0;
    }
    const uint32_t room = std::min({units, kMaxText, kMaxWritten - written});
    written += room;
    return room;
}

bool FScriptContext::init() {
    if (!debugPrint)
        debugPrint = OPtr<FScriptDebugPrint>(new FScriptDebugPrint(this));
    return show(debugPrint);
}

bool FScriptContext::show(IScriptObject* object) {
    return context->registerObject(object->getTypeInfo()->className, object) == kResultOk;
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
    if (!context)
        return kResultOk;
    String line;
    for (int32_t i = 0; i < args.count; ++i) {
        String text;
        CmVariant(args.variants[i]).getString(text);
        line.append(i > 0 ? " " : "").append(text);
    }
    context->print(line.append("\n"));
    return kResultOk;
}

}  // namespace Tessarine
