#include "tools/srfpack/names.h"
#include <cerrno>
#include <cstring>

namespace SrfPack {
using namespace Tessarine;

namespace {
/** ASCII's control characters, and those that UTF-8 begins with C2. */
bool steers(char previous, char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || (previous == char(0xC2) && byte < 0xA0);
}
}  // namespace

std::string utf8Of(const FString& text) {
    FString bytes(text);
    bytes.toMultiByte(kCodePageUTF8);
    return bytes.text8();
}

std::string utf8Of(const FPath& path) {
    FString text;
    path.getFullPath(text);
    return utf8Of(text);
}

std::string printable(const std::string& text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string shown;
    char previous = 0;
    for (const char c : text) {
        if (steers(previous, c))
            shown.append("\\x") += {kDigits[c >> 4 & 15], kDigits[c & 15]};
        else
            shown += c;
        previous = c;
    }
    return shown;
}

bool pathOf(const std::filesystem::path& name, int32_t kind, FNPath& path) {
    FString text;
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(name, error);
    const std::filesystem::path resolved = std::filesystem::weakly_canonical(whole, error);  // ".." behind a link
    if (!text.fromUTF8(error ? whole.lexically_normal().c_str() : resolved.c_str()))
        return false;
    path = FNPath(text.text16(), kind);
    return true;
}

std::string systemError(const std::string& name, int code) {
    return printable(name) + ": " + (code != 0 ? std::strerror(code) : "can't be used");
}

std::string writeError(const std::string& name) {
    return errno != 0 && errno != ENOENT ? systemError(name, errno) : printable(name) + ": can't be written";
}
}  // namespace SrfPack
