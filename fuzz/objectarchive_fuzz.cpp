// Object archives. The first byte says which of them, and the byte order. What reads without an error is written and reads again
// without one; nobody is left alive.
#include "archivesubject.h"
#include "storage/fnewarchive.h"
#include "storage/fsimplearchive.h"

using namespace ArchiveFuzz;
IMPLEMENT_FUZZ_CLASSES

namespace {
constexpr size_t kMaxObjects = 64;

template <class Archive>
void check(FMemoryStream& source) {
    std::vector<OPtr<CmObject>> objects;
    Archive archive(&source, false);
    while (objects.size() < kMaxObjects && archive.getLastError() == 0 && source.tell() < source.getSize())
        objects.emplace_back(archive.load(nullptr));
    if (archive.getLastError() != 0)
        return;
    FMemoryStream again;
    Archive writer(&again, true);
    for (const OPtr<CmObject>& object : objects)
        demand(writer.save(object.get()));
    again.rewind();
    Archive second(&again, false);
    for (const OPtr<CmObject>& object : objects) {
        const OPtr<CmObject> read(second.load(object ? object->isA() : nullptr));
        demand(bool(read.get()) == bool(object.get()));
    }
    demand(second.getLastError() == 0 && again.tell() == again.getSize());
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FMemoryStream source;
    if (!fillByForm(source, data, size))
        return 0;
    if (data[0] & 2)
        check<FSimpleArchive>(source);
    else
        check<FNewArchive>(source);
    demand(livingNodes == 0);
    return 0;
}
