#include "tools/talv-sim/outbox.h"
#include <algorithm>
#include <gtest/gtest.h>

namespace TalvSim {
namespace {
using namespace std::chrono_literals;

constexpr TimePoint kStart = TimePoint(1000s);
const Bytes kFrame = {3, 0x80, 5, 0x7A};

/** The moments and pieces in which all that is queued goes. */
using Pieces = std::vector<std::pair<TimePoint, Bytes>>;
Pieces sent(Outbox& outbox) {
    Pieces pieces;
    while (const auto due = outbox.due()) {
        const std::span<const uint8_t> piece = outbox.piece();
        pieces.emplace_back(*due, Bytes(piece.begin(), piece.end()));
        outbox.advance(piece.size());
    }
    return pieces;
}

TEST(OutboxPacing, GivesEachByteItsTenBits) {
    Outbox outbox({.baud = 10000}), split({.baud = 10000, .split = true}), delayed({.baud = 0, .delayMs = 7});
    outbox.say(kFrame, kStart);
    outbox.say(kFrame, kStart + 1ms);  // queued while the first is on the line
    outbox.say(kFrame, kStart + 20ms);
    EXPECT_EQ(sent(outbox), (Pieces{
                                {kStart + 4ms,  kFrame},
                                {kStart + 8ms,  kFrame},
                                {kStart + 24ms, kFrame}
    }));
    split.say(kFrame, kStart);
    EXPECT_EQ(sent(split),
              (Pieces{
                  {kStart + 1ms, {3}   },
                  {kStart + 2ms, {0x80}},
                  {kStart + 3ms, {5}   },
                  {kStart + 4ms, {0x7A}}
    }));
    delayed.say(kFrame, kStart);
    delayed.say(kFrame, kStart);
    delayed.put(kFrame, kStart);  // raw bytes have no delay
    EXPECT_EQ(sent(delayed), (Pieces{
                                 {kStart + 7ms,  kFrame},
                                 {kStart + 14ms, kFrame},
                                 {kStart + 14ms, kFrame}
    }));
}

TEST(OutboxPacing, AFullLineTakesAFrameInParts) {
    Outbox outbox({.baud = 0});
    outbox.say(kFrame, kStart);
    EXPECT_FALSE(outbox.advance(3));
    EXPECT_EQ(Bytes(outbox.piece().begin(), outbox.piece().end()), Bytes{0x7A});
    EXPECT_TRUE(outbox.advance(1));
    EXPECT_FALSE(outbox.due());
}

std::vector<Outbox::Item> items(const LineQuality& quality, int32_t count) {
    Outbox outbox(quality);
    std::vector<Outbox::Item> all;
    for (int32_t i = 0; i < count; ++i) {
        outbox.say(kFrame, kStart);
        all.push_back(*outbox.advance(kFrame.size()));
    }
    return all;
}

int64_t numberOf(const std::vector<Outbox::Item>& all, Outbox::Fate fate) {
    return std::ranges::count(all, fate, &Outbox::Item::fate);
}

TEST(OutboxDamage, HitsItsShare) {
    const auto all = items({.corruptPercent = 20, .dropPercent = 10, .seed = 7}, 10000);
    EXPECT_NEAR(double(numberOf(all, Outbox::kDropped)), 1000, 150);
    EXPECT_NEAR(double(numberOf(all, Outbox::kCorrupted)), 1800, 200);  // of those that arrive
    EXPECT_EQ(numberOf(items({}, 200), Outbox::kWhole), 200);
}

TEST(OutboxDamage, ChangesOneByteAnywhere) {
    std::vector<int64_t> hits(kFrame.size());
    for (const Outbox::Item& item : items({.corruptPercent = 100}, 1000)) {
        const auto differing = std::ranges::mismatch(item.bytes, kFrame);
        ASSERT_NE(differing.in2, kFrame.end());
        ++hits[size_t(differing.in2 - kFrame.begin())];
        EXPECT_TRUE(std::equal(differing.in1 + 1, item.bytes.end(), differing.in2 + 1));
    }
    for (const int64_t hit : hits)
        EXPECT_GT(hit, 150);
}

TEST(OutboxDamage, ComesFromTheSeedAlone) {
    const auto first = items({.corruptPercent = 30, .dropPercent = 30, .seed = 42}, 500);
    const auto again = items({.corruptPercent = 30, .dropPercent = 30, .seed = 42}, 500);
    const auto other = items({.corruptPercent = 30, .dropPercent = 30, .seed = 43}, 500);
    const auto undropped = items({.corruptPercent = 30, .seed = 42}, 500);
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].bytes, again[i].bytes);
        EXPECT_TRUE(first[i].fate != Outbox::kCorrupted || undropped[i].bytes == first[i].bytes)
            << "one rate must not shift what the other one hits";
    }
    EXPECT_FALSE(std::ranges::equal(first, other, {}, &Outbox::Item::fate, &Outbox::Item::fate));
    Outbox raw({.baud = 0, .corruptPercent = 100, .dropPercent = 100});
    raw.put(kFrame, kStart);
    EXPECT_EQ(sent(raw).front().second, kFrame);
}
}  // namespace
}  // namespace TalvSim
