#include "luacontext.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/host/ihosttools.h"
#include "public.sdk/source/main/pluginfactory.h"

namespace Tessarine {
namespace {
constinit const FUID kEngineID(0x60FDDDD7, 0xC2A06266, 0x6E6CE6DC, 0x46901FDD);

class LuaEngine final : public IPluginBase, public IScriptEngine {
public:
    static FUnknown* create(void* /*context*/) { return static_cast<IPluginBase*>(new LuaEngine); }

    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IPluginBase>(this, iid, obj) || answerInterface<IScriptEngine>(this, iid, obj) ||
                       answerInterface<FUnknown>(static_cast<IPluginBase*>(this), iid, obj)
                   ? kResultOk
                   : noInterface(obj);
    }
    uint32_t addRef() override { return uint32_t(FUnknown::atomicAdd(refCount, 1)); }
    uint32_t release() override {
        const int32_t left = FUnknown::atomicAdd(refCount, -1);
        if (left == 0)
            delete this;
        return uint32_t(left);
    }
    /** The host lends the memory of texts. */
    int32_t initialize(FUnknown* context) override {
        const FUnknownPtr<IHostClasses> host(context);
        const FInstancePtr<IMemoryAllocator> allocator(host);
        isReady = allocator;
        if (isReady)
            gMemoryAllocator = allocator;
        return isReady ? kResultOk : kResultFalse;
    }
    int32_t terminate() override {
        isReady = false;
        return kResultOk;
    }
    IScriptContext* createContext() override { return isReady ? LuaContext::create() : nullptr; }

private:
    virtual ~LuaEngine() = default;

    int32_t refCount = 1;
    bool isReady = false;
};
}  // namespace
}  // namespace Tessarine

using namespace Tessarine;

extern "C" {
TALV_EXPORT bool bundleEntry(void* bundleRef);
TALV_EXPORT bool bundleExit();
}

bool bundleEntry(void* /*bundleRef*/) {
    return true;
}

bool bundleExit() {
    return true;
}

IPluginFactory* GetPluginFactory() {
    if (gPluginFactory) {
        gPluginFactory->addRef();
        return gPluginFactory;
    }
    gPluginFactory = new CPluginFactory(PFactoryInfo("", "", "", PFactoryInfo::kUnicode));
    const PClassInfo2 engine(kEngineID, PClassInfo::kManyInstances, "ScriptEngine", "Lua", 0, "", "", LUA_RELEASE, "");
    gPluginFactory->registerClass(&engine, LuaEngine::create);
    return gPluginFactory;
}
