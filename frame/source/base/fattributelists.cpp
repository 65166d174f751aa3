#include "base/fattributelists.h"
#include "collect/cmbuffer.h"
#include "storage/fmstream.h"
#include "storage/fpersistent.h"
#include "storage/fxmlobject.h"
#include <algorithm>
#include <new>

namespace Tessarine {
namespace {
template <class Number>
void copyNumbers(TArray<Number>& target, const TArray<Number>& source) {
    target.resize(source.total());
    target.addAllFrom(source);
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FAttrList, CmObject)
IMPLEMENT_CLASS(FIntList, FAttrList)
IMPLEMENT_CLASS(FFloatList, FAttrList)
IMPLEMENT_CLASS(FStringList, FAttrList)
IMPLEMENT_CLASS(FObjectList, FAttrList)
IMPLEMENT_CLASS(FSubList, FAttrList)
IMPLEMENT_CLASS(FAttrBuffer, CmObject)

FIntList::FIntList(const FIntList& source) : FAttrList(source), numbers(0, -1) {
    copyNumbers(numbers, source.numbers);
}

bool FIntList::getItem(int32_t index, FVariant& value) {
    if (index < 0 || index >= total())
        return false;
    value.setInteger(numbers.at(index));
    return true;
}

FFloatList::FFloatList(const FFloatList& source) : FAttrList(source), numbers(0, -1) {
    copyNumbers(numbers, source.numbers);
}

bool FFloatList::getItem(int32_t index, FVariant& value) {
    if (index < 0 || index >= total())
        return false;
    value.setFloat(numbers.at(index));
    return true;
}

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

FAttrBuffer::FAttrBuffer(const void* source, uint32_t size, bool copy) {
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
