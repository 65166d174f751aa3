// XML archives of attributes. What has been read once is written, and then read and written the same way for good; nobody is
// left alive.
#include "archivesubject.h"

using namespace ArchiveFuzz;
IMPLEMENT_FUZZ_CLASSES

namespace {
constexpr size_t kShortFile = 300;  // no bag of it gets too deep by what is unfolded

/** The first time, what nobody holds may be lost with its references. */
void check(FMemoryStream& source, bool isShort) {
    FMemoryStream again, thrice;
    Opened<FXmlArchive> first(&source, false), second(&again, false), third(&thrice, false);
    const auto load = [isShort](FXmlArchive& archive) {
        const bool whole = archive.load("T") && archive.isWhole();
        demand(whole || !isShort);
        return whole;
    };
    const auto save = [](FXmlArchive& archive) { return archive.save("T"); };
    if (first.load("T") && passOn(first, again, second, save, load) && passOn(second, thrice, third, save, load))
        demand(textOf(second) == textOf(third));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FMemoryStream source;
    fill(source, data, size);
    check(source, size < kShortFile);
    source.rewind();
    FAttributes bag;
    FXmlArchive(&source, false).loadAttributes("T", bag);
    bag.removeAll();
    demand(livingNodes == 0);
    return 0;
}
