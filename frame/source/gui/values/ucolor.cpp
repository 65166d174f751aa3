#include "gui/values/ucolor.h"
#include "base/source/fstring.h"
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
    uint32_t spec;
};
constexpr StandardColor kStandardColors[] = {
    {"black",        0xFF000000},
    {"white",        0xFFFFFFFF},
    {"gray5",        0xFFEBEBEB}, // as gray10
    {"gray10",       0xFFEBEBEB},
    {"gray20",       0xFFDEDEDE},
    {"gray30",       0xFFC8C8C8},
    {"gray40",       0xFFB4B4B4},
    {"gray50",       0xFFA0A0A0},
    {"gray60",       0xFF8C8C8C},
    {"gray70",       0xFF787878},
    {"gray80",       0xFF6E6E6E},
    {"gray90",       0xFF505050},
    {"red",          0xFFFF0000},
    {"lightred",     0xFFFF7D7D},
    {"darkred",      0xFF5A0000},
    {"green",        0xFF00FF00},
    {"lightgreen",   0xFF8CFF8C},
    {"darkgreen",    0xFF005A00},
    {"blue",         0xFF0000FF},
    {"lightblue",    0xFF99C1FF},
    {"darkblue",     0xFF00005A},
    {"magenta",      0xFFFF00FF},
    {"lightmagenta", 0xFFFFA3FF},
    {"darkmagenta",  0xFF700070},
    {"yellow",       0xFFFFFF00},
    {"lightyellow",  0xFFFFFFC8},
    {"darkyellow",   0xFF646400},
    {"orange",       0xFFFFA500},
    {"lightorange",  0xFFFFD564},
    {"darkorange",   0xFF9F6700},
    {"gold",         0xFFFFCC66},
    {"black50",      0xFF323232},
    {"black70",      0xFF464646},
};
static_assert(std::size(kStandardColors) == UColor::kNumStandardColors);

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

/** All of 0 to 255. */
void setHSV(UColor& color, int32_t hue, int32_t saturation, int32_t value) {
    const double place = hue * 6 / 256.0;
    const int32_t sector = int32_t(place);
    const double fraction = place - sector, share = saturation / 255.0;
    const auto scaled = [value](double factor) { return fromByte(uint32_t(factor * value)); };
    const uint16_t v = fromByte(uint32_t(value)), p = scaled(1 - share), q = scaled(1 - fraction * share),
                   t = scaled(1 - (1 - fraction) * share);
    const uint16_t sectors[][3] = {
        {v, t, p},
        {q, v, p},
        {p, v, t},
        {p, q, v},
        {t, p, v},
        {v, p, q},
    };
    const auto& [red, green, blue] = sectors[std::min<size_t>(size_t(sector), std::size(sectors) - 1)];
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
    const int32_t degrees = (numbers[0] % 360 + 360) % 360;
    setHSV(color, int32_t(std::ceil(degrees / 360.0 * 255)), int32_t(std::ceil(percentOf(1, 255))),
           int32_t(std::ceil(percentOf(2, 255))));
    if (count == 4)
        color.alpha = uint16_t(percentOf(3, UColor::kOpaque));
    return true;
}
}  // namespace

IMPLEMENT_CLASS(UColor, CmObject)

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
