#include "source/TALV_Extension/TALV_MessageFactory.h"
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace TALV;

namespace {
using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const std::string& hex) {
    Bytes bytes;
    for (size_t i = 0; i < hex.size(); i += 3)
        bytes.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

/** Every byte alike, so that a field that was touched shows. */
MessagePrm recordOf(int byte) {
    MessagePrm prm;
    std::memset(&prm, byte, sizeof(prm));
    return prm;
}

bool same(const MessagePrm& a, const MessagePrm& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

MessagePrm parse(const Bytes& bytes, const MessagePrm& before = recordOf(0)) {
    static const unsigned char kNothing = 0;
    MessagePrm prm = before;
    TALV_MessageFactory::parseMessage(bytes.empty() ? &kNothing : bytes.data(), int32_t(bytes.size()), prm);
    return prm;
}

Bytes withChecksum(Bytes bytes) {
    bytes.push_back(TALV_MessageFactory::calcChecksum(bytes.data() + 1, int32_t(bytes.size()) - 1));
    return bytes;
}

class Frames : public testing::Test {
protected:
    Frames() { TALV_MessageFactory::clearMessageContainer(); }
    ~Frames() override { TALV_MessageFactory::clearMessageContainer(); }
};

using Factory = TALV_MessageFactory;
template <auto Start, auto Count>
void range(MessagePrm& prm, uint8_t start, uint8_t count) {
    prm.*Start = start;
    prm.*Count = count;
}
constexpr auto gain = range<&MessagePrm::gainStart, &MessagePrm::gainCount>;
constexpr auto plus48V = range<&MessagePrm::plus48VStart, &MessagePrm::plus48VCount>;
constexpr auto hpf = range<&MessagePrm::hpfStart, &MessagePrm::hpfCount>;
constexpr auto trim = range<&MessagePrm::gainTrimStart, &MessagePrm::gainTrimCount>;
constexpr auto freq = range<&MessagePrm::hpfFreqStart, &MessagePrm::hpfFreqCount>;

/** Something of everything. */
MessagePrm settings() {
    MessagePrm p = recordOf(0);
    p.devMode = 3, p.wordClock = 2, p.meterMode = 1, p.panelLock = 1, p.brightness = 5;
    gain(p, 3, 1), p.gain[3] = 32;
    plus48V(p, 0, 1), p.plus48V[0] = 1;
    hpf(p, 7, 1), p.hpf[7] = 1;
    trim(p, 2, 1), p.gainTrim[2] = uint8_t(-5);
    freq(p, 4, 1), p.hpfFreq[4] = 28;
    return p;
}

/** All channels. */
MessagePrm requests() {
    MessagePrm p = recordOf(0);
    for (const auto each : {gain, plus48V, hpf, trim, freq})
        each(p, 0, 8);
    return p;
}

constexpr std::tuple<MessageType, int32_t (*)(const MessagePrm&, unsigned char*, int32_t), const char*> kCommands[] = {
    {kMessageDevId,             Factory::createDevIdMessage,             "03 00 00 FF"      },
    {kMessageDevMode,           Factory::createDevModeMessage,           "04 01 01 03 FA"   },
    {kMessageReqDevModeDevName, Factory::createReqDevModeDevNameMessage, "03 41 01 BD"      },
    {kMessageWordClock,         Factory::createWordClockMessage,         "04 10 01 02 EC"   },
    {kMessageReqWordClock,      Factory::createReqWordClockMessage,      "03 50 01 AE"      },
    {kMessageGain,              Factory::createGainMessage,              "05 20 01 03 20 BB"},
    {kMessageReqGain,           Factory::createReqGainMessage,           "05 60 01 00 08 96"},
    {kMessagePlus48V,           Factory::createPlus48VMessage,           "05 21 01 00 01 DC"},
    {kMessageReqPlus48V,        Factory::createReqPlus48VMessage,        "05 61 01 00 08 95"},
    {kMessageHPF,               Factory::createHPFMessage,               "05 22 01 07 01 D4"},
    {kMessageReqHPF,            Factory::createReqHPFMessage,            "05 62 01 00 08 94"},
    {kMessageMeterMode,         Factory::createMeterModeMessage,         "04 23 01 01 DA"   },
    {kMessageGainTrim,          Factory::createGainTrimMessage,          "05 24 01 02 FB DD"},
    {kMessageReqGainTrim,       Factory::createReqGainTrimMessage,       "05 64 01 00 08 92"},
    {kMessagePanelLock,         Factory::createPanelLockMessage,         "04 25 01 01 D8"   },
    {kMessageReqPanelLock,      Factory::createReqPanelLockMessage,      "03 65 01 99"      },
    {kMessageBrightness,        Factory::createBrightnessMessage,        "04 26 01 05 D3"   },
    {kMessageReqBrightness,     Factory::createReqBrightnessMessage,     "03 66 01 98"      },
    {kMessageReqPlus48VMaster,  Factory::createReqPlus48VMasterMessage,  "03 67 01 97"      },
    {kMessageHPFFreq,           Factory::createHPFFreqMessage,           "05 28 01 04 1C B6"},
    {kMessageReqHPFFreq,        Factory::createReqHPFFreqMessage,        "05 68 01 00 08 8E"},
};
static_assert(std::size(kCommands) == kNumMessageTypes - 1);
}  // namespace

TEST_F(Frames, EachCommandIsBuiltWholeOrNotAtAll) {
    for (const auto& [kind, create, frame] : kCommands) {
        SCOPED_TRACE(frame);
        const Bytes expected = bytesOf(frame);
        MessagePrm prm = expected[1] < 0x40 ? settings() : requests();
        prm.type = kind;
        prm.devId = 1;
        for (size_t size = 0; size <= expected.size(); ++size) {
            SCOPED_TRACE(size);
            Bytes buffer(expected.size() + 1, 0xEE);
            const bool fits = size == expected.size();
            const auto wanted = int32_t(fits ? size : 0);
            EXPECT_EQ(Factory::createMessage(prm, buffer.data(), int32_t(size)), wanted);
            EXPECT_EQ(create(prm, buffer.data(), int32_t(size)), wanted);
            Bytes after = fits ? expected : Bytes(expected.size(), 0xEE);
            after.push_back(0xEE);
            EXPECT_EQ(buffer, after);
        }
        EXPECT_EQ(create(prm, nullptr, 100), 0);
    }
    for (const int32_t kind : {0, int32_t(kNumMessageTypes), -1}) {
        MessagePrm prm = recordOf(0);
        prm.type = MessageType(kind);
        unsigned char buffer[32];
        EXPECT_EQ(Factory::createMessage(prm, buffer, sizeof(buffer)), 0) << kind;
    }
}

TEST_F(Frames, ChannelsEndWithTheEighth) {
    constexpr std::tuple<uint8_t, uint8_t, int32_t, int32_t> kRows[] = {
  // and the bytes of the two frames
        {7,   1,   6,  6},
        {7,   2,   0,  0},
        {0,   8,   13, 6},
        {0,   9,   0,  0},
        {3,   0,   5,  6},
        {8,   0,   5,  6},
        {9,   0,   0,  0},
        {255, 1,   0,  0},
        {1,   255, 0,  0},
    };
    for (const auto& [start, count, values, request] : kRows) {
        SCOPED_TRACE(testing::Message() << int(start) << "+" << int(count));
        MessagePrm prm = recordOf(0);
        gain(prm, start, count);
        unsigned char buffer[300];
        EXPECT_EQ(Factory::createGainMessage(prm, buffer, sizeof(buffer)), values);
        EXPECT_EQ(Factory::createReqGainMessage(prm, buffer, sizeof(buffer)), request);
    }
}

TEST_F(Frames, ReportsGiveTheirMessagesOnlyWhole) {
    using Parser = void (*)(const unsigned char*, int32_t, MessagePrm&);
    const std::tuple<const char*, MessageType, Parser, void (*)(MessagePrm&)> rows[] = {
        {"03 80 05 7A",                            kMessageDevId,             Factory::parseDevIdMessage,          [](MessagePrm&) {}                  },
        {"0C 81 05 03 48 41 2D 38 43 48 20 20 BD", kMessageReqDevModeDevName, Factory::parseDevModeDevNameMessage,
         [](MessagePrm& p) { p.devMode = 3, std::memcpy(p.devName, "HA-8CH  ", 8); }                                                                   },
        {"04 90 05 01 69",                         kMessageReqWordClock,      Factory::parseWordClockMessage,
         [](MessagePrm& p) { p.wordClock = 1; }                                                                                                        },
        {"0C A0 05 00 48 3C 32 28 1E 14 0A 00 40", kMessageReqGain,           Factory::parseGainMessage,
         [](MessagePrm& p) { gain(p, 0, 8), std::memcpy(p.gain, "\x48\x3C\x32\x28\x1E\x14\x0A\0", 8); }                                                },
        {"04 A7 05 01 52",                         kMessageReqPlus48VMaster,  Factory::parsePlus48VMasterMessage,
         [](MessagePrm& p) { p.plus48VMaster = 1; }                                                                                                    },
        {"0B A3 05 00 0A 14 1E 28 32 3C 7F 06",    kMessageMeterMode,         Factory::parseMeterDataMessage,
         [](MessagePrm& p) { std::memcpy(p.meter, "\0\x0A\x14\x1E\x28\x32\x3C\x7F", 8); }                                                              },
        {"06 A8 05 00 1C 2C 0A",                   kMessageReqHPFFreq,        Factory::parseHPFFreqMessage,
         [](MessagePrm& p) { freq(p, 0, 2), p.hpfFreq[0] = 28, p.hpfFreq[1] = 44; }                                                                    },
        {"04 A0 05 03 57",                         kMessageReqGain,           Factory::parseGainMessage,           [](MessagePrm& p) { gain(p, 3, 0); }},
        {"04 A0 05 08 52",                         kMessageReqGain,           Factory::parseGainMessage,           [](MessagePrm& p) { gain(p, 8, 0); }},
        {"05 A1 05 02 01 56",                      kMessageReqPlus48V,        Factory::parsePlus48VMessage,
         [](MessagePrm& p) { plus48V(p, 2, 1), p.plus48V[2] = 1; }                                                                                     },
        {"05 A2 05 07 01 50",                      kMessageReqHPF,            Factory::parseHPFMessage,
         [](MessagePrm& p) { hpf(p, 7, 1), p.hpf[7] = 1; }                                                                                             },
        {"05 A4 05 02 FB 59",                      kMessageReqGainTrim,       Factory::parseGainTrimMessage,
         [](MessagePrm& p) { trim(p, 2, 1), p.gainTrim[2] = 0xFB; }                                                                                    },
        {"04 A5 05 01 54",                         kMessageReqPanelLock,      Factory::parsePanelLockMessage,
         [](MessagePrm& p) { p.panelLock = 1; }                                                                                                        },
        {"04 A6 05 07 4D",                         kMessageReqBrightness,     Factory::parseBrightnessMessage,
         [](MessagePrm& p) { p.brightness = 7; }                                                                                                       },
        {"06 90 05 02 77 78 79",                   kMessageReqWordClock,      Factory::parseWordClockMessage,
         [](MessagePrm& p) { p.wordClock = 2; }                                                                                                        },
    };
    for (const auto& [digits, kind, parser, fill] : rows) {
        SCOPED_TRACE(digits);
        const Bytes frame = bytesOf(digits);
        MessagePrm expected = recordOf(0x55);
        expected.type = kind;
        expected.devId = 5;
        fill(expected);
        EXPECT_TRUE(same(parse(frame, recordOf(0x55)), expected));
        for (size_t size = 0; size <= frame.size(); ++size) {
            const Bytes cut(frame.begin(), frame.begin() + ptrdiff_t(size));  // its own block: a read past it is seen
            MessagePrm prm = recordOf(0);
            parser(cut.data(), int32_t(size), prm);
            EXPECT_EQ(prm.devId, size == frame.size() ? 5 : 0) << size;
        }
        MessagePrm prm = recordOf(0);
        parser(nullptr, 100, prm);
        EXPECT_TRUE(same(prm, recordOf(0)));
    }
}

TEST_F(Frames, WhatIsNoReportLeavesTheRecord) {
    const auto nothing = [](MessagePrm&) {};
    const auto noKind = [](MessagePrm& p) { p.type = kMessageNone; };
    const std::tuple<const char*, Bytes, std::function<void(MessagePrm&)>> rows[] = {
        {"bad checksum",                           bytesOf("03 80 05 79"),                                            nothing                               },
        {"below the reports, before the checksum", bytesOf("03 7F 05 7B"),                                            noKind                                },
        {"above the reports",                      withChecksum({3, 0xA9, 5}),                                        noKind                                },
        {"a gap among the reports",                bytesOf("03 82 05 78"),                                            noKind                                },
        {"another gap",                            withChecksum({3, 0x9F, 5}),                                        noKind                                },
        {"length 1: a command alone",              {1, 0x80},                                                         nothing                               },
        {"length 1: an unknown command alone",     {1, 0x20},                                                         noKind                                },
        {"length 2: no device",                    {2, 0x80, 0x7F},                                                   nothing                               },
        {"word clock without a value",             withChecksum({3, 0x90, 5}),                                        nothing                               },
        {"name of seven",                          withChecksum({11, 0x81, 5, 3, 'a', 'b', 'c', 'd', 'e', 'f', 'g'}), nothing                               },
        {"seven meters",                           withChecksum({10, 0xA3, 5, 1, 2, 3, 4, 5, 6, 7}),                  nothing                               },
        {"gain without channels",                  withChecksum({3, 0xA0, 5}),                                        nothing                               },
        {"nine channels",                          withChecksum({13, 0xA0, 5, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9}),         nothing                               },
        {"gain with a bad checksum",               {7, 0xA0, 5, 6, 1, 2, 3, 0},                                       nothing                               },
        {"channels past the eighth",               withChecksum({7, 0xA0, 5, 6, 1, 2, 3}),                            [](MessagePrm& p) { gain(p, 6, 3); }  },
        {"start 255",                              withChecksum({5, 0xA0, 5, 255, 1}),                                [](MessagePrm& p) { gain(p, 255, 1); }},
    };
    for (const auto& [name, frame, fill] : rows) {
        SCOPED_TRACE(name);
        MessagePrm expected = recordOf(0x55);
        fill(expected);
        EXPECT_TRUE(same(parse(frame, recordOf(0x55)), expected));
        EXPECT_EQ(parse(bytesOf("03 80 05 7A")).type, kMessageDevId) << "the next frame";
    }
}

TEST_F(Frames, PartsAreJoinedAndOneFrameIsGivenACall) {
    const Bytes frame = bytesOf("0C A0 05 00 48 3C 32 28 1E 14 0A 00 40");
    for (size_t i = 0; i + 1 < frame.size(); ++i)
        EXPECT_EQ(parse({frame[i]}).type, kMessageNone) << i;
    EXPECT_EQ(parse({frame.back()}).type, kMessageReqGain);

    Bytes two = bytesOf("03 80 05 7A");
    two.insert(two.end(), frame.begin(), frame.end());
    EXPECT_EQ(parse(two).type, kMessageDevId);
    EXPECT_EQ(parse({}).type, kMessageReqGain);
    EXPECT_TRUE(same(parse(bytesOf("00 03 80 05 7A"), recordOf(0x55)), recordOf(0x55))) << "a lone zero costs a call";
    EXPECT_EQ(parse({}).type, kMessageDevId);
}

TEST_F(Frames, ALargeLengthStallsUntilItComesTrueOrIsCleared) {
    EXPECT_EQ(parse({255}).type, kMessageNone);
    for (int32_t i = 0; i < 63; ++i)
        EXPECT_EQ(parse(bytesOf("03 80 05 7A")).type, kMessageNone) << i;  // 253 bytes with the first
    EXPECT_EQ(parse(bytesOf("03 80 05 7A")).type, kMessageNone);           // the long frame goes, with 3 of these
    EXPECT_EQ(parse({}).type, kMessageNone);                               // 7A is taken for a length
    TALV_MessageFactory::clearMessageContainer();
    EXPECT_EQ(parse(bytesOf("03 80 05 7A")).type, kMessageDevId);
}

TEST_F(Frames, ReassemblyKeepsWhatDoesNotFit) {
    const Bytes bytes = bytesOf("03 80 05 7A 00");
    unsigned char frame[4];
    EXPECT_EQ(Factory::ajustmentMessage(nullptr, 5, frame, 4), 0);
    EXPECT_EQ(Factory::ajustmentMessage(bytes.data(), 5, nullptr, 4), 0);  // stores nothing
    EXPECT_EQ(Factory::ajustmentMessage(bytes.data(), 0, frame, 4), 0);
    EXPECT_EQ(Factory::ajustmentMessage(bytes.data(), 5, frame, 3), 0);
    EXPECT_EQ(Factory::ajustmentMessage(bytes.data(), 0, frame, 4), 4);
    EXPECT_EQ(Bytes(frame, frame + 4), bytesOf("03 80 05 7A"));
    EXPECT_EQ(Factory::ajustmentMessage(bytes.data(), 0, frame, 4), 1);
    EXPECT_EQ(Factory::ajustmentMessage(bytes.data(), 0, frame, 4), 0);
}
