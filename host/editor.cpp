#include "host/editor.h"
#include <algorithm>

using namespace Tessarine;

namespace {
std::string textOf(const Setting& setting) {
    const std::string* text = std::get_if<std::string>(&setting);
    return text ? *text : std::to_string(std::get<int32_t>(setting));
}

std::string textOf(const ChannelAddress& channel) {
    return std::to_string(channel.device) + "/" + std::to_string(channel.channel);
}

std::string textOf(const Place& place) {
    return place.param->name + std::string(" ") +
           (place.param->perChannel ? textOf(ChannelAddress{place.device, place.channel})
                                    : std::to_string(place.device));
}
}  // namespace

std::string assignmentText(int32_t device, int32_t channel) {
    if (device == 0)
        return "input " + std::to_string(channel) + " free";
    return "device " + std::to_string(device) + (channel < 0 ? " off" : " on input " + std::to_string(channel));
}

Changes Editor::recorded(const std::vector<Place>& places, const Work& work) {
    std::vector<std::optional<Setting>> before;
    before.reserve(places.size());
    for (const Place& place : places)
        before.push_back(settingAt(remote, place));
    work();
    Changes changes;
    for (size_t i = 0; i < places.size(); ++i) {
        const std::optional<Setting> after = settingAt(remote, places[i]);
        if (before[i] && after && *before[i] != *after)
            changes.push_back({places[i], *before[i], *after});
    }
    return changes;
}

void Editor::addWhole(const char* source, const std::string& title, const Changes& changes) {
    history.add(source, title, changes);
    history.endGesture();
}

Editor::Result Editor::set(const Place& place, const Setting& setting) {
    Result result;
    bool done = false;
    if (place != std::exchange(lastSet, place))
        history.endGesture();
    result.made = recorded(links.group(place), [&] {
        const ChannelLinks::Changing changing(links, ChannelLinks::kHost);
        done = putSetting(remote, place, setting);
        links.follow(place);
    });
    if (!done)
        result.refusal = "the text isn't UTF-8";
    history.add("set", textOf(place) + " = " + textOf(settingAt(remote, place).value_or(setting)), result.made);
    return result;
}

/** Of the device, and of the one that loses the channel. */
std::vector<Place> Editor::assignments(int32_t device, int32_t channel) {
    std::vector<Place> places;
    for (const int32_t each : {channel < 0 ? 0 : remote.getDeviceOn(channel), device})
        if (each > 0 && std::ranges::find(places, assignmentOf(each)) == places.end())
            places.push_back(assignmentOf(each));
    return places;
}

Editor::Result Editor::assign(int32_t device, int32_t channel) {
    Result result;
    bool done = false;
    result.made = recorded(assignments(device, channel), [&] { done = remote.assign(device, channel); });
    if (!done)
        result.refusal = "there is no remote";
    addWhole("assign", assignmentText(device, channel), result.made);
    return result;
}

Editor::Result Editor::turn(const Changes* step, Setting Change::*side, bool (History::*go)(), bool allow48V) {
    Result result;
    if (!step) {
        result.refusal = "there is no step";
        return result;
    }
    for (const Change& change : *step) {
        if (!settingAt(remote, change.place))
            result.missing.insert(change.place.device);
        else
            result.made.push_back(change);
        if (!allow48V && switches48VOn(remote, change.place, change.*side))
            result.refusal = textOf(change.place) + " would come on; --allow-48v lets it";
    }
    if (result.made.empty())
        result.refusal = "no device " + std::to_string(step->front().place.device);
    if (!result.refusal.empty())
        return result;
    const ChannelLinks::Changing changing(links, ChannelLinks::kExactly);  // what followed is part of the step
    (history.*go)();
    return result;
}

Editor::Result Editor::link(const ChannelLinks::Link& link, bool now) {
    Result result;
    result.refusal = links.refusal(link.master, link.slave);
    if (!result.refusal.empty())
        return result;
    result.made = recorded(links.groups(link.slave), [&] { links.add(link, now); });
    addWhole("link", textOf(link.slave) + " follows " + textOf(link.master), result.made);
    return result;
}

bool Editor::saveScene(const std::string& name, std::string& error) {
    if (remote.getDevices().empty()) {
        error = "no device is there";
        return false;
    }
    const OPtr<Scene> scene(new Scene);
    for (const int32_t device : remote.getDevices())
        scene->take(remote, device);
    return scenes.save(name, scene, error);
}

/** What is to be put; the others go into the result. */
std::vector<Scene::Entry> Editor::differing(const Scene& scene, bool allow48V, Result& result) {
    std::vector<Scene::Entry> found;
    for (const Scene::Entry& entry : scene.getEntries()) {
        const std::optional<Setting> now = settingAt(remote, entry.place);
        if (!now)
            result.missing.insert(entry.place.device);
        else if (!allow48V && switches48VOn(remote, entry.place, entry.setting))
            result.left.push_back(entry.place);
        else if (*now != Setting(entry.setting))
            found.push_back(entry);
    }
    return found;
}

/** Each once; an assignment changes that of another device too. */
std::vector<Place> Editor::changedBy(const std::vector<Scene::Entry>& entries) {
    std::vector<Place> values, assigned;
    for (const auto& [place, setting] : entries) {
        if (place.param)
            values.push_back(place);
        else
            for (const Place& each : assignments(place.device, setting))
                if (std::ranges::find(assigned, each) == assigned.end())
                    assigned.push_back(each);
    }
    assigned.insert(assigned.end(), values.begin(), values.end());
    return assigned;
}

Editor::Result Editor::recallScene(const std::string& name, bool allow48V) {
    Result result;
    const Scene* scene = scenes.open(name, result.refusal);
    if (!scene)
        return result;
    const std::vector<Scene::Entry> entries = differing(*scene, allow48V, result);
    const ChannelLinks::Changing changing(links, ChannelLinks::kExactly);  // the scene has the others too
    result.made = recorded(changedBy(entries), [&] {
        for (const Scene::Entry& entry : entries)
            putSetting(remote, entry.place, entry.setting);
    });
    addWhole("scene", "recall " + name, result.made);
    return result;
}
