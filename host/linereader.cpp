#include "host/linereader.h"
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace {
constexpr size_t kMaxRest = 1 << 20;
}

bool LineReader::read(std::vector<std::string>& lines) {
    char block[4096];
    const ssize_t count = ::read(descriptor, block, sizeof(block));
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return true;
    rest.append(block, count > 0 ? size_t(count) : 0);
    for (size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
        lines.push_back(rest.substr(0, end));
        rest.erase(0, end + 1);
    }
    const bool isLast = count <= 0;
    if (!rest.empty() && (isLast || rest.size() > kMaxRest)) {
        lines.push_back(rest);
        rest.clear();
    }
    return !isLast;
}

bool writeAll(int descriptor, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + done, text.size() - done);
        if (count > 0)
            done += size_t(count);
        else if (errno == EAGAIN) {
            pollfd ready = {descriptor, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR)
            return false;
    }
    return true;
}
