#pragma once

namespace Tessarine {
class FPath;

/** Both lead to one file of the disk, whatever their texts. */
bool isSameFile(const FPath* a, const FPath* b);
/** The path is the folder or lies in it, or would, links resolved. */
bool isWithin(const FPath& path, const FPath& folder);
/** The second may be read and written by those who may the first; some disks know no rights. */
void copyRights(const FPath* from, const FPath* to);

}  // namespace Tessarine
