// The frame parser with its container over many calls. The input is a run of calls: a byte that says how many bytes a
// call brings, then these. A plain model of the reassembly says what each call has to give.
#include "source/TALV_Extension/TALV_MessageFactory.h"
#include <algorithm>
#include <cstring>
#include <deque>
#include <numeric>
#include <vector>

using namespace TALV;

namespace {
using Bytes = std::vector<unsigned char>;

void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

/** The first whole frame, or nothing. */
Bytes takeFrame(std::deque<unsigned char>& waiting) {
    if (waiting.empty() || waiting.size() <= waiting.front())
        return {};
    const auto end = waiting.begin() + waiting.front() + 1;
    Bytes frame(waiting.begin(), end);
    waiting.erase(waiting.begin(), end);
    return frame;
}

bool isReport(const Bytes& frame) {
    return frame.size() >= 4 && frame[1] >= 0x80 && frame[1] <= 0xA8 &&
           std::accumulate(frame.begin() + 1, frame.end(), 0) % 256 == 255;
}

void checkAgainst(const Bytes& frame, const MessagePrm& prm) {
    if (prm.type == kMessageNone)
        return;
    demand(prm.type < kNumMessageTypes && isReport(frame) && prm.devId == frame[2]);
    const int32_t ends[] = {prm.gainStart + prm.gainCount, prm.plus48VStart + prm.plus48VCount,
                            prm.hpfStart + prm.hpfCount, prm.gainTrimStart + prm.gainTrimCount,
                            prm.hpfFreqStart + prm.hpfFreqCount};
    demand(std::ranges::all_of(ends, [](int32_t end) { return end <= 8; }));
}

/** What can be sent of a record needs its room to the byte. */
void checkBuilding(const MessagePrm& prm) {
    unsigned char frame[256];
    const int32_t size = TALV_MessageFactory::createMessage(prm, frame, sizeof(frame));
    if (size == 0)
        return;
    demand(frame[0] == size - 1 && TALV_MessageFactory::verifyChecksum(frame + 1, size - 1));
    Bytes tooSmall(size_t(size - 1));
    demand(TALV_MessageFactory::createMessage(prm, tooSmall.data(), size - 1) == 0);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    TALV_MessageFactory::clearMessageContainer();
    std::deque<unsigned char> waiting;
    for (size_t at = 0; at < size;) {
        const size_t count = std::min(size_t(data[at]), size - at - 1);
        const Bytes brought(data + at + 1, data + at + 1 + count);
        at += 1 + count;
        waiting.insert(waiting.end(), brought.begin(), brought.end());
        const Bytes frame = takeFrame(waiting);
        MessagePrm prm;
        std::memset(&prm, 0, sizeof(prm));
        static const unsigned char kNothing = 0;
        TALV_MessageFactory::parseMessage(count ? brought.data() : &kNothing, int32_t(count), prm);
        checkAgainst(frame, prm);
        checkBuilding(prm);
    }
    return 0;
}
