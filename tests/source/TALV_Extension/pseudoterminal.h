#pragma once
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace TALV::Test {

/** A serial line whose far end the test plays. The near end appears under a name in a folder. */
class PseudoTerminal {
public:
    using Bytes = std::vector<unsigned char>;

    explicit PseudoTerminal(const std::filesystem::path& link) : link(link) {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
            throw std::runtime_error("no pseudo-terminal");
        slave = open(ptsname(master), O_RDWR | O_NOCTTY);  // without one the far end reads errors
        std::filesystem::create_symlink(ptsname(master), link);
    }
    ~PseudoTerminal() {
        hangUp();
        std::filesystem::remove(link);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    bool send(const Bytes& bytes) { return write(master, bytes.data(), bytes.size()) == ssize_t(bytes.size()); }
    /** What comes until it is so many bytes, or nothing comes any more. */
    Bytes receive(size_t count) {
        Bytes bytes;
        pollfd ready{master, POLLIN, 0};
        while (bytes.size() < count && poll(&ready, 1, 1000) > 0) {
            unsigned char chunk[256];
            const ssize_t size = read(master, chunk, std::min(sizeof(chunk), count - bytes.size()));
            if (size <= 0)
                break;
            bytes.insert(bytes.end(), chunk, chunk + size);
        }
        return bytes;
    }
    termios settings() const {
        termios current{};
        tcgetattr(slave, &current);
        return current;
    }
    void hangUp() {
        for (int* handle : {&slave, &master}) {
            if (*handle >= 0)
                close(*handle);
            *handle = -1;
        }
    }

    int master = -1, slave = -1;

private:
    std::filesystem::path link;
};

}  // namespace TALV::Test
