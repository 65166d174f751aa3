// Reading and writing XML that is mostly attributes, 50 KB and 5 MB. An item is a kilobyte of text, so that a time of 1000 ns
// stands for 1 GB/s. Readers go from memory and look at each name and value; writers go to memory.
#include "storage/fmstream.h"
#include "storage/fxmlparser.h"
#include "storage/fxmlparser2.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <charconv>
#include <cstring>
#include <expat.h>
#include <map>
#include <string>
#include <string_view>
#ifdef BENCH_LIBXML2
#include <libxml/parser.h>
#include <libxml/xmlwriter.h>
#endif
#ifdef BENCH_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef BENCH_QT
#include <QBuffer>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#endif

using namespace Tessarine;

namespace {
constexpr int32_t kPiece = 32768;  // what FXmlParser2 feeds at a time

struct Row {
    int32_t id;
    const char* name;
    const char* color;
    const char* label;
    int32_t gain;
};

Row rowOf(int32_t i) {
    static constexpr const char* kNames[] = {"Overhead left", "Overhead right", "Kick", "Snare top", "Bass DI"};
    static constexpr const char* kLabels[] = {"stage left", "stage right", "drum riser", "FOH & monitor"};
    return {i, kNames[i % 5], i % 2 ? "#ff8800" : "#2e5e3a", kLabels[i % 4], i % 97 - 48};
}

std::string makeText(int64_t size) {
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<channels>\r\n";
    for (int32_t i = 0; int64_t(text.size()) < size; ++i) {
        const Row row = rowOf(i);
        text += "\t<channel id=\"" + std::to_string(row.id) + "\" name=\"" + row.name + "\" color=\"" + row.color +
                "\" label=\"" + (i % 4 == 3 ? "FOH &amp; monitor" : row.label) + "\" gain=\"" +
                std::to_string(row.gain) + "\" mute=\"0\" link=\"true\"/>\r\n";
    }
    return text + "</channels>\r\n";
}

const std::string& textOf(const benchmark::State& state) {
    static std::map<int64_t, std::string> texts;
    std::string& text = texts[state.range(0)];
    if (text.empty())
        text = makeText(state.range(0) * 1000);
    return text;
}

/** What a reader saw, so that all have seen the same. */
struct Seen {
    void add(size_t name, size_t value) {
        ++attributes;
        bytes += name + value;
    }
    /** Not the bytes: one of them leaves references as they are. */
    bool operator==(const Seen& other) const { return tags == other.tags && attributes == other.attributes; }

    size_t tags = 0, attributes = 0, bytes = 0;
};

void lookAt(Seen& seen, const char** attributes) {
    ++seen.tags;
    for (; *attributes; attributes += 2)
        seen.add(std::strlen(attributes[0]), std::strlen(attributes[1]));
}

class LenientReader : public FXmlParser {
public:
    using FXmlParser::FXmlParser;
    bool startTag(const char*, CmContainer& attributes, bool, void*) override {
        ++seen.tags;
        for (CmObject* each : static_cast<CmArray&>(attributes)) {
            const auto* attribute = static_cast<FXmlAttribute*>(each);
            seen.add(attribute->name.length(), attribute->value.length());
        }
        return true;
    }

    Seen seen;
};

class Handler : public XmlHandler {
public:
    void startTag(INewXmlParser*, const char*, const char** attributes) override { lookAt(seen, attributes); }

