#include "source/TALV_Extension/TALV_MessageFactory.h"
#include "base/source/tarray.h"
#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace TALV {
namespace {
using Byte = unsigned char;

/** What has come from the port and isn't taken out yet. */
Tessarine::TArray<Byte> g_messageContainer(0, 10);

constexpr int32_t kMaxChannels = 8;
constexpr int32_t kLengthAt = 0, kCommandAt = 1, kDevIdAt = 2, kPayloadAt = 3;
constexpr int32_t kFrameBytes = 4;  // length, command, device id, checksum
constexpr int32_t kUncounted = 1;   // the length byte doesn't count itself
constexpr int32_t kMaxFrame = 256;  // more, a length byte can't say
constexpr int32_t kFirstReport = 0x80;
constexpr int32_t kNumReports = 41;

struct ChannelField {
    uint8_t (MessagePrm::*values)[kMaxChannels];
    uint8_t MessagePrm::*start;
    uint8_t MessagePrm::*count;
};
constexpr ChannelField kGain = {&MessagePrm::gain, &MessagePrm::gainStart, &MessagePrm::gainCount};
constexpr ChannelField kPlus48V = {&MessagePrm::plus48V, &MessagePrm::plus48VStart, &MessagePrm::plus48VCount};
constexpr ChannelField kHPF = {&MessagePrm::hpf, &MessagePrm::hpfStart, &MessagePrm::hpfCount};
constexpr ChannelField kGainTrim = {&MessagePrm::gainTrim, &MessagePrm::gainTrimStart, &MessagePrm::gainTrimCount};
constexpr ChannelField kHPFFreq = {&MessagePrm::hpfFreq, &MessagePrm::hpfFreqStart, &MessagePrm::hpfFreqCount};

bool areChannels(int32_t start, int32_t count) {
    return start + count <= kMaxChannels;
}

/** Payload writers: the bytes written into the room, or -1, and nothing written. */
using PutPayload = int32_t (*)(const MessagePrm& prm, Byte* payload, int32_t room);

int32_t putNothing(const MessagePrm&, Byte*, int32_t) {
    return 0;
}

template <auto Field>
int32_t putByte(const MessagePrm& prm, Byte* payload, int32_t room) {
    if (room < 1)
        return -1;
    payload[0] = Byte(prm.*Field);
    return 1;
}

template <const ChannelField& Field>
int32_t putChannels(const MessagePrm& prm, Byte* payload, int32_t room) {
    const int32_t start = prm.*Field.start, count = prm.*Field.count;
    if (room < 1 + count || !areChannels(start, count))
        return -1;
    payload[0] = Byte(start);
    std::copy_n(prm.*Field.values + start, count, payload + 1);
    return 1 + count;
}

template <const ChannelField& Field>
int32_t putChannelRange(const MessagePrm& prm, Byte* payload, int32_t room) {
    if (room < 2 || !areChannels(prm.*Field.start, prm.*Field.count))
        return -1;
    payload[0] = prm.*Field.start;
    payload[1] = prm.*Field.count;
    return 2;
}

struct CommandRow {
    MessageType kind;
    Byte command;
    bool toAll;  // sent to device id 0
    PutPayload putPayload;
};
constexpr CommandRow kCommands[] = {
    {kMessageDevId,             0x00, true,  putNothing                      },
    {kMessageDevMode,           0x01, false, putByte<&MessagePrm::devMode>   },
    {kMessageReqDevModeDevName, 0x41, false, putNothing                      },
    {kMessageWordClock,         0x10, false, putByte<&MessagePrm::wordClock> },
    {kMessageReqWordClock,      0x50, false, putNothing                      },
    {kMessageGain,              0x20, false, putChannels<kGain>              },
    {kMessageReqGain,           0x60, false, putChannelRange<kGain>          },
    {kMessagePlus48V,           0x21, false, putChannels<kPlus48V>           },
    {kMessageReqPlus48V,        0x61, false, putChannelRange<kPlus48V>       },
    {kMessageHPF,               0x22, false, putChannels<kHPF>               },
    {kMessageReqHPF,            0x62, false, putChannelRange<kHPF>           },
    {kMessageMeterMode,         0x23, false, putByte<&MessagePrm::meterMode> },
    {kMessageGainTrim,          0x24, false, putChannels<kGainTrim>          },
    {kMessageReqGainTrim,       0x64, false, putChannelRange<kGainTrim>      },
    {kMessagePanelLock,         0x25, false, putByte<&MessagePrm::panelLock> },
    {kMessageReqPanelLock,      0x65, false, putNothing                      },
    {kMessageBrightness,        0x26, false, putByte<&MessagePrm::brightness>},
    {kMessageReqBrightness,     0x66, false, putNothing                      },
    {kMessageReqPlus48VMaster,  0x67, false, putNothing                      },
    {kMessageHPFFreq,           0x28, false, putChannels<kHPFFreq>           },
    {kMessageReqHPFFreq,        0x68, false, putChannelRange<kHPFFreq>       },
};
static_assert(std::size(kCommands) == kNumMessageTypes - 1, "each kind but kMessageNone has its row");
static_assert(std::ranges::is_sorted(kCommands, {}, &CommandRow::kind), "a kind is the index of its row, less one");

int32_t build(MessageType kind, const MessagePrm& prm, Byte* buffer, int32_t size) {
    const CommandRow& row = kCommands[kind - kMessageDevId];
    if (!buffer || size < kFrameBytes)
        return 0;
    const int32_t payloadSize = row.putPayload(prm, buffer + kPayloadAt, size - kFrameBytes);
    if (payloadSize < 0)
        return 0;
    const int32_t length = kFrameBytes - kUncounted + payloadSize;
    buffer[kLengthAt] = Byte(length);
    buffer[kCommandAt] = row.command;
    buffer[kDevIdAt] = row.toAll ? 0 : prm.devId;
    buffer[length] = TALV_MessageFactory::calcChecksum(buffer + kCommandAt, length - 1);
    return length + kUncounted;
}

/** Payload readers: false when the message isn't one after all. */
using TakePayload = bool (*)(const Byte* payload, int32_t size, MessagePrm& prm);

bool takeNothing(const Byte*, int32_t, MessagePrm&) {
    return true;
}

template <auto Field>
bool takeByte(const Byte* payload, int32_t, MessagePrm& prm) {
    prm.*Field = payload[0];
    return true;
}

bool takeDevModeDevName(const Byte* payload, int32_t, MessagePrm& prm) {
    prm.devMode = payload[0];
    std::memcpy(prm.devName, payload + 1, sizeof(prm.devName));
    return true;
}

bool takeMeters(const Byte* payload, int32_t, MessagePrm& prm) {
    std::memcpy(prm.meter, payload, sizeof(prm.meter));
    return true;
}

/** Start and count are taken even when the channels aren't there. */
template <const ChannelField& Field>
bool takeChannels(const Byte* payload, int32_t size, MessagePrm& prm) {
    const int32_t start = payload[0], count = size - 1;
    prm.*Field.start = Byte(start);
    prm.*Field.count = Byte(count);
    if (!areChannels(start, count))
        return false;
    std::copy_n(payload + 1, count, prm.*Field.values + start);
    return true;
}

struct ReportRow {
    Byte command;
    MessageType kind;
    int32_t minFrame, maxFrame;  // bytes in all
    TakePayload takePayload;
};
constexpr ReportRow kReports[] = {
    {0x80, kMessageDevId,             4,  kMaxFrame, takeNothing                         },
    {0x81, kMessageReqDevModeDevName, 13, kMaxFrame, takeDevModeDevName                  },
    {0x90, kMessageReqWordClock,      5,  kMaxFrame, takeByte<&MessagePrm::wordClock>    },
    {0xA0, kMessageReqGain,           5,  13,        takeChannels<kGain>                 },
    {0xA1, kMessageReqPlus48V,        5,  13,        takeChannels<kPlus48V>              },
    {0xA2, kMessageReqHPF,            5,  13,        takeChannels<kHPF>                  },
    {0xA3, kMessageMeterMode,         12, kMaxFrame, takeMeters                          },
    {0xA4, kMessageReqGainTrim,       5,  13,        takeChannels<kGainTrim>             },
    {0xA5, kMessageReqPanelLock,      5,  kMaxFrame, takeByte<&MessagePrm::panelLock>    },
    {0xA6, kMessageReqBrightness,     5,  kMaxFrame, takeByte<&MessagePrm::brightness>   },
    {0xA7, kMessageReqPlus48VMaster,  5,  kMaxFrame, takeByte<&MessagePrm::plus48VMaster>},
    {0xA8, kMessageReqHPFFreq,        5,  13,        takeChannels<kHPFFreq>              },
};

/** For each report command its row, null for unknown ones. */
constexpr auto kRowOfReport = [] {
    std::array<const ReportRow*, kNumReports> rows{};
    for (const ReportRow& row : kReports)
        rows[size_t(row.command - kFirstReport)] = &row;
    return rows;
}();

constexpr const ReportRow* rowOfReport(Byte command) {
    const size_t index = Byte(command - kFirstReport);
    return index < kRowOfReport.size() ? kRowOfReport[index] : nullptr;
}

void parseReport(const ReportRow& row, const Byte* data, int32_t size, MessagePrm& prm) {
    if (!data || size < row.minFrame)
        return;
    const int32_t length = data[kLengthAt];
    const int32_t total = length + kUncounted;
    if (total > size || total < row.minFrame || total > row.maxFrame ||
        !TALV_MessageFactory::verifyChecksum(data + kCommandAt, length))
        return;
    if (!row.takePayload(data + kPayloadAt, total - kFrameBytes, prm))
        return;
    prm.type = row.kind;
    prm.devId = data[kDevIdAt];
}

/** The low 8 bits; counted as unsigned bytes. */
Byte sumOf(const Byte* data, int32_t size) {
    Byte sum = 0;
    for (int32_t i = 0; i < size; ++i)
        sum = Byte(sum + data[i]);
    return sum;
}
}  // namespace

