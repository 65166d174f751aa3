#pragma once
#include "host/settings.h"
#include "storage/fpreset.h"

/** What devices are set to, and which channels they are assigned to. */
class Scene : public Tessarine::CmObject {
public:
    struct Entry {
        Place place;
        int32_t setting;
    };

    /** All that is sent to a device, as it stands. */
    void take(Remote& remote, int32_t device);
    const std::vector<Entry>& getEntries() const { return entries; }

    /** "Devices": each with "ID", "Channel", and its settings under "gain 3" or "brightness". */
    bool storeAttributes(Tessarine::FAttributes& attributes) const override;
    /** false, and nothing has changed: no devices, or one with an impossible or doubled ID. */
    bool restoreAttributes(Tessarine::FAttributes& attributes) override;

    DECLARE_CLASS(Scene, Tessarine::CmObject)

private:
    std::vector<Entry> entries;  // by device
};

/** The scenes of the user, each a file in the presets' folder "Scenes", which others may change meanwhile.

    Names     at most 200 bytes in UTF-8, without a dot at the start, a blank at either end, control characters, and any of / * ?
    Results   false or null, and error says why. */
class Scenes {
public:
    /** Instead of one of this name. */
    bool save(const std::string& name, Scene* scene, std::string& error);
    bool remove(const std::string& name, std::string& error);
    /** Borrowed until the next call. */
    Scene* open(const std::string& name, std::string& error);
    /** Sorted; files that aren't called like a scene are none. */
    std::vector<std::string> names();

private:
    Tessarine::FPresetList* look();
    int32_t indexOf(const Tessarine::String& name);
    int32_t find(const std::string& name, std::string& error);
    bool replace(int32_t old, int32_t made, const Tessarine::String& name);

    Tessarine::FPresetList* list = nullptr;  // borrowed; null before the first look
};
