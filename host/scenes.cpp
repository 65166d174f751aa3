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
constexpr size_t kMaxName = 200;  // leaves room for a number and the extension

std::string keyOf(const Place& place) {
    if (!place.param)
        return kChannel;
    std::string key = place.param->name;
    if (place.param->perChannel)
        key.append(1, ' ').append(std::to_string(place.channel));
    return key;
}

/** All places of a device that a scene knows, its assignment first. */
std::vector<Place> placesOf(int32_t device) {
    std::vector<Place> places = {assignmentOf(device)};
    for (const ParamRow& param : kParams)
        for (int32_t channel = 0; param.isSent && channel < (param.perChannel ? TALV::kNumChannels : 1); ++channel)
            places.push_back({device, &param, param.perChannel ? channel : -1});
    return places;
}

bool isControl(char c) {
    return uint8_t(c) < ' ' || c == 0x7F;
}

/** false: a file can't be called so, or isn't found under it again. */
bool scanName(const std::string& name, String& wide, std::string& error) {
    if (!name.empty() && name.size() <= kMaxName && name[0] != '.' && std::ranges::none_of(name, isControl) &&
        wideOf(name, wide)) {
        FString valid(wide);
        if (!gFileSystem->makeValidName(valid))
            return true;
    }
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

/** At the folder as it is now. */
FPresetList* Scenes::look() {
    if (auto* seen = classCast<FFilePresetList>(list))
        gPresetPool->removeFilePreset(seen);
    list = gPresetPool ? gPresetPool->getPresetList(kListID, FPresetList::kFolder, nullptr) : nullptr;
    return list;
}

int32_t Scenes::indexOf(const String& name) {
    look();
    for (int32_t i = 0; list && i < list->countPresets(false); ++i)
        if (name == list->getPresetName(i))
            return i;
    return -1;
}

int32_t Scenes::find(const std::string& name, std::string& error) {
    String wide;
    if (!scanName(name, wide, error))
        return -1;
    const int32_t index = indexOf(wide);
    if (index < 0)
        error = "no scene " + name;
    return index;
}

bool Scenes::save(const std::string& name, Scene* scene, std::string& error) {
    String wide;
    if (!scanName(name, wide, error))
        return false;
    const int32_t old = indexOf(wide);
    scene->addRef();
    const int32_t made = list ? list->addPreset(scene, wide.text16(), true, -1) : -1;
    if (made >= 0 && replace(old, made, wide))
        return true;
    error = "the scene can't be written";
    return false;
}

/** The new one comes behind the old one, and has another name as long as that is there. */
bool Scenes::replace(int32_t old, int32_t made, const String& name) {
    if (old >= 0 && list->removePresetAt(old))
        return list->setPresetName(made - 1, name.text16()) && name == list->getPresetName(made - 1);
    if (name == list->getPresetName(made))
        return true;
    list->removePresetAt(made);
    return false;
}

bool Scenes::remove(const std::string& name, std::string& error) {
    const int32_t index = find(name, error);
    if (index < 0 || list->removePresetAt(index))
        return index >= 0;
    error = "the scene can't be deleted";
    return false;
}

Scene* Scenes::open(const std::string& name, std::string& error) {
    const int32_t index = find(name, error);
    auto* scene = index < 0 ? nullptr : classCast<Scene>(list->getPresetObject(index));
    if (index >= 0 && !scene)
        error = "the scene can't be read";
    return scene;
}

std::vector<std::string> Scenes::names() {
    std::vector<std::string> found;
    String wide;
    std::string error;
    look();
    for (int32_t i = 0; list && i < list->countPresets(false); ++i)
        if (const std::string name = utf8Of(ConstString(list->getPresetName(i))); scanName(name, wide, error))
            found.push_back(name);
    std::ranges::sort(found);
    return found;
}
