#include "host/settings.h"
#include "pluginterfaces/gui/ivalue.h"

using namespace Tessarine;

Setting settingOf(const ParamRow& param, IValue* value) {
    return param.isText ? Setting(textOf(value)) : Setting(value->getValueInt());
}

std::optional<Setting> settingAt(Remote& remote, const Place& place) {
    if (!place.param)
        return remote.isThere() ? std::optional<Setting>(remote.getChannel(place.device)) : std::nullopt;
    IValue* value = remote.getValue(place);
    return value ? std::optional<Setting>(settingOf(*place.param, value)) : std::nullopt;
}

bool putSetting(Remote& remote, const Place& place, const Setting& setting) {
    const std::string* text = std::get_if<std::string>(&setting);
    const int32_t number = text ? 0 : std::get<int32_t>(setting);
    if (!place.param)
        return remote.getChannel(place.device) == number || remote.assign(place.device, number);
    const IPtr<IValue> value = remote.getValue(place);
    if (!value)
        return false;
    if (text)
        return setText(value, *text);
    value->setValue2(number, true);
    return true;
}

bool switches48VOn(Remote& remote, const Place& place, const Setting& setting) {
    static const ParamRow* const plus48V = findParam("plus48V");
    return place.param == plus48V && setting != Setting(0) && settingAt(remote, place) == Setting(0);
}
