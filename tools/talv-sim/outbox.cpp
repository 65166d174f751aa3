#include "tools/talv-sim/outbox.h"
#include <algorithm>

namespace TalvSim {
namespace {
constexpr int64_t kBitsPerByte = 10;  // eight, a start bit and a stop bit
constexpr int64_t kNanosPerSecond = 1'000'000'000;
}  // namespace

void Outbox::say(const Bytes& frame, TimePoint now) {
    // All four are drawn for each frame, so that one rate doesn't shift what the other one hits.
    const bool drops = percentDrawn() < quality.dropPercent, corrupts = percentDrawn() < quality.corruptPercent;
    const size_t place = draw() % frame.size();
    const uint8_t flipped = uint8_t(1 + draw() % 255);
    Item item{frame, describe(frame), drops ? kDropped : corrupts ? kCorrupted : kWhole, quality.delayMs, now};
    if (item.fate == kCorrupted)
        item.bytes[place] ^= flipped;
    items.push_back(std::move(item));
}

void Outbox::put(const Bytes& bytes, TimePoint now) {
    if (!bytes.empty())
        items.push_back({bytes, "raw", kWhole, 0, now});
}

std::optional<TimePoint> Outbox::due() const {
    if (items.empty())
        return std::nullopt;
    const Item& item = head();
    const size_t upTo = quality.split ? item.sent + 1 : item.bytes.size();
    return std::max(item.queued, lineFree) + std::chrono::milliseconds(item.delayMs) + durationOf(upTo);
}

std::span<const uint8_t> Outbox::piece() const {
    return std::span(head().bytes).subspan(head().sent, quality.split ? 1 : std::dynamic_extent);
}

std::optional<Outbox::Item> Outbox::advance(size_t count) {
    const TimePoint end = *due();
    items.front().sent += count;
    if (head().sent < head().bytes.size())
        return std::nullopt;
    return takeHead(end);
}

Outbox::Item Outbox::discard(TimePoint now) {
    return takeHead(now);
}

std::chrono::nanoseconds Outbox::durationOf(size_t bytes) const {
    return std::chrono::nanoseconds(quality.baud == 0 ? 0
                                                      : int64_t(bytes) * kBitsPerByte * kNanosPerSecond / quality.baud);
}

double Outbox::percentDrawn() {
    return double(draw() >> 11) * 0x1p-53 * 100;
}

uint64_t Outbox::draw() {
    // splitmix64: the same numbers on every machine, which the distributions of the standard library don't give
    uint64_t z = noise += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

Outbox::Item Outbox::takeHead(TimePoint freeFrom) {
    Item item = std::move(items.front());
    items.pop_front();
    lineFree = freeFrom;
    return item;
}
}  // namespace TalvSim
