#pragma once
#include <string>

/** Where a desktop keeps what is the user's, as UTF-8. Empty: there is no such folder. Nothing is created. Any thread. */

namespace Tessarine {

/** An absolute path out of the environment; the desktop's rule is to ignore a relative one. */
std::string environmentFolder(const char* variable);
/** The same, else a folder below the user's home. */
std::string environmentOrHome(const char* variable, const char* belowHome);

}  // namespace Tessarine
