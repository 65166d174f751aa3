#pragma once
#include <string>
#include <string_view>

namespace Tessarine {

/** Bytes as letters, digits, "+" and "/", four for each three bytes, filled up with "=". */
std::string encodeBase64(std::string_view bytes);

}  // namespace Tessarine
