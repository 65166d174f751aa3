#pragma once
#include "base/fdefaults.h"
#include "pluginterfaces/gui/icolorgroup.h"
#include <array>
#include <vector>

namespace Tessarine {

/** Bits of the groups that the colours of a skin may be in. */
enum ColorGroup : uint32_t { kNoColorGroup = 0, kChassisGroup = 0x10000, kDisplayGroup = 0x20000 };

/** "chassis", "display", or both with a "|" between; other words count for nothing. */
ColorGroup colorGroupOfName(const char* name);
void nameOfColorGroup(ColorGroup group, String& name);

/** What a user shifts the colours of a group by, and what the skin came with. Main thread. */
class UColorTransform : public CmObject, public IColorTransform {
public:
    enum Delta : int32_t { kHue, kSaturation, kLuminance, kNumDeltas };
    /** How far a delta may go, to both sides: degrees and percent. */
    static constexpr int32_t kRanges[kNumDeltas] = {180, 100, 100};

    DECLARE_CLASS(UColorTransform, CmObject)
    FORWARD_REFCOUNT(CmObject)
    explicit UColorTransform(ColorGroup group = kNoColorGroup);
    UColorTransform(const UColorTransform&) = delete;
    UColorTransform& operator=(const UColorTransform&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t getColorGroup() override { return group; }
    int32_t getDeltaHue() override { return deltas[kHue]; }
    int32_t getDeltaSaturation() override { return deltas[kSaturation]; }
    int32_t getDeltaLuminance() override { return deltas[kLuminance]; }
    bool isOperative() override { return deltas != std::array<int32_t, kNumDeltas>{}; }

    int32_t getDelta(Delta delta) const { return deltas[delta]; }
    /** Clamped; dependents hear of a change. */
    void setDelta(Delta delta, int32_t value);
    int32_t getFactoryDelta(Delta delta) const { return factoryDeltas[delta]; }
    void setFactoryDelta(Delta delta, int32_t value);
    /** Under this name, and a mark for each delta, they are kept. */
    const char* getIdentifier() const { return identifier.text8(); }
    /** Those that aren't kept become the factory's, and are kept from now on. */
    void loadDefaults();
    void saveDefaults() const;

private:
    String defaultsKey(int32_t delta) const;

    const ColorGroup group;
    std::array<int32_t, kNumDeltas> deltas = {}, factoryDeltas = {};
    String identifier;  // narrow
};

/** Where transforms are kept: a pool and a file of their own, written when the program shuts down. */
class MarrowfatDefaults : public FDefaultPool {
public:
    DECLARE_CLASS(MarrowfatDefaults, FDefaultPool)
    /** Made, and read from its file, at first use. Null: the program ends. */
    static MarrowfatDefaults* instance();
    bool restore() { return loadArchive(kName); }
    bool store() { return saveArchive(kName); }
    /** true: nobody has made it, or it is written. */
    static bool storeIfMade();

private:
    static constexpr const char* kName = "Marrowfat";
    static FObject* gMade;
};

/** The transforms of all groups of the skin. One in each program; main thread. */
class UColorGroupHandler : public CmObject, public IColorGroupInformation {
public:
    DECLARE_CLASS(UColorGroupHandler, CmObject)
    FORWARD_REFCOUNT(CmObject)
    /** Null: the program ends. */
    static UColorGroupHandler* instance();

    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t getColorGroupTransformTotal() override { return int32_t(transforms.size()); }
    IColorTransform* getColorGroupTransform(int32_t index) override { return at(index); }
    /** The first that is for one of the groups, borrowed; null: there is none. */
    UColorTransform* getColorGroupTransform(ColorGroup group);
    /** Borrowed; null out of range. */
    UColorTransform* at(int32_t index) const;

    /** As the skin has them, in place of those that are there. */
    void setupColorGroups();
    /** properties: "deltaHue", "deltaSat", "deltaLum" of the factory; null: all 0. */
    void addColorGroup(ColorGroup group, const FAttributes* properties);
    void removeAll() { transforms.clear(); }

private:
    std::vector<OPtr<UColorTransform>> transforms;
};

}  // namespace Tessarine
