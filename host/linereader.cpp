#include "host/linereader.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <iterator>
#include <poll.h>
#include <unistd.h>
#include <utility>

bool LineReader::read(std::vector<std::string>& lines) {
    char block[4096];
    const ssize_t count = ::read(descriptor, block, sizeof(block));
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return true;
    rest.append(block, count > 0 ? size_t(count) : 0);
    size_t first = 0;
    for (size_t end; (end = rest.find('\n', first)) != std::string::npos; first = end + 1)
        lines.push_back(rest.substr(first, end - first));
    rest.erase(0, first);
    rest.resize(std::min(rest.size(), kMaxLine));
    if (count > 0)
        return true;
    if (!rest.empty())
        lines.push_back(std::exchange(rest, std::string()));
    return false;
}

bool writeAll(int descriptor, const std::string& text, int giveUp) {
    for (size_t done = 0; done < text.size();) {
        pollfd both[] = {
            {descriptor, POLLOUT, 0},
            {giveUp,     POLLIN,  0},
        };
        if (::poll(both, std::size(both), -1) < 0 && errno != EINTR)
            return false;
        if (!both[0].revents && both[1].revents)
            return false;
        if (!both[0].revents)
            continue;
        // so much never blocks on a pipe that is ready
        const ssize_t count = ::write(descriptor, text.data() + done, std::min<size_t>(text.size() - done, PIPE_BUF));
        if (count > 0)
            done += size_t(count);
        else if (errno != EAGAIN && errno != EINTR)
            return false;
    }
    return true;
}
