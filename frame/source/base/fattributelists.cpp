#include "base/fattributelists.h"
#include "collect/cmbuffer.h"
#include "storage/farchive.h"
#include "storage/fmstream.h"
#include "storage/fpersistent.h"
#include "storage/fxmlobject.h"
#include <algorithm>
#include <new>

namespace Tessarine {
namespace {
template <class WriteOne>
bool writeEach(FArchive& archive, int32_t count, WriteOne writeOne) {
    bool good = archive.getStream().writeInt32(count);
    for (int32_t i = 0; good && i < count; ++i)
        good = writeOne(i);
    return good;
}

/** itemSize: the bytes that an item has at least. */
template <class ReadOne>
bool readEach(FArchive& archive, int64_t itemSize, ReadOne readOne) {
    int32_t count = 0;
    bool good = readAttributeCount(archive, count);
    for (; good && count > 0; --count)
        good = archive.hasLeft(itemSize) && readOne();
    return good;
}

bool writeNumber(FStream& stream, int64_t number) {
    return stream.writeInt64(number);
}
bool writeNumber(FStream& stream, double number) {
    return stream.writeDouble(number);
}
bool readNumber(FStream& stream, int64_t& number) {
    return stream.readInt64(number);
}
bool readNumber(FStream& stream, double& number) {
    return stream.readDouble(number);
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FAttrList, CmObject)
IMPLEMENT_CLASS(FIntList, FAttrList)
IMPLEMENT_CLASS(FFloatList, FAttrList)
IMPLEMENT_CLASS(FStringList, FAttrList)
IMPLEMENT_CLASS(FObjectList, FAttrList)
IMPLEMENT_CLASS(FSubList, FAttrList)
IMPLEMENT_CLASS(FAttrBuffer, CmObject)

template <class Number>
bool FNumberList<Number>::internalize(FArchive& archive) {
    numbers.removeAll();
    return readEach(archive, sizeof(Number), [&] {
        Number number{};
        return readNumber(archive.getStream(), number) && queue(number);
    });
}

template <class Number>
bool FNumberList<Number>::externalize(FArchive& archive) const {
    return writeEach(archive, total(), [&](int32_t i) { return writeNumber(archive.getStream(), numbers.at(i)); });
}

template class FNumberList<int64_t>;
template class FNumberList<double>;

bool FStringList::queue(const ConstString& text, bool copy) {
    OPtr<FAttributeValue> item(new FAttributeValue);
    item->setString(text, copy);
    if (!texts.add(item.get()))
        return false;
    item.detach();
    return true;
}

void FStringList::makeOwner() {
    for (int32_t i = 0; i < total(); ++i)
        at(i)->makeStringOwner();
}

bool FStringList::getItem(int32_t index, FVariant& value) {
    FAttributeValue* item = at(index);
    if (!item)
        return false;
    if (item->isWide())
        value.setString16(item->getString16());
    else
        value.setString8(item->getString8());
    return true;
}

bool FStringList::internalize(FArchive& archive) {
    texts.removeAll();
    return readEach(archive, sizeof(int32_t), [&] {
        FString text;
        return text.load(archive.getStream()) && queue(text);
    });
}

bool FStringList::externalize(FArchive& archive) const {
    return writeEach(archive, total(), [&](int32_t i) { return FString(at(i)->getText()).store(archive.getStream()); });
}

FObjectList::FObjectList(const FObjectList& source) : FObjectList(source.ownsObjects()) {
    for (CmObject* object : source.objects) {
        if (objects.add(object) && ownsObjects())
            object->addRef();
    }
}

CmObject* FObjectList::targetAt(int32_t index) const {
    return FXmlReference::targetOf(at(index));
}

bool FObjectList::getItem(int32_t index, FVariant& value) {
    CmObject* object = targetAt(index);
    if (object)
        value.setObject(object);
    return object != nullptr;
}

bool FObjectList::internalize(FArchive& archive) {
    objects.removeAll();
    objects._ownsObjects = CmContainer::kTakesOver;
    return readEach(archive, sizeof(int32_t), [&] {
        OPtr<CmObject> object(archive.load("CmObject"));
        const bool queued = object && queue(object, true);
        if (queued)
            object.detach();
        return queued;
    });
}

bool FObjectList::externalize(FArchive& archive) const {
    int32_t count = 0;
    for (int32_t i = 0; i < total(); ++i)
        count += targetAt(i) != nullptr;
    bool good = archive.getStream().writeInt32(count);
    for (int32_t i = 0; good && i < total(); ++i)
        good = !targetAt(i) || archive.save(targetAt(i));
    return good;
}

bool FSubList::queue(FAttributes* attributes) {
    return bags.add(attributes);
}

FAttributes* FSubList::at(int32_t index) const {
    return static_cast<FAttributes*>(bags.at(index));
}

bool FSubList::getItem(int32_t index, FVariant& value) {
    CmObject* bag = bags.at(index);
    if (bag)
        value.setObject(bag);
    return bag != nullptr;
}

bool FSubList::internalize(FArchive& archive) {
    bags.removeAll();
    return readEach(archive, sizeof(int32_t), [&] {
        OPtr<FAttributes> bag(new FAttributes);
        const bool queued = bag->internalize(archive) && queue(bag);
        if (queued)
            bag.detach();
        return queued;
    });
}

bool FSubList::externalize(FArchive& archive) const {
    return writeEach(archive, total(), [&](int32_t i) { return at(i)->externalize(archive); });
}

FAttrBuffer::FAttrBuffer(const void* source, uint32_t size, bool copy) {
    set(source, size, copy);
}

void FAttrBuffer::set(const void* source, uint32_t size, bool copy) {
    if (owned)
        delete[] static_cast<const char*>(bytes);
    bytes = nullptr;
    length = 0;
    owned = false;
    if (!source || size == 0)
        return;
    if (!copy) {
        bytes = source;
        length = size;
        return;
    }
    char* block = new (std::nothrow) char[size];
    if (!block)
        return;
    std::copy_n(static_cast<const char*>(source), size, block);
    bytes = block;
    length = size;
    owned = true;
}

FAttrBuffer::~FAttrBuffer() {
    if (owned)
        delete[] static_cast<const char*>(bytes);
}

bool FAttrBuffer::internalize(FArchive& archive) {
    FMemoryStream content;
    if (!content.internalize(archive))
        return false;
    set(content.getData(), static_cast<uint32_t>(content.getSize()), true);
    return length == static_cast<uint64_t>(content.getSize());
}

bool FAttrBuffer::externalize(FArchive& archive) const {
    FStream& stream = archive.getStream();
    return length <= INT32_MAX && stream.writeInt32(static_cast<int32_t>(length)) &&
           stream.writeRaw(bytes, length) == length;
}

bool bytesOf(CmObject* object, const void*& bytes, uint32_t& size) {
    if (const auto* block = classCast<FAttrBuffer>(object)) {
        bytes = block->data();
        size = block->size();
    } else if (const auto* buffer = classCast<CmBuffer>(object)) {
        bytes = buffer->data();
        size = buffer->getFillSize();
    } else if (auto* stream = classCast<FMemoryStream>(object)) {
        bytes = stream->getData();
        size = static_cast<uint32_t>(std::min<int64_t>(stream->getSize(), UINT32_MAX));
    } else {
        return false;
    }
    return true;
}

}  // namespace Tessarine
