#pragma once
#include "pluginterfaces/host/ihostclasses.h"

namespace Tessarine {

/** What a host of this framework offers to its modules: each class that is registered under an identifier. A creator
    hands out exactly the face of its identifier, with one reference for the caller, also where the object is the only
    one of its kind. Main thread. */
class FHostClasses : public IHostClasses {
public:
    FHostClasses() = default;
    FHostClasses(const FHostClasses&) = delete;
    FHostClasses& operator=(const FHostClasses&) = delete;
    virtual ~FHostClasses() = default;

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;

    int32_t createClassInstance(const char* iid, void** obj) override;

private:
    int32_t refCount = 1;
};

}  // namespace Tessarine
