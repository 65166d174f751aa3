#include "storage/fxmlarchive.h"
#include "fobjectgraph.h"
#include "fxmlarchiveparser.h"
#include <charconv>
#include <string_view>

namespace Tessarine {

CmBufferPool gXmlArchiveBuffers;

namespace {
constexpr uint32_t kFirstSize = 1024;
constexpr uint32_t kFlushSize = 0x4000;
constexpr size_t kMaxNumber = 1024;
constexpr int32_t kFloatDigits = 50;
constexpr uint32_t kBytesPerLine = 32;
constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r";
constexpr std::string_view kLevel = "   ";
constexpr std::string_view kDigits = "0123456789ABCDEF";

/** Collects text in a buffer of the pool. */
class XmlText {
public:
    explicit XmlText(FStream& stream) : stream(stream), buffer(gXmlArchiveBuffers.allocateBuffer(kFirstSize)) {}
    ~XmlText() { gXmlArchiveBuffers.deleteBuffer(buffer); }
    XmlText(const XmlText&) = delete;
    XmlText& operator=(const XmlText&) = delete;

    XmlText& operator<<(std::string_view text) {
        if (char* place = room(text.size())) {
            std::copy_n(text.data(), text.size(), place);
            fill(text.size());
        }
        return *this;
    }
    XmlText& operator<<(int64_t number) { return putNumber(number); }
    XmlText& operator<<(uint64_t number) { return putNumber(number); }
    /** As the C library's %.50g in the C locale. */
    XmlText& operator<<(double number) { return putNumber(number, std::chars_format::general, kFloatDigits); }
    /** Escaped. */
    XmlText& putPlain(std::string_view ascii);
    XmlText& putText(const ConstString& text);
    void putHex(const char* bytes, uint32_t count);
    void indent(int32_t level) {
        for (; level > 0; --level)
            *this << kLevel;
    }
    void tabs(int32_t level) {
        for (; level > 0; --level)
            *this << "\t";
    }
    void endLine() {
        *this << "\r";
        if (buffer->getFillSize() >= kFlushSize)
            flush();
    }
    bool flush();

private:
    char* room(size_t count) {
        const uint32_t filled = buffer->getFillSize();
        if (count > buffer->getFree() && !grow(count))
            return nullptr;
        return buffer->data() + filled;
    }
    void fill(size_t count) { buffer->setFillSize(buffer->getFillSize() + static_cast<uint32_t>(count)); }
    template <class Number, class... Form>
    XmlText& putNumber(Number number, Form... form) {
        if (char* place = room(kMaxNumber))
            fill(static_cast<size_t>(std::to_chars(place, place + kMaxNumber, number, form...).ptr - place));
        return *this;
    }
    bool grow(size_t count);

    FStream& stream;
    CmBuffer* const buffer;  // counted
    bool good = true;
};

bool XmlText::grow(size_t count) {
    const uint64_t wanted = std::max<uint64_t>(uint64_t(buffer->getSize()) * 2, buffer->getFillSize() + count);
    good = wanted <= UINT32_MAX && buffer->grow(static_cast<uint32_t>(wanted)) && good;
    return count <= buffer->getFree();
}

bool XmlText::flush() {
    const int64_t count = buffer->getFillSize();
    good = stream.writeRaw(buffer->data(), count) == count && good;
    buffer->setFillSize(0);
    return good;
}

bool isMarkup(char c) {
    return c == '&' || c == '<' || c == '>' || c == '"';
}

XmlText& XmlText::putPlain(std::string_view ascii) {
    if (std::ranges::none_of(ascii, isMarkup))
        return *this << ascii;
    const String text(ascii.data(), static_cast<int32_t>(ascii.size()));
    good = FXmlWriter::encodeString(*buffer, text.text8(), true) && good;
    return *this;
}

/** 16-bit text; what can't be converted is lost. */
XmlText& XmlText::putText(const ConstString& text) {
    String wide(text);
    wide.toWideString();
    if (!FXmlWriter::encodeString(*buffer, wide.text16()) && wide.toMultiByte(kCodePageUTF8))
        good = FXmlWriter::encodeString(*buffer, wide.text8(), true) && good;
    return *this;
}

void XmlText::putHex(const char* bytes, uint32_t count) {
    char* place = room(count * 2);
    if (!place)
        return;
    for (uint32_t i = 0; i < count; ++i) {
        place[2 * i] = kDigits[bytes[i] >> 4 & 15];
        place[2 * i + 1] = kDigits[bytes[i] & 15];
    }
    fill(count * 2);
}

bool isAscii(std::string_view text) {
    return std::ranges::none_of(text, [](char c) { return (c & 0x80) != 0; });
}

class XmlArchiveWriter {
public:
    XmlArchiveWriter(FStream& stream, const char* rootTag, int32_t depth = 0)
        : text(stream), rootTag(rootTag), depth(depth) {}

