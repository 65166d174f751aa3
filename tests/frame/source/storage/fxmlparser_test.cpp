#include "storage/fxmlparser.h"
#include "archiveprobes.h"
#include "base/source/classfactory.h"
#include <functional>

namespace Tessarine {
namespace {

/** Writes down what it hears, and does what a test wants at a start tag. */
class Reader : public FXmlParser {
public:
    Reader(const std::string& text, bool buffered, int32_t wanted = 0)
        : FXmlParser(nullptr, buffered), memory(streamOf(text)) {
        setStream(memory);
        options = wanted;
    }
    ~Reader() override { setStream(nullptr); }
    bool startTag(const char* name, CmContainer& attributes, bool empty, void* userData) override {
        heard.append("<").append(name);
        for (int32_t i = 0; i < attributes.total(); ++i) {
            const auto* each = static_cast<FXmlAttribute*>(attributes.at(i));
            heard.append(" ").append(each->name.text8()).append("=");
            heard += each->value.isWideString() ? "wide" : each->value.text8();
        }
        heard += empty ? "/>" : userData ? "^>" : ">";
        return !onStart || onStart(name);
    }
    bool endTag(const char* name, void*) override {
        heard.append("</").append(name).append(">");
        return true;
    }
    void gotData(void* data, uint32_t size, void*) override {
        heard.append("[").append(static_cast<char*>(data), size).append("]");
    }
    void gotComment(const char* text, void*, bool last) override {
        heard.append("{").append(text).append(last ? "}" : "+}");
    }
    std::string error() const { return errorCode ? std::string(1, '!').append(std::to_string(errorCode)) : ""; }
    using FXmlParser::errorCode;
    using FXmlParser::stopped;
    using FXmlParser::tagStack;

