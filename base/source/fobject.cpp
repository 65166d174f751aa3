#include "base/source/fobject.h"
#include "base/source/updatehandler.h"

namespace Tessarine {
namespace {
constexpr int32_t kDying = -1000;  // far from zero: a pair of addRef and release in a destructor can't delete twice

FUID madeForThisRun() {
    FUID id;
    id.generate();
    return id;
}
}  // namespace

constinit IUpdateHandler* FObject::gUpdateHandler = nullptr;
// Before all other static objects: while it is still zero, two copies of the framework would take each other for one.
__attribute__((init_priority(101))) const FUID FObject::iid = madeForThisRun();

int32_t FObject::queryInterface(const char* wanted, void** obj) {
    // the first two are asked at each change
    return answerInterface<FUnknown>(this, wanted, obj) || answerInterface<FObject>(this, wanted, obj) ||
                   answerInterface<IDependent>(this, wanted, obj)
               ? kResultOk
               : noInterface(obj);
}

uint32_t FObject::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t FObject::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left != 0)
        return uint32_t(left);
    refCount = kDying;
    delete this;
    return 0;
}

void FObject::update(FUnknown* /*changedUnknown*/, int32_t /*message*/) {}

bool FObject::isTypeOf(const char* name, bool /*askBaseClass*/) const {
    return name && std::strcmp(name, "FObject") == 0;
}

void FObject::changed(int32_t message) {
    if (!gUpdateHandler)
        updateDone(message);
    else if (UpdateHandler* own = UpdateHandler::instance(); own == gUpdateHandler)
        own->triggerOwnUpdates(this, message);
    else
        gUpdateHandler->triggerUpdates(this, message);
}

void FObject::deferUpdate(int32_t message) {
    if (gUpdateHandler)
        gUpdateHandler->deferUpdates(this, message);
    else
        updateDone(message);
}

void FObject::addDependent(IDependent* dependent) {
    if (gUpdateHandler)
        gUpdateHandler->addDependent(this, dependent);
}

void FObject::removeDependent(IDependent* dependent) {
    if (gUpdateHandler)
        gUpdateHandler->removeDependent(this, dependent);
}

FObject* frameworkObject(FUnknown* unknown) {
    void* face = nullptr;
    if (!unknown || unknown->queryInterface(FObject::iid, &face) != kResultOk)
        return nullptr;
    unknown->release();
    return static_cast<FObject*>(face);
}

}  // namespace Tessarine