    bool writeRoots(const CmArray* roots, const CmArray* globalRoots);
    bool writeAttributes(const FAttributes& attributes, int32_t level);
    void begin();
    bool end();

private:
    bool writeGlobalRoot(const FStringIDAttribute& root);
    bool writeValue(const FStringIDAttribute& attribute, const FStoredValue& stored, int32_t level);
    void writeString(const FStringIDAttribute& attribute, int32_t level);
    bool writeForm(CmObject& object, StoredForm form, const char* key, int32_t level);
    bool writeObject(CmObject& object, const char* key, int32_t level);
    bool writeObjects(const FObjectList& list, int32_t level);
    bool writeBags(const FSubList& list, int32_t level);
    void writeBytes(CmObject& object, int32_t level);
    template <class Numbers>
    void writeItems(const Numbers& numbers, int32_t level);

    /** Up to where attributes may follow; without a name for a null key. */
    XmlText& open(int32_t level, std::string_view element, const char* key);
    void close(int32_t level, std::string_view element);
    void openList(int32_t level, std::string_view type, const char* key);
    void putKey(const char* key);

    XmlText text;
    const std::string_view rootTag;
    FSeenObjects seen;
    int32_t depth;
};

void XmlArchiveWriter::begin() {
    text << kDeclaration;
    open(0, rootTag, nullptr) << ">";
    text.endLine();
}

bool XmlArchiveWriter::end() {
    close(0, rootTag);
    return text.flush();
}

bool XmlArchiveWriter::writeRoots(const CmArray* roots, const CmArray* globalRoots) {
    std::vector<CmObject*> queue;
    open(1, "rootObjects", nullptr) << ">";
    text.endLine();
    for (int32_t i = 0; roots && i < roots->total(); ++i) {
        const auto* root = static_cast<FStringIDAttribute*>(roots->at(i));
        CmObject* object = root->getObj();
        const StoredForm form = formBehind(object);
        if (form == kStoredNothing || form == kStoredReference)
            continue;
        open(2, "root", root->getID()) << " ID=\"" << idOf(*object) << "\"/>";
        text.endLine();
        queue.push_back(object);
    }
    for (int32_t i = 0; globalRoots && i < globalRoots->total(); ++i) {
        if (!writeGlobalRoot(*static_cast<FStringIDAttribute*>(globalRoots->at(i))))
            return false;
    }
    close(1, "rootObjects");
    text.endLine();
    for (CmObject* object : queue) {
        if (seen.add(object) && !writeObject(*object, nullptr, 1))
            return false;
    }
    return true;
}

bool XmlArchiveWriter::writeGlobalRoot(const FStringIDAttribute& root) {
    const OPtr<FAttributes> bag(new FAttributes);
    open(2, "root", root.getID()) << ">";
    text.endLine();
    const bool whole = storeObjectIn(*bag, *root.getObj()) && writeAttributes(*bag, 3);
    close(2, "root");
    return whole;
}

bool XmlArchiveWriter::writeAttributes(const FAttributes& attributes, int32_t level) {
    const FArchiveDepth inside(depth);
    if (inside.isTooDeep())
        return false;
    const int32_t total = attributes.countAttributes();
    for (int32_t i = 0; i < total; ++i) {
        const FStringIDAttribute& attribute = *attributes.getAttribute(i);
        const FStoredValue stored(attribute);
        if (stored.isStored() && !writeValue(attribute, stored, level))
            return false;
    }
    return true;
}

bool XmlArchiveWriter::writeValue(const FStringIDAttribute& attribute, const FStoredValue& stored, int32_t level) {
    switch (stored.kind) {
    case FAttributeValue::kLong:
        open(level, "int", attribute.getID()) << " value=\"" << attribute.getLong() << "\"/>";
        text.endLine();
        return true;
    case FAttributeValue::kFloat:
        open(level, "float", attribute.getID()) << " value=\"" << attribute.getFloat() << "\"/>";
        text.endLine();
        return true;
    case FAttributeValue::kString:
        writeString(attribute, level);
        return true;
    default:
        return writeForm(*stored.object, stored.form, attribute.getID(), level);
    }
}

void XmlArchiveWriter::writeString(const FStringIDAttribute& attribute, int32_t level) {
    const ConstString string = attribute.getText();
    open(level, "string", attribute.getID()) << " value=\"";
    if (!string.isWideString() && isAscii(units8(string))) {
        text.putPlain(units8(string)) << (attribute.isWide() ? "\" wide=\"true\"/>" : "\"/>");
    } else {
        text.putText(string) << "\" wide=\"true\"/>";
    }
    text.endLine();
}

bool XmlArchiveWriter::writeForm(CmObject& object, StoredForm form, const char* key, int32_t level) {
    switch (form) {
    case kStoredObject:
        if (seen.add(&object))
            return writeObject(object, key, level);
        open(level, "obj", key) << " ID=\"" << idOf(object) << "\"/>";
        text.endLine();
        return true;
    case kStoredReference:
        open(level, "obj", key) << " ID=\"" << static_cast<FXmlObject&>(object).getID() << "\"/>";
        text.endLine();
        return true;
    case kStoredBag: {
        open(level, "member", key) << ">";
        text.endLine();
        const bool whole = writeAttributes(static_cast<FAttributes&>(object), level + 1);
        close(level, "member");
        return whole;
    }
    case kStoredBytes:
        open(level, "bin", key) << ">";
        text.endLine();
        writeBytes(object, level + 1);
        close(level, "bin");
        return true;
    default:
        break;
    }
    bool whole = true;
    switch (form) {
    case kStoredInts:
        openList(level, "int", key);
        writeItems(static_cast<FIntList&>(object).numbers, level + 1);
        break;
    case kStoredFloats:
        openList(level, "float", key);
        writeItems(static_cast<FFloatList&>(object).numbers, level + 1);
        break;
    case kStoredStrings:
        openList(level, "string", key);
        for (int32_t i = 0; i < static_cast<FStringList&>(object).total(); ++i) {
            open(level + 1, "item", nullptr) << " value=\"";
            text.putText(static_cast<FStringList&>(object).at(i)->getText()) << "\"/>";
            text.endLine();
        }
        break;
    case kStoredBags:
        openList(level, "list", key);
        whole = writeBags(static_cast<FSubList&>(object), level + 1);
        break;
    case kStoredObjects:
        openList(level, "obj", key);
        whole = writeObjects(static_cast<FObjectList&>(object), level + 1);
        break;
    default:
        return false;
    }
    close(level, "list");
    return whole;
}

bool XmlArchiveWriter::writeObject(CmObject& object, const char* key, int32_t level) {
    open(level, "obj", nullptr) << " class=\"";
    text.putPlain(persistentNameOf(object)) << "\"";
    putKey(key);
    text << " ID=\"" << idOf(object) << "\">";
    text.endLine();
    bool whole = true;
    if (const auto* instance = classCast<FXmlInstance>(&object)) {
        whole = !instance->getAttributes() || writeAttributes(*instance->getAttributes(), level + 1);
    } else {
        const OPtr<FAttributes> bag(new FAttributes);
        whole = storeObjectIn(*bag, object) && writeAttributes(*bag, level + 1);
    }
    close(level, "obj");
    return whole;
}

bool XmlArchiveWriter::writeObjects(const FObjectList& list, int32_t level) {
    for (int32_t i = 0; i < list.total(); ++i) {
        CmObject* object = list.at(i);
        const StoredForm form = formBehind(object);
        if (form == kStoredNothing)
            continue;
        if (form != kStoredReference && seen.add(object)) {
            if (!writeObject(*object, nullptr, level))
                return false;
            continue;
        }
        const uint64_t id = form == kStoredReference ? static_cast<FXmlObject*>(object)->getID() : idOf(*object);
        open(level, "item", nullptr) << " value=\"" << id << "\"/>";
        text.endLine();
    }
    return true;
}

bool XmlArchiveWriter::writeBags(const FSubList& list, int32_t level) {
    for (int32_t i = 0; i < list.total(); ++i) {
        open(level, "item", nullptr) << ">";
        text.endLine();
        if (!writeAttributes(*list.at(i), level + 1))
            return false;
        close(level, "item");
    }
    return true;
}

template <class Numbers>
void XmlArchiveWriter::writeItems(const Numbers& numbers, int32_t level) {
    for (const auto& number : numbers) {
        open(level, "item", nullptr) << " value=\"" << number << "\"/>";
        text.endLine();
    }
}

void XmlArchiveWriter::writeBytes(CmObject& object, int32_t level) {
    const void* bytes = nullptr;
    uint32_t size = 0;
    bytesOf(&object, bytes, size);
    for (uint32_t at = 0; at < size; at += std::min(kBytesPerLine, size - at)) {
        text.tabs(level);
        text.putHex(static_cast<const char*>(bytes) + at, std::min(kBytesPerLine, size - at));
        text.endLine();
    }
}

XmlText& XmlArchiveWriter::open(int32_t level, std::string_view element, const char* key) {
    text.indent(level);
    text << "<" << element;
    putKey(key);
    return text;
}

void XmlArchiveWriter::close(int32_t level, std::string_view element) {
    text.indent(level);
    text << "</" << element << ">";
    text.endLine();
}

void XmlArchiveWriter::openList(int32_t level, std::string_view type, const char* key) {
    open(level, "list", key) << " type=\"" << type << "\">";
    text.endLine();
}

void XmlArchiveWriter::putKey(const char* key) {
    if (!key)
        return;
    const std::string_view name(key);
    text << " name=\"";
    if (isAscii(name))
        text.putPlain(name);
    else
        text.putText(ConstString(key));
    text << "\"";
}
}  // namespace

// --- the archive

const FFileType FXmlArchive::fileTypeNormal(u"Tessarine XML File", u"xml", u"xml", 0x54455854);  // TEXT
const FFileType FXmlArchive::fileTypeBackup(u"Tessarine XML File (Backup)", u"xml.backup", u"xml.backup", 0x54455854);

FXmlArchive::FXmlArchive(FStream* stream, bool writing) : FAttributeArchiveBase(stream, writing) {}

bool FXmlArchive::save(const char* rootTag) {
    if (!writing || !rootTag)
        return false;
    FArchive::beforeSave();
    XmlArchiveWriter writer(*stream, rootTag);
    writer.begin();
    const bool all = writer.writeRoots(roots.getAttributeArray(), globalRoots.getAttributeArray());
    return writer.end() && all;
}

bool FXmlArchive::saveAttributes(const char* rootTag, const FAttributes& attributes) {
    if (!writing || !rootTag)
        return false;
    XmlArchiveWriter writer(*stream, rootTag);
    writer.begin();
    const bool all = writer.writeAttributes(attributes, 1);
    return writer.end() && all;
}

bool FXmlArchive::canSave(const FAttributes& attributes, int32_t depth) {
    FStreamCounter nowhere;
    return XmlArchiveWriter(nowhere, "", depth).writeAttributes(attributes, 0);
}

bool FXmlArchive::load(const char* rootTag, const char* className, bool withoutObjects) {
    if (writing || !rootTag)
        return false;
    FXmlArchiveParser parser(stream, rootTag);
    const bool parsed = parser.load(roots, globalRoots, className, withoutObjects);
    whole = parser.isWhole();
    return parsed;
}

bool FXmlArchive::loadAttributes(const char* rootTag, FAttributes& attributes) {
    if (writing || !rootTag)
        return false;
    FXmlArchiveParser parser(stream, rootTag);
    const OPtr<FAttributes> loaded(new FAttributes);
    const bool parsed = parser.loadAttributes(*loaded);
    whole = parser.isWhole();
    if (parsed)
        attributes.take(*loaded);
    return parsed;
}

}  // namespace Tessarine