    std::string heard;
    std::function<bool(const std::string&)> onStart;
    const OPtr<FMemoryStream> memory;
};

std::string read(const std::string& text, int32_t options, bool buffered) {
    Reader reader(text, buffered, options);
    const bool succeeded = reader.process(nullptr);
    EXPECT_EQ(succeeded, reader.error().empty());
    return reader.heard + reader.error() + (reader.tagStack.isEmpty() ? "" : " open");
}

const std::tuple<const char*, int32_t, const char*> kReadings[] = {
    {"",                                                              0,                                                             ""                                      },
    {"\r\n <a x='1'\ty = \"2\"\n/>",                                  0,                                                             "<a x=1 y=2/>"                          },
    {"<a>x<b>y</b>z</a>",                                             0,                                                             "<a>[x<b>y</b>z][]</a>"                 },
    {"<a></ab>",                                                      0,                                                             "<a></a>"                               },
    {"<a></b>",                                                       0,                                                             "<a>!1"                                 },
    {"<a><b>",                                                        0,                                                             "<a><b> open"                           }, // a cut between tags isn't seen
    {"<a>x",                                                          0,                                                             "<a>[x]!3 open"                         },
    {"<a b=\"",                                                       0,                                                             "!1"                                    },
    {"<a",                                                            0,                                                             "!1"                                    },
    {"x<a/>",                                                         0,                                                             "[x][]<a/>"                             },
    {"x<1<a/>",                                                       0,                                                             "[x][<1][]<a/>"                         },
    {"<a>1 < 2</x></a>",                                              0,                                                             "<a>[1 < 2</x>][]</a>"                  },
    {"<a<b>x</a</a<b>",                                               0,                                                             "<a<b>[x</a][]</a<b>"                   },
    {"<?xml version=\"1.0\" encoding='utf-8'?>\n<a/>",                0,                                                             "<a/>"                                  },
    {"<?xml\n?>",                                                     0,                                                             "!1"                                    },
    {"<!DOCTYPE a [<!ENTITY b \"]>\"> >] '>'><a/>",                   0,                                                             "<a/>"                                  },
    {"<!DOCTYPE a",                                                   0,                                                             "!3"                                    },
    {"<a><![CDATA[ x]]]></a>",                                        0,                                                             "<a></a>"                               },
    {"<a><![CDATA[",                                                  0,                                                             "<a>!3 open"                            },
    {"<!-- a-b <!-- c --> d --><a/>",                                 0,                                                             "<a/>"                                  },
    {"<!-- a-b < <!-- c --> d --><a/>",                               FXmlParser::kParseComments,                                    "{ ab   c  d }<a/>"                     },
    {"<!--a<!--b-->",                                                 FXmlParser::kParseComments | FXmlParser::kSplitNestedComments, "{a}{b}"                                },
    {"<!--!<!x<!-y->-- >--->",                                        FXmlParser::kParseComments,                                    "{!!x!y> >}"                            },
    {"<!----><a/>",                                                   FXmlParser::kParseComments,                                    "<a/>"                                  },
    {"<a>\n <b/></a>",                                                FXmlParser::kKeepSpaces,                                       "<a>[ <b/>][]</a>"                      },
    {"<a b=\"c\\\"d\"/>",                                             FXmlParser::kBackslashEscape,                                  "<a b=c\\\"d/>"                         },
    {"<a></a><b>",                                                    FXmlParser::kStopAfterMainTag,                                 "<a></a>"                               },
    {"<a b='&foo;&#65;&#x41;&amp;lt;&Acirc;&#x20AC;&eacute;&&#0;'/>", 0,                                                             "<a b=&foo;AA&lt;&Acirc;\xAC\x8E&&#0;/>"},
    {"<a b='&nbsp;&eacute;&iquest;&#xg;&lt'/>",                       FXmlParser::kWindowsEntities,                                  "<a b=\xA0\xE9\xBF&#xg;&lt/>"           },
    {"<a b='x' c='\x8E' d='&#142;'/>",                                FXmlParser::kWidenAttributes,                                  "<a b=x c=wide d=wide/>"                },
};

TEST(FXmlParser, TakesThisFor) {
    for (const auto& [text, options, heard] : kReadings)
        for (const bool buffered : {true, false}) {
            SCOPED_TRACE(std::string(text) + (buffered ? ", buffered" : ""));
            EXPECT_EQ(read(text, options, buffered), heard);
        }
}

TEST(FXmlParser, ReadsTheSameWhereverABufferEnds) {
    const std::string text =
        "<?xml version='1.0'?>\r\n<!-- c<!-- d --> -->\r\n<root a=\"1\" longer = '&lt;2&gt;'>\n\t<b c=\"3\"/> "
        "text </roo <i>x</i>\r\n</root>";
    const std::string plain = read(text, FXmlParser::kParseComments, true);
    ASSERT_NE(plain.find("[text </roo <i>x</i>\r\n][]</root>"), std::string::npos);
    for (size_t blanks = 2048 - text.size(); blanks <= 2048; ++blanks)
        ASSERT_EQ(read(std::string(blanks, ' ') + text, FXmlParser::kParseComments, true), plain) << blanks;
    for (size_t length = 0; length < text.size(); ++length)  // and wherever the text ends
        EXPECT_EQ(read(text.substr(0, length), 0, true), read(text.substr(0, length), 0, false)) << length;
}

TEST(FXmlParser, TellsTextInPieces) {
    const std::string full(4096, 'x'), most(4095, 'x'), almost(4094, 'x'), tagged(4092, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {most,                  "[" + most + "][]"              },
        {full,                  "[" + full + "][]"              },
        {full + "y",            "[" + full + "][y][]"           },
        {full + full,           "[" + full + "][" + full + "][]"},
        {tagged + "<b/>y<c/>",  "[" + tagged + "<b/>][y][]<c/>" }, // a tag is text in the first only
        {"<!--" + most + "-->", "{" + almost + "+}{x}"          },
    };
    for (const auto& [text, heard] : rows)
        for (const bool buffered : {true, false})
            EXPECT_EQ(read("<a>" + text + "</a>", FXmlParser::kParseComments, buffered), "<a>" + heard + "</a>");
}

TEST(FXmlParser, LimitsWhatAnAttributeHoldsAndEndsAtANul) {
    using namespace std::string_literals;
    const std::string longest(4095, 'n'), name(47, 'n'), value(2047, 'v');
    const std::pair<std::string, std::string> rows[] = {
        {"<a " + name + "='" + value + "'/>", "<a " + name + "=" + value + "/>"},
        {"<a " + name + "n='1'/>",            "!1"                             },
        {"<a n='" + value + "v'/>",           "!1"                             },
        {"<" + longest + "/>",                "<" + longest + "/>"             },
        {"<" + longest + "n/>",               "!1"                             },
        {"<a>\r\0<b/>"s,                      "<a> open"                       },
        {"<a>x\0</a>"s,                       "<a>[x]!3 open"                  },
        {"<a \0/>"s,                          "!1"                             },
        {"<a b='\0'/>"s,                      "!1"                             },
        {"<a\0/>"s,                           "!1"                             },
    };
    for (const auto& [text, heard] : rows)
        for (const bool buffered : {true, false})
            EXPECT_EQ(read(text, 0, buffered), heard);
}

TEST(FXmlParser, AnElementIsReadWhereItBeginsOrSkipped) {
    const std::string text = "<root><b><c/>t</b><s><c>t</c></s></root><d>";
    Reader reader(text, true);
    reader.onStart = [&](const std::string& name) {
        reader.getCurrentStartTag().text16();  // makes it wide in place; it still ends where it should
        const bool whole = name == "b" ? reader.process(&reader) : name == "s" ? reader.skip() : true;
        reader.heard += name == "b" || name == "s" ? "|" : "";
        return whole;
    };
    EXPECT_TRUE(reader.process(nullptr));
    EXPECT_EQ(reader.heard, "<root><b><c/>[t][]</b>|<s><c>|</root><d>");
    Reader strict("<a><b><c ></d></b></a>", true);
    strict.onStart = [&](const std::string& name) {
        if (name == "b")
            strict.process(nullptr);  // its failure reaches the outer one whatever we say
        return true;
    };
    EXPECT_FALSE(strict.process(nullptr));
    EXPECT_EQ(strict.error(), "!1");
}

TEST(FXmlParser, HandlersEndTheReading) {
    Reader refused("<a/>\n<b/>", true), own("<a/>", true), stopping("<a/><b/>", true);
    refused.onStart = [&](const std::string& name) { return name == "a"; };
    own.onStart = [&](const std::string&) { return !(own.errorCode = FXmlParser::kErrorUnexpectedTag); };
    stopping.onStart = [&](const std::string&) { return stopping.stopped = true; };
    EXPECT_FALSE(refused.process(nullptr) || own.process(nullptr));
    FString line;
    refused.getErrorContext(line);
    EXPECT_STREQ(line.text8(), "Line 2");
    EXPECT_EQ(std::u16string(refused.errorMessage()), u"Unexpected tag or invalid attributes!");
    EXPECT_EQ(own.error(), "!5");
    EXPECT_TRUE(stopping.process(nullptr));
    EXPECT_EQ(stopping.heard, "<a/>");
}

TEST(FXmlParser, CallsInsideOneAnotherHaveALimit) {
    for (const int32_t levels : {256, 257}) {
        std::string text;
        for (int32_t i = 0; i < levels; ++i)
            text += "<a>";
        Reader reader(text, true);
        reader.onStart = [&](const std::string&) { return reader.process(nullptr); };
        EXPECT_EQ(reader.process(nullptr), levels == 256);
    }
}

/** A component's view of the parser. */
struct Definition final : IXmlParserDef {
    bool startTag(IXmlParser*, const char* name, int32_t count, const char** names, const char** values, bool,
                  void*) override {
        heard += std::string("<") + name + (count > 0 ? std::string(" ") + names[0] + "=" + values[0] : "") + ">";
        return true;
    }
    bool endTag(IXmlParser*, const char* name, void*) override { return heard += std::string("</") + name + ">", true; }
    void gotData(IXmlParser*, void* data, uint32_t size, void*) override {
        heard.append(static_cast<char*>(data), size);
    }

