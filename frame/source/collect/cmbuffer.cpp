#include "collect/cmbuffer.h"

namespace Tessarine {

IMPLEMENT_CLASS(CmBuffer, CmObject)

}  // namespace Tessarine
