#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

/** The line as a head amp sees it: what a frame looks like, and which parameter travels under which command byte. It
    shares no code with the extension, so that the two prove each other. Values are in the system's form, as in the
    programs' commands; the bytes on the line are made here only. */
namespace TalvSim {
using Bytes = std::vector<uint8_t>;

constexpr int32_t kNumChannels = 8;
constexpr int32_t kNameSize = 8;  // a device name has neither length nor terminator, it is padded with blanks
constexpr int32_t kNoCommand = -1;
constexpr int32_t kDeviceIdBroadcast = 0x00, kDeviceIdReport = 0x80;

enum Param : int32_t {
    kDevMode,
    kDevName,
    kWordClock,
    kGain,
    kPlus48V,
    kHPF,
    kMeterMode,
    kMeter,
    kGainTrim,
    kPanelLock,
    kBrightness,
    kPlus48VMaster,
    kHPFFreq,
    kNumParams
};

struct ParamRow {
    Param param;
    const char* name;
    int32_t channels;                  // kNumChannels, or 1 for what the whole device has once
    int32_t max, start;                // the smallest value is 0; what a device has that was never told anything
    int32_t offset, sign;              // byte on the line = offset + sign * value
    int32_t setting, request, report;  // command bytes, or kNoCommand

    bool isPerChannel() const { return channels > 1; }
    uint8_t toWire(int32_t value) const { return uint8_t(offset + sign * value); }
    /** Bounded to 0..max: a device knows no other values, whatever it is sent. */
    int32_t fromWire(uint8_t byte) const;
    int32_t bounded(int64_t value) const;
};
extern const ParamRow kParams[kNumParams];

/** Null: no parameter of that name, or none with that command byte in that column. */
const ParamRow* paramByName(const std::string& name);
const ParamRow* paramByCommand(int32_t ParamRow::*column, int32_t command);

Bytes makeFrame(int32_t command, uint8_t devId, std::span<const uint8_t> payload);
/** One frame, the whole of it and nothing behind it, with the right checksum. */
bool isFrame(std::span<const uint8_t> bytes);
std::span<const uint8_t> payloadOf(const Bytes& frame);

/** "05 20 01 03 20 BB" */
std::string toHex(std::span<const uint8_t> bytes);
/** Blanks between bytes are free. Nothing: a character that is no hex digit, or half a byte. */
std::optional<Bytes> fromHex(const std::string& text);
/** What a frame says, for a person: "gain ch 3 = 40". */
std::string describe(const Bytes& frame);

/** Cuts what comes in from the host into frames. A frame has no mark at its start; a device helps itself by the lengths
    that are possible, and by forgetting half a frame when nothing follows (the owner's clock says when). */
class FrameScanner {
public:
    void append(std::span<const uint8_t> bytes);
    /** The next frame, or a run of bytes that can begin none; isFrame() tells which, and also finds a bad checksum. */
    std::optional<Bytes> next();
    /** Half a frame, removed; empty when there is none. */
    Bytes takeRest();
    bool isWaiting() const { return !pending.empty(); }

private:
    Bytes takeFront(size_t count);

    Bytes pending;
};
}  // namespace TalvSim