int32_t TALV_MessageFactory::createMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size) {
    if (prm.type <= kMessageNone || prm.type >= kNumMessageTypes)
        return 0;
    return build(prm.type, prm, buffer, size);
}

#define CREATE_OPERATION(operation, kind)                                                                \
    int32_t TALV_MessageFactory::operation(const MessagePrm& prm, unsigned char* buffer, int32_t size) { \
        return build(kind, prm, buffer, size);                                                           \
    }
CREATE_OPERATION(createDevIdMessage, kMessageDevId)
CREATE_OPERATION(createDevModeMessage, kMessageDevMode)
CREATE_OPERATION(createReqDevModeDevNameMessage, kMessageReqDevModeDevName)
CREATE_OPERATION(createWordClockMessage, kMessageWordClock)
CREATE_OPERATION(createReqWordClockMessage, kMessageReqWordClock)
CREATE_OPERATION(createGainMessage, kMessageGain)
CREATE_OPERATION(createReqGainMessage, kMessageReqGain)
CREATE_OPERATION(createPlus48VMessage, kMessagePlus48V)
CREATE_OPERATION(createReqPlus48VMessage, kMessageReqPlus48V)
CREATE_OPERATION(createHPFMessage, kMessageHPF)
CREATE_OPERATION(createReqHPFMessage, kMessageReqHPF)
CREATE_OPERATION(createMeterModeMessage, kMessageMeterMode)
CREATE_OPERATION(createGainTrimMessage, kMessageGainTrim)
CREATE_OPERATION(createReqGainTrimMessage, kMessageReqGainTrim)
CREATE_OPERATION(createPanelLockMessage, kMessagePanelLock)
CREATE_OPERATION(createReqPanelLockMessage, kMessageReqPanelLock)
CREATE_OPERATION(createBrightnessMessage, kMessageBrightness)
CREATE_OPERATION(createReqBrightnessMessage, kMessageReqBrightness)
CREATE_OPERATION(createReqPlus48VMasterMessage, kMessageReqPlus48VMaster)
CREATE_OPERATION(createHPFFreqMessage, kMessageHPFFreq)
CREATE_OPERATION(createReqHPFFreqMessage, kMessageReqHPFFreq)
#undef CREATE_OPERATION

