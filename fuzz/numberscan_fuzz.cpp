// Numbers in any text, beside the C library's sscanf tried at every place.
#include "fuzz/demand.h"
#include "tests/base/source/libraryscan.h"

using namespace Tessarine;

constexpr size_t kMaxText = 300;  // the plain way takes time by the square of it

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || size > kMaxText)
        return 0;
    std::string text(data + 1, data + size);
    text = text.c_str();
    String ours(text.c_str());
    if (data[0] & 2)
        ours.toWideString();
    demand(!scanFault(ours, text, data[0] & 1));
    return 0;
}
