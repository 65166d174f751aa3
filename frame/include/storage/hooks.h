#pragma once
#include <cstdint>

namespace Tessarine {
class FNPath;

/** What storage asks of the floors above it. Null until they fill it: then no standard folder is known. */
struct StorageHooks {
    /** Sets folder to the standard folder of that number (StandardFolder); false: there is none. Main thread. */
    bool (*standardFolder)(int32_t number, FNPath& folder) = nullptr;
};
extern StorageHooks gStorageHooks;

}  // namespace Tessarine
