#include "base/cmunknown.h"
#include "base/fcompreg.h"
#include "storage/fpath.h"
#include <cstring>

namespace Tessarine {
namespace {
/** A text of a record, which may fill its field to the end. */
template <class Char, size_t Size>
ConstString textOf(const Char (&field)[Size]) {
    return ConstString(field, int32_t(Size));
}
}  // namespace

IMPLEMENT_CLASS(FComponentDescription, CmObject)
IMPLEMENT_CLASS(FPluginComponent, FComponentDescription)
IMPLEMENT_CLASS(FCompiledInComponentDescription, FComponentDescription)
IMPLEMENT_CLASS(FViewComponent, FComponentDescription)
IMPLEMENT_CLASS(FPluginWrapper, CmObject)

FComponentDescription::FComponentDescription(const char* type, const tchar* name, const char* cid,
                                             CreateFunction createFunction)
    : createFunction(createFunction), name(name), type(type), cid(cid) {}

CmObject* FComponentDescription::create(CmObject* /*context*/) {
    FObject* made = createFunction ? createFunction() : nullptr;
    CmObject* object = commonObject(made);
    if (made && !object)
        made->release();
    return object;
}

FUnknown* FComponentDescription::createUnknown(bool /*counted*/) {
    return createFunction ? createFunction() : nullptr;
}

int32_t FComponentDescription::assignRuntimeID() {
    static constinit int32_t next = 0;
    return runtimeID = next++;
}

int32_t FComponentDescription::compare(const CmObject* other) const {
    const auto* description = classCast<FComponentDescription>(other);
    if (!description)
        return CmObject::compare(other);
    const int32_t types = std::strcmp(getType(), description->getType());
    return types ? types : getName().compare(description->getName(), kIgnoreCase);
}

// --- of modules

FPluginComponent::FPluginComponent(const PClassInfoW& info, const PFactoryInfo& factoryInfo, FModule* module,
                                   IPluginFactory* factory, FUnknown* context)
    : module(module), factory(module ? nullptr : factory), context(context), version(textOf(info.version)),
      sdkVersion(textOf(info.sdkVersion)), subCategories(textOf(info.subCategories)), classFlags(info.classFlags) {
    type = textOf(info.category);
    name = textOf(info.name);
    cid = static_cast<const char*>(info.cid);
    cardinality = info.cardinality;
    vendor = info.vendor[0] ? textOf(info.vendor) : textOf(factoryInfo.vendor);
    url = textOf(factoryInfo.url);
    contact = textOf(factoryInfo.email);
    if (getPath())
        fileName = getPath()->getFileName();
}

FUnknown* FPluginComponent::createInstance() {
    IPluginFactory* source = module ? module->getFactory(true) : factory.get();
    void* made = nullptr;
    if (!source || source->createInstance(cid, FUnknown::iid, &made) != kResultOk || !made)
        return nullptr;
    auto* component = static_cast<FUnknown*>(made);
    if (gComponentRegistry)
        gComponentRegistry->callPluginInitHooks(component, *this);
    return component;
}

CmObject* FPluginComponent::create(CmObject* wrapperContext) {
    const FModulePin pin(module);
    const OPtr<FUnknown> component(createInstance());
    if (!component)
        return nullptr;
    return gComponentRegistry ? gComponentRegistry->createWrapper(getType(), component, module, wrapperContext)
                              : new CmDelegatingUnknown(component, module);
}

FUnknown* FPluginComponent::createUnknown(bool counted) {
    if (counted)
        return create(nullptr);
    const FModulePin pin(module);
    FUnknown* component = createInstance();
    if (component && module)
        module->addInstance(nullptr);
    return component;
}

// --- of the program

FCompiledInComponentDescription::FCompiledInComponentDescription(const FCompiledInClass& record) {
    type = record.type;
    name = record.name;
    name.toWideString();
    cid = record.classID;
    createFunction = record.create;
}

FViewComponent::FViewComponent(const char* type, const tchar* name, CreateViewFunction createView)
    : FComponentDescription(type, name, nullptr), createView(createView) {}

}  // namespace Tessarine
