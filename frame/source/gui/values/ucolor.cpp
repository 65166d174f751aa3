#include "gui/values/ucolor.h"
#include "base/source/fstring.h"
#include "base/utranslatedstring.h"
#include "gui/values/ucolorhsl.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

namespace Tessarine {
namespace {
struct StandardColor {
    const char* name;
    UTranslatedString title;
    uint32_t spec;
};
constexpr UTranslatedString kUnknownTitle("Unknown Color");
constexpr StandardColor kStandardColors[] = {
    {"black",        UTranslatedString("Black"),         0xFF000000},
    {"white",        UTranslatedString("White"),         0xFFFFFFFF},
    {"gray5",        UTranslatedString("Gray 5"),        0xFFEBEBEB},
    {"gray10",       UTranslatedString("Gray 10"),       0xFFEBEBEB},
    {"gray20",       UTranslatedString("Gray 20"),       0xFFDEDEDE},
    {"gray30",       UTranslatedString("Gray 30"),       0xFFC8C8C8},
    {"gray40",       UTranslatedString("Gray 40"),       0xFFB4B4B4},
    {"gray50",       UTranslatedString("Gray 50"),       0xFFA0A0A0},
    {"gray60",       UTranslatedString("Gray 60"),       0xFF8C8C8C},
    {"gray70",       UTranslatedString("Gray 70"),       0xFF787878},
    {"gray80",       UTranslatedString("Gray 80"),       0xFF6E6E6E},
    {"gray90",       UTranslatedString("Gray 90"),       0xFF505050},
    {"red",          UTranslatedString("Red"),           0xFFFF0000},
    {"lightred",     UTranslatedString("Light Red"),     0xFFFF7D7D},
    {"darkred",      UTranslatedString("Dark Red"),      0xFF5A0000},
    {"green",        UTranslatedString("Green"),         0xFF00FF00},
    {"lightgreen",   UTranslatedString("Light Green"),   0xFF8CFF8C},
    {"darkgreen",    UTranslatedString("Dark Green"),    0xFF005A00},
    {"blue",         UTranslatedString("Blue"),          0xFF0000FF},
    {"lightblue",    UTranslatedString("Light Blue"),    0xFF99C1FF},
    {"darkblue",     UTranslatedString("Dark Blue"),     0xFF00005A},
    {"magenta",      UTranslatedString("Magenta"),       0xFFFF00FF},
    {"lightmagenta", UTranslatedString("Light Magenta"), 0xFFFFA3FF},
    {"darkmagenta",  UTranslatedString("Dark Magenta"),  0xFF700070},
    {"yellow",       UTranslatedString("Yellow"),        0xFFFFFF00},
    {"lightyellow",  UTranslatedString("Light Yellow"),  0xFFFFFFC8},
    {"darkyellow",   UTranslatedString("Dark Yellow"),   0xFF646400},
    {"orange",       UTranslatedString("Orange"),        0xFFFFA500},
    {"lightorange",  UTranslatedString("Light Orange"),  0xFFFFD564},
    {"darkorange",   UTranslatedString("Dark Orange"),   0xFF9F6700},
    {"gold",         UTranslatedString("Gold"),          0xFFFFCC66},
    {"black50",      UTranslatedString("Black 50"),      0xFF323232},
    {"black70",      UTranslatedString("Black 70"),      0xFF464646},
};
static_assert(std::size(kStandardColors) == kNumStandardColors);

struct Channel {
    const char* key;
    uint16_t UColor::*field;
};
constexpr Channel kChannels[] = {
    {"Red",   &UColor::red  },
    {"Green", &UColor::green},
    {"Blue",  &UColor::blue },
    {"Alpha", &UColor::alpha},
};
constexpr uint16_t UColor::*kArchived[] = {&UColor::red, &UColor::blue, &UColor::green};

uint16_t fromByte(uint32_t byte) {
    return uint16_t((byte & 0xFF) << 8);
}

/** Only the length can be wrong: from the first pair on that isn't hexadecimal, the channels are 0. */
bool fromDigits(const char* text, UColor& color) {
    const size_t length = std::strlen(text);
    if (length != 7 && length != 9)
        return false;
    uint32_t red = 0, green = 0, blue = 0, alpha = 0;
    std::sscanf(text, "%*c%2x%2x%2x%2x", &red, &green, &blue, &alpha);
    color = UColor(fromByte(red), fromByte(green), fromByte(blue), fromByte(length == 9 ? alpha : 0xFF));
    return true;
}

/** Any character, then a number; blanks may stand before both. The text is terminated. */
bool takeNumber(const char*& text, int32_t& number) {
    const char* at = text;
    while (ConstString::isCharSpace(*at))
        ++at;
    if (!*at)
        return false;
    char* end = nullptr;
    const long scanned = std::strtol(++at, &end, 10);
    if (end == at)
        return false;
    number = int32_t(std::clamp<long>(scanned, INT32_MIN, INT32_MAX));
    text = end;
    return true;
}

int32_t roundedUp(double value) {
    return int32_t(std::clamp<double>(std::ceil(value), INT32_MIN, INT32_MAX));
}

/** All of 0 to 255; with a saturation, a hue beyond the last sector, or below the first, is black. */
void setHSV(UColor& color, int32_t hue, int32_t saturation, int32_t value) {
    const uint16_t v = fromByte(uint32_t(value));
    if (saturation == 0) {
        color = UColor(v, v, v, color.alpha);
        return;
    }
    const double place = hue * 6.0 / 256;
    const int32_t sector = int32_t(std::floor(place));
    const auto lessBy = [=](double part) { return fromByte(uint32_t((1 - part * saturation / 255) * value)); };
    const double fraction = place - sector;
    const uint16_t p = lessBy(1), q = lessBy(fraction), t = lessBy(1 - fraction);
    const uint16_t sectors[][3] = {
        {v, t, p},
        {q, v, p},
        {p, v, t},
        {p, q, v},
        {t, p, v},
        {v, p, q},
    };
    constexpr uint16_t kBlackChannels[3] = {};
    const bool known = sector >= 0 && size_t(sector) < std::size(sectors);
    const auto& [red, green, blue] = known ? sectors[sector] : kBlackChannels;
    color = UColor(red, green, blue, color.alpha);
}

bool fromHSVText(const char* text, UColor& color) {
    int32_t numbers[] = {0, 0, 0, 100};  // hue in degrees, saturation, value and alpha in percent
    size_t count = 0;
    while (count < std::size(numbers) && takeNumber(text, numbers[count]))
        ++count;
    if (count < 3)
        return false;
    const auto percentOf = [&](size_t index, int32_t whole) {
        return std::clamp(numbers[index], 0, 100) * whole / 100.0;
    };
    setHSV(color, roundedUp(numbers[0] % 360 / 360.0 * 255), roundedUp(percentOf(1, 255)),
           roundedUp(percentOf(2, 255)));
    if (count == 4)
        color.alpha = uint16_t(percentOf(3, UColor::kOpaque));
    return true;
}

UColorHSL toHSL(const UColor& color) {
    return UColorHSL::fromBytes(color.red >> 8, color.green >> 8, color.blue >> 8);
}

void setHSL(UColor& color, const UColorHSL& hsl) {
    int32_t red = 0, green = 0, blue = 0;
    hsl.toBytes(red, green, blue);
    color = UColor(fromByte(uint32_t(red)), fromByte(uint32_t(green)), fromByte(uint32_t(blue)), color.alpha);
}

/** 0 for what is no number. */
template <class Number>
Number bounded(Number value, Number high) {
    return std::fmin(std::fmax(value, Number(0)), high);
}

uint16_t towards(uint16_t from, uint16_t to, float part) {
    return uint16_t(bounded(float(from) + part * float(int32_t(to) - int32_t(from)), float(UColor::kOpaque)));
}

/** The brightest byte, and how far below it the darkest is. */
struct HSVRange {
    explicit HSVRange(const UColor& color)
        : value(std::max({color.red, color.green, color.blue}) >> 8),
          range(value - (std::min({color.red, color.green, color.blue}) >> 8)) {}

