#pragma once
#include "tools/talv-sim/wire.h"
#include <chrono>
#include <deque>

namespace TalvSim {
using TimePoint = std::chrono::steady_clock::time_point;

/** How good the line is. */
struct LineQuality {
    uint32_t baud = 38400;  // 0: no pacing
    uint32_t delayMs = 0;   // before each frame of a device
    bool split = false;     // byte by byte
    double corruptPercent = 0, dropPercent = 0;
    uint64_t seed = 1;  // the same seed damages the same frames in the same places
};

/** What waits for its time on the line: one frame after the other, ten bits a byte. The owner has the clock and the
    port, so that nothing waits in here. */
class Outbox {
public:
    enum Fate { kWhole, kCorrupted, kDropped };
    struct Item {
        Bytes bytes;       // as they go on the line, damage included
        std::string text;  // what was meant
        Fate fate;
        uint32_t delayMs;
        TimePoint queued;
        size_t sent = 0;
    };

    explicit Outbox(const LineQuality& lineQuality) : quality(lineQuality), noise(lineQuality.seed) {}

    /** A device speaks: after its delay, and as damaged as the line has it. */
    void say(const Bytes& frame, TimePoint now);
    /** Bytes as they are. */
    void put(const Bytes& bytes, TimePoint now);
    void clear() { items.clear(); }

    /** When the next piece is due. Nothing: all is sent. */
    std::optional<TimePoint> due() const;
    /** The piece itself: a byte when split, otherwise what is left of the frame. Only while there is one due. */
    std::span<const uint8_t> piece() const;
    const Item& head() const { return items.front(); }
    /** Count bytes of the piece are gone; the item, when it is complete by that. */
    std::optional<Item> advance(size_t count);
    /** Gives up the head; the time that it would have taken is not spent. */
    Item discard(TimePoint now);

private:
    std::chrono::nanoseconds durationOf(size_t bytes) const;
    double percentDrawn();
    uint64_t draw();
    Item takeHead(TimePoint freeFrom);

    LineQuality quality;
    std::deque<Item> items;
    TimePoint lineFree{};  // the end of the last item's last bit
    uint64_t noise;        // state of the generator
};
}  // namespace TalvSim
