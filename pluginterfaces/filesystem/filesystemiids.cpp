#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/filesystem/ipath.h"
#include "pluginterfaces/filesystem/ivirtualfilesystem.h"

namespace Tessarine {

DEFINE_IID_ROW(IPath, kIPathID);
DEFINE_IID_ROW(IFileIterator, kIFileIteratorID);
DEFINE_IID_ROW(IVirtualFileSystem, kIVirtualFileSystemID);
DEFINE_IID_ROW(IVirtualFileIterator, kIVirtualFileIteratorID);

}  // namespace Tessarine
