#pragma once

namespace Tessarine {
class FPath;

/** Both lead to one file of the disk, whatever their texts. */
bool isSameFile(const FPath* a, const FPath* b);

}  // namespace Tessarine