    Seen seen;
};

struct Ours {
    static Seen read(const std::string& text) {
        FMemoryStream stream(const_cast<char*>(text.data()), int32_t(text.size()));
        LenientReader reader(&stream, true);
        reader.process(nullptr);
        return reader.seen;
    }
    static Seen readUtf8(const std::string& text) {
        FMemoryStream stream(const_cast<char*>(text.data()), int32_t(text.size()));
        Handler handler;
        FXmlParser2(&handler, nullptr).process(&stream);
        return handler.seen;
    }
    static int64_t write(int32_t rows) {
        static FMemoryStream stream;
        stream.reset();
        XmlWriter2 writer(&stream);
        writer.writeIntro(false);
        writer.writeStartTag("channels", kXmlStartTagOpen);
        for (int32_t i = 0; i < rows; ++i) {
            const Row row = rowOf(i);
            writer.beginStartTag("channel");
            writer.appendIntAttribute("id", row.id);
            writer.appendAttribute8("name", row.name);
            writer.appendAttribute8("color", row.color);
            writer.appendAttribute8("label", row.label);
            writer.appendIntAttribute("gain", row.gain);
            writer.appendAttribute8("mute", "0");
            writer.appendAttribute8("link", "true");
            writer.finishStartTag(kXmlStartTagEmpty);
        }
        writer.writeEndTag("channels", false);
        return stream.getSize();
    }
    static int64_t writeLenient(int32_t rows) {
        static FMemoryStream stream;
        stream.reset();
        FXmlWriter writer(&stream);
        const char* names[] = {"id", "name", "color", "label", "gain", "mute", "link"};
        writer.writeStartTag("channels", 0, nullptr, nullptr, false);
        for (int32_t i = 0; i < rows; ++i) {
            const Row row = rowOf(i);
            char id[16] = "", gain[16] = "";
            std::to_chars(id, std::end(id), row.id);
            std::to_chars(gain, std::end(gain), row.gain);
            const char* values[] = {id, row.name, row.color, row.label, gain, "0", "true"};
            writer.writeStartTag("channel", 7, names, values, true);
        }
        writer.writeEndTag("channels");
        return stream.getSize();
    }
};

struct Expat {
    static Seen read(const std::string& text) { return readUtf8(text); }
    static Seen readUtf8(const std::string& text) {
        Seen seen;
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &seen);
        XML_SetElementHandler(
            parser, [](void* user, const char*, const char** list) { lookAt(*static_cast<Seen*>(user), list); },
            [](void*, const char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
        XML_SetCommentHandler(parser, [](void*, const char*) {});
        for (size_t at = 0, count = 1; count > 0; at += count) {
            count = std::min<size_t>(text.size() - at, kPiece);
            std::memcpy(XML_GetBuffer(parser, kPiece), text.data() + at, count);
            XML_ParseBuffer(parser, int(count), count == 0);
        }
        XML_ParserFree(parser);
        return seen;
    }
};

#ifdef BENCH_LIBXML2
struct LibXml2 {
    static Seen read(const std::string& text) {
        Seen seen;
        xmlSAXHandler handler{};
        handler.initialized = XML_SAX2_MAGIC;
        handler.startElementNs = [](void* user, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**,
                                    int count, int, const xmlChar** list) {
            auto& into = *static_cast<Seen*>(user);
            ++into.tags;
            for (int i = 0; i < count; ++i, list += 5)
                into.add(std::strlen(reinterpret_cast<const char*>(list[0])), size_t(list[4] - list[3]));
        };
        handler.characters = [](void*, const xmlChar*, int) {};
        xmlSAXUserParseMemory(&handler, &seen, text.data(), int(text.size()));
        return seen;
    }
    static int64_t write(int32_t rows) {
        xmlBufferPtr buffer = xmlBufferCreate();
        xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer, 0);
        xmlTextWriterSetIndent(writer, 1);
        xmlTextWriterStartDocument(writer, nullptr, nullptr, nullptr);
        xmlTextWriterStartElement(writer, xml("channels"));
        for (int32_t i = 0; i < rows; ++i) {
            const Row row = rowOf(i);
            xmlTextWriterStartElement(writer, xml("channel"));
            xmlTextWriterWriteFormatAttribute(writer, xml("id"), "%d", row.id);
            xmlTextWriterWriteAttribute(writer, xml("name"), xml(row.name));
            xmlTextWriterWriteAttribute(writer, xml("color"), xml(row.color));
            xmlTextWriterWriteAttribute(writer, xml("label"), xml(row.label));
            xmlTextWriterWriteFormatAttribute(writer, xml("gain"), "%d", row.gain);
            xmlTextWriterWriteAttribute(writer, xml("mute"), xml("0"));
            xmlTextWriterWriteAttribute(writer, xml("link"), xml("true"));
            xmlTextWriterEndElement(writer);
        }
        xmlTextWriterEndElement(writer);
        xmlTextWriterEndDocument(writer);
        xmlFreeTextWriter(writer);
        const int64_t size = xmlBufferLength(buffer);
        xmlBufferFree(buffer);
        return size;
    }

private:
    static const xmlChar* xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
};
#endif

#ifdef BENCH_PUGIXML
/** It has no events: reading makes the tree and walks it, writing makes the tree and saves it. */
struct PugiXml {
    static Seen read(const std::string& text) {
        Seen seen;
        pugi::xml_document document;
        document.load_buffer(text.data(), text.size());
        lookAt(seen, document.first_child());
        for (const pugi::xml_node& each : document.first_child())
            lookAt(seen, each);
        return seen;
    }
    static int64_t write(int32_t rows) {
        pugi::xml_document document;
        pugi::xml_node root = document.append_child("channels");
        for (int32_t i = 0; i < rows; ++i) {
            const Row row = rowOf(i);
            pugi::xml_node node = root.append_child("channel");
            node.append_attribute("id") = row.id;
            node.append_attribute("name") = row.name;
            node.append_attribute("color") = row.color;
            node.append_attribute("label") = row.label;
            node.append_attribute("gain") = row.gain;
            node.append_attribute("mute") = "0";
            node.append_attribute("link") = "true";
        }
        struct Memory : pugi::xml_writer {
            void write(const void* data, size_t size) override { text.append(static_cast<const char*>(data), size); }
            std::string text;
        };
        static Memory memory;
        memory.text.clear();
        document.save(memory);
        return int64_t(memory.text.size());
    }

private:
    static void lookAt(Seen& seen, const pugi::xml_node& node) {
        ++seen.tags;
        for (const pugi::xml_attribute& each : node.attributes())
            seen.add(std::strlen(each.name()), std::strlen(each.value()));
    }
};
#endif

#ifdef BENCH_QT
struct Qt5 {
    static Seen read(const std::string& text) {
        Seen seen;
        QXmlStreamReader reader(QByteArray::fromRawData(text.data(), int(text.size())));
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement)
                continue;
            ++seen.tags;
            for (const QXmlStreamAttribute& each : reader.attributes())
                seen.add(size_t(each.name().size()), size_t(each.value().size()));
        }
        return seen;
    }
    static int64_t write(int32_t rows) {
        static QByteArray bytes;
        bytes.resize(0);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QXmlStreamWriter writer(&buffer);
        writer.setAutoFormatting(true);
        writer.writeStartDocument();
        writer.writeStartElement("channels");
        for (int32_t i = 0; i < rows; ++i) {
            const Row row = rowOf(i);
            writer.writeStartElement("channel");
            writer.writeAttribute("id", QString::number(row.id));
            writer.writeAttribute("name", row.name);
            writer.writeAttribute("color", row.color);
            writer.writeAttribute("label", row.label);
            writer.writeAttribute("gain", QString::number(row.gain));
            writer.writeAttribute("mute", "0");
            writer.writeAttribute("link", "true");
            writer.writeEndElement();
        }
        writer.writeEndElement();
        writer.writeEndDocument();
        return buffer.size();
    }
};
#endif

