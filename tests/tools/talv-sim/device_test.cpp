#include "tools/talv-sim/device.h"
#include <gtest/gtest.h>

namespace TalvSim {
namespace {
Bytes hex(const std::string& text) {
    return fromHex(text).value_or(Bytes());
}

Device someDevice() {
    Device device(5, "HA-8CH 5");
    device.rename("HA-8CH  and more");
    for (int32_t channel = 0; channel < kNumChannels; ++channel) {
        device.turn(kGain, channel, channel == 0 ? 0 : 10 * channel + 2);
        device.turn(kMeter, channel, channel == 7 ? 127 : 10 * channel);
    }
    device.turn(kDevMode, 0, 3);
    device.turn(kWordClock, 0, 1);
    device.turn(kPlus48VMaster, 0, 1);
    device.turn(kHPFFreq, 1, 40);
    return device;
}

TEST(DeviceAnswers, SettingsWithTheirReport) {
    constexpr std::tuple<const char*, const char*, const char*, Param, int32_t, int32_t> kRows[] = {
        {"mode",            "04 01 05 02 F7",          "0C 81 05 02 48 41 2D 38 43 48 20 20 BE", kDevMode,       0, 2 },
        {"word clock",      "04 10 05 02 E8",          "04 90 05 02 68",                         kWordClock,     0, 2 },
        {"gain",            "05 20 05 03 20 B7",       "05 A0 05 03 20 37",                      kGain,          3, 40},
        {"gain of three",   "07 20 05 05 01 02 03 CF", "07 A0 05 05 01 02 03 4F",                kGain,          7, 69},
        {"filter",          "05 22 05 07 01 D0",       "05 A2 05 07 01 50",                      kHPF,           7, 1 },
        {"trim",            "05 24 05 02 FB D9",       "05 A4 05 02 FB 59",                      kGainTrim,      2, 10},
        {"panel lock",      "04 25 05 01 D4",          "04 A5 05 01 54",                         kPanelLock,     0, 1 },
        {"frequency",       "05 28 05 04 20 AE",       "05 A8 05 04 20 2E",                      kHPFFreq,       4, 28},
        {"meter mode",      "04 23 05 01 D6",          "",                                       kMeterMode,     0, 1 },
        {"a gain too high", "05 20 05 03 FF D8",       "05 A0 05 03 48 0F",                      kGain,          3, 0 },
        {"past the last",   "07 20 05 06 01 02 03 CE", "",                                       kGain,          7, 72},
        {"255 + 1",         "05 20 05 FF 01 DA",       "",                                       kGain,          0, 0 },
        {"no value",        "03 26 05 D4",             "",                                       kBrightness,    0, 5 },
        {"two values",      "05 26 05 01 01 D2",       "",                                       kBrightness,    0, 5 },
        {"another device",  "05 20 01 03 20 BB",       "",                                       kGain,          3, 32},
        {"48 V master",     "04 27 05 00 D3",          "",                                       kPlus48VMaster, 0, 1 },
    };
    for (const auto& [name, frame, answer, param, channel, value] : kRows) {
        SCOPED_TRACE(name);
        Device device = someDevice();
        ASSERT_TRUE(isFrame(hex(frame)));
        EXPECT_EQ(toHex(device.answer(hex(frame))), answer);
        EXPECT_EQ(device.value(param, channel), value);
    }
}

TEST(DeviceAnswers, NothingBreaksIt) {
    Device device = someDevice();
    for (int32_t command = 0; command < 256; ++command)
        for (size_t size = 0; size <= 12; ++size)
            for (const uint8_t byte : {0, 7, 8, 255}) {
                const Bytes answer = device.answer(makeFrame(command, 5, Bytes(size, byte)));
                EXPECT_TRUE(answer.empty() || isFrame(answer));
            }
}
}  // namespace
}  // namespace TalvSim
