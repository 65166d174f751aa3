// The head of an HTTP answer. An input is what a server sends; a plain reading of the rules, line by line, has to agree.
#include "demand.h"
#include "frame/source/storage/furlhttphead.h"
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace Tessarine;

namespace {
/** The bytes up to a line feed, without a carriage return before it; false: there is no line feed. */
bool takeLine(std::string_view& rest, std::string_view& line) {
    const size_t end = rest.find('\n');
    if (end == rest.npos)
        return false;
    line = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return true;
}

std::string lowered(std::string_view text) {
    std::string low(text);
    std::ranges::transform(low, low.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return low;
}

/** The number behind the first blank; 0: it is none of a status. */
int32_t statusIn(std::string_view line) {
    const std::string rest(line.substr(std::min(line.find(' '), line.size())));
    const int64_t number = std::strtoll(rest.c_str(), nullptr, 10);
    return number >= 1 && number <= 999 ? int32_t(number) : 0;
}

/** What is known of an answer after each line. */
struct Model {
    int32_t status = 0;
    int64_t length = -1;
    bool hasLocation = false, isBasic = false, isProxyBasic = false;

    void take(std::string_view line) {
        const std::string low = lowered(line);
        const auto has = [&](const char* text) { return low.find(text) != low.npos; };
        if (has("content-length:")) {
            const std::string number(line.substr(std::min<size_t>(16, line.size())));
            char* end = nullptr;
            const int64_t scanned = std::strtoll(number.c_str(), &end, 10);
            length = end == number.c_str() ? -1 : std::max<int64_t>(scanned, -1);
        }
        const size_t place = low.find("location:");
        hasLocation |= place != low.npos && low.find_first_not_of(" \t", place + 9) != low.npos;
        isBasic |= has("www-authenticate:") && has("basic");
        isProxyBasic |= has("proxy-authenticate:") && has("basic");
    }
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size), line;
    FHttpHead head;
    Model model;
    bool first = true;
    size_t lines = 0;
    for (; takeLine(rest, line); first = false) {
        const bool taken = head.takeLine(line);
        ++lines;
        demand(!taken || lines <= FHttpHead::kMaxLines);
        demand(first || taken || line.size() > FHttpHead::kMaxLineBytes || lines > FHttpHead::kMaxLines ||
               size > FHttpHead::kMaxBytes);
        if (first && line.size() <= FHttpHead::kMaxLineBytes)
            model.status = statusIn(line);
        demand(head.status == model.status && (!first || taken == (model.status != 0)));
        if (!taken)
            return 0;
        demand(head.isComplete() == (!first && line.empty()));
        if (!first)
            model.take(line);
        demand(head.length == model.length && head.location.empty() != model.hasLocation);
        demand(head.contentBytes == -1 || head.contentBytes == head.length);
        demand(head.wantsLogin() == (model.isBasic && model.status == 401));
        demand(head.wantsProxyLogin() == (model.isProxyBasic && model.status == 407));
        const bool moves = model.status == 301 || model.status == 302 || model.status == 307;
        demand(head.isRedirect() == (model.hasLocation && moves));
        if (head.isComplete()) {
            demand(!head.takeLine("A: b"));
            return 0;
        }
    }
    demand(!head.isComplete());
    return 0;
}
