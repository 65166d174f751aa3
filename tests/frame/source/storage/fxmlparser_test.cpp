#include "storage/fxmlparser.h"
#include "archiveprobes.h"
#include "base/source/classfactory.h"
#include <functional>
#include <vector>

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
        heard += std::string("<") + name;
        for (int32_t i = 0; i < attributes.total(); ++i) {
            const auto* each = static_cast<FXmlAttribute*>(attributes.at(i));
            heard += std::string(" ") + each->name.text8() + "=" +
                     (each->value.isWideString() ? "wide" : each->value.text8());
        }
        heard += empty ? "/>" : userData ? "^>" : ">";
        return !onStart || onStart(name);
    }
    bool endTag(const char* name, void*) override {
        heard += std::string("</") + name + ">";
        return true;
    }
    void gotData(void* data, uint32_t size, void*) override {
        heard.append("[").append(static_cast<char*>(data), size).append("]");
        sizes.push_back(size);
    }
    void gotComment(const char* text, void*, bool last) override {
        heard.append("{").append(text).append(last ? "}" : "+}");
    }
    std::string error() const { return errorCode ? std::string(1, '!').append(std::to_string(errorCode)) : ""; }
    using FXmlParser::encoding;
    using FXmlParser::errorCode;
    using FXmlParser::lineNumber;
    using FXmlParser::stopped;
    using FXmlParser::tagStack;

    std::string heard;
    std::vector<uint32_t> sizes;
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
    {"<a  1='2' \xE4='3'> 5</a>",                                     0,                                                             "<a 1=2 \xE4=3>[5][]</a>"               },
    {"<a>x<b>y</b>z</a>",                                             0,                                                             "<a>[x<b>y</b>z][]</a>"                 },
    {"<a> <b>y</b>z</a>",                                             0,                                                             "<a><b>[y][]</b>[z][]</a>"              },
    {"<a>x</ab>",                                                     0,                                                             "<a>[x][]</a>"                          },
    {"<a></ab>",                                                      0,                                                             "<a></a>"                               },
    {"<a></b>",                                                       0,                                                             "<a>!1"                                 },
    {"</a>",                                                          0,                                                             "!1"                                    },
    {"<a></a >",                                                      0,                                                             "<a>!1 open"                            },
    {"<a><b>",                                                        0,                                                             "<a><b> open"                           }, // a cut between tags isn't seen
    {"<a>x",                                                          0,                                                             "<a>[x]!3 open"                         },
    {"<a b=\"",                                                       0,                                                             "!1"                                    },
    {"<a b>",                                                         0,                                                             "!1"                                    },
    {"<a b=c>",                                                       0,                                                             "!1"                                    },
    {"<a / >",                                                        0,                                                             "!1"                                    },
    {"<a",                                                            0,                                                             "!1"                                    },
    {"x<a/>",                                                         0,                                                             "[x][]<a/>"                             },
    {"x<1<a/>",                                                       0,                                                             "[x][<1][]<a/>"                         },
    {"<a>1 < 2</x></a>",                                              0,                                                             "<a>[1 < 2</x>][]</a>"                  },
    {"<a<b>x</a</a<b>",                                               0,                                                             "<a<b>[x</a][]</a<b>"                   },
    {"<?xml version=\"1.0\" encoding='utf-8'?>\n<a/>",                0,                                                             "<a/>"                                  },
    {"<?xml\n?>",                                                     0,                                                             "!1"                                    },
    {"<?xml x?>",                                                     0,                                                             "!1"                                    },
    {"<!DOCTYPE a [<!ENTITY b \"]>\"> >] '>'><a/>",                   0,                                                             "<a/>"                                  },
    {"<!DOCTYPE a",                                                   0,                                                             "!3"                                    },
    {"<!x>",                                                          0,                                                             "!1"                                    },
    {"<a><![CDATA[ x]]]></a>",                                        0,                                                             "<a></a>"                               },
    {"<a><![CDATA[",                                                  0,                                                             "<a>!3 open"                            },
    {"<!-- a-b <!-- c --> d --><a/>",                                 0,                                                             "<a/>"                                  },
    {"<!-- a-b < <!-- c --> d --><a/>",                               FXmlParser::kParseComments,                                    "{ ab   c  d }<a/>"                     },
    {"<!--a<!--b-->",                                                 FXmlParser::kParseComments | FXmlParser::kSplitNestedComments, "{a}{b}"                                },
    {"<!--!<!x<!-y->-- >--->",                                        FXmlParser::kParseComments,                                    "{!!x!y> >}"                            },
    {"<!-- a --",                                                     FXmlParser::kParseComments,                                    "!3"                                    },
    {"<!----><a/>",                                                   FXmlParser::kParseComments,                                    "<a/>"                                  },
    {"<a>\n <b/></a>",                                                FXmlParser::kKeepSpaces,                                       "<a>[ <b/>][]</a>"                      },
    {"<a b=\"c\\\"d\"/>",                                             FXmlParser::kBackslashEscape,                                  "<a b=c\\\"d/>"                         },
    {"<a b=\"c\\\"/>",                                                0,                                                             "<a b=c\\/>"                            },
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
    const std::pair<size_t, std::vector<uint32_t>> rows[] = {
        {4095, {4095, 0}      },
        {4096, {4096, 0}      },
        {4097, {4096, 1, 0}   },
        {8192, {4096, 4096, 0}},
    };
    for (const auto& [length, pieces] : rows)
        for (const bool buffered : {true, false}) {
            SCOPED_TRACE(length);
            Reader reader("<a>" + std::string(length, 'x') + "</a>", buffered);
            EXPECT_TRUE(reader.process(nullptr));
            EXPECT_EQ(reader.sizes, pieces);
        }
    // an inner tag is text in the first piece only
    Reader reader("<a>" + std::string(4092, 'x') + "<b/>y<c/></a>", true);
    EXPECT_TRUE(reader.process(nullptr));
    EXPECT_EQ(reader.sizes, (std::vector<uint32_t>{4096, 1, 0}));
    EXPECT_EQ(reader.heard.substr(reader.heard.find("[y]")), "[y][]<c/></a>");
    Reader comment("<!--" + std::string(4095, 'x') + "-->", true, FXmlParser::kParseComments);
    EXPECT_TRUE(comment.process(nullptr));
    EXPECT_EQ(comment.heard, std::string("{").append(4094, 'x') + "+}{x}");
}

