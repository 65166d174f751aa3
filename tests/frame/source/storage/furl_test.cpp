#include "storage/furl.h"
#include "base/fcompiledinclass.h"
#include "storage/fpersistent.h"
#include "storage/furlhandler.h"
#include "tests/support/testfolder.h"
#include <fstream>
#include <gtest/gtest.h>

namespace Tessarine {
namespace {
std::u16string wide(const ConstString& text) {
    return std::u16string(FString(text).text16());
}

std::u16string textOf(const FUrl& url) {
    FString text;
    url.getUrl(text);
    return wide(text);
}

TEST(FUrl, SplitsAndPrints) {
    struct Row {
        const char16_t *text, *parts;
        const char16_t* printed;  // null: as it came
    };
    const Row rows[] = {
        {u"http://a.b/c/d.txt",     u"http|a.b|80|||c/d.txt",    nullptr              },
        {u"https://a.b:443/c",      u"https|a.b|443|||c",        u"https://a.b/c"     },
        {u"HTTP://a.b:/c",          u"HTTP|a.b|80|||c",          u"HTTP://a.b/c"      },
        {u"http://u:p@ss@h:1/",     u"http|h|1|u|p@ss|",         nullptr              },
        {u"http://:p:q@h/",         u"http|h|80||p:q|",          nullptr              },
        {u"http://h",               u"http|h|80|||",             u"http://h/"         },
        {u"http://[::1]:81/x",      u"http|[::1]|81|||x",        nullptr              },
        {u"srf://0123/in/skin.xml", u"srf|0123|0|||in/skin.xml", nullptr              },
        {u"file:///home/x/",        u"file||0|||home/x/",        nullptr              },
        {u"/home/x",                u"file||0|||home/x",         u"file:///home/x"    },
        {u"home/x@y:z",             u"file||0|||home/x@y:z",     u"file:///home/x@y:z"},
        {u"a://b//c://d",           u"a|b|0|||/c://d",           nullptr              },
        {u"://",                    u"||0|||",                   u":///"              },
        {u"",                       u"file||0|||",               u"file:///"          },
    };
    for (const auto& [text, parts, printed] : rows) {
        FUrl url, restored;
        FAttributes bag;
        ASSERT_TRUE(url.setUrl(text));
        FString found(url.getProtocol()), port;
        for (const FString& part : {url.getHost(), FString(port.printf("%d", url.getPort())), url.getUser(),
                                    url.getPassword(), url.getFile()})
            (found += u"|") += part;
        EXPECT_EQ(wide(found), parts);
        EXPECT_EQ(textOf(url), printed ? printed : text);
        ASSERT_TRUE(url.storeAttributes(bag) && restored.restoreAttributes(bag));
        EXPECT_TRUE(restored == url);
    }
}

TEST(FUrl, RefusesPortsThatAreNone) {
    for (const char16_t* text :
         {u"http://h:65536/", u"http://h:-1/", u"http://h:8x/", u"http://h:\u0131/", u"http://h:1:2/"}) {
        FUrl url(u"http://old/x");
        EXPECT_FALSE(url.setUrl(text));
        EXPECT_EQ(textOf(url), u"http://old/x");
    }
}

TEST(FUrl, IsRestoredFromBagsThatLackParts) {
    FAttributes bag;
    FUrl url;
    EXPECT_FALSE(url.restoreAttributes(bag));
    ASSERT_TRUE(bag.set("Protocol", FString(u"http")) && bag.set("File", FString(u"x")));
    EXPECT_TRUE(url.restoreAttributes(bag));
    EXPECT_EQ(url.getPort(), 80);
    ASSERT_TRUE(bag.set("Port", 65536));
    EXPECT_FALSE(url.restoreAttributes(bag));
}

TEST(FUrl, GoesUpAndDown) {
    FUrl url(u"http://h");
    EXPECT_TRUE(url.isRootDir() && url.isFolder());
    url.descend(u"a", kFolderPath);
    url.descend(u"b.txt", kFilePath);
    for (const char16_t* text : {u"http://h/a/b.txt", u"http://h/a/"}) {
        EXPECT_EQ(textOf(url), text);
        EXPECT_TRUE(url.ascend() && url.isFolder());
    }
    EXPECT_EQ(textOf(url), u"http://h/");
    EXPECT_FALSE(url.ascend());
}

TEST(FUrl, EncodesBytesOfUtf8) {
    const std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"a/b-c_d.e~f",        u"a/b-c_d.e~f"          },
        {u"100% \"<>\"",        u"100%25%20%22%3c%3e%22"},
        {u"\u00E4\n\U0001F600", u"%c3%a4%0a%f0%9f%98%80"},
    };
    for (const auto& [plain, encoded] : rows) {
        FString text(plain);
        FUrl::urlEncode(text);
        EXPECT_EQ(wide(text), encoded);
        EXPECT_TRUE(FUrl::urlDecode(text));
        EXPECT_EQ(wide(text), plain);
    }
    for (const char16_t* kept : {u"%4", u"%zz%", u"%00", u"a%ff"}) {
        FString text(kept);
        const bool hasBadBytes = text.endsWith(u"0") || text.endsWith(u"f");
        EXPECT_EQ(FUrl::urlDecode(text), !hasBadBytes);
        EXPECT_EQ(wide(text), kept);
    }
}

