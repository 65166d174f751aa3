#pragma once
#include "tools/talv-sim/wire.h"

namespace TalvSim {
/** The cable: a pseudo-terminal in raw mode, and a symbolic link to its far side under a name that a host looks for.

    Owns      both sides of the terminal while plugged, and the link. The far side is held open as well: otherwise the
              near one would read errors whenever no host has the port open, and a host opens and shuts each port that
              it lists.
    Results   errors are texts for a person. */
class Line {
public:
    explicit Line(std::string path) : linkPath(std::move(path)) {}
    ~Line() { unplug(); }
    Line(const Line&) = delete;

    /** Makes terminal and link. A link that is left over, into nothing or to a terminal, is replaced; anything else of
        that name stays. false with error set: nothing was made. */
    [[nodiscard]] bool plug(std::string& error);
    /** A host that has the port open sees it hang up. The link goes if it is still ours. */
    void unplug();

    bool isPlugged() const { return near >= 0; }
    const std::string& path() const { return linkPath; }
    const std::string& terminal() const { return farName; }
    int pollHandle() const { return near; }  // -1 while unplugged, which poll() passes over

    /** What has come from the host; empty: nothing now. */
    Bytes read();
    /** Returns how many of the first bytes were taken, up to 4 KB ahead of the reader, which is what the terminal keeps
        and a host throws away when it opens the port. Never blocks. */
    size_t write(std::span<const uint8_t> bytes);

private:
    bool openTerminal(std::string& error);
    bool placeLink(std::string& error) const;
    void closeTerminal();

    std::string linkPath, farName;
    int near = -1, far = -1;  // the simulator's side; the side that hosts open
};
}  // namespace TalvSim
