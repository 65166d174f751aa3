#pragma once
#include "base/source/cmobject.h"

namespace Tessarine {
class ConstString;

/** Watches long work, and may stop it. Called on the thread that works, between two of its blocks. */
class UProgressHook : public CmObject {
public:
    /** percent: 0 to 100. false: stop. */
    virtual bool setProgress(int32_t percent) = 0;
    /** What it is at. */
    virtual void setText(const ConstString& /*text*/) {}

    DECLARE_ABSTRACT_CLASS(UProgressHook, CmObject)
};

/** Null never stops. A total of 0 or less is one that isn't known: 0 percent. */
bool tellProgress(UProgressHook* hook, int64_t done, int64_t total);

}  // namespace Tessarine
