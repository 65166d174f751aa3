#include "host/scenes.h"
#include "host/options.h"
#include "host/texts.h"
#include "storage/ffilesystem.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <set>

using namespace Tessarine;

namespace {
constexpr const tchar* kListID = u"Scenes";
constexpr const char* kDevices = "Devices";
constexpr const char* kID = "ID";
constexpr const char* kChannel = "Channel";
constexpr int32_t kMaxDevice = 255;

std::string keyOf(const Place& place) {
    if (!place.param)
        return kChannel;
    return place.param->name + (place.param->perChannel ? " " + std::to_string(place.channel) : std::string());
}

/** All places of a device that a scene knows, its assignment first. */
std::vector<Place> placesOf(int32_t device) {
    std::vector<Place> places = {assignmentOf(device)};
    for (const ParamRow& param : kParams)
        for (int32_t channel = 0; param.isSent && channel < (param.perChannel ? TALV::kNumChannels : 1); ++channel)
            places.push_back({device, &param, param.perChannel ? channel : -1});
    return places;
}

/** false: it can't be the name of a file. */
bool scanName(const std::string& name, String& wide, std::string& error) {
    FString valid;
    if (wideOf(name, wide)) {
        valid = wide;
        gFileSystem->makeValidName(valid);
    }
    if (!valid.isEmpty() && valid == wide && FPresetList::isValidName(wide.text16()))
        return true;
    error = "a scene can't have this name";
    return false;
}
}  // namespace

IMPLEMENT_CLASS(Scene, CmObject)

void Scene::take(Remote& remote, int32_t device) {
    for (const Place& place : placesOf(device))
        if (const std::optional<Setting> setting = settingAt(remote, place))
            entries.push_back({place, std::get<int32_t>(*setting)});
}

bool Scene::storeAttributes(FAttributes& attributes) const {
    OPtr<FAttributes> bag;
    bool stored = true;
    for (size_t i = 0; i < entries.size(); ++i) {
        const Entry& entry = entries[i];
        if (!bag) {
            bag = OPtr<FAttributes>(new FAttributes);
            stored = bag->set(kID, entry.place.device) && stored;
        }
        stored = bag->set(keyOf(entry.place).c_str(), entry.setting) && stored;
        if (i + 1 == entries.size() || entries[i + 1].place.device != entry.place.device)
            stored = attributes.queueAttributes(kDevices, bag.detach(), true) && stored;
    }
    return stored;
}

bool Scene::restoreAttributes(FAttributes& attributes) {
    std::vector<Entry> found;
    std::set<int64_t> devices;
    while (const FAttributes* bag = attributes.unqueueAttributes(kDevices)) {
        const int64_t device = bag->getInt(kID);
        if (device < 1 || device > kMaxDevice || !devices.insert(device).second)
            return false;
        for (const Place& place : placesOf(int32_t(device))) {
            int64_t setting = 0;
            if (!bag->get(keyOf(place).c_str(), setting))
                continue;
            const int64_t most = place.param ? INT32_MAX : kMaxInputs - 1;
            found.push_back({place, int32_t(std::clamp<int64_t>(setting, place.param ? 0 : -1, most))});
        }
    }
    if (devices.empty())
        return false;
    entries = std::move(found);
    return true;
}

FPresetList* Scenes::list() {
    return gPresetPool ? gPresetPool->getPresetList(kListID, FPresetList::kFolder, nullptr) : nullptr;
}

int32_t Scenes::indexOf(const std::string& name, std::string& error) {
    String wide;
    if (!scanName(name, wide, error))
        return -1;
    FPresetList* scenes = list();
    for (int32_t i = 0; scenes && i < scenes->countPresets(false); ++i)
        if (wide == scenes->getPresetName(i))
            return i;
    error = "no scene " + name;
    return -1;
}

bool Scenes::save(const std::string& name, Scene* scene, std::string& error) {
    String wide;
    if (!scanName(name, wide, error))
        return false;
    const int32_t old = indexOf(name, error);
    FPresetList* scenes = list();
    scene->addRef();
    const int32_t made = scenes ? scenes->addPreset(scene, wide.text16(), true, -1) : -1;
    error = "the scene can't be written";
    if (made < 0 || old < 0)
        return made >= 0;
    return scenes->removePresetAt(old) && scenes->setPresetName(made - (old < made), wide.text16());
}

bool Scenes::remove(const std::string& name, std::string& error) {
    const int32_t index = indexOf(name, error);
    if (index < 0)
        return false;
    error = "the scene can't be deleted";
    return list()->removePresetAt(index);
}

Scene* Scenes::find(const std::string& name, std::string& error) {
    const int32_t index = indexOf(name, error);
    auto* scene = index < 0 ? nullptr : classCast<Scene>(list()->getPresetObject(index));
    if (index >= 0 && !scene)
        error = "the scene can't be read";
    return scene;
}

std::vector<std::string> Scenes::names() {
    std::vector<std::string> found;
    FPresetList* scenes = list();
    for (int32_t i = 0; scenes && i < scenes->countPresets(false); ++i)
        found.push_back(utf8Of(ConstString(scenes->getPresetName(i))));
    std::ranges::sort(found);
    return found;
}
