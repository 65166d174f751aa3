#pragma once
#include "tools/talv-sim/wire.h"
#include <array>
#include <string_view>

namespace TalvSim {
/** One head amp: eight channels, and what it was told last. It answers what is addressed to it, and reports what a hand
    at its front panel changes. Values are in the system's form and always within their range. */
class Device {
public:
    /** The name is cut or padded to kNameSize characters. */
    Device(uint8_t devId, std::string_view name);

    uint8_t id() const { return devId; }
    const std::string& name() const { return devName; }
    int32_t value(Param param, int32_t channel = 0) const { return values[param][channel]; }

    /** Empty: not for this device, or nothing that it can answer. A setting is answered with the report of what stands
        now; a frame that is not of its command's form, or reaches past the last channel, changes nothing. */
    Bytes answer(const Bytes& frame);
    /** A hand at the front panel; channel is 0 for what the device has once. */
    void turn(Param param, int32_t channel, int64_t value);
    void rename(std::string_view name);
    /** What the device says of itself after a turn. Empty: there is no report of this parameter. */
    Bytes report(Param param, int32_t channel) const;

private:
    Bytes takeSetting(const ParamRow& row, std::span<const uint8_t> payload);
    Bytes takeRequest(const ParamRow& row, std::span<const uint8_t> payload) const;
    Bytes reportOf(const ParamRow& row, int32_t first, int32_t count) const;

    uint8_t devId;
    std::string devName;
    std::array<std::array<int32_t, kNumChannels>, kNumParams> values;
};
}  // namespace TalvSim
