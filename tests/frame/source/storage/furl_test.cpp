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

struct UrlRow {
    const char16_t *text, *protocol, *host;
    int32_t port;
    const char16_t *user, *password, *file;
    const char16_t* printed;  // null: as it came
};
constexpr UrlRow kUrls[] = {
    {u"http://a.b/c/d.txt",     u"http",  u"a.b",   80,   u"",  u"",     u"c/d.txt",     nullptr              },
    {u"http://a.b:8080/c",      u"http",  u"a.b",   8080, u"",  u"",     u"c",           nullptr              },
    {u"https://a.b:443/c",      u"https", u"a.b",   443,  u"",  u"",     u"c",           u"https://a.b/c"     },
    {u"HTTP://a.b:/c",          u"HTTP",  u"a.b",   80,   u"",  u"",     u"c",           u"HTTP://a.b/c"      },
    {u"http://u:p@ss@h:1/",     u"http",  u"h",     1,    u"u", u"p@ss", u"",            nullptr              },
    {u"http://u@h/",            u"http",  u"h",     80,   u"u", u"",     u"",            nullptr              },
    {u"http://:p:q@h/",         u"http",  u"h",     80,   u"",  u"p:q",  u"",            nullptr              },
    {u"http://h",               u"http",  u"h",     80,   u"",  u"",     u"",            u"http://h/"         },
    {u"http://[::1]:81/x",      u"http",  u"[::1]", 81,   u"",  u"",     u"x",           nullptr              },
    {u"srf://0123/in/skin.xml", u"srf",   u"0123",  0,    u"",  u"",     u"in/skin.xml", nullptr              },
    {u"file:///home/x/",        u"file",  u"",      0,    u"",  u"",     u"home/x/",     nullptr              },
    {u"/home/x",                u"file",  u"",      0,    u"",  u"",     u"home/x",      u"file:///home/x"    },
    {u"home/x@y:z",             u"file",  u"",      0,    u"",  u"",     u"home/x@y:z",  u"file:///home/x@y:z"},
    {u"a://b//c://d",           u"a",     u"b",     0,    u"",  u"",     u"/c://d",      nullptr              },
    {u"://",                    u"",      u"",      0,    u"",  u"",     u"",            u":///"              },
    {u"",                       u"file",  u"",      0,    u"",  u"",     u"",            u"file:///"          },
};

TEST(FUrl, SplitsAndPrints) {
    for (const UrlRow& row : kUrls) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(row.text)));
        FUrl url;
        ASSERT_TRUE(url.setUrl(row.text));
        EXPECT_EQ(wide(url.getProtocol()), row.protocol);
        EXPECT_EQ(wide(url.getHost()), row.host);
        EXPECT_EQ(url.getPort(), row.port);
        EXPECT_EQ(wide(url.getUser()), row.user);
        EXPECT_EQ(wide(url.getPassword()), row.password);
        EXPECT_EQ(wide(url.getFile()), row.file);
        EXPECT_EQ(textOf(url), row.printed ? row.printed : row.text);
        FAttributes bag;
        FUrl restored;
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

TEST(FUrl, GoesUpAndDown) {
    FUrl url(u"http://h");
    EXPECT_TRUE(url.isRootDir() && url.isFolder());
    EXPECT_FALSE(url.ascend());
    const std::pair<const char16_t*, int32_t> steps[] = {
        {u"a",     kFolderPath},
        {u"b.txt", kFilePath  }
    };
    for (const auto& [name, kind] : steps)
        url.descend(name, kind);
    EXPECT_EQ(textOf(url), u"http://h/a/b.txt");
    EXPECT_EQ(std::u16string(url.getName()), u"b.txt");
    EXPECT_TRUE(url.ascend() && url.isFolder());
    EXPECT_EQ(textOf(url), u"http://h/a/");
    EXPECT_TRUE(url.ascend());
    EXPECT_EQ(textOf(url), u"http://h/");
    EXPECT_FALSE(url.ascend());
}

TEST(FUrl, EncodesBytesOfUtf8) {
    const std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"a/b-c_d.e~f",    u"a/b-c_d.e~f"          },
        {u"100% \"<>\"",    u"100%25%20%22%3c%3e%22"},
        {u"\u00E4\u6A5F\n", u"%c3%a4%e6%a9%9f%0a"   },
        {u"\U0001F600",     u"%f0%9f%98%80"         },
    };
    for (const auto& [plain, encoded] : rows) {
        FString text(plain);
        FUrl::urlEncode(text);
        EXPECT_EQ(wide(text), encoded);
        EXPECT_TRUE(FUrl::urlDecode(text));
        EXPECT_EQ(wide(text), plain);
    }
    const std::tuple<const char16_t*, bool, const char16_t*> odd[] = {
        {u"%C3%A4", true,  u"\u00E4"},
        {u"%4",     true,  u"%4"    },
        {u"%zz%",   true,  u"%zz%"  },
        {u"%00",    false, u"%00"   },
        {u"a%ff",   false, u"a%ff"  },
    };
    for (const auto& [encoded, good, expected] : odd) {
        FString text(encoded);
        EXPECT_EQ(FUrl::urlDecode(text), good);
        EXPECT_EQ(wide(text), expected);
    }
}

