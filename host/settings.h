#pragma once
#include "host/remote.h"
#include <optional>
#include <string>
#include <variant>
#include <vector>

/** What a place holds: a number, or a text in UTF-8. */
using Setting = std::variant<int32_t, std::string>;

/** Where a setting goes: a value of a device, or without a parameter the first channel that the device is assigned to, -1 for none. */
using Place = ParamAddress;
constexpr Place assignmentOf(int32_t device) {
    return {device, nullptr, -1};
}

/** A place, with what stood there before and after. */
struct Change {
    Place place;
    Setting before, after;
};
using Changes = std::vector<Change>;

/** What the value of this parameter holds. */
Setting settingOf(const ParamRow& param, Tessarine::IValue* value);
/** nullopt: there is no such place now. */
std::optional<Setting> settingAt(Remote& remote, const Place& place);
/** The value bounds it. false: there is no such place now, or the text is malformed. */
bool putSetting(Remote& remote, const Place& place, const Setting& setting);
/** +48V would come on where it is off. */
bool switches48VOn(Remote& remote, const Place& place, const Setting& setting);
