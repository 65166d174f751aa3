// Texts of colours, as skins have them. An input is the text; what its numbers are, the C library's sscanf says.
#include "base/source/fstring.h"
#include "fuzz/demand.h"
#include "gui/values/ucolor.h"
#include <algorithm>
#include <cstdio>
#include <string>

using namespace Tessarine;

namespace {
constexpr size_t kMaxText = 200;
const UColor kBefore(1, 2, 3, 7);

void demandDigits(const std::string& text, const UColor& color, bool taken) {
    const bool hasAlpha = text.size() == 9;
    demand(taken == (hasAlpha || text.size() == 7));
    demand(!taken || hasAlpha || color.alpha == 0xFF00);
}

void demandNumbers(const std::string& text, const UColor& color, bool taken) {
    long hue = 0, saturation = 0, value = 0, alpha = 0;
    const int count = std::sscanf(text.c_str(), " %*c %ld %*c %ld %*c %ld %*c %ld", &hue, &saturation, &value, &alpha);
    demand(taken == (count >= 3));
    if (!taken)
        return;
    const double opacity = double(std::clamp(alpha, 0L, 100L)) / 100;
    demand(color.alpha == (count == 4 ? uint16_t(opacity * 65535) : kBefore.alpha));
    demand(saturation > 0 || (color.red == color.green && color.green == color.blue));
    demand(value > 0 || (color.toColorSpec() & 0xFFFFFF) == 0);
}

/** What is shown is the same colour, as far as bytes go. */
void demandShown(const UColor& color) {
    String shown;
    color.colorToString(shown);
    UColor again;
    demand(UColor::colorFromString(shown.text8(), again) && again.toColorSpec() == color.toColorSpec());
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > kMaxText)
        return 0;
    std::string text(data, data + size);
    text = text.c_str();
    UColor color(kBefore);
    const bool taken = UColor::colorFromString(text.c_str(), color);
    demand(taken || color == kBefore);
    if (text.starts_with('#'))
        demandDigits(text, color, taken);
    else if (text.starts_with('$'))
        demandNumbers(text, color, taken);
    demandShown(color);
    return 0;
}
