#pragma once
#include "pluginterfaces/base/iupdatehandler.h"

namespace Tessarine {

/** The counted base of all framework objects.

    Counts     a new object has one reference, which belongs to its maker; it ends with release(), never with delete.
               Any thread may count; the destructor runs on the thread of the last release.
    Identity   `FObject::iid` differs from module to module and from run to run: who answers it is an object of this very copy
               of the framework. It must never be stored. */
class FObject : public IDependent {
public:
    FObject() = default;
    /** A copy is a new object: the count isn't copied. */
    FObject(const FObject&) : FObject() {}
    FObject& operator=(const FObject&) { return *this; }

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;
    void update(FUnknown* changedUnknown, int32_t message) override;

    virtual ~FObject() = default;
    /** The class name. */
    virtual const char* isA() const { return "FObject"; }
    virtual bool isA(const char* name) const { return isTypeOf(name, false); }
    /** By name text, so that modules agree; askBaseClass goes up the chain. */
    virtual bool isTypeOf(const char* name, bool askBaseClass) const;
    /** Tells the dependents at once. */
    virtual void changed(int32_t message = kChanged);
    /** Tells them at the next turn of the main loop. Any thread. */
    virtual void deferUpdate(int32_t message = kChanged);
    /** All dependents have heard of it; never for kDestroyed. */
    virtual void updateDone(int32_t /*message*/) {}

    /** Nobody is counted, and nothing is removed by itself when either side dies. */
    void addDependent(IDependent* dependent);
    void removeDependent(IDependent* dependent);

    /** The one handler of this copy of the framework; set by the first UpdateHandler, borrowed. */
    static IUpdateHandler* gUpdateHandler;
    static const FUID iid;

protected:
    int32_t refCount = 1;
};

/** The object behind any face, when it is of this copy of the framework, else null. Borrowed: no reference is added. */
FObject* frameworkObject(FUnknown* unknown);

/** For classes with several counted bases: counts in the named one. */
#define FORWARD_REFCOUNT(Base)    \
    uint32_t addRef() override {  \
        return Base::addRef();    \
    }                             \
    uint32_t release() override { \
        return Base::release();   \
    }

}  // namespace Tessarine
