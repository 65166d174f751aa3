#include "storage/fxmlparser2.h"
#include "archiveprobes.h"
#include "collect/cmstring.h"
#include "pluginterfaces/base/istringresult.h"
#include "tests/support/uncounted.h"
#include <algorithm>
#include <functional>
#include <limits>

namespace Tessarine {
namespace {

/** Writes down what it hears, and does what a test wants at a start tag. */
class Listener : public FObject, public INewXmlHandler {
public:
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<INewXmlHandler>(this, iid, obj) ? int32_t(kResultOk) : FObject::queryInterface(iid, obj);
    }
    void startTag(INewXmlParser* parser, const char* name, const char** attributes) override {
        heard += std::string("<") + name;
        for (; *attributes; attributes += 2)
            heard += std::string(" ") + attributes[0] + "=" + attributes[1];
        heard += ">";
        if (onStart)
            onStart(parser, name);
    }
    void endTag(INewXmlParser*, const char* name) override { heard += std::string("</") + name + ">"; }
    void charData(INewXmlParser*, const char* data, int32_t length) override { heard.append(data, size_t(length)); }
    void comment(INewXmlParser*, const char* text) override { heard += std::string("{") + text + "}"; }
    FORWARD_REFCOUNT(FObject)

    std::string heard;
    std::function<void(INewXmlParser*, const std::string&)> onStart;
};

class TextResult : public FObject, public IStringResult {
public:
    int32_t queryInterface(const char* iid, void** obj) override { return FObject::queryInterface(iid, obj); }
    void setText(const char* newText) override { text = newText; }
    FORWARD_REFCOUNT(FObject)

    std::string text;
};

class XmlReading : public testing::Test {
protected:
    bool process(const std::string& text) {
        stream.setSize(0);
        stream.writeRaw(text.data(), int64_t(text.size()));
        stream.rewind();
        return parser.process(&stream);
    }
    std::string context() {
        TextResult result;
        return parser.getErrorContext(result) ? result.text : "no error";
    }

    FMemoryStream stream;
    Listener listener;
    FXmlParser2 parser{&listener, nullptr};
};

TEST_F(XmlReading, TellsInTheOrderOfTheDocument) {
    EXPECT_TRUE(
        process("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                "<a x=\"1\" y=\"&lt;&#228;\"><b/>t&amp;u<!-- c --></a>"));
    EXPECT_EQ(listener.heard, "<a x=1 y=<\xC3\xA4><b></b>t&u{ c }</a>");
    EXPECT_EQ(context(), "no error");
}

constexpr std::tuple<const char*, const char*, const char*> kFaults[] = {
    {"",                               "",               "Xml Error: no element found \r\nLine: 1"               },
    {"<a>\n<b/>\n<c",                  "<a>\n<b></b>\n", "Xml Error: unclosed token \r\nLine: 3"                 },
    {"<a>\n</b>",                      "<a>\n",          "Xml Error: mismatched tag \r\nLine: 2"                 },
    {"<a><b n=\"&dollar;\"/><c/></a>", "<a>",            "Xml Error: undefined entity \r\nLine: 1"               },
    {"<a>\xFF</a>",                    "<a>",            "Xml Error: not well-formed (invalid token) \r\nLine: 1"},
};

TEST_F(XmlReading, WhatCameBeforeAFaultStaysTold) {
    for (const auto& [text, heard, fault] : kFaults) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(process(text));
        EXPECT_EQ(listener.heard, heard);
        EXPECT_EQ(context(), fault);
        EXPECT_TRUE(parser.reset(nullptr));
        listener.heard.clear();
    }
    EXPECT_TRUE(parser.reset("iso-8859-1"));
    EXPECT_TRUE(process("<again x=\"\xE4\"/>"));
    EXPECT_EQ(listener.heard, "<again x=\xC3\xA4></again>");
}

TEST_F(XmlReading, EntitiesDontGrowWithoutEnd) {
    std::string text = "<!DOCTYPE a [<!ENTITY e0 \"0123456789\">", inner;
    for (int32_t i = 1; i < 9; ++i) {
        inner.clear();
        for (int32_t times = 0; times < 10; ++times)
            inner += "&e" + std::to_string(i - 1) + ";";
        text += "<!ENTITY e" + std::to_string(i) + " \"" + inner + "\">";
    }
    EXPECT_FALSE(process(text + "]><a>&e8;</a>"));
    EXPECT_LT(listener.heard.size(), 10u << 20);
}

TEST_F(XmlReading, GoesOverItsBlocksAndLeavesWhatFollowsInTheStream) {
    std::string text = "<all>";
    for (int32_t i = 0; i < 9000; ++i)
        text += "<row i=\"" + std::to_string(i) + "\"/>";
    text += "</all>  ";
    EXPECT_TRUE(process(text + "rest"));
    EXPECT_EQ(std::ranges::count(listener.heard, '='), 9000);
    EXPECT_EQ(stream.tell(), int64_t(text.size()));
}

