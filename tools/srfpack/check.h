#pragma once
#include "storage/fresourcearchive.h"
#include <string>

namespace SrfPack {
/** Looks for what no honest writer leaves behind: an archive that passes has members that lie apart within the file, and names
    that lead nowhere else. The result is what is wrong, and with which member; empty: nothing. */
std::string findFault(const Tessarine::FResourceArchive& archive);
/** Reads every member to its end; the result is as above. Only for an archive without a fault. */
std::string findUnreadable(Tessarine::FResourceArchive& archive, Tessarine::UProgressHook* hook);
/** A member's path, "/" between names. */
std::string memberName(const Tessarine::FFileArchiveNode& node);
}  // namespace SrfPack
