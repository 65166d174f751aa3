// Files of presets: the pool's, that of one list, and the old binary one; the first byte says which. Whatever was read can be
// walked through, merged with itself without a change, and passed on.
#include "archivesubject.h"
#include "storage/fnewarchive.h"
#include "storage/fpreset.h"

using namespace ArchiveFuzz;
IMPLEMENT_FUZZ_CLASSES

namespace {
constexpr size_t kShortFile = 300;

bool readPool(FMemoryStream& stream, FPresetPool& pool) {
    FXmlArchive archive(&stream, false);
    return archive.load("Presets") && archive.isWhole() && archive.getGlobalRoot("Pool", &pool);
}

bool readList(FMemoryStream& stream, FPresetPool& pool) {
    const OPtr<FPresetListOwnFile> list(new FPresetListOwnFile);
    FXmlArchive archive(&stream, false);
    if (!archive.load("Presets") || !archive.isWhole() || !archive.getGlobalRoot("PresetList", list))
        return false;
    pool.getRAMList(u"read", false)->adjustTo(list);
    return true;
}

bool readOld(FMemoryStream& stream, FPresetPool& pool) {
    FNewArchive archive(&stream, false);
    return pool.internalize(archive);
}

constexpr bool (*kReaders[])(FMemoryStream& stream, FPresetPool& pool) = {readPool, readList, readOld};

void show(FPresetList& list, std::u16string& text) {
    text += list.getName();
    text += u'[';
    for (int32_t i = 0; FPreset* preset = list.getPreset(i); ++i) {
        text += preset->getName();
        text += tchar(u'0' + preset->getFlags());
    }
    for (int32_t i = 0; FPresetList* inner = list.getSubList(i); ++i)
        show(*inner, text);
    text += u']';
}

std::u16string shown(const FPresetPool& pool) {
    std::u16string text;
    for (int32_t i = 0; i < pool.countRAMLists(); ++i)
        show(*pool.getRAMListAt(i), text);
    return text;
}

/** Writes the pool, and reads that into another one; false: it can't be passed on. */
bool passOn(FPresetPool& pool, FMemoryStream& stream, FPresetPool& next) {
    FXmlArchive archive(&stream, true);
    if (!archive.addGlobalRoot("Pool", &pool) || !archive.save("Presets"))
        return false;
    stream.rewind();
    return readPool(stream, next);
}

/** The first time, names may lose what no text holds. */
void check(FPresetPool& pool, bool isShort) {
    FMemoryStream first, second;
    const OPtr<FPresetPool> next(new FPresetPool), last(new FPresetPool);
    const bool passed = passOn(pool, first, *next) && passOn(*next, second, *last);
    demand(passed || !isShort);
    if (!passed)
        return;
    demand(pool.countRAMLists() >= next->countRAMLists() && shown(*next) == shown(*last));
    second.rewind();
    demand(readPool(second, *next) && shown(*next) == shown(*last));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FMemoryStream source;
    if (!fillByForm(source, data, size))
        return 0;
    const OPtr<FPresetPool> pool(new FPresetPool);
    if (kReaders[(data[0] >> 1) % std::size(kReaders)](source, *pool))
        check(*pool, size < kShortFile);
    else
        demand(pool->countRAMLists() == 0);
    return 0;
}
