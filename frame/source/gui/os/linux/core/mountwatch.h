#pragma once

namespace Tessarine {

/** While it is on, the file system hears of drives that come and go (FNFileSystem::onMountEvent). Main thread. */
void watchMounts(bool state);

}  // namespace Tessarine
