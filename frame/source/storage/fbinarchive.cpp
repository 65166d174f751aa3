#include "storage/fbinarchive.h"
#include "fbytesink.h"
#include "fobjectgraph.h"
#include <cstring>
#include <string>
#include <string_view>

namespace Tessarine {
namespace {
constexpr int32_t kMaxText = 50000;  // bytes; what FString::load accepts
constexpr uint16_t kOlderStrings = 41;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// --- writing

class BinWriter {
public:
    explicit BinWriter(FStream& stream) : sink(stream) {}

    bool writeRoots(const CmArray* roots);
    bool writeGlobalRoots(const CmArray* roots);
    bool writeAttributes(const FAttributes& attributes);
    bool flush() { return sink.flush(); }

private:
    bool writeValue(const FAttributeValue& attribute, const FStoredValue& stored);
    bool writeForm(CmObject& object, StoredForm form);
    bool writeList(const FObjectList& list);
    bool writeBags(const FSubList& list);
    bool writeBytes(CmObject& object);
    bool writeObject(CmObject& object, bool tagged);
    void putText8(std::string_view text);
    void putText16(const ConstString& text);

    FByteSink sink;
    FSeenObjects seen;
    int32_t depth = 0;
};

/** The roots that are objects. */
std::vector<FStringIDAttribute*> objectRoots(const CmArray* roots) {
    std::vector<FStringIDAttribute*> found;
    for (int32_t i = 0; roots && i < roots->total(); ++i) {
        auto* root = static_cast<FStringIDAttribute*>(roots->at(i));
        CmObject* object = root->getObj();
        const StoredForm form = formBehind(object);
        if (form != kStoredNothing && form != kStoredReference)
            found.push_back(root);
    }
    return found;
}

bool BinWriter::writeRoots(const CmArray* roots) {
    const std::vector<FStringIDAttribute*> objects = objectRoots(roots);
    sink.put(static_cast<int32_t>(objects.size()));
    for (FStringIDAttribute* root : objects) {
        CmObject* object = root->getObj();
        formBehind(object);
        putText8(root->getID());
        sink.put(idOf(*object));
        if (seen.add(object) && !writeObject(*object, false))
            return false;
    }
    return true;
}

bool BinWriter::writeGlobalRoots(const CmArray* roots) {
    const int32_t count = roots ? roots->total() : 0;
    sink.put(count);
    for (int32_t i = 0; i < count; ++i) {
        const auto* root = static_cast<FStringIDAttribute*>(roots->at(i));
        const OPtr<FAttributes> bag(new FAttributes);
        putText8(root->getID());
        if (!storeObjectIn(*bag, *root->getObj()) || !writeAttributes(*bag))
            return false;
    }
    return true;
}

bool BinWriter::writeAttributes(const FAttributes& attributes) {
    const FArchiveDepth level(depth);
    if (level.isTooDeep())
        return false;
    int32_t count = 0;
    const int32_t total = attributes.countAttributes();
    for (int32_t i = 0; i < total; ++i)
        count += FStoredValue(*attributes.getAttribute(i)).isStored() ? 1 : 0;
    sink.put(count);
    for (int32_t i = 0; i < total; ++i) {
        const FStringIDAttribute& attribute = *attributes.getAttribute(i);
        const FStoredValue stored(attribute);
        if (!stored.isStored())
            continue;
        putText8(attribute.getID());
        sink.put(stored.kind);
        if (!writeValue(attribute, stored))
            return false;
    }
    return true;
}

bool BinWriter::writeValue(const FAttributeValue& attribute, const FStoredValue& stored) {
    switch (stored.kind) {
    case FAttributeValue::kLong:
        sink.put(attribute.getLong());
        return true;
    case FAttributeValue::kFloat:
        sink.put(attribute.getFloat());
        return true;
    case FAttributeValue::kString:
        if (attribute.isWide())
            putText16(attribute.getText());
        else
            putText8(units8(attribute.getText()));
        return true;
    default:
        return writeForm(*stored.object, stored.form);
    }
}

bool BinWriter::writeForm(CmObject& object, StoredForm form) {
    if (form == kStoredObject)
        return writeObject(object, true);
    sink.put(static_cast<uint16_t>(form));
    switch (form) {
    case kStoredInts: {
        const auto& numbers = static_cast<FIntList&>(object).numbers;
        sink.put(numbers.total());
        for (const int64_t number : numbers)
            sink.put(number);
        return true;
    }
    case kStoredFloats: {
        const auto& numbers = static_cast<FFloatList&>(object).numbers;
        sink.put(numbers.total());
        for (const double number : numbers)
            sink.put(number);
        return true;
    }
    case kStoredStrings: {
        const auto& texts = static_cast<FStringList&>(object);
        sink.put(texts.total());
        for (int32_t i = 0; i < texts.total(); ++i)
            putText16(texts.at(i)->getText());
        return true;
    }
    case kStoredBags:
        return writeBags(static_cast<FSubList&>(object));
    case kStoredBag:
        return writeAttributes(static_cast<FAttributes&>(object));
    case kStoredBytes:
        return writeBytes(object);
    case kStoredReference:
        sink.put(static_cast<FXmlObject&>(object).getID());
        return true;
    case kStoredObjects:
        return writeList(static_cast<FObjectList&>(object));
    default:
        return false;
    }
}

bool BinWriter::writeBags(const FSubList& list) {
    sink.put(list.total());
    for (int32_t i = 0; i < list.total(); ++i) {
        if (!writeAttributes(*list.at(i)))
            return false;
    }
    return true;
}

bool BinWriter::writeList(const FObjectList& list) {
    int32_t count = 0;
    for (int32_t i = 0; i < list.total(); ++i) {
        CmObject* object = list.at(i);
        count += formBehind(object) != kStoredNothing;
    }
    sink.put(count);
    for (int32_t i = 0; i < list.total(); ++i) {
        CmObject* object = list.at(i);
        const StoredForm form = formBehind(object);
        if (form != kStoredNothing && !writeForm(*object, form == kStoredReference ? form : kStoredObject))
            return false;
    }
    return true;
}

bool BinWriter::writeBytes(CmObject& object) {
    const void* bytes = nullptr;
    uint32_t size = 0;
    bytesOf(&object, bytes, size);
    sink.put(size);
    sink.putBytes(bytes, size);
    return true;
}

/** tagged: with the form before it, as a reference where it has been written already. */
bool BinWriter::writeObject(CmObject& object, bool tagged) {
    if (tagged) {
        const bool isNew = seen.add(&object);
        sink.put(static_cast<uint16_t>(isNew ? kStoredObject : kStoredReference));
        if (!isNew) {
            sink.put(idOf(object));
            return true;
        }
    }
    const char* name = persistentNameOf(object);
    const size_t length = std::strlen(name) + 1;
    sink.put(static_cast<int32_t>(length));
    sink.putBytes(name, length);
    sink.put(idOf(object));
    if (const auto* instance = classCast<FXmlInstance>(&object)) {
        static const FAttributes kNone;
        return writeAttributes(instance->getAttributes() ? *instance->getAttributes() : kNone);
    }
    const OPtr<FAttributes> bag(new FAttributes);
    return storeObjectIn(*bag, object) && writeAttributes(*bag);
}

void BinWriter::putText8(std::string_view text) {
    if (text.empty())
        return sink.put(int32_t(0));
    sink.put(static_cast<int32_t>(text.size() + 1));
    sink.putBytes(text.data(), text.size());
    sink.put(char(0));
}

void BinWriter::putText16(const ConstString& text) {
    String utf8(text);
    utf8.toWideString();
    if (utf8.isEmpty() || !utf8.toMultiByte(kCodePageUTF8))
        return sink.put(int32_t(0));
    const std::string_view bytes = units8(utf8);
    sink.put(static_cast<int32_t>(bytes.size() + 1 + kUtf8Mark.size()));
    sink.putBytes(bytes.data(), bytes.size());
    sink.put(char(0));
    sink.putBytes(kUtf8Mark.data(), kUtf8Mark.size());
}

// --- reading

class BinReader {
public:
    explicit BinReader(FStream& stream) : source(stream) {}

