#include "valuenumbers.h"
#include "base/source/fstring.h"
#include <cmath>
#include <limits>

namespace Tessarine {
int32_t truncated(double number) {
    using Limits = std::numeric_limits<int32_t>;
    if (std::isnan(number))
        return 0;
    if (number <= Limits::min())
        return Limits::min();
    return number >= Limits::max() ? Limits::max() : int32_t(number);
}

int32_t wrapped(int32_t number, int32_t min, int32_t max) {
    const int64_t rest = (int64_t(number) - min) % (int64_t(max) - min);
    return int32_t(rest < 0 ? rest + max + 1 : rest + min - 1);
}

float wrapped(float number, float min, float max) {
    const double rest = std::fmod(double(number) - min, double(max) - min);
    return float(rest < 0 ? max + rest + 1.0 : min + rest - 1.0);
}

bool scanTyped(const ConstString& typed, double& number) {
    String text(typed);
    const int32_t lastComma = text.findPrev(-1, u',');
    if (lastComma >= 0)
        text.setChar16(uint32_t(lastComma), u'.');
    const int32_t otherComma = text.findNext(0, u',');  // which ends a number
    if (otherComma >= 0)
        text.remove(uint32_t(otherComma));
    return text.scanFloat(number, 0, false);
}

double typedNumber(const tchar* typed, double current, double ifNaN) {
    const ConstString text(typed);
    const tchar last = text.isEmpty() ? u'\0' : text.getChar16(text.length() - 1);
    double number = 0;
    scanTyped(text, number);
    if (std::isnan(number))
        number = ifNaN;
    switch (last) {
    case u'*':
        return current * number;
    case u'+':
        return current + number;
    case u'-':
        return current - number;
    case u'/':
        return number == 0 ? current : current / number;
    default:
        return number;
    }
}

}  // namespace Tessarine
