// A stored string, whatever the stream holds: what is loaded is well formed and comes back from storing; what isn't loaded
// leaves the old text, and no claim of a size is believed before the bytes are there.
#include "base/source/fstring.h"
#include "fuzz/demand.h"
#include "tests/support/memorystreamer.h"

using namespace Tessarine;

namespace {
constexpr int32_t kMaxStored = 50000;

void checkLoaded(const FString& text) {
    demand(text.length() <= kMaxStored && (text.isEmpty() || text.ptr()));
    if (!text.isWideString())
        return;
    MemoryStreamer stream;
    demand(text.store(stream));
    stream.cursor = 0;
    FString again;
    const bool fits = int64_t(stream.bytes.size()) - 4 <= kMaxStored;
    demand(again.load(stream) == fits);
    const bool marked = text.getChar16(0) == 0xFEFF;  // taken for the mark, and removed
    if (fits && text.length() > uint32_t(marked))
        demand(again.isWideString() && again == ConstString(text, marked));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    MemoryStreamer stream(std::string(data, data + size));
    FString text(u"old");
    int32_t claimed = -1;
    MemoryStreamer(stream.bytes).readInt32(claimed);
    const bool whole = claimed >= 0 && claimed <= kMaxStored && int64_t(size) - 4 >= claimed;
    demand(text.load(stream) == whole);
    if (whole)
        checkLoaded(text);
    else
        demand(text == ConstString(u"old"));
    return 0;
}
