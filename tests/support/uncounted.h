#pragma once
#include "pluginterfaces/base/funknown.h"

/** Serves one interface without being owned by who holds it: the test does, and looks at what was taken. */
template <class Interface>
class Uncounted : public Interface {
public:
    virtual ~Uncounted() = default;
    int32_t queryInterface(const char* iid, void** obj) override {
        return Tessarine::answerInterface<Interface>(this, iid, obj) ? Tessarine::kResultOk
                                                                     : Tessarine::noInterface(obj);
    }
    uint32_t addRef() override { return uint32_t(++references); }
    uint32_t release() override { return uint32_t(--references); }

    int32_t references = 0;  // taken and not yet given back
};

/** Of whatever points to it. */
template <class Pointer>
uint32_t referencesOf(const Pointer& object) {
    object->addRef();
    return object->release();
}
