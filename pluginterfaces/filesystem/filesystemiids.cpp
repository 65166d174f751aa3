#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/filesystem/ivirtualfilesystem.h"

namespace Tessarine {

DEFINE_IID_ROW(IVirtualFileSystem, kIVirtualFileSystemID);
DEFINE_IID_ROW(IVirtualFileIterator, kIVirtualFileIteratorID);

}  // namespace Tessarine
