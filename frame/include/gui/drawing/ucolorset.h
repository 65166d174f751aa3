#pragma once
#include "base/source/fstring.h"
#include "gui/values/ucolor.h"
#include <vector>

namespace Tessarine {

/** Colours in a row, each with a name, and the ones that they began with.

    Results   false: the index is out of range, or the set is of a fixed size.
    Threads   the main thread. */
class UColorSet : public CmObject {
public:
    enum Flag : uint32_t {
        kFixedSize = 1,     // none comes or goes
        kKeepsDefaults = 2  // they are stored with the set
    };
    static constexpr const char* kIndexOutOfRange = "Index out of range!";

    DECLARE_CLASS(UColorSet, CmObject)
    DECLARE_NEWCOPY(UColorSet)
    explicit UColorSet(const ConstString& name = "", uint32_t flags = 0) : name(name), flags(flags) {}

    const FString& getName() const { return name; }
    void setName(const ConstString& newName) { name.assign(newName); }
    bool has(Flag flag) const { return (flags & flag) != 0; }
    void set(Flag flag, bool state) { flags = state ? flags | flag : flags & ~uint32_t(flag); }

    int32_t count() const { return int32_t(colors.specs.size()); }
    /** White out of range. The next call of any set changes the result: copy it before. */
    static constexpr uint32_t kNoColor = 0xFFFFFFFF;
    const UColor& getColor(int32_t index) const;
    uint32_t getColorSpec(int32_t index) const;
    bool setColor(int32_t index, const UColor& color);
    /** Out of range, a text that says so. */
    void getColorName(int32_t index, FString& result) const;
    /** Of the first one in sorted order; -1: none. */
    int32_t getColorIndex(const ConstString& colorName) const;
    /** An index out of range appends. */
    bool addColor(const UColor& color, const ConstString& colorName, int32_t index = -1);
    bool removeColor(int32_t index);
    bool removeAll();

    int32_t countDefaults() const { return int32_t(defaults.specs.size()); }
    /** The present colours become the defaults, and are kept. */
    void initDefaults();
    /** Other names too; a set that has another number of colours than defaults begins anew. */
    void restoreDefaults();

    // All colours by an amount from 0 to 255 of the six-sided cone, up to the end of the range.

    void increaseBrightness(int32_t amount) { step(0, amount); }
    void decreaseBrightness(int32_t amount) { step(0, -int64_t(amount)); }
    void increaseSaturation(int32_t amount) { step(amount, 0); }
    void decreaseSaturation(int32_t amount) { step(-int64_t(amount), 0); }

    /** "ColorSet.NAME.INDEX.COLOR": a colour's own key for settings. false: out of range. */
    bool getPreferenceName(int32_t index, FString& result) const;

    /** By content. */
    bool isEqual(const CmObject* other) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    /** false, and nothing has changed: an entry is broken. */
    bool restoreAttributes(FAttributes& attributes) override;

private:
    struct Name {
        FString text;
        int32_t index;  // of its colour

        bool operator==(const Name& other) const { return index == other.index && text == other.text; }
        bool operator<(const Name& other) const {
            const int32_t order = text.compare(other.text);
            return order < 0 || (order == 0 && index < other.index);
        }
    };
    struct Entries {
        std::vector<uint32_t> specs;
        std::vector<Name> names;  // as many, sorted

        void insert(size_t index, uint32_t spec, const ConstString& text);
        void remove(size_t index);
        const FString& nameOf(size_t index) const;
        bool store(FAttributes& attributes, const char* key) const;
        bool restore(const FAttributes& attributes, const char* key);
        bool operator==(const Entries&) const = default;
    };

    bool isInside(int32_t index) const { return size_t(index) < colors.specs.size(); }
    void step(int64_t saturation, int64_t brightness);

    Entries colors, defaults;
    FString name;
    uint32_t flags;
};

}  // namespace Tessarine
