#pragma once
#include "pluginterfaces/base/funknown.h"

/** An object of the interfaces alone: it shows its count, and the test looks at how many live. */
template <class Interface>
class Counted : public Interface {
public:
    Counted() { ++living; }
    Counted(const Counted&) = delete;
    virtual ~Counted() { --living; }

    int32_t queryInterface(const char* iid, void** obj) override {
        using namespace Tessarine;
        const bool found = answerInterface<Interface>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj);
        return found ? int32_t(kResultOk) : noInterface(obj);
    }
    uint32_t addRef() override { return uint32_t(++count); }
    uint32_t release() override {
        const int32_t left = --count;
        if (left == 0)
            delete this;
        return uint32_t(left);
    }

    int32_t count = 1;
    inline static int32_t living = 0;
};
using CountedObject = Counted<Tessarine::FUnknown>;
