#include "tools/talv-sim/device.h"

namespace TalvSim {
Device::Device(uint8_t id, std::string_view name) : devId(id) {
    rename(name);
    for (const ParamRow& row : kParams)
        values[row.param].fill(row.start);
}

Bytes Device::answer(const Bytes& frame) {
    if (!isFrame(frame))
        return {};
    const int32_t command = frame[1], addressee = frame[2];
    const std::span<const uint8_t> payload = payloadOf(frame);
    if (command == kDeviceIdBroadcast && addressee == 0 && payload.empty())
        return makeFrame(kDeviceIdReport, devId, {});
    if (addressee != devId)
        return {};
    if (const ParamRow* row = paramByCommand(&ParamRow::setting, command))
        return takeSetting(*row, payload);
    if (const ParamRow* row = paramByCommand(&ParamRow::request, command))
        return takeRequest(*row, payload);
    return {};
}

void Device::turn(Param param, int32_t channel, int64_t value) {
    values[param][channel] = kParams[param].bounded(value);
}

void Device::rename(std::string_view name) {
    devName = name.substr(0, kNameSize);
    devName.resize(kNameSize, ' ');
}

Bytes Device::report(Param param, int32_t channel) const {
    return reportOf(kParams[param], channel, 1);
}

Bytes Device::takeSetting(const ParamRow& row, std::span<const uint8_t> payload) {
    if (payload.empty())
        return {};
    const int32_t first = row.isPerChannel() ? payload[0] : 0;
    const std::span<const uint8_t> news = payload.subspan(row.isPerChannel() ? 1 : 0);
    const int32_t count = int32_t(news.size());
    if (first + count > row.channels)
        return {};
    for (int32_t i = 0; i < count; ++i)
        values[row.param][first + i] = row.fromWire(news[i]);
    return reportOf(row, first, count);
}

Bytes Device::takeRequest(const ParamRow& row, std::span<const uint8_t> payload) const {
    if (!row.isPerChannel())
        return payload.empty() ? reportOf(row, 0, 1) : Bytes();
    if (payload.size() != 2 || payload[0] + payload[1] > kNumChannels)
        return {};
    return reportOf(row, payload[0], payload[1]);
}

Bytes Device::reportOf(const ParamRow& row, int32_t first, int32_t count) const {
    if (row.report == kNoCommand)
        return {};
    Bytes payload;
    if (row.param == kDevMode || row.param == kDevName) {
        payload.push_back(kParams[kDevMode].toWire(value(kDevMode)));
        payload.insert(payload.end(), devName.begin(), devName.end());
        return makeFrame(row.report, devId, payload);
    }
    if (row.param == kMeter) {  // the one report that always has all channels, and so no first one
        first = 0;
        count = kNumChannels;
    } else if (row.isPerChannel()) {
        payload.push_back(uint8_t(first));
    }
    for (int32_t i = first; i < first + count; ++i)
        payload.push_back(row.toWire(value(row.param, i)));
    return makeFrame(row.report, devId, payload);
}
}  // namespace TalvSim
