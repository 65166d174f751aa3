#pragma once

namespace Tessarine {
class FString;
class FUrl;
class IDefaultPool3;
class NSecureChannel;
class UTranslatedString;

/** What connections ask of the floors above them. Null until they fill it: then there are no settings, nobody to ask, and no
    secure connection; the main thread is the one that the process began with. */
struct NetworkHooks {
    /** The program's settings, borrowed. Main thread. */
    IDefaultPool3* (*defaultPool)() = nullptr;
    /** Any thread. */
    bool (*isMainThread)() = nullptr;
    /** Asks the user, under a title, for name and password that the URL's host wants; false, or no name: there is none. Main
        thread. */
    bool (*askLogin)(const UTranslatedString& title, const FUrl& url, FString& user, FString& password) = nullptr;
    /** A new one for each connection, which the caller deletes; null: it can't be had. Any thread. */
    NSecureChannel* (*makeSecureChannel)() = nullptr;
};
extern NetworkHooks gNetworkHooks;

/** Whether it is the thread that the process began with. */
bool isFirstThread();
/** Whether it is the main thread, as far as that is known. */
bool isMainThread();

}  // namespace Tessarine