    /** Show each root with its name: with a reference, which the receiver takes over. */
    template <class Add>
    bool readRoots(Add add);
    template <class Add>
    bool readGlobalRoots(Add add);
    bool readAttributes(FAttributes& attributes);
    /** False: an object couldn't be restored. */
    bool finish() {
        loader.finish();
        return allRestored;
    }

private:
    bool takeCount(int32_t& count) { return source.take(count) && count >= 0; }
    /** A count, and so many of what readOne reads; false as soon as it can't. */
    template <class ReadOne>
    bool readEach(ReadOne readOne) {
        int32_t count = 0;
        bool good = takeCount(count);
        for (; good && count > 0; --count)
            good = readOne();
        return good;
    }
    template <class List, class ReadItem>
    OPtr<CmObject> readList(OPtr<List> list, ReadItem readItem) {
        const bool whole = readEach([&] { return readItem(*list); });
        return OPtr<CmObject>(whole ? list.detach() : nullptr);
    }
    template <class Use>
    bool takeText(Use use);
    bool readAttribute(FAttributes& attributes);
    bool readValue(FAttributeValue& attribute, uint16_t type);
    /** isHole: a reference that can't stand here; the attribute is left out. */
    OPtr<CmObject> readForm(bool& isHole);
    OPtr<CmObject> readObject();
    OPtr<CmObject> readObjects();
    OPtr<CmObject> readBags();
    OPtr<CmObject> readStrings();
    OPtr<CmObject> readBytes();
    template <class List, class Number>
    OPtr<CmObject> readNumbers();

