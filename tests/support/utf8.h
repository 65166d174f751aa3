#pragma once
#include "base/source/fstring.h"
#include <string>

namespace Tessarine {

inline std::string utf8(const ConstString& text) {
    String bytes(text);
    bytes.toWideString();
    bytes.toMultiByte(kCodePageUTF8);
    return bytes.text8();
}

}  // namespace Tessarine
