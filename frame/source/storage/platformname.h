#pragma once
#include "storage/fpath.h"

namespace Tessarine {

/** A path as the system's calls take it: UTF-8. Null and empty paths give an empty name, which no call accepts. */
class PlatformName {
public:
    explicit PlatformName(const FPath* path) {
        if (path)
            path->getFullPath(text);
        text.toMultiByte(kCodePageUTF8);
    }
    operator const char*() const { return text.text8(); }

private:
    FString text;
};

}  // namespace Tessarine
