#pragma once
#include "base/source/fstring.h"
#include <string>

namespace Tessarine {

/** A text as it goes over the line. */
inline std::string utf8Of(const String& text) {
    FString bytes;
    bytes.assign(text);
    bytes.toWideString();
    bytes.toMultiByte(kCodePageUTF8);
    return std::string(units8(bytes));
}

}  // namespace Tessarine
