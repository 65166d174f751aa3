#pragma once
#include "storage/fpath.h"
#include <cstdlib>
#include <memory>
#include <string_view>

namespace Tessarine {

/** A path as the system's calls take it: UTF-8. Null and empty paths, and those that UTF-8 can't express, give an empty name,
    which no call accepts. */
class PlatformName {
public:
    explicit PlatformName(const FPath* path) {
        if (!path)
            return;
        FString text;
        path->getFullPath(text);
        convert(units16(text));
    }
    explicit PlatformName(std::u16string_view text) { convert(text); }
    PlatformName(const PlatformName&) = delete;
    PlatformName& operator=(const PlatformName&) = delete;
    operator const char*() const { return name; }

private:
    void convert(std::u16string_view text);

    static constexpr size_t kShort = 512;  // bytes, terminator included
    char room[kShort] = {0};
    std::unique_ptr<char[]> block;  // of longer names
    char* name = room;
};

struct FreeName {
    void operator()(char* name) const { std::free(name); }
};
using RealName = std::unique_ptr<char, FreeName>;

/** Of what is there, absolute and without links; null: nothing is. */
inline RealName realNameOf(const char* name) {
    return RealName(::realpath(name, nullptr));
}

}  // namespace Tessarine
