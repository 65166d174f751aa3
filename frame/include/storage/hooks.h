#pragma once
#include <cstdint>

namespace Tessarine {
class FNPath;
class FString;
class UTranslatedString;

/** What storage asks of the floors above it. Null until they fill it: then no standard folder is known. */
struct StorageHooks {
    /** Sets folder to the standard folder of that number (StandardFolder); false: there is none. Main thread. */
    bool (*standardFolder)(int32_t number, FNPath& folder) = nullptr;
    /** Asks the user about a file; true: yes, as without the hook. Main thread. */
    bool (*askUser)(const FNPath& file, const UTranslatedString& question) = nullptr;
    /** Shows the user a failure. Main thread. */
    void (*showError)(const FString& text) = nullptr;
    /** There is somebody, or nobody any more, who wants to hear of drives that come and go. Main thread. */
    void (*watchMounts)(bool state) = nullptr;
    /** A path under a key of a pool of defaults. false: there is none. Main thread. */
    bool (*storeDefault)(const char* pool, const char* key, const FNPath& path) = nullptr;
    bool (*loadDefault)(const char* pool, const char* key, FNPath& path) = nullptr;
};
extern StorageHooks gStorageHooks;

}  // namespace Tessarine