TEST(FXmlParser, LimitsWhatAnAttributeHolds) {
    const auto tag = [](size_t name, size_t value) {
        return "<a " + std::string(name, 'n') + "=\"" + std::string(value, 'v') + "\"/>";
    };
    for (const bool buffered : {true, false}) {
        EXPECT_NE(read(tag(47, 2047), 0, buffered).find("vv/>"), std::string::npos);
        EXPECT_EQ(read(tag(48, 1), 0, buffered), "!1");
        EXPECT_EQ(read(tag(1, 2048), 0, buffered), "!1");
        std::string longest("<");
        longest.append(4095, 'n');
        EXPECT_EQ(read(longest + "/>", 0, buffered).size(), 4098u);
        EXPECT_EQ(read(longest + "n/>", 0, buffered), "!1");
    }
}

TEST(FXmlParser, ANulIsTheEnd) {
    using namespace std::string_literals;
    for (const bool buffered : {true, false}) {
        EXPECT_EQ(read("<a>\r\0<b/>"s, 0, buffered), "<a> open");
        EXPECT_EQ(read("<a>x\0</a>"s, 0, buffered), "<a>[x]!3 open");
        EXPECT_EQ(read("<a \0/>"s, 0, buffered), "!1");
        EXPECT_EQ(read("<a b='\0'/>"s, 0, buffered), "!1");
        EXPECT_EQ(read("<a\0/>"s, 0, buffered), "!1");
    }
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
    own.onStart = [&](const std::string&) {
        own.errorCode = FXmlParser::kErrorUnexpectedTag;
        return false;
    };
    stopping.onStart = [&](const std::string&) { return stopping.stopped = true; };
    EXPECT_FALSE(refused.process(nullptr));
    FString line;
    refused.getErrorContext(line);
    EXPECT_STREQ(line.text8(), "Line 2");
    EXPECT_EQ(std::u16string(refused.errorMessage()), u"Unexpected tag or invalid attributes!");
    EXPECT_FALSE(own.process(nullptr));
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

TEST(FXmlParser, CountsTheLinesBetweenTags) {
    for (const bool buffered : {true, false}) {
        Reader reader("\r\n\n\r\r\n\n<!-- \r\n\n -->\n<![CDATA[.\n]]><a b='\n'>x\n</a>", buffered);
        EXPECT_TRUE(reader.process(nullptr));
        EXPECT_EQ(reader.lineNumber, 8);
    }
}

TEST(FXmlParser, KnowsTheDeclaredEncodingOnlyInThisSpelling) {
    for (const char* name : {"utf-8", "UTF-8", "utf8"}) {
        Reader reader("<?xml encoding=\"" + std::string(name) + "\"?>", true);
        EXPECT_TRUE(reader.process(nullptr));
        EXPECT_EQ(reader.encoding, name == std::string("utf-8") ? 65001u : 0u);
    }
}

TEST(FXmlParser, GoesBackOverTheEdgeOfItsBuffer) {
    for (const bool buffered : {true, false}) {
        Reader reader("abc", buffered);
        EXPECT_EQ(reader.nextChar(), 'a');
        EXPECT_EQ(reader.getStreamPosition(), 1);
        EXPECT_EQ(reader.peekChar(), 'b');
        reader.ungetChar('?');
        reader.ungetChar(0);
        for (const char expected : {'a', 'b', 'c', '\0'})
            EXPECT_EQ(reader.nextChar(), expected);
        reader.ungetChar('?');
        EXPECT_EQ(reader.nextChar(), 'c');
    }
}

/** A component's view of the parser. */
struct Definition final : IXmlParserDef {
    bool startTag(IXmlParser* parser, const char* name, int32_t count, const char** names, const char** values, bool,
                  void*) override {
        heard += std::string("<") + name + (count > 0 ? std::string(" ") + names[0] + "=" + values[0] : "") + ">";
        return name[0] != 's' || parser->stop(IXmlParser::kStopAsMalformed) != IXmlParser::kDone;
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
    for (const int32_t count : {50, 51}) {
        std::string text = "<a";
        for (int32_t i = 0; i < count; ++i)
            text += " n='v'";
        text += "/>";
        const OPtr<FMemoryStream> stream = streamOf(text);
        Definition definition;
        const OPtr<FPlugXmlParser> parser(new FPlugXmlParser);
        parser->initialize(stream, &definition);
        EXPECT_EQ(parser->process(nullptr), count == 50 ? 0 : 1);
        EXPECT_EQ(std::u16string(parser->errorMessage()), count == 50 ? u"" : u"Unexpected tag or invalid attributes!");
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