void TALV_MessageFactory::parseMessage(const unsigned char* data, int32_t size, MessagePrm& prm) {
    if (!data)
        return;
    Byte frame[kMaxFrame] = {};
    const int32_t total = ajustmentMessage(data, size, frame, kMaxFrame);
    if (total <= 1)
        return;
    if (const ReportRow* row = rowOfReport(frame[kCommandAt]))
        parseReport(*row, frame, total, prm);
    else
        prm.type = kMessageNone;
}

#define PARSE_OPERATION(operation, command)                                                         \
    void TALV_MessageFactory::operation(const unsigned char* data, int32_t size, MessagePrm& prm) { \
        static_assert(rowOfReport(command) != nullptr, "a report has its row");                     \
        parseReport(*rowOfReport(command), data, size, prm);                                        \
    }
PARSE_OPERATION(parseDevIdMessage, 0x80)
PARSE_OPERATION(parseDevModeDevNameMessage, 0x81)
PARSE_OPERATION(parseWordClockMessage, 0x90)
PARSE_OPERATION(parseGainMessage, 0xA0)
PARSE_OPERATION(parsePlus48VMessage, 0xA1)
PARSE_OPERATION(parseHPFMessage, 0xA2)
PARSE_OPERATION(parseMeterDataMessage, 0xA3)
PARSE_OPERATION(parseGainTrimMessage, 0xA4)
PARSE_OPERATION(parsePanelLockMessage, 0xA5)
PARSE_OPERATION(parseBrightnessMessage, 0xA6)
PARSE_OPERATION(parsePlus48VMasterMessage, 0xA7)
PARSE_OPERATION(parseHPFFreqMessage, 0xA8)
#undef PARSE_OPERATION

unsigned char TALV_MessageFactory::calcChecksum(const unsigned char* data, int32_t size) {
    return data ? Byte(~sumOf(data, size)) : Byte(0);
}

bool TALV_MessageFactory::verifyChecksum(const unsigned char* data, int32_t size) {
    return data && sumOf(data, size) == 0xFF;
}

int32_t TALV_MessageFactory::ajustmentMessage(const unsigned char* data, int32_t size, unsigned char* frame,
                                              int32_t frameSize) {
    if (!data || !frame)
        return 0;
    g_messageContainer.addRange(data, size);
    if (g_messageContainer.isEmpty())
        return 0;
    const int32_t total = g_messageContainer.at(0) + kUncounted;
    if (g_messageContainer.total() < total || total > frameSize)
        return 0;
    std::copy_n(&g_messageContainer.at(0), total, frame);
    g_messageContainer.removeRange(0, total);
    return total;
}

void TALV_MessageFactory::clearMessageContainer() {
    g_messageContainer.removeAll();
}

}  // namespace TALV
