#pragma once
#include <cstdint>

namespace Tessarine {
class FNPath;
class UTranslatedString;

/** What storage asks of the floors above it. Null until they fill it: then no standard folder is known. */
struct StorageHooks {
    /** Sets folder to the standard folder of that number (StandardFolder); false: there is none. Main thread. */
    bool (*standardFolder)(int32_t number, FNPath& folder) = nullptr;
    /** Asks the user about a file; true: yes, as without the hook. Main thread. */
    bool (*askUser)(const FNPath& file, const UTranslatedString& question) = nullptr;
};
extern StorageHooks gStorageHooks;

}  // namespace Tessarine