TEST(FUrl, PrintsAnyLoginSoThatItIsReadAgain) {
    FUrl url(u"http://h/x");
    url.setLogin(u"a:b@c/d", u"80/e?@f");
    const FUrl again(textOf(url).c_str());
    EXPECT_EQ(textOf(url), u"http://a%3ab%40c%2fd:80%2fe%3f%40f@h/x");
    EXPECT_TRUE(again.getHost() == url.getHost() && again.getUser() == url.getUser());
}

TEST(FUrl, StandsForAPathOfTheDisks) {
    const FNPath path(u"/a b/\u00E4#?", kFilePath), relative(u"a", kFilePath), half(u"/a\xD800", kFilePath);
    const OPtr<FUrl> url(path.createURL());
    ASSERT_TRUE(url);
    EXPECT_EQ(textOf(*url), u"file:///a%20b/%c3%a4%23%3f");
    EXPECT_EQ(relative.createURL(), nullptr);
    EXPECT_EQ(half.createURL(), nullptr);
}

TEST(FUrlFileHandler, OpensFilesOfThisMachine) {
    const TemporaryFolder folder;
    std::ofstream(folder.path / "a b#") << "abc";
    const std::string path = folder.path.string();
    const std::tuple<std::string, NError> rows[] = {
        {"file://" + path + "/a%20b%23",          NError::kNone       },
        {"FILE://LocalHost" + path + "/a b%23",   NError::kNone       },
        {path + "/a b%23",                        NError::kNone       },
        {"file://elsewhere" + path + "/a%20b%23", NError::kBadUrl     },
        {"file://" + path + "/a%00",              NError::kBadUrl     },
        {"file://" + path + "/none",              NError::kUnreachable},
        {"file://" + path,                        NError::kUnreachable},
        {"file://",                               NError::kUnreachable},
    };
    for (const auto& [text, error] : rows) {
        SCOPED_TRACE(text);
        FUrl url(std::u16string(text.begin(), text.end()).c_str());
        FUrlHandler* handler = url.makeHandler();
        ASSERT_TRUE(handler);
        EXPECT_EQ(handler->open(), error == NError::kNone);
        EXPECT_EQ(int32_t(handler->getError()), int32_t(error));
        EXPECT_EQ(handler->getLength(), error == NError::kNone ? 3 : -1);
        EXPECT_EQ(handler->getStream() != nullptr, error == NError::kNone);
    }
}

TEST(FUrl, LearnsProtocols) {
    EXPECT_EQ(FUrl(u"line://h/x").makeHandler(), nullptr);
    FUrl::registerHandler(u"line", 77, [](FUrl& url) -> FUrlHandler* { return new FUrlFileHandler(url); });
    FUrl url(u"LINE://h/x");
    EXPECT_EQ(url.getPort(), 77);
    EXPECT_EQ(textOf(url), u"LINE://h/x");
    FUrlHandler* handler = url.makeHandler();
    ASSERT_TRUE(handler);
    EXPECT_FALSE(handler->open());
}

TEST(UrlPathConverter, IsFoundAndConvertsBothWays) {
    FUrl::registerObjectFilter();
    const FCompiledInClass* found = FCompiledInClass::find(FObjectConverter::kCategory, "UrlPathConverter");
    ASSERT_TRUE(found);
    const OPtr<FObject> made(found->create());
    auto& converter = static_cast<FObjectConverter&>(*made);
    const FNPath path(u"/a b/c#", kFilePath);
    const OPtr<CmObject> url(converter.convert(path, "FUrl"));
    ASSERT_TRUE(classCast<FUrl>(url.get()));
    const OPtr<CmObject> back(converter.convert(*url, "FNPath"));
    ASSERT_TRUE(classCast<FNPath>(back.get()));
    EXPECT_TRUE(*classCast<FNPath>(back.get()) == path);
    EXPECT_EQ(converter.convert(path, "FPath"), nullptr);
    EXPECT_EQ(converter.convert(FUrl(u"http://h/x"), "FNPath"), nullptr);
    EXPECT_EQ(converter.convert(converter, "FUrl"), nullptr);
}

}  // namespace
}  // namespace Tessarine
