#pragma once
#include "pluginterfaces/base/funknown.h"
#include <string_view>

namespace Tessarine {
class FMemoryStream;
class FResourceEntry;
class FStream;

/** How a resource file begins. */
constexpr std::string_view kResourceHeader = "Tessarine Resource File\r\n";

/** How it ends: behind the content table. */
struct ResourceFileEnding {
    FUID compression;  // all zero: none
    int32_t tableSize = 0;
    int32_t entryCount = 0;  // the closing ones included
    int32_t endingSize = 0;
    int32_t version = 0;

    static int32_t sizeOfVersion(int32_t version) { return version == 1 ? 16 : 48; }
    bool isCompressed() const { return version >= 2 && compression.isValid(); }
    /** false: none that is known, or its numbers can't be those of a file of that size. */
    bool read(FStream& file, int64_t fileSize);
    /** false: nobody writes that version. */
    bool write(FMemoryStream& stream) const;
};

/** Reads so many entries below parent, closing ones counted; the result is how many it read: fewer when a closing one ends the
    parent, -1 for one that is cut off. openFolders gets the number of those that were not closed. */
int32_t unpackContentTable(FMemoryStream& table, FResourceEntry* parent, int32_t count, int32_t version,
                           int32_t& openFolders);
/** The reverse, without an entry for the root; -1: a number is too large for the version. */
int32_t packContentTable(const FResourceEntry& root, FMemoryStream& table, int32_t version, bool utf8);

}  // namespace Tessarine
