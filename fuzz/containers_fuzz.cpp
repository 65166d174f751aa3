// Containers that read themselves from an archive. The first byte of the input chooses the container and the archive, the
// rest is what the container reads. What it has read is whole, and comes back when it is written and read once more, but for
// dictionaries: what is stored of two keys may be equal.
#include "collect/cmarray.h"
#include "collect/cmbtreedictionary.h"
#include "collect/cmdictionary.h"
#include "collect/cmhashdictionary.h"
#include "collect/cmidlinkedlist.h"
#include "collect/cmilinkedlist.h"
#include "collect/cmqueue.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fsimplearchive.h"
#include <memory>

using namespace Tessarine;

// What is read into a container that borrows belongs to nobody.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}

namespace {
void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

template <class Container>
CmContainer* make() {
    return new Container;
}

constexpr size_t kFirstDictionary = 8;
constexpr CmContainer* (*kMakers[])() = {
    make<CmArray>,       make<CmOrderedArray>,   make<CmLinkedList>,      make<CmDLinkedList>,
    make<CmILinkedList>, make<CmIDLinkedList>,   make<CmHashTable>,       make<CmBTree>,
    make<CmDictionary>,  make<CmHashDictionary>, make<CmBTreeDictionary>,
};

std::unique_ptr<FArchive> openArchive(FStream& stream, bool writing, bool sized) {
    if (sized)
        return std::make_unique<FNewArchive>(&stream, writing);
    return std::make_unique<FSimpleArchive>(&stream, writing);
}

void checkWhole(const CmContainer& container, size_t inputSize) {
    demand(container._ownsObjects >= CmContainer::kBorrows && container._ownsObjects <= CmContainer::kShares);
    demand(container.total() >= 0 && size_t(container.total()) <= inputSize);
    int32_t forward = 0, backward = 0;
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    for (; !cursor->done(); ++forward)
        demand(cursor->next() && forward < container.total());
    for (cursor->last(); !cursor->done(); ++backward)
        demand(cursor->previous() && backward < container.total());
    demand(forward == container.total() && backward == container.total());
}

void checkReturn(const CmContainer& container, bool sized) {
    FMemoryStream stream;
    demand(container.externalize(*openArchive(stream, true, sized)));
    stream.rewind();
    const OPtr<CmObject> copy(static_cast<CmObject*>(container.getClass()->createFunction()));
    auto* again = classCast<CmContainer>(copy.get());
    demand(again && again->internalize(*openArchive(stream, false, sized)));
    demand(again->total() == container.total() && again->_ownsObjects == container._ownsObjects);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const bool sized = (data[0] & 0x80) != 0;
    const size_t kind = (data[0] & 0x7F) % std::size(kMakers);
    const OPtr<CmContainer> container(kMakers[kind]());
    FMemoryStream stream(const_cast<uint8_t*>(data + 1), int32_t(size - 1));
    const std::unique_ptr<FArchive> archive = openArchive(stream, false, sized);
    const bool all = container->internalize(*archive);
    checkWhole(*container, size);
    if (all && kind < kFirstDictionary && archive->getLastError() == 0)
        checkReturn(*container, sized);
    return 0;
}
