#include "gui/drawing/ucolorset.h"
#include "gui/values/ucolorhsl.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <functional>

namespace Tessarine {
namespace {
constexpr char kNameKey[] = "Name", kColorKey[] = "Color";
constexpr char kSetNameKey[] = "SetName", kSetKey[] = "Set", kDefaultsKey[] = "DefSet", kFixedSizeKey[] = "FixedSize";

/** All of 0 to 255: the double cone's place for one of the six-sided cone. */
UColorHSL fromHSV(double hue, double saturation, double value) {
    const double lightness = value * (1 - saturation / 510), room = std::min(lightness, 255 - lightness);
    return {hue, room > 0 ? (value - lightness) * 255 / room : 0, lightness};
}

uint32_t stepped(uint32_t spec, int64_t saturation, int64_t brightness) {
    const auto stepOf = [](double from, int64_t by) { return std::clamp(from + double(by), 0.0, 255.0); };
    UColor color(spec);
    const int32_t red = color.red >> 8, green = color.green >> 8, blue = color.blue >> 8;
    const int32_t value = std::max({red, green, blue}), range = value - std::min({red, green, blue});
    const UColorHSL hsl = fromHSV(UColorHSL::fromBytes(red, green, blue).hue,
                                  stepOf(value ? 255.0 * range / value : 0, saturation), stepOf(value, brightness));
    color.fromHSL(hsl.hue, hsl.saturation, hsl.lightness);
    return color.toColorSpec();
}
}  // namespace

IMPLEMENT_CLASS(UColorSet, CmObject)

void UColorSet::Entries::insert(size_t index, uint32_t spec, const ConstString& text) {
    for (Name& each : names)
        each.index += size_t(each.index) >= index ? 1 : 0;
    specs.insert(specs.begin() + ptrdiff_t(index), spec);
    const Name added = {FString(text), int32_t(index)};
    names.insert(std::ranges::upper_bound(names, added, std::less<>()), added);
}

void UColorSet::Entries::remove(size_t index) {
    specs.erase(specs.begin() + ptrdiff_t(index));
    std::erase_if(names, [index](const Name& each) { return size_t(each.index) == index; });
    for (Name& each : names)
        each.index -= size_t(each.index) > index ? 1 : 0;
}

const FString& UColorSet::Entries::nameOf(size_t index) const {
    return std::ranges::find(names, int32_t(index), &Name::index)->text;
}

bool UColorSet::Entries::store(FAttributes& attributes, const char* key) const {
    std::vector<const FString*> texts(specs.size());
    for (const Name& each : names)
        texts[size_t(each.index)] = &each.text;
    for (size_t index = 0; index < specs.size(); ++index) {
        OPtr<FAttributes> entry(new FAttributes);
        if (!entry->set(kNameKey, *texts[index]) || !entry->set(kColorKey, specs[index]) ||
            !attributes.queueAttributes(key, entry))
            return false;
    }
    return true;
}

bool UColorSet::Entries::restore(const FAttributes& attributes, const char* key) {
    attributes.resetList(key);
    for (int32_t left = attributes.countQueueItems(key); left > 0; --left) {
        const FAttributes* entry = attributes.unqueueAttributes(key);
        String text;
        uint32_t spec = 0;
        if (!entry || !entry->get(kNameKey, text) || !entry->get(kColorKey, spec))
            return false;
        names.push_back({FString(text), int32_t(specs.size())});
        specs.push_back(spec);
    }
    std::ranges::sort(names, std::less<>());
    return true;
}

uint32_t UColorSet::getColorSpec(int32_t index) const {
    return isInside(index) ? colors.specs[size_t(index)] : kNoColor;
}

const UColor& UColorSet::getColor(int32_t index) const {
    static UColor shared;
    shared.fromColorSpec(getColorSpec(index));
    return shared;
}

bool UColorSet::setColor(int32_t index, const UColor& color) {
    if (!isInside(index))
        return false;
    colors.specs[size_t(index)] = color.toColorSpec();
    return true;
}

void UColorSet::getColorName(int32_t index, FString& result) const {
    if (isInside(index))
        result.assign(colors.nameOf(size_t(index)));
    else
        result.assign(kIndexOutOfRange);
}

int32_t UColorSet::getColorIndex(const ConstString& colorName) const {
    const auto found = std::ranges::lower_bound(colors.names, Name{FString(colorName), 0}, std::less<>());
    return found != colors.names.end() && found->text == colorName ? found->index : -1;
}

bool UColorSet::addColor(const UColor& color, const ConstString& colorName, int32_t index) {
    if (has(kFixedSize))
        return false;
    colors.insert(isInside(index) ? size_t(index) : colors.specs.size(), color.toColorSpec(), colorName);
    return true;
}

bool UColorSet::removeColor(int32_t index) {
    if (has(kFixedSize) || !isInside(index))
        return false;
    colors.remove(size_t(index));
    return true;
}

bool UColorSet::removeAll() {
    if (has(kFixedSize))
        return false;
    colors = {};
    return true;
}

void UColorSet::initDefaults() {
    defaults = colors;
    set(kKeepsDefaults, true);
}

void UColorSet::restoreDefaults() {
    colors = defaults;
}

void UColorSet::step(int64_t saturation, int64_t brightness) {
    for (uint32_t& spec : colors.specs)
        spec = stepped(spec, saturation, brightness);
}

bool UColorSet::getPreferenceName(int32_t index, FString& result) const {
    if (!isInside(index))
        return false;
    result.assign(u"ColorSet.");
    result.append(name).append(String().printf(".%d.", index)).append(colors.nameOf(size_t(index)));
    return true;
}

bool UColorSet::isEqual(const CmObject* other) const {
    const auto* set = classCast<UColorSet>(other);
    return set && name == set->name && flags == set->flags && colors == set->colors && defaults == set->defaults;
}

bool UColorSet::storeAttributes(FAttributes& attributes) const {
    return attributes.set(kSetNameKey, name) && colors.store(attributes, kSetKey) &&
           (!has(kKeepsDefaults) || defaults.store(attributes, kDefaultsKey)) &&
           (!has(kFixedSize) || attributes.set(kFixedSizeKey, true));
}

bool UColorSet::restoreAttributes(FAttributes& attributes) {
    UColorSet stored;
    bool fixedSize = false;
    if (!attributes.get(kSetNameKey, stored.name) || !stored.colors.restore(attributes, kSetKey) ||
        !stored.defaults.restore(attributes, kDefaultsKey))
        return false;
    stored.set(kFixedSize, attributes.get(kFixedSizeKey, fixedSize) && fixedSize);
    stored.set(kKeepsDefaults, attributes.containsAttribute(kDefaultsKey));
    *this = stored;
    return true;
}

}  // namespace Tessarine
