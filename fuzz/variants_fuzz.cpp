// Variants of texts. A byte of options, one for the first text's length, two texts: numbers are those of the C library, order is
// the same from both sides, and what is stored or handed over comes back.
#include "collect/cmvariant.h"
#include "demand.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

using namespace Tessarine;

namespace {
enum Options : uint8_t { kFirstIsWide = 1, kSecondIsWide = 2 };

CmVariant variantOf(const std::string& bytes, bool wide) {
    CmVariant variant;
    if (wide)
        variant.setString16(std::u16string(bytes.begin(), bytes.end()).c_str(), true);
    else
        variant.setString8(bytes.c_str(), true);
    return variant;
}

bool isSame(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

void checkNumbers(const CmVariant& variant, const std::string& bytes) {
    long long whole = 0;
    double real = 0;
    if (std::sscanf(bytes.c_str(), "%lld", &whole) != 1)
        whole = 0;
    if (std::sscanf(bytes.c_str(), "%lf", &real) != 1)
        real = 0;
    demand(variant.getLong() == whole && isSame(variant.getFloat(), real));
    const CmVariant number(variant.getFloat());
    String printed;
    demand(number.getString(printed) && CmVariant(printed.text8()).getLong() == CmVariant(printed.text16()).getLong());
}

void checkStays(const CmVariant& variant) {
    FAttributes stored;
    CmVariant restored(1.5), assigned;
    demand(variant.storeAttributes(stored) && restored.restoreAttributes(stored));
    const FVariant other(variant);
    assigned.assign(other);
    for (const CmVariant* each : {&restored, &assigned})
        demand(each->getType() == variant.getType() && each->isOwner() && each->getText() == variant.getText());
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const std::string bytes(data + 2, data + size);
    const size_t length = std::min<size_t>(data[1], bytes.size());
    const std::string texts[] = {bytes.substr(0, length).c_str(), bytes.substr(length).c_str()};
    const CmVariant a = variantOf(texts[0], data[0] & kFirstIsWide), b = variantOf(texts[1], data[0] & kSecondIsWide);
    if (!(data[0] & kFirstIsWide))
        checkNumbers(a, texts[0]);
    checkStays(a);
    const int32_t order = a.compare(b), back = b.compare(a);
    demand((order > 0) == (back < 0) && (order < 0) == (back > 0) && (a == b) == (order == 0));
    demand(a == CmVariant(a) && a.compare(a) == 0);
    return 0;
}
