#include "storage/xmldocument.h"
#include "archiveprobes.h"

namespace Tessarine::Xml {
namespace {
const std::string kIntro = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

bool load(Document& document, const std::string& text) {
    const OPtr<FMemoryStream> stream = streamOf(text);
    return document.load(stream);
}

std::string saved(const Document& document, bool reformat) {
    FMemoryStream stream;
    EXPECT_TRUE(document.save(&stream, reformat));
    return textOf(stream);
}

TEST(XmlDocument, IsWrittenAsItWasRead) {
    const std::string golden = goldenFile("xmldocument.xml");
    Document document;
    ASSERT_TRUE(load(document, golden));
    EXPECT_EQ(saved(document, false), golden);
    EXPECT_EQ(saved(document, true), golden);  // its lines are as we put them
}

constexpr std::tuple<const char*, const char*, const char*> kDocuments[] = {
    {"<!--before--><a x='1'> <b/><!-- c --></a><!--behind-->", "<a x=\"1\"> <b/><!-- c --><!--behind--></a>",
     "<a x=\"1\">\n\t<b/>\n\t<!-- c -->\n\t<!--behind-->\n</a>"                                                                               },
 // a blank between two entities is a piece of its own
    {"<a>&lt; &gt;</a>",                                       "<a>&lt; &gt;</a>",                              "<a>&lt;&gt;</a>"             },
    {"<a><b><c/></b></a>",                                     "<a><b><c/></b></a>",                            "<a>\n\t<b>\n\t\t<c/></b></a>"},
    {"<a><b/>t<c/>\n</a>",                                     "<a><b/>t<c/>\n</a>",                            "<a>\n\t<b/>t\n\t<c/>\n</a>"  },
    {"<a>\n<b/>t</a>",                                         "<a>\n<b/>t</a>",                                "<a>\n\t<b/>t</a>"            },
    {"<a x='&lt;&#228;&quot;'>&amp;&#228;</a>",                "<a x=\"&lt;\xC3\xA4&quot;\">&amp;\xC3\xA4</a>",
     "<a x=\"&lt;\xC3\xA4&quot;\">&amp;\xC3\xA4</a>"                                                                                          },
};

TEST(XmlDocument, LosesNothingAndIndentsLines) {
    for (const auto& [text, plain, reformatted] : kDocuments) {
        SCOPED_TRACE(text);
        Document document;
        ASSERT_TRUE(load(document, text));
        EXPECT_EQ(saved(document, false), kIntro + plain);
        for (int32_t round = 0; round < 2; ++round)
            EXPECT_EQ(saved(document, true), kIntro + reformatted);
    }
}

TEST(XmlDocument, IsEmptyAfterAFault) {
    Document document;
    ASSERT_TRUE(load(document, "<a/>"));
    for (const char* text : {"", "<a>", "<a></b>", "<a>&dollar;</a>"}) {
        EXPECT_FALSE(load(document, text)) << text;
        EXPECT_EQ(document.getRoot(), nullptr);
    }
    FMemoryStream nowhere;
    EXPECT_FALSE(document.save(&nowhere, false));
    char memory[45];
    FMemoryStream full(memory, sizeof memory);
    ASSERT_TRUE(load(document, "<long/>"));
    EXPECT_FALSE(document.save(&full, false));
}

std::string nested(int32_t depth) {
    std::string text, end;
    for (int32_t i = 0; i < depth; ++i) {
        text += "<a>";
        end += "</a>";
    }
    return text + "t" + end;
}

TEST(XmlDocument, RefusesDeepTextsAndWritesDeepTrees) {
    Document document;
    EXPECT_TRUE(load(document, nested(1000)));
    EXPECT_EQ(saved(document, false), kIntro + nested(1000));
    EXPECT_FALSE(load(document, nested(1001)));
    constexpr int32_t kDepth = 200000;
    Element* inner = new Element(u"a");
    Document deep(inner);
    for (int32_t i = 1; i < kDepth; ++i) {
        const OPtr<Element> child(new Element(u"a", inner));
        inner->addChild(child);
        inner = child;
    }
    const OPtr<ElementData> text(new ElementData);
    text->setData("t", 1);
    inner->addChild(text);
    EXPECT_EQ(saved(deep, false), kIntro + nested(kDepth));
}

TEST(XmlDocument, CanBeChanged) {
    Document document;
    ASSERT_TRUE(load(document, "<a x='1' X='2'> one <b/>\n two\xC3\xA4 </a>"));
    Element& root = *static_cast<Element*>(document.getRoot());
    String text;
    EXPECT_TRUE(root.getStringData(text));
    EXPECT_EQ(std::u16string(text.text16()), u"one  two\u00E4");
    EXPECT_TRUE(root.removeAttribute(root.getAttribute(u"X")));
    const IPtr<Node> b = root.children.at(1);
    EXPECT_TRUE(root.removeChild(b) && !root.removeChild(b) && root.insertChildAt(b, 0));
    while (root.children.total() > 1)
        root.removeChildAt(1);
    EXPECT_EQ(saved(document, false), kIntro + "<a x=\"1\"><b/></a>");
    load(document, "<c/>");  // who outlives the tree has no parent any longer
    EXPECT_EQ(static_cast<Element*>(b.get())->parent, nullptr);
}

}  // namespace
}  // namespace Tessarine::Xml
