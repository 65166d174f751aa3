#include "furlhttphead.h"
#include "base/source/fstring.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr std::string_view kLength = "Content-Length:", kLocation = "Location:", kLogin = "WWW-Authenticate:",
                           kProxyLogin = "Proxy-Authenticate:", kBasic = "Basic", kBlanks = " \t";
constexpr size_t kLengthColumn = 16;  // behind the blank that follows the colon
constexpr int64_t kMaxStatus = 999;
constexpr int32_t kRedirects[] = {301, 302, 307};

bool isSameLetter(char a, char b) {
    return ConstString::toLower(a) == ConstString::toLower(b);
}

/** Where the text stands, in letters of any case; npos: nowhere. */
size_t findText(std::string_view line, std::string_view text) {
    const auto found = std::ranges::search(line, text, isSameLetter);
    return found.empty() ? line.npos : size_t(found.begin() - line.begin());
}

bool contains(std::string_view line, std::string_view text) {
    return findText(line, text) != line.npos;
}

std::string_view trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(kBlanks);
    return begin == text.npos ? std::string_view() : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

int64_t scanLength(std::string_view line) {
    const std::string digits(line.substr(std::min(line.size(), kLengthColumn)));
    int64_t length = -1;
    ConstString(digits.c_str()).scanInt64(length, 0, false);
    return std::max<int64_t>(length, -1);
}
}  // namespace

bool FHttpHead::takeLine(std::string_view line) {
    bytes += uint32_t(std::min<size_t>(line.size(), kMaxBytes));
    if (complete || line.size() > kMaxLineBytes || ++lines > kMaxLines || bytes > kMaxBytes)
        return false;
    if (lines == 1)
        return takeStatus(line);
    complete = line.empty();
    takeHeader(line);
    return true;
}

bool FHttpHead::takeStatus(std::string_view line) {
    const size_t blank = line.find(' ');
    const std::string rest(line.substr(std::min(line.size(), blank)));
    int64_t number = 0;  // what is beyond all bounds is no status, instead of another one
    const bool good = ConstString(rest.c_str()).scanInt64(number, 0, false) && number >= 1 && number <= kMaxStatus;
    status = good ? int32_t(number) : 0;
    return good;
}

void FHttpHead::takeHeader(std::string_view line) {
    if (contains(line, kLength)) {
        length = scanLength(line);
        const bool isUsual =
            findText(line, kLength) == 0 && line.size() > kLengthColumn && line[kLengthColumn - 1] == ' ';
        contentBytes = isUsual ? length : -1;
    }
    const size_t place = findText(line, kLocation);
    if (place != line.npos && location.empty())
        location = trimmed(line.substr(place + kLocation.size()));
    basic |= contains(line, kLogin) && contains(line, kBasic);
    proxyBasic |= contains(line, kProxyLogin) && contains(line, kBasic);
}

bool FHttpHead::isRedirect() const {
    return std::ranges::find(kRedirects, status) != std::end(kRedirects) && !location.empty();
}

}  // namespace Tessarine
