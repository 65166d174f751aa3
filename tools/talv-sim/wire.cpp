#include "tools/talv-sim/wire.h"
#include <algorithm>
#include <cstdio>
#include <numeric>

namespace TalvSim {
namespace {
constexpr size_t kMinLength = 3, kMaxLength = 4 + kNumChannels;  // of what a host may send
constexpr size_t kHeadSize = 3;                                  // length, command, device id

bool canBeLength(uint8_t byte) {
    return byte >= kMinLength && byte <= kMaxLength;
}

uint8_t sumOf(std::span<const uint8_t> bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), uint8_t(0));
}

int32_t hexDigit(char c) {
    static const std::string digits = "0123456789abcdef";
    const size_t at = digits.find(c >= 'A' && c <= 'F' ? char(c - 'A' + 'a') : c);
    return at == std::string::npos ? -1 : int32_t(at);
}

std::string channelsText(int32_t first, int32_t count) {
    const std::string from = " ch " + std::to_string(first);
    return count == 1 ? from : from + " to " + std::to_string(first + count - 1);
}

std::string valuesText(const ParamRow& row, std::span<const uint8_t> bytes) {
    std::string text = " =";
    for (const uint8_t byte : bytes)
        text.append(" ").append(std::to_string(row.fromWire(byte)));
    return text;
}

std::string channelFrameText(const ParamRow& row, std::span<const uint8_t> payload) {
    if (row.param == kMeter)
        return row.name + channelsText(0, int32_t(payload.size())) + valuesText(row, payload);
    if (payload.empty())
        return std::string(row.name) + " without a channel";
    return row.name + channelsText(payload[0], int32_t(payload.size()) - 1) + valuesText(row, payload.subspan(1));
}

std::string modeAndNameText(std::span<const uint8_t> payload) {
    const std::string name(payload.begin() + 1, payload.end());
    return kParams[kDevMode].name + valuesText(kParams[kDevMode], payload.first(1)) + ", devName = \"" + name + "\"";
}

std::string valueFrameText(const ParamRow& row, std::span<const uint8_t> payload) {
    if (row.isPerChannel())
        return channelFrameText(row, payload);
    return row.param == kDevMode && payload.size() > kNameSize ? modeAndNameText(payload)
                                                               : row.name + valuesText(row, payload);
}

std::string requestText(const ParamRow& row, std::span<const uint8_t> payload) {
    if (row.param == kDevMode)
        return "request devMode and devName";
    const std::string text = std::string("request ") + row.name;
    return row.isPerChannel() && payload.size() == 2 ? text + channelsText(payload[0], payload[1]) : text;
}
}  // namespace

const ParamRow kParams[kNumParams] = {
    {kDevMode,       "devMode",       1,            3,   0,  0,   1,  0x01,       0x41,       0x81      },
    {kDevName,       "devName",       1,            0,   0,  0,   1,  kNoCommand, kNoCommand, 0x81      },
    {kWordClock,     "wordClock",     1,            5,   0,  0,   1,  0x10,       0x50,       0x90      },
    {kGain,          "gain",          kNumChannels, 72,  72, 72,  -1, 0x20,       0x60,       0xA0      },
    {kPlus48V,       "plus48V",       kNumChannels, 1,   0,  0,   1,  0x21,       0x61,       0xA1      },
    {kHPF,           "hpf",           kNumChannels, 1,   0,  0,   1,  0x22,       0x62,       0xA2      },
    {kMeterMode,     "meterMode",     1,            1,   0,  0,   1,  0x23,       kNoCommand, kNoCommand},
    {kMeter,         "meter",         kNumChannels, 127, 0,  0,   1,  kNoCommand, kNoCommand, 0xA3      },
    {kGainTrim,      "gainTrim",      kNumChannels, 30,  15, -15, 1,  0x24,       0x64,       0xA4      },
    {kPanelLock,     "panelLock",     1,            1,   0,  0,   1,  0x25,       0x65,       0xA5      },
    {kBrightness,    "brightness",    1,            7,   5,  0,   1,  0x26,       0x66,       0xA6      },
    {kPlus48VMaster, "plus48VMaster", 1,            1,   0,  0,   1,  kNoCommand, 0x67,       0xA7      },
    {kHPFFreq,       "hpfFreq",       kNumChannels, 59,  24, 4,   1,  0x28,       0x68,       0xA8      },
};

