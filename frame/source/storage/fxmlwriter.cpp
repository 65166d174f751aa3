#include "storage/fxmlwriter.h"
#include "base/source/fstringconvert.h"
#include "collect/cmarray.h"
#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <malloc.h>
#include <memory>
#include <string>
#include <string_view>

namespace Tessarine {
namespace {
constexpr uint32_t kMaxUtf8PerUnit = 3;

constexpr bool kByName = true, kAsItIs = false;

struct EntityRow {
    const char* name;
    uint8_t win, mac;
    bool onOutput;
};
constexpr EntityRow kEntities8[] = {
    {"quot",   0x22, 0x22, kByName},
    {"amp",    0x26, 0x26, kByName},
    {"lt",     0x3C, 0x3C, kByName},
    {"gt",     0x3E, 0x3E, kByName},
    {"bsol",   0x5C, 0x5C, kAsItIs},
    {"apos",   0x27, 0x27, kAsItIs},
    {"excl",   0x21, 0x21, kAsItIs},
    {"num",    0x23, 0x23, kAsItIs},
    {"dollar", 0x24, 0x24, kByName},
    {"percnt", 0x25, 0x25, kAsItIs},
    {"lpar",   0x28, 0x28, kAsItIs},
    {"rpar",   0x29, 0x29, kAsItIs},
    {"ast",    0x2A, 0x2A, kAsItIs},
    {"plus",   0x2B, 0x2B, kAsItIs},
    {"comma",  0x2C, 0x2C, kAsItIs},
    {"hyphen", 0x2D, 0x2D, kAsItIs},
    {"period", 0x2E, 0x2E, kAsItIs},
    {"sol",    0x2F, 0x2F, kAsItIs},
    {"colon",  0x3A, 0x3A, kAsItIs},
    {"semi",   0x3B, 0x3B, kAsItIs},
    {"equals", 0x3D, 0x3D, kAsItIs},
    {"quest",  0x3F, 0x3F, kAsItIs},
    {"commat", 0x40, 0x40, kAsItIs},
    {"lsqb",   0x5B, 0x5B, kAsItIs},
    {"rsqb",   0x5D, 0x5D, kAsItIs},
    {"circ",   0x5E, 0x5E, kByName},
    {"horbar", 0x5F, 0x5F, kAsItIs},
    {"grave",  0x60, 0x60, kByName},
    {"lcub",   0x7B, 0x7B, kAsItIs},
    {"verbar", 0x7C, 0x7C, kAsItIs},
    {"rcub",   0x7D, 0x7D, kAsItIs},
    {"tilde",  0x7E, 0x7E, kAsItIs},
    {"nl",     0x0A, 0x0A, kByName},
    {"cr",     0x0D, 0x0D, kByName},
    {"nbsp",   0xA0, 0xFF, kByName},
    {"iexcl",  0xA1, 0xC1, kAsItIs},
    {"cent",   0xA2, 0xA2, kAsItIs},
    {"pound",  0xA3, 0xA3, kAsItIs},
    {"curren", 0xA4, 0xDB, kAsItIs},
    {"yen",    0xA5, 0xB4, kAsItIs},
    {"brvbar", 0xA6, 0xFF, kAsItIs},
    {"sect",   0xA7, 0xA4, kAsItIs},
    {"uml",    0xA8, 0xAC, kAsItIs},
    {"copy",   0xA9, 0xA9, kAsItIs},
    {"ordf",   0xAA, 0xBB, kAsItIs},
    {"laquo",  0xAB, 0xC7, kAsItIs},
    {"not",    0xAC, 0xC2, kAsItIs},
    {"reg",    0xAE, 0xA8, kAsItIs},
    {"macr",   0xAF, 0xF8, kAsItIs},
    {"deg",    0xB0, 0xA1, kAsItIs},
    {"plusmn", 0xB1, 0xB1, kAsItIs},
    {"sup2",   0xB2, 0xFF, kAsItIs},
    {"sup3",   0xB3, 0xFF, kAsItIs},
    {"acute",  0xB4, 0xAB, kAsItIs},
    {"micro",  0xB5, 0xB5, kAsItIs},
    {"para",   0xB6, 0xA6, kAsItIs},
    {"middot", 0xB7, 0xE1, kAsItIs},
    {"cedil",  0xB8, 0xFC, kAsItIs},
    {"sup1",   0xB9, 0xFF, kAsItIs},
    {"ordm",   0xBA, 0xBC, kAsItIs},
    {"raquo",  0xBB, 0xC8, kAsItIs},
    {"frac14", 0xBC, 0xFF, kAsItIs},
    {"frac12", 0xBD, 0xFF, kAsItIs},
    {"half",   0xBD, 0xFF, kAsItIs},
    {"frac34", 0xBE, 0xFF, kAsItIs},
    {"iquest", 0xBF, 0xC0, kAsItIs},
    {"iquest", 0xC0, 0xCB, kAsItIs},
    {"Agrave", 0xC1, 0xE7, kAsItIs},
    {"Aacute", 0xC2, 0xE5, kAsItIs},
    {"Atilde", 0xC3, 0xCC, kAsItIs},
    {"Auml",   0xC4, 0x80, kAsItIs},
    {"Aring",  0xC5, 0x81, kAsItIs},
    {"AElig",  0xC6, 0xAE, kAsItIs},
    {"Ccedil", 0xC7, 0x82, kAsItIs},
    {"Egrave", 0xC8, 0xE9, kAsItIs},
    {"Eacute", 0xC9, 0x83, kAsItIs},
    {"Ecirc",  0xCA, 0xE6, kAsItIs},
    {"Euml",   0xCB, 0xE8, kAsItIs},
    {"Igrave", 0xCC, 0xED, kAsItIs},
    {"Iacute", 0xCD, 0xEA, kAsItIs},
    {"Icirc",  0xCE, 0xEB, kAsItIs},
    {"Iuml",   0xCF, 0xEC, kAsItIs},
    {"ETH",    0xD0, 0xFF, kAsItIs},
    {"Ntilde", 0xD1, 0x84, kAsItIs},
    {"Ograve", 0xD2, 0xF1, kAsItIs},
    {"Oacute", 0xD3, 0xEE, kAsItIs},
    {"Ocirc",  0xD4, 0xEF, kAsItIs},
    {"Otilde", 0xD5, 0xCD, kAsItIs},
    {"Ouml",   0xD6, 0x85, kAsItIs},
    {"times",  0xD7, 0xFF, kAsItIs},
    {"Oslash", 0xD8, 0xAF, kAsItIs},
    {"Ugrave", 0xD9, 0xF4, kAsItIs},
    {"Uacute", 0xDA, 0xF2, kAsItIs},
    {"Ucirc",  0xDB, 0xF3, kAsItIs},
    {"Uuml",   0xDC, 0x86, kAsItIs},
    {"Yacute", 0xDD, 0xFF, kAsItIs},
    {"THORN",  0xDE, 0xFF, kAsItIs},
    {"szlig",  0xDF, 0xA7, kAsItIs},
    {"agrave", 0xE0, 0x88, kAsItIs},
    {"aacute", 0xE1, 0x87, kAsItIs},
    {"acirc",  0xE2, 0x89, kAsItIs},
    {"atilde", 0xE3, 0x8B, kAsItIs},
    {"auml",   0xE4, 0x8A, kAsItIs},
    {"aring",  0xE5, 0x8C, kAsItIs},
    {"aelig",  0xE6, 0xBE, kAsItIs},
    {"ccedil", 0xE7, 0x8D, kAsItIs},
    {"egrave", 0xE8, 0x8F, kAsItIs},
    {"eacute", 0xE9, 0x8E, kAsItIs},
    {"ecirc",  0xEA, 0x90, kAsItIs},
    {"euml",   0xEB, 0x91, kAsItIs},
    {"igrave", 0xEC, 0x93, kAsItIs},
    {"iacute", 0xED, 0x92, kAsItIs},
    {"icirc",  0xEE, 0x94, kAsItIs},
    {"iuml",   0xEF, 0x95, kAsItIs},
    {"eth",    0xF0, 0xFF, kAsItIs},
    {"ntilde", 0xF1, 0x96, kAsItIs},
    {"ograve", 0xF2, 0x98, kAsItIs},
    {"oacute", 0xF3, 0x97, kAsItIs},
    {"ocirc",  0xF4, 0x99, kAsItIs},
    {"otilde", 0xF5, 0x9B, kAsItIs},
    {"ouml",   0xF6, 0x9A, kAsItIs},
    {"divide", 0xF7, 0xD6, kAsItIs},
    {"oslash", 0xF8, 0xBF, kAsItIs},
    {"ugrave", 0xF9, 0x9D, kAsItIs},
    {"uacute", 0xFA, 0x9C, kAsItIs},
    {"ucirc",  0xFB, 0x9E, kAsItIs},
    {"uuml",   0xFC, 0x9F, kAsItIs},
    {"yacute", 0xFD, 0xFF, kAsItIs},
    {"thorn",  0xFE, 0xFF, kAsItIs},
    {"yuml",   0xFF, 0xD8, kAsItIs},
};
static_assert(std::size(kEntities8) == kNumEntities8, "both tables have a row for each");

constexpr std::array<XmlEntity8, kNumEntities8> tableOf(uint8_t EntityRow::*alphabet) {
    std::array<XmlEntity8, kNumEntities8> table{};
    std::ranges::transform(kEntities8, table.begin(), [alphabet](const EntityRow& row) {
        return XmlEntity8{row.*alphabet, row.name, row.onOutput};
    });
    return table;
}

using EncodeTable = std::array<const XmlEntity8*, 256>;

template <size_t Size>
constexpr EncodeTable encodeTableOf(const std::array<XmlEntity8, Size>& entities) {
    EncodeTable byByte{};
    for (const XmlEntity8& entity : entities)
        if (entity.onOutput && !byByte[entity.code])
            byByte[entity.code] = &entity;
    return byByte;
}
}  // namespace

constexpr std::array<XmlEntity8, 5> gUTF8EntityTable8 = {
    {
     {'&', "amp", kByName},
     {'<', "lt", kByName},
     {'>', "gt", kByName},
     {'\'', "apos", kAsItIs},
     {'"', "quot", kByName},
     }
};
constexpr std::array<XmlEntity16, 5> gEntityTable16 = {
    {
     {u'&', u"amp", kByName},
     {u'<', u"lt", kByName},
     {u'>', u"gt", kByName},
     {u'\'', u"apos", kAsItIs},
     {u'"', u"quot", kByName},
     }
};
constexpr std::array<XmlEntity8, kNumEntities8> gEntityTable8Win = tableOf(&EntityRow::win);
constexpr std::array<XmlEntity8, kNumEntities8> gEntityTable8Mac = tableOf(&EntityRow::mac);
constexpr EncodeTable gAsciiEncodeTable = encodeTableOf(gEntityTable8Mac);

namespace {
constexpr EncodeTable kMarkupEncodeTable = encodeTableOf(gUTF8EntityTable8);

constexpr const char* kLineEnd = "\r\n";
constexpr std::string_view kTrimmed = " \t\r\n\f\v";
constexpr uint32_t kPooledBytes = 32;  // the first block of a pooled text: most names and values fit

/** What a byte of 8-bit text may not be written as. */
using Stops = std::array<bool, 256>;

constexpr Stops stopsOf(const EncodeTable& byByte, bool numbers) {
    Stops stops{};
    for (size_t byte = 0; byte < stops.size(); ++byte)
        stops[byte] = byte == 0 || byByte[byte] || (numbers && byte >= 0x80);
    return stops;
}
constexpr Stops kMarkupStops = stopsOf(kMarkupEncodeTable, false);
constexpr Stops kAsciiStops = stopsOf(gAsciiEncodeTable, true);

constexpr uint32_t kLongestReference = 8;  // "&dollar;"

char* putText(char* out, std::string_view text) {
    return std::copy(text.begin(), text.end(), out);
}

/** By name where there is one, else by number. */
char* putReference(char* out, uint8_t byte, const XmlEntity8* entity) {
    out = putText(out, entity ? "&" : "&#x");
    out = entity ? putText(out, entity->name) : std::to_chars(out, out + 2, byte, 16).ptr;
    return putText(out, ";");
}

const XmlEntity16* entityOf(tchar unit) {
    const auto found = std::ranges::find(gEntityTable16, unit, &XmlEntity16::code);
    return found != gEntityTable16.end() && found->onOutput ? &*found : nullptr;
}

std::u16string withEntities(std::u16string_view text) {
    std::u16string escaped;
    for (const tchar unit : text) {
        if (const XmlEntity16* entity = entityOf(unit))
            escaped.append(u"&").append(entity->name).append(u";");
        else
            escaped += unit;
    }
    return escaped;
}

/** By the face that the identifier stands for. */
FUnknown* createXmlWriter() {
    IXmlWriter* face = new FXmlWriter(nullptr, FXmlWriter::kEncodeAttributes);
    return face;
}

MetaClass xmlWriterClass(nullptr, createXmlWriter, IXmlWriter::iid, nullptr);
}  // namespace

IMPLEMENT_CLASS(FXmlAttribute, CmObject)
IMPLEMENT_CLASS(FXmlWriter, CmObject)

bool appendUtf8(Buffer& target, const tchar* text, size_t length) {
    const uint32_t begin = target.getFillSize();
    const uint64_t room = uint64_t(kMaxUtf8PerUnit) * length;
    if (begin + room >= UINT32_MAX || !target.grow(uint32_t(begin + room + 1)))
        return false;
    const auto end = begin + uint32_t(encodeText({text, length}, target + begin, room, kCodePageUTF8));
    target.data()[end] = 0;
    return target.setFillSize(end);
}

template <class Text>
void XmlPooledText<Text>::setBytes(const char* bytes, uint32_t count) {
    const bool fits = !this->isWide && this->buffer && malloc_usable_size(this->buffer) > count;
    if (!fits && !this->resize(std::max(count, kPooledBytes), false))
        return;
    std::copy_n(bytes, count, this->buffer8);
    this->buffer8[count] = 0;
    this->len = count;
}
template class XmlPooledText<FString>;
template class XmlPooledText<CmString>;

FXmlWriter::FXmlWriter(FStream* target, int32_t flags) : stream(target), flags(flags) {
    tagStack._ownsObjects = CmContainer::kTakesOver;
}

int32_t FXmlWriter::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IXmlWriter>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

int32_t FXmlWriter::initialize(IBStream* target) {
    stream = classCast<FStream>(commonObject(target));
    return stream ? kResultOk : kInvalidArgument;
}

int32_t FXmlWriter::writeStartTag(const char* name, int32_t count, const char** names, const char** values,
                                  bool empty) {
    beginLine(tagStack.total());
    line.append("<");
    line.append(name ? name : "");
    for (int32_t i = 0; i < count; ++i)
        appendAttribute(names[i], values[i]);
    return finishStartTag(name, empty);
}

int32_t FXmlWriter::writeStartTag(const char* name, CmContainer& attributes, bool empty) {
    beginLine(tagStack.total());
    line.append("<");
    line.append(name ? name : "");
    const std::unique_ptr<CmIterator> each(attributes.newIterator());
    while (CmObject* object = each->next())
        if (auto* attribute = classCast<FXmlAttribute>(object))
            appendAttribute(attribute->name.text8(), attribute->value.text8());
    return finishStartTag(name, empty);
}

int32_t FXmlWriter::finishStartTag(const char* name, bool empty) {
    line.append(empty ? "/>" : ">");
    if (!empty)
        tagStack.push(new CmString(name));
    return endLine() ? kResultOk : kResultFalse;
}

void FXmlWriter::appendAttribute(const char* name, const char* value) {
    if (!value || !*value) {
        if ((flags & kOmitEmptyAttributes) != 0)
            return;
        value = "";
    }
    line.beginAttribute(name);
    if ((flags & kEncodeAttributes) != 0)
        encodeString(line, value, false);
    else
        line.append(value);
    line.append("\"");
}

int32_t FXmlWriter::writeEndTag(const char* name) {
    const auto* open = static_cast<CmString*>(tagStack.peek());
    if (!open || !name || std::strcmp(open->text8(), name) != 0)
        return kResultFalse;
    beginLine(tagStack.total() - 1);
    line.append("</");
    line.append(name);
    line.append(">");
    tagStack.pop()->release();  // name may be its text
    return endLine() ? kResultOk : kResultFalse;
}

int32_t FXmlWriter::writeData(void* data, uint32_t size) {
    if (!data || size == 0)
        return kResultFalse;
    bool written = true;
    for (std::string_view rest(static_cast<char*>(data)); !rest.empty();) {
        const size_t length = std::min(rest.find('\n'), rest.size());
        written = outputText(rest.substr(0, length), tagStack.total()) && written;
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return written ? kResultOk : kResultFalse;
}

int32_t FXmlWriter::writeComment(const char* text) {
    std::string_view trimmed(text ? text : "");
    trimmed.remove_prefix(std::min(trimmed.find_first_not_of(kTrimmed), trimmed.size()));
    trimmed = trimmed.substr(0, trimmed.find_last_not_of(kTrimmed) + 1);
    if (trimmed.empty())
        return kResultFalse;
    beginLine(tagStack.total());
    line.append("<!-- ");
    line.append(trimmed);
    line.append(" -->");
    return endLine() ? kResultOk : kResultFalse;
}

bool FXmlWriter::outputLine(const char* text, int32_t depth) {
    return outputText(text ? text : "", depth);
}

bool FXmlWriter::newLine() {
    beginLine(0);
    return endLine();
}

bool FXmlWriter::outputText(std::string_view text, int32_t depth) {
    if (text.empty())
        return true;
    beginLine(depth);
    line.append(text);
    return endLine();
}

void FXmlWriter::beginLine(int32_t depth) {
    line.setFillSize(0);
    const auto width = uint32_t(std::max(depth, 0));
    if (line.grow(width)) {
        std::fill_n(line.data(), width, '\t');
        line.setFillSize(width);
    }
}

bool FXmlWriter::endLine() {
    line.append(kLineEnd);
    return stream && stream->writeRaw(line.data(), line.getFillSize()) == line.getFillSize();
}

bool FXmlWriter::encodeString(Buffer& target, const tchar* text) {
    if (!text)
        return false;
    const std::u16string_view plain(text);
    if (std::ranges::none_of(plain, entityOf))
        return appendUtf8(target, text, plain.size());
    const std::u16string escaped = withEntities(plain);
    return appendUtf8(target, escaped.c_str(), escaped.size());
}

bool FXmlWriter::encodeString(Buffer& target, const char* text, bool utf8) {
    if (!text)
        return false;
    const EncodeTable& byByte = utf8 ? kMarkupEncodeTable : gAsciiEncodeTable;
    const Stops& stops = utf8 ? kMarkupStops : kAsciiStops;
    const uint32_t begin = target.getFillSize();
    for (;;) {
        if (target.getFree() < kLongestReference && !target.grow(target.getFillSize() + kLongestReference)) {
            target.setFillSize(begin);
            return false;
        }
        char* out = target + target.getFillSize();
        const char* limit = target + (target.getSize() - kLongestReference);
        for (; out <= limit; ++text) {
            const auto byte = uint8_t(*text);
            if (!stops[byte])
                *out++ = char(byte);
            else if (byte)
                out = putReference(out, byte, byByte[byte]);
            else
                break;
        }
        target.setFillSize(uint32_t(out - target.data()));
        if (out <= limit)
            return true;
    }
}

}  // namespace Tessarine
