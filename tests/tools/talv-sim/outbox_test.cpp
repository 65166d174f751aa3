#include "tools/talv-sim/outbox.h"
#include <algorithm>
#include <gtest/gtest.h>

namespace TalvSim {
namespace {
using namespace std::chrono_literals;

constexpr TimePoint kStart = TimePoint(1000s);
const Bytes kFrame = {3, 0x80, 5, 0x7A};

/** Sends all that is queued at the moment when it is due; the moments and pieces. */
std::vector<std::pair<TimePoint, Bytes>> sent(Outbox& outbox) {
    std::vector<std::pair<TimePoint, Bytes>> pieces;
    while (const auto due = outbox.due()) {
        const std::span<const uint8_t> piece = outbox.piece();
        pieces.emplace_back(*due, Bytes(piece.begin(), piece.end()));
        outbox.advance(piece.size());
    }
    return pieces;
}

TEST(OutboxPacing, TenBitsAByteOneFrameAfterTheOther) {
    Outbox outbox({.baud = 10000});
    outbox.say(kFrame, kStart);
    outbox.say(kFrame, kStart + 1ms);  // queued while the first is on the line
    outbox.say(kFrame, kStart + 20ms);
    const auto pieces = sent(outbox);
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[0].first, kStart + 4ms);
    EXPECT_EQ(pieces[1].first, kStart + 8ms);
    EXPECT_EQ(pieces[2].first, kStart + 24ms);
}

TEST(OutboxPacing, SplitGivesEachByteItsTime) {
    Outbox outbox({.baud = 10000, .split = true});
    outbox.say(kFrame, kStart);
    const auto pieces = sent(outbox);
    ASSERT_EQ(pieces.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(pieces[i].first, kStart + 1ms * (i + 1));
        EXPECT_EQ(pieces[i].second, Bytes{kFrame[i]});
    }
}

TEST(OutboxPacing, DelayStandsBeforeEachAnswerButNotBeforeRawBytes) {
    Outbox outbox({.baud = 0, .delayMs = 7});
    outbox.say(kFrame, kStart);
    outbox.say(kFrame, kStart);
    outbox.put(kFrame, kStart);
    const auto pieces = sent(outbox);
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[0].first, kStart + 7ms);
    EXPECT_EQ(pieces[1].first, kStart + 14ms);
    EXPECT_EQ(pieces[2].first, kStart + 14ms);
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
    EXPECT_EQ(numberOf(items({.corruptPercent = 100}, 200), Outbox::kCorrupted), 200);
    EXPECT_EQ(numberOf(items({.dropPercent = 100}, 200), Outbox::kDropped), 200);
    EXPECT_EQ(numberOf(items({}, 200), Outbox::kWhole), 200);
}

TEST(OutboxDamage, ChangesOneByteAnywhere) {
    std::vector<int64_t> hits(kFrame.size());
    for (const Outbox::Item& item : items({.corruptPercent = 100}, 1000)) {
        int64_t changed = 0;
        for (size_t i = 0; i < kFrame.size(); ++i) {
            changed += item.bytes[i] != kFrame[i];
            hits[i] += item.bytes[i] != kFrame[i];
        }
        EXPECT_EQ(changed, 1);
        EXPECT_FALSE(isFrame(item.bytes));
    }
    for (const int64_t hit : hits)
        EXPECT_GT(hit, 150);
}

TEST(OutboxDamage, ComesFromTheSeedAlone) {
    const LineQuality quality = {.corruptPercent = 30, .dropPercent = 30, .seed = 42};
    LineQuality other = quality, fewer = quality;
    other.seed = 43;
    fewer.dropPercent = 0;
    const auto first = items(quality, 500), again = items(quality, 500), undropped = items(fewer, 500);
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].bytes, again[i].bytes);
        if (first[i].fate == Outbox::kCorrupted) {
            EXPECT_EQ(undropped[i].bytes, first[i].bytes) << "one rate must not shift what the other one hits";
        }
    }
    EXPECT_FALSE(std::ranges::equal(first, items(other, 500), {}, &Outbox::Item::fate, &Outbox::Item::fate));
    Outbox raw({.baud = 0, .corruptPercent = 100, .dropPercent = 100});
    raw.put(kFrame, kStart);
    EXPECT_EQ(sent(raw).front().second, kFrame);
}
}  // namespace
}  // namespace TalvSim