int32_t ParamRow::fromWire(uint8_t byte) const {
    const int32_t number = offset < 0 ? int8_t(byte) : byte;  // only what may fall below 0 is sent as a signed byte
    return bounded(sign * (number - offset));
}

int32_t ParamRow::bounded(int64_t value) const {
    return int32_t(std::clamp<int64_t>(value, 0, max));
}

const ParamRow* paramByName(const std::string& name) {
    const auto row = std::ranges::find(kParams, name, &ParamRow::name);
    return row == std::end(kParams) ? nullptr : row;
}

const ParamRow* paramByCommand(int32_t ParamRow::*column, int32_t command) {
    const auto row = std::ranges::find(kParams, command, column);
    return row == std::end(kParams) ? nullptr : row;
}

Bytes makeFrame(int32_t command, uint8_t devId, std::span<const uint8_t> payload) {
    Bytes frame;
    frame.reserve(size_t(kHeadSize) + 1 + payload.size());
    for (const int32_t head : {int32_t(kHeadSize + payload.size()), command, int32_t(devId)})
        frame.push_back(uint8_t(head));
    frame.insert(frame.end(), payload.begin(), payload.end());
    frame.push_back(uint8_t(~sumOf(std::span(frame).subspan(1))));
    return frame;
}

bool isFrame(std::span<const uint8_t> bytes) {
    return bytes.size() > kMinLength && bytes[0] + size_t(1) == bytes.size() && sumOf(bytes.subspan(1)) == 0xFF;
}

std::span<const uint8_t> payloadOf(const Bytes& frame) {
    return std::span(frame).subspan(kHeadSize, frame.size() - kHeadSize - 1);
}

std::string toHex(std::span<const uint8_t> bytes) {
    std::string text;
    char pair[4];
    for (const uint8_t byte : bytes) {
        std::snprintf(pair, sizeof pair, "%02X ", unsigned(byte));
        text += pair;
    }
    if (!text.empty())
        text.pop_back();
    return text;
}

std::optional<Bytes> fromHex(const std::string& text) {
    Bytes bytes;
    for (size_t i = 0; i < text.size(); i += 2) {
        while (i < text.size() && text[i] == ' ')
            ++i;
        if (i == text.size())
            break;
        const int32_t high = hexDigit(text[i]), low = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.push_back(uint8_t(high * 16 + low));
    }
    return bytes;
}

std::string describe(const Bytes& frame) {
    if (!isFrame(frame))
        return frame.size() > kMinLength && frame[0] + size_t(1) == frame.size() ? "bad checksum" : "no frame";
    if (frame[1] == kDeviceIdBroadcast)
        return "device id broadcast";
    if (frame[1] == kDeviceIdReport)
        return "device " + std::to_string(frame[2]) + " is here";
    if (const ParamRow* row = paramByCommand(&ParamRow::request, frame[1]))
        return requestText(*row, payloadOf(frame));
    for (const auto column : {&ParamRow::setting, &ParamRow::report})
        if (const ParamRow* row = paramByCommand(column, frame[1]))
            return valueFrameText(*row, payloadOf(frame));
    return "unknown command";
}

void FrameScanner::append(std::span<const uint8_t> bytes) {
    pending.insert(pending.end(), bytes.begin(), bytes.end());
}

std::optional<Bytes> FrameScanner::next() {
    if (pending.empty())
        return std::nullopt;
    const auto start = std::ranges::find_if(pending, canBeLength);
    if (start != pending.begin())
        return takeFront(size_t(start - pending.begin()));
    const size_t size = pending.front() + size_t(1);
    if (pending.size() < size)
        return std::nullopt;
    return takeFront(size);
}

Bytes FrameScanner::takeRest() {
    return takeFront(pending.size());
}

Bytes FrameScanner::takeFront(size_t count) {
    const auto end = pending.begin() + ptrdiff_t(count);
    Bytes front(pending.begin(), end);
    pending.erase(pending.begin(), end);
    return front;
}
}  // namespace TalvSim