TEST_F(XmlReading, GoesOnAfterAPauseAndStopsForGood) {
    listener.onStart = [&](INewXmlParser* source, const std::string& name) {
        EXPECT_TRUE(name == "c" ? source->stop() : source->suspend());
        EXPECT_FALSE(source->process(&stream) || source->resume(&stream) || source->reset(nullptr));
    };
    EXPECT_TRUE(process("<a>\n<b/><c/><d/></a>"));
    EXPECT_EQ(listener.heard, "<a>");
    EXPECT_FALSE(parser.setEncoding("utf-8"));
    EXPECT_TRUE(parser.resume(&stream));
    EXPECT_FALSE(parser.resume(&stream));
    EXPECT_EQ(listener.heard, "<a>\n<b></b><c></c>");
    EXPECT_EQ(context(), "Xml Error: parsing aborted \r\nLine: 1");
}

TEST_F(XmlReading, GoesOnAfterAPauseBehindTheLastPiece) {
    listener.onStart = [](INewXmlParser* source, const std::string& name) {
        if (name == "b")
            source->suspend();
    };
    const std::string cutByABlock(33000, 'x');  // what comes behind it may be held back until all was read
    EXPECT_TRUE(process("<a x=\"" + cutByABlock + "\"><b/><c/></a>"));
    EXPECT_TRUE(parser.resume(&stream));
    EXPECT_TRUE(listener.heard.ends_with("</b><c></c></a>"));
}

TEST_F(XmlReading, SharesItsHandlerWhichMayGoMeanwhile) {
    listener.onStart = [](INewXmlParser* source, const std::string&) { source->setHandler(nullptr); };
    EXPECT_EQ(referencesOf(&listener), 2u);
    EXPECT_TRUE(process("<a><b/></a>"));
    EXPECT_EQ(listener.heard, "<a>");
    EXPECT_EQ(referencesOf(&listener), 1u);
}

TEST(XmlAttributes, TheFirstOfANameCounts) {
    const char* pairs[] = {"id", "5", "ch", "8", "id", "6", nullptr};
    EXPECT_STREQ(XmlAttributeAccessor(pairs).lookupValue("id"), "5");
    EXPECT_EQ(XmlAttributeAccessor(pairs).lookupValue("5"), nullptr);
}

class XmlWriting : public testing::Test {
protected:
    FMemoryStream stream;
    XmlWriter2 writer{&stream};
};

TEST_F(XmlWriting, OneTagALineButNoneInsideText) {
    writer.setUseBlanks(true);
    EXPECT_TRUE(writer.writeIntro(false) && writer.writeStartTag("a", kXmlStartTagOpen));
    EXPECT_TRUE(writer.beginStartTag("b-C") && writer.appendAttribute8("str", "tty$"));
    EXPECT_EQ(stream.getSize(), 28);  // a line goes out when it is whole
    EXPECT_TRUE(writer.appendAttribute8("none", nullptr) && writer.appendIntAttribute("ch", -1) &&
                writer.appendUIntAttribute("most", std::numeric_limits<uint64_t>::max()) &&
                writer.appendFloatAttribute("tenth", 0.1) && writer.appendAttribute16("wide", u"\u00E4<"));
    EXPECT_TRUE(writer.finishStartTag(kXmlStartTagEmpty));
    EXPECT_TRUE(writer.writeComment8("8 & bits") && writer.writeComment16(u"16 \u00E4"));
    EXPECT_TRUE(writer.writeStartTag("b", kXmlStartTagOpen));
    writer.setNoLineBreaks(true);
    writer.writeString8("'t' & \xC3\xA4");
    writer.writeString16(u"<\u00E4>");
    writer.writeInt(std::numeric_limits<int64_t>::min());
    writer.writeFloat(-2.5);
    EXPECT_TRUE(writer.writeEndTag("b", true) && writer.writeEndTag("a", false));
    EXPECT_EQ(textOf(stream),
              "<?xml version=\"1.0\"?>\r\n"
              "<a>\r\n"
              "   <b-C str=\"tty&dollar;\" none=\"\" ch=\"-1\" most=\"18446744073709551615\""
              " tenth=\"0.1000000000000000055511151231257827021181583404541\" wide=\"\xC3\xA4&lt;\"/>\r\n"
              "<!-- 8 & bits -->\r\n"
              "<!-- 16 \xC3\xA4 -->\r\n"
              "   <b>\r\n"
              "'t' &amp; \xC3\xA4&lt;\xC3\xA4&gt;-9223372036854775808-2.5</b>\r\n"
              "</a>\r\n");
}

TEST(XmlWritingFails, WhenTheStreamTakesNoMore) {
    char memory[16];
    FMemoryStream stream(memory, sizeof memory);
    XmlWriter2 writer(&stream), nowhere(nullptr);
    EXPECT_TRUE(writer.writeStartTag("fits", kXmlStartTagOpen));
    EXPECT_FALSE(writer.writeStartTag("does not fit", kXmlStartTagOpen));
    EXPECT_FALSE(nowhere.writeIntro(true));
    EXPECT_FALSE(writer.writeString8(nullptr));
}

}  // namespace
}  // namespace Tessarine