    FObjectPool pool;
    FByteSource source;
    FObjectLoader loader;
    int32_t depth = 0;
    bool allRestored = true;
};

template <class Add>
bool BinReader::readRoots(Add add) {
    return readEach([&] {
        FString name;
        uint64_t id = 0;
        if (!takeText([&name](const ConstString& text) { name = text; }) || !source.take(id))
            return false;
        OPtr<CmObject> object = loader.isKnown(id) ? loader.refer(id) : readObject();
        if (!object)
            return false;
        add(name.text8(), object.detach());
        return true;
    });
}

template <class Add>
bool BinReader::readGlobalRoots(Add add) {
    return readEach([&] {
        FString name;
        OPtr<FAttributes> bag(new FAttributes);
        if (!takeText([&name](const ConstString& text) { name = text; }) || !readAttributes(*bag))
            return false;
        add(name.text8(), bag.detach());
        return true;
    });
}

bool BinReader::readAttributes(FAttributes& attributes) {
    const FArchiveDepth level(depth);
    return !level.isTooDeep() && readEach([&] { return readAttribute(attributes); });
}

bool BinReader::readAttribute(FAttributes& attributes) {
    OPtr<FStringIDAttribute> attribute;
    uint16_t type = 0;
    const auto begin = [&attribute](const ConstString& key) {
        attribute =
            key.isWideString() ? new FStringIDAttribute(String(key).text8()) : new FStringIDAttribute(units8(key));
    };
    if (!takeText(begin) || !source.take(type) || !readValue(*attribute, type))
        return false;
    return attribute->isEmpty() || attributes.addAttribute(attribute.detach());
}

bool BinReader::readValue(FAttributeValue& attribute, uint16_t type) {
    int64_t number = 0;
    double real = 0;
    switch (type) {
    case FAttributeValue::kLong:
        if (!source.take(number))
            return false;
        attribute.setLong(number);
        return true;
    case FAttributeValue::kFloat:
        if (!source.take(real))
            return false;
        attribute.setFloat(real);
        return true;
    case FAttributeValue::kString:
        return takeText([&attribute](const ConstString& text) { attribute.setString(text); });
    case FAttributeValue::kObject:
    case FAttributeValue::kUnknown: {
        bool isHole = false;
        OPtr<CmObject> object = readForm(isHole);
        if (object && type == FAttributeValue::kObject)
            attribute.setObj(object.detach(), FAttributeValue::kOwned);
        else
            attribute.setUnknown(object, FAttributeValue::kShared);
        return isHole || !attribute.isEmpty();
    }
    default:
        return true;
    }
}

OPtr<CmObject> BinReader::readForm(bool& isHole) {
    uint16_t form = 0;
    if (!source.take(form))
        return {};
    switch (form) {
    case kStoredInts:
        return readNumbers<FIntList, int64_t>();
    case kStoredFloats:
        return readNumbers<FFloatList, double>();
    case kStoredStrings:
    case kOlderStrings:
        return readStrings();
    case kStoredBags:
        return readBags();
    case kStoredBag: {
        OPtr<FAttributes> bag(new FAttributes);
        return readAttributes(*bag) ? OPtr<CmObject>(bag.detach()) : OPtr<CmObject>();
    }
    case kStoredBytes:
        return readBytes();
    case kStoredObject:
        return readObject();
    case kStoredReference: {
        uint64_t id = 0;
        if (!source.take(id))
            return {};
        OPtr<CmObject> target = loader.refer(id);
        isHole = !target;
        return target;
    }
    case kStoredObjects:
        return readObjects();
    default:
        return {};
    }
}

OPtr<CmObject> BinReader::readObject() {
    int32_t length = 0;
    uint64_t id = 0;
    if (!takeCount(length) || length > kMaxText)
        return {};
    const char* name = source.takeBytes(static_cast<size_t>(length));
    if (!name)
        return {};
    const std::string className(name, strnlen(name, static_cast<size_t>(length)));
    if (!source.take(id))
        return {};
    FXmlInstance& instance = loader.begin(className.c_str(), id);
    const bool whole = readAttributes(*instance.getAttributes());
    allRestored = loader.end() && allRestored;
    return whole ? OPtr<CmObject>(IPtr<CmObject>(instance.getStandIn())) : OPtr<CmObject>();
}

OPtr<CmObject> BinReader::readObjects() {
    return readList(OPtr<FObjectList>(new FObjectList(true)), [this](FObjectList& list) {
        uint16_t form = 0;
        uint64_t id = 0;
        if (!source.take(form) || (form != kStoredObject && form != kStoredReference) ||
            (form == kStoredReference && !source.take(id)))
            return false;
        OPtr<CmObject> object = form == kStoredObject ? readObject() : loader.refer(id);
        const bool queued = object && list.queue(object, true);
        if (queued)
            object.detach();
        return queued || form == kStoredReference;
    });
}

OPtr<CmObject> BinReader::readBags() {
    return readList(OPtr<FSubList>(new FSubList), [this](FSubList& list) {
        OPtr<FAttributes> bag(new FAttributes);
        const bool queued = readAttributes(*bag) && list.queue(bag);
        if (queued)
            bag.detach();
        return queued;
    });
}

OPtr<CmObject> BinReader::readStrings() {
    return readList(OPtr<FStringList>(new FStringList), [this](FStringList& list) {
        bool added = false;
        return takeText([&](const ConstString& text) { added = list.queue(text); }) && added;
    });
}

OPtr<CmObject> BinReader::readBytes() {
    uint32_t size = 0;
    std::string bytes;
    if (!source.take(size))
        return {};
    while (bytes.size() < size) {
        const size_t piece = std::min<size_t>(size - bytes.size(), FByteSource::kMaxPiece);
        const char* taken = source.takeBytes(piece);
        if (!taken)
            return {};
        bytes.append(taken, piece);
    }
    return OPtr<CmObject>(new FAttrBuffer(bytes.data(), size, true));
}

template <class List, class Number>
OPtr<CmObject> BinReader::readNumbers() {
    return readList(OPtr<List>(new List), [this](List& list) {
        Number number{};
        return source.take(number) && list.queue(number);
    });
}

/** A text in the form of FString, as it would load it; what it is given lives as long as the call. */
template <class Use>
bool BinReader::takeText(Use use) {
    int32_t size = 0;
    if (!takeCount(size))
        return false;
    if (size > kMaxText) {
        source.skip(size);
        return false;
    }
    const char* bytes = source.takeBytes(static_cast<size_t>(size));
    if (!bytes)
        return false;
    const std::string_view text(bytes, static_cast<size_t>(size));
    const bool isPlain = text.size() > 1 && text.find('\0') == text.size() - 1 && !text.starts_with(kUtf8Mark);
    if (isPlain) {
        use(ConstString(bytes, size - 1));
        return true;
    }
    FString stored;
    if (!stored.fromStored(text))
        return false;
    use(stored);
    return true;
}
}  // namespace

// --- the archive

const FFileType FBinArchive::fileType(u"Tessarine BIN File", u"bin", u"bin", 0x44415441);  // DATA

FBinArchive::FBinArchive(FStream* stream, bool writing, FArchive* /*olderArchive*/)
    : FAttributeArchiveBase(stream, writing) {}

bool FBinArchive::save() {
    if (!writing)
        return false;
    FArchive::beforeSave();
    BinWriter writer(*stream);
    const bool whole =
        writer.writeRoots(roots.getAttributeArray()) && writer.writeGlobalRoots(globalRoots.getAttributeArray());
    return writer.flush() && whole;
}

bool FBinArchive::load() {
    if (writing)
        return false;
    BinReader reader(*stream);
    const bool whole = reader.readRoots([this](const char* name, CmObject* object) {
        roots.setObjAttribute(name, object, RootList::kOwned, RootList::kAppend);
    }) && reader.readGlobalRoots([this](const char* name, CmObject* bag) {
        globalRoots.setObjAttribute(name, bag, RootList::kOwned, RootList::kAppend);
    });
    return reader.finish() && whole;
}

bool FBinArchive::saveAttributes(const FAttributes& attributes) {
    if (!writing)
        return false;
    BinWriter writer(*stream);
    const bool whole = writer.writeAttributes(attributes);
    return writer.flush() && whole;
}

bool FBinArchive::loadAttributes(FAttributes& attributes) {
    if (writing)
        return false;
    BinReader reader(*stream);
    const OPtr<FAttributes> loaded(new FAttributes);
    const bool whole = reader.readAttributes(*loaded);
    if (!reader.finish() || !whole)
        return false;
    attributes.take(*loaded);
    return true;
}

}  // namespace Tessarine
