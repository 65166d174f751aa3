// Files of settings. What isn't taken in leaves the pool as it was; what is, is written and read again, and then
// stays as it is.
#include "archivesubject.h"
#include "base/fdefaults.h"

using namespace ArchiveFuzz;
IMPLEMENT_FUZZ_CLASSES

namespace {
constexpr size_t kShortFile = 300;  // no bag of it gets too deep by what is unfolded

bool read(FMemoryStream& stream, FDefaultPool& pool) {
    stream.rewind();
    return FXmlArchive::restoreObject(&stream, "Defaults", &pool);
}

bool write(FMemoryStream& stream, const FDefaultPool& pool) {
    const OPtr<FAttributes> bag(new FAttributes);
    return pool.storeAttributes(*bag) && FXmlArchive(&stream, true).saveAttributes("Defaults", *bag);
}

std::string textOf(FMemoryStream& stream) {
    return renumbered({stream.getData(), static_cast<size_t>(stream.getSize())});
}

/** What the pool writes, and what that is read as; false: it can't be passed on. */
bool passOn(const FDefaultPool& pool, FMemoryStream& stream, FDefaultPool& next) {
    return write(stream, pool) && read(stream, next);
}

/** The first time, what nobody holds may be lost with its references. */
void check(const FDefaultPool& pool, bool isShort) {
    FMemoryStream streams[3];
    const OPtr<FDefaultPool> second(new FDefaultPool), third(new FDefaultPool);
    const bool passed = passOn(pool, streams[0], *second) && passOn(*second, streams[1], *third);
    demand(passed || !isShort);
    if (passed)
        demand(write(streams[2], *third) && textOf(streams[1]) == textOf(streams[2]));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FMemoryStream source;
    fill(source, data, size);
    const OPtr<FDefaultPool> pool(new FDefaultPool);
    pool->setLong("kept", "k", 7);
    int32_t number = 0;
    if (read(source, *pool))
        check(*pool, size < kShortFile);
    else
        demand(pool->countDefaults() == 1 && pool->getLong("kept", "k", number) == kResultOk && number == 7);
    pool->terminate();
    demand(pool->countDefaults() == 0 && livingNodes == 0);
    return 0;
}