    std::string heard;
};

TEST(FPlugXmlParser, IsMadeByIdentifierAndLeavesTheRestInTheStream) {
    char text[] = "<a b=\"1\">t</a>rest";
    FMemoryStream stream(text, sizeof text - 1);
    FUnknown* made = ClassFactory::instance(false)->createObjectByID(IXmlParser2::iid);
    const OPtr<IXmlParser2> parser(static_cast<IXmlParser2*>(made));
    ASSERT_TRUE(parser);
    Definition definition;
    EXPECT_EQ(parser->process(nullptr), 5);
    EXPECT_EQ(parser->initialize(nullptr, &definition), 2);
    EXPECT_EQ(parser->initialize(&stream, &definition), 0);
    EXPECT_EQ(parser->initialize(&stream, &definition), 1);
    EXPECT_EQ(parser->stopAfterMainTag(), 0);
    EXPECT_EQ(parser->process(nullptr), 0);
    EXPECT_EQ(definition.heard, "<a b=1>t</a>");
    EXPECT_EQ(parser->repositionStream(), 0);
    EXPECT_EQ(stream.tell(), 14);
}

TEST(FPlugXmlParser, RefusesThe51stAttribute) {
    std::string text = "<a";
    for (int32_t count = 1; count <= 51; ++count) {
        text += " n='v'";
        const OPtr<FMemoryStream> stream = streamOf(text + "/>");
        Definition definition;
        const OPtr<FPlugXmlParser> parser(new FPlugXmlParser);
        parser->initialize(stream, &definition);
        EXPECT_EQ(parser->process(nullptr), count <= 50 ? 0 : 1);
    }
}

constexpr std::tuple<const char*, int32_t, const char*> kFormats[] = {
    {" \ta\r\n\t b \n\r\nc",                0, "a\nb \n\nc"                       },
    {"a\r\rb",                              1, "a  b"                             },
    {"&lt;&amp b&eacute;&#65;&#x42&foo;",   0, "&lt;&amp b&eacute;&#65;&#x42&foo;"},
    {"&lt;&amp b&eacute;&#65;&#x42 &foo;&", 2,
     "<& b\x8E"
     "AB &foo;&"                                                                  },
    {"&#000000065;&#0000000065;",           2, "A&#0000000065;"                   },
};

TEST(FXmlTextFormat, MakesTextReadyToShow) {
    for (const auto& [text, flags, shown] : kFormats) {
        SCOPED_TRACE(text);
        FXmlTextFormat<64> format(flags);
        const int32_t size = format.format(text, int32_t(std::strlen(text)));
        EXPECT_EQ(std::string(format.text, size_t(size)), shown);
    }
}

}  // namespace
}  // namespace Tessarine
