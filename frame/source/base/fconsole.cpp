#include "base/fconsole.h"

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(FConsole, CmObject)

}  // namespace Tessarine