TEST(FUrl, PrintsAnyLoginSoThatItIsReadAgain) {
    FUrl url(u"http://h/x");
    url.setLogin(u"a:b@c/d", u"80/e?@f");
    EXPECT_EQ(textOf(url), u"http://a%3ab%40c%2fd:80%2fe%3f%40f@h/x");
}

TEST(FUrlFileHandler, OpensFilesOfThisMachine) {
    const TemporaryFolder folder;
    std::ofstream(folder.path / "a b#") << "abc";
    const std::string path = folder.path.string();
    const std::tuple<std::string, NError> rows[] = {
        {"file://" + path + "/a%20b%23",          NError::kNone       },
        {"FILE://LocalHost" + path + "/a b%23",   NError::kNone       },
        {"file://elsewhere" + path + "/a%20b%23", NError::kBadUrl     },
        {"file://" + path + "/a%00",              NError::kBadUrl     },
        {"file://" + path + "/none",              NError::kUnreachable},
        {"file://" + path,                        NError::kUnreachable},
        {"file://",                               NError::kUnreachable},
        {"file:///dev/zero",                      NError::kUnreachable},
    };
    for (const auto& [text, error] : rows) {
        SCOPED_TRACE(text);
        FUrl url(std::u16string(text.begin(), text.end()).c_str());
        FUrlHandler* handler = url.makeHandler();
        EXPECT_EQ(handler->open(), error == NError::kNone);
        EXPECT_EQ(handler->getError(), error);
        EXPECT_EQ(handler->getLength(), error == NError::kNone ? 3 : -1);
        EXPECT_EQ(handler->getStream() != nullptr, error == NError::kNone);
    }
}

TEST(UrlPathConverter, ConvertsBothWays) {
    FUrl::registerObjectFilter();
    const FCompiledInClass* found = FCompiledInClass::find(FObjectConverter::kCategory, "UrlPathConverter");
    ASSERT_TRUE(found);
    const OPtr<FObject> made(found->create());
    auto& converter = static_cast<FObjectConverter&>(*made);
    const FNPath path(u"/a b/\u00E4#?", kFilePath), relative(u"a", kFilePath), half(u"/a\xD800", kFilePath);
    const OPtr<CmObject> url(converter.convert(path, "FUrl"));
    ASSERT_TRUE(classCast<FUrl>(url.get()));
    EXPECT_EQ(textOf(*classCast<FUrl>(url.get())), u"file:///a%20b/%c3%a4%23%3f");
    const OPtr<CmObject> back(converter.convert(*url, "FNPath"));
    ASSERT_TRUE(classCast<FNPath>(back.get()));
    EXPECT_TRUE(*classCast<FNPath>(back.get()) == path);
    EXPECT_EQ(converter.convert(relative, "FUrl"), nullptr);
    EXPECT_EQ(converter.convert(half, "FUrl"), nullptr);
    EXPECT_EQ(converter.convert(FUrl(u"http://h/x"), "FNPath"), nullptr);
    EXPECT_EQ(converter.convert(path, "FPath"), nullptr);
}

}  // namespace
}  // namespace Tessarine
