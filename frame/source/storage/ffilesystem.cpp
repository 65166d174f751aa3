#include "storage/ffilesystem.h"

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(FFileIterator, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FFileSystem, CmObject)

}  // namespace Tessarine
