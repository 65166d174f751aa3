#pragma once
#include "pluginterfaces/base/funknown.h"

/** An object of the interfaces alone: it shows its count, and the test looks at how many live. */
class CountedObject : public Tessarine::FUnknown {
public:
    CountedObject() { ++living; }
    CountedObject(const CountedObject&) = delete;
    virtual ~CountedObject() { --living; }

    int32_t queryInterface(const char* iid, void** obj) override {
        using namespace Tessarine;
        return answerInterface<FUnknown>(this, iid, obj) ? int32_t(kResultOk) : noInterface(obj);
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
