#include "tools/talv-sim/line.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace TalvSim {
namespace {
constexpr int32_t kReadAhead = 4095;  // what the terminal keeps for a reader
constexpr int kOpenFlags = O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC;
constexpr std::string_view kTerminalFolder = "/dev/pts/";

bool fail(std::string& error, const std::string& what) {
    error = what + ": " + std::strerror(errno);
    return false;
}

void makeRaw(int handle) {
    termios settings{};
    tcgetattr(handle, &settings);
    cfmakeraw(&settings);
    cfsetspeed(&settings, B38400);
    tcsetattr(handle, TCSANOW, &settings);
}

std::string linkTarget(const std::string& path) {
    char target[PATH_MAX];
    const ssize_t size = readlink(path.c_str(), target, sizeof target);
    return std::string(target, size_t(std::max<ssize_t>(size, 0)));
}

bool isLeftOver(const std::string& link) {
    struct stat found;
    return linkTarget(link).starts_with(kTerminalFolder) || stat(link.c_str(), &found) != 0;
}
}  // namespace

bool Line::plug(std::string& error) {
    if (isPlugged())
        return true;
    if (openTerminal(error) && placeLink(error))
        return true;
    closeTerminal();
    return false;
}

void Line::unplug() {
    if (!isPlugged())
        return;
    if (linkTarget(linkPath) == farName)
        ::unlink(linkPath.c_str());
    closeTerminal();
}

Bytes Line::read() {
    Bytes bytes(4096);
    const ssize_t count = ::read(near, bytes.data(), bytes.size());
    bytes.resize(size_t(std::max<ssize_t>(count, 0)));
    return bytes;
}

size_t Line::write(std::span<const uint8_t> bytes) {
    int unread = 0;
    if (!isPlugged() || ioctl(far, FIONREAD, &unread) != 0 || unread >= kReadAhead)
        return 0;
    const ssize_t count = ::write(near, bytes.data(), std::min(bytes.size(), size_t(kReadAhead - unread)));
    return size_t(std::max<ssize_t>(count, 0));
}

bool Line::openTerminal(std::string& error) {
    char name[PATH_MAX];
    near = posix_openpt(kOpenFlags);
    if (near < 0 || grantpt(near) != 0 || unlockpt(near) != 0 || ptsname_r(near, name, sizeof name) != 0)
        return fail(error, "no pseudo-terminal");
    farName = name;
    far = ::open(name, kOpenFlags);
    if (far < 0)
        return fail(error, farName);
    makeRaw(far);
    return true;
}

bool Line::placeLink(std::string& error) const {
    struct stat found;
    if (lstat(linkPath.c_str(), &found) == 0) {
        if (!S_ISLNK(found.st_mode) || !isLeftOver(linkPath)) {
            error = linkPath + ": exists and is no link to a terminal; left as it is";
            return false;
        }
        ::unlink(linkPath.c_str());
    }
    return symlink(farName.c_str(), linkPath.c_str()) == 0 || fail(error, linkPath);  // never writes over anything
}

void Line::closeTerminal() {
    for (int* handle : {&near, &far}) {
        if (*handle >= 0)
            ::close(*handle);
        *handle = -1;
    }
}
}  // namespace TalvSim
