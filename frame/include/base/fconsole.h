#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"

namespace Tessarine {

/** Where a program shows what its developers ask for. */
class FConsole : public CmObject {
public:
    /** Shows the text as it stands, line ends included, now or soon. Any thread. */
    virtual void deferWrite(const ConstString& text) = 0;

    DECLARE_ABSTRACT_CLASS(FConsole, CmObject)
};

}  // namespace Tessarine