template <class Read>
void readAll(benchmark::State& state, Read read) {
    const std::string& text = textOf(state);
    if (read(text) != Expat::readUtf8(text))
        state.SkipWithError("not all was seen");
    for (auto _ : state)
        benchmark::DoNotOptimize(read(text));
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(text.size()) / 1000);
}

template <class Write>
void writeAll(benchmark::State& state, Write write) {
    const auto rows = int32_t(state.range(0) * 1000 / 125);
    int64_t bytes = 0;
    for (auto _ : state)
        bytes += write(rows);
    state.SetItemsProcessed(bytes / 1000);
}
}  // namespace

template <class Peer>
void XmlRead(benchmark::State& state) {
    readAll(state, Peer::read);
}

/** FXmlParser2 beside the expat under it, fed in the same pieces. */
template <class Peer>
void XmlReadUtf8(benchmark::State& state) {
    readAll(state, Peer::readUtf8);
}

template <class Peer>
void XmlWrite(benchmark::State& state) {
    writeAll(state, Peer::write);
}

void XmlWriteFromLists(benchmark::State& state) {
    writeAll(state, Ours::writeLenient);
}

#define BENCHMARK_SIZES(...) BENCHMARK_TEMPLATE(__VA_ARGS__)->Arg(50)->Arg(5000)
BENCHMARK_SIZES(XmlRead, Ours);
BENCHMARK_SIZES(XmlRead, Expat);
BENCHMARK_SIZES(XmlReadUtf8, Ours);
BENCHMARK_SIZES(XmlReadUtf8, Expat);
BENCHMARK_SIZES(XmlWrite, Ours);
BENCHMARK(XmlWriteFromLists)->Arg(50)->Arg(5000);
#ifdef BENCH_LIBXML2
BENCHMARK_SIZES(XmlRead, LibXml2);
BENCHMARK_SIZES(XmlWrite, LibXml2);
#endif
#ifdef BENCH_PUGIXML
BENCHMARK_SIZES(XmlRead, PugiXml);
BENCHMARK_SIZES(XmlWrite, PugiXml);
#endif
#ifdef BENCH_QT
BENCHMARK_SIZES(XmlRead, Qt5);
BENCHMARK_SIZES(XmlWrite, Qt5);
#endif
