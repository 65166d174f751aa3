#include "host/portregistry.h"

using namespace Tessarine;

namespace {
class AudioInput : public FObject, public IPort {
public:
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IPort>(this, iid, obj) ? int32_t(kResultOk) : FObject::queryInterface(iid, obj);
    }
    bool isType(const char* type) override { return type && std::strcmp(type, "audio") == 0; }
    bool isInput() override { return true; }
};
}  // namespace

PortRegistry::PortRegistry(int32_t inputs) {
    for (int32_t i = 0; i < inputs; ++i)
        ports.emplace_back(new AudioInput);
}

int32_t PortRegistry::queryInterface(const char* iid, void** obj) {
    return answerInterface<IPortRegistry2>(this, iid, obj) ? int32_t(kResultOk) : FObject::queryInterface(iid, obj);
}

IPort* PortRegistry::getPort(int32_t index) {
    return index >= 0 && index < countPorts() ? ports[size_t(index)].get() : nullptr;
}
