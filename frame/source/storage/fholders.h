#pragma once
#include "base/source/cmobject.h"

namespace Tessarine {

/** Of a class whose objects hold the objects that are read into them: rings of these never end, and long chains are
    torn down by recursion. Null: no. */
bool holdsObjects(const CmObject* object);

}  // namespace Tessarine
