#include "storage/hooks.h"

namespace Tessarine {

constinit StorageHooks gStorageHooks;

}  // namespace Tessarine