    int32_t saturation() const { return value ? range * 255 / value : 0; }

    int32_t value;
    int32_t range;
};
}  // namespace

IMPLEMENT_CLASS(UColor, CmObject)

constinit UColor::SkinColor UColor::gSkinColor = nullptr;

UColor::UColor(const UColor& a, const UColor& b, float f)
    : red(a.red & 0xFF00), green(a.green & 0xFF00), blue(a.blue & 0xFF00), alpha(a.alpha & 0xFF00) {
    blend(b, f);
}

UColor::UColor(const char* name, const UColor& fallback) {
    const bool isOfSkin = gSkinColor && name && gSkinColor(name, *this);
    if (!isOfSkin && !colorFromString(name, *this))
        *this = fallback;
}

uint32_t UColor::toColorSpec() const {
    const auto byte = [](uint16_t channel) { return uint32_t(channel >> 8); };
    return byte(alpha) << 24 | byte(red) << 16 | byte(green) << 8 | byte(blue);
}

void UColor::fromColorSpec(uint32_t spec) {
    *this = UColor(fromByte(spec >> 16), fromByte(spec >> 8), fromByte(spec), fromByte(spec >> 24));
}

bool UColor::operator==(const UColor& other) const {
    return std::ranges::all_of(kChannels, [&](const Channel& each) { return this->*each.field == other.*each.field; });
}

bool UColor::colorFromString(const char* text, UColor& color) {
    if (!text || !*text)
        return false;
    if (*text == '#')
        return fromDigits(text, color);
    if (*text == '$')
        return fromHSVText(text, color);
    const auto row = std::ranges::find(kStandardColors, std::string_view(text), &StandardColor::name);
    if (row == std::end(kStandardColors))
        return false;
    color.fromColorSpec(row->spec);
    return true;
}

void UColor::colorToString(String& text) const {
    const auto row =
        std::ranges::find_if(kStandardColors, [this](const StandardColor& each) { return UColor(each.spec) == *this; });
    if (row != std::end(kStandardColors)) {
        text.assign(row->name);
        return;
    }
    text.printf("#%02X%02X%02X", red >> 8, green >> 8, blue >> 8);
    if (alpha < kOpaque)
        text.append(String().printf("%02X", alpha >> 8));
}

uint32_t UColor::getStandardColorSpec(uint32_t index) {
    return kStandardColors[index < kNumStandardColors ? index : 0].spec;
}

const char* UColor::getStandardColorName(uint32_t index) {
    return index < kNumStandardColors ? kStandardColors[index].name : nullptr;
}

const tchar* UColor::getStandardColorTitle(uint32_t index) {
    return index < kNumStandardColors ? kStandardColors[index].title : kUnknownTitle;
}

float UColor::getTrueLuminance() const {
    return float((0.299 * red + 0.587 * green + 0.114 * blue) * 1.5258789e-5);
}

float UColor::getTrueDifference(const UColor& other) const {
    const auto squared = [](int32_t difference, double weight) {
        const double seen = difference * weight / 255;
        return seen * seen;
    };
    return float((squared(red - other.red, 30) + squared(green - other.green, 59) + squared(blue - other.blue, 11)) /
                 3e8);
}

void UColor::invert() {
    for (uint16_t* channel : {&red, &green, &blue})
        *channel = uint16_t(0xFF00 - *channel);
}

void UColor::blend(const UColor& other, float f) {
    *this = UColor(towards(red, other.red, f), towards(green, other.green, f), towards(blue, other.blue, f), alpha);
}

int32_t UColor::getHue() const {
    return HSVRange(*this).range == 0 ? 0 : int32_t(std::lround(toHSL(*this).hue));
}

int32_t UColor::getSaturation() const {
    return HSVRange(*this).saturation();
}

void UColor::setHue(int32_t hue) {
    const HSVRange range(*this);
    setHSV(*this, hue, range.saturation(), range.value);
}

void UColor::setSaturation(int32_t saturation) {
    setHSV(*this, getHue(), std::clamp(saturation, 0, 255), HSVRange(*this).value);
}

int32_t UColor::getLumination() const {
    return int32_t(toHSL(*this).saturation);
}

void UColor::fromHSL(double hue, double saturation, double lightness) {
    const double around = std::isfinite(hue) ? std::fmod(hue, 255) : 0;
    setHSL(*this, {around, bounded(saturation, 255.0), bounded(lightness, 255.0)});
}

void UColor::changeBrightness(float f) {
    const UColorHSL hsl = toHSL(*this);
    const double lightness = hsl.lightness == 0 && f > 1 ? (f - 1) * 255.0 : hsl.lightness * f;
    fromHSL(hsl.hue, hsl.saturation, lightness);
}

void UColor::makeContrastColor(float f) {
    const UColorHSL hsl = toHSL(*this);
    fromHSL(hsl.hue, hsl.saturation * f, std::fmod(hsl.lightness + 175, 256));
}

void UColor::adjustHSL(int32_t hue, int32_t saturation, int32_t luminance) {
    const UColorHSL hsl = toHSL(*this);
    fromHSL(hsl.hue + std::trunc(hue / 360.0 * 255), hsl.saturation * saturationFactor(saturation),
            UColorLightnessCurve(luminance).shifted(hsl.lightness));
}

void UColor::convertLegacyToRealHSV(int32_t& hue, int32_t& saturation, int32_t& value) {
    hue = roundedUp(hue * 360.0 / 255);
    saturation = roundedUp(saturation / 255.0 * 100);
    value = roundedUp(value / 255.0 * 100);
}

void UColor::convertRealToLegacyHSV(int32_t& hue, int32_t& saturation, int32_t& value) {
    hue = roundedUp(hue / 360.0 * 255);
    saturation = roundedUp(saturation * 255.0 / 100);
    value = roundedUp(value * 255.0 / 100);
}

bool UColor::isEqual(const CmObject* other) const {
    const auto* color = classCast<UColor>(other);
    return color && *this == *color;
}

uint32_t UColor::hash(uint32_t buckets) const {
    return buckets ? toColorSpec() % buckets : 0;
}

bool UColor::internalize(FArchive& archive) {
    UColor read;
    for (const auto field : kArchived)
        if (!archive.getStream().readInt16u(read.*field))
            return false;
    *this = read;
    return true;
}

bool UColor::externalize(FArchive& archive) const {
    return std::ranges::all_of(kArchived, [&](auto field) { return archive.getStream().writeInt16u(this->*field); });
}

bool UColor::storeAttributes(FAttributes& attributes) const {
    return std::ranges::all_of(kChannels,
                               [&](const Channel& each) { return attributes.set(each.key, this->*each.field); });
}

bool UColor::restoreAttributes(FAttributes& attributes) {
    UColor stored;
    for (const Channel& each : kChannels)
        if (!attributes.get(each.key, stored.*each.field) && each.field != &UColor::alpha)
            return false;
    *this = stored;
    return true;
}

}  // namespace Tessarine
