// Binary archives of attributes. What has been read once is written, and then read and written the same way for good; the
// stream ends behind it, and nobody is left alive. The first byte says the byte order, and whether the stream can go back.
#include "archivesubject.h"
#include "storage/fbinarchive.h"
#include "storage/fbufferedstream.h"

using namespace ArchiveFuzz;
IMPLEMENT_FUZZ_CLASSES

namespace {
/** The first time, what nobody holds may be lost with its references. */
void check(FMemoryStream& source) {
    FMemoryStream again, thrice;
    Opened<FBinArchive> first(&source, false), second(&again, false), third(&thrice, false);
    const auto load = [](FBinArchive& archive) {
        demand(archive.load());
        return true;
    };
    const auto save = [](FBinArchive& archive) { return archive.save(); };
    if (!first.load() || !passOn(first, again, second, save, load))
        return;
    demand(source.tell() <= source.getSize() && again.tell() == again.getSize());
    if (passOn(second, thrice, third, save, load))
        demand(textOf(second) == textOf(third));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FMemoryStream source;
    if (!fillByForm(source, data, size))
        return 0;
    check(source);
    source.rewind();
    FAttributes bag;
    FBinArchive(&source, false).loadAttributes(bag);
    bag.removeAll();
    demand(livingNodes == 0);
    return 0;
}
