#include "host/settingsport.h"
#include "tests/host/hostfixture.h"
#include <fstream>
#include <sstream>

using namespace Tessarine;

namespace HostTest {
namespace {
constexpr const char* kWhole =
    "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<VOREN-HA-Remote>\r\n"
    "\t<ComPortName str=\"ttyS0\"/>\r\n\t<DevId-Ch id=\"1\" ch=\"8\"/>\r\n"
    "</VOREN-HA-Remote>\r\n";

struct SettingsRow {
    const char *name, *before, *after;  // after a change to the port "P"; empty: no settings file
};
constexpr SettingsRow kSettings[] = {
    {"empty",             "",                                                  ""                                   },
    {"no xml",            "Port",                                              ""                                   },
    {"another root",      "<Else><Port str='a'/></Else>",                      ""                                   },
    {"cut in the middle", "<R><Port str='a'/>",                                ""                                   },
    {"cut in the tag",    "<R><Port str='a",                                   ""                                   },
    {"something behind",  "<R></R><a/>",                                       "<R>\r\n\t@</R><a/>"                 },
    {"past finding",      "<!DOCTYPE R [<!-- don't -->]><R></R>",              ""                                   },
    {"empty root",        "<R/>",                                              ""                                   },
    {"no port yet",       "<R><DevId-Ch id='1'/></R>",                         "<R>\r\n\t@<DevId-Ch id='1'/></R>"   },
    {"in a comment",      "<R><!-- <Port str='x'/> > --><Port str='a'/></R>",  "<R><!-- <Port str='x'/> > -->@</R>" },
    {"in text",           "<R><![CDATA[<Port str='x'/>]]><Port str='a'/></R>", "<R><![CDATA[<Port str='x'/>]]>@</R>"},
    {"in an instruction", "<?x <R> ?><R><Port/></R>",                          "<?x <R> ?><R>@</R>"                 },
    {"in an attribute",   "<R><a b='<Port'/><Port str='a'/></R>",              ""                                   },
    {"a quoted angle",    "<R><a b='>'/><Port str='a>b'/></R>",                "<R><a b='>'/>@</R>"                 },
    {"a longer name",     "<R><Ports str='x'/><Port\tstr='a' /></R>",          "<R><Ports str='x'/>@</R>"           },
    {"twice",             "<R><Port str='a'/><Port str='b'/></R>",             "<R>@@</R>"                          },
    {"with an end tag",   "<R><Port str='a'></Port></R>",                      "<R>#</Port></R>"                    },
};

/** The rows in full. */
std::string expanded(std::string text) {
    constexpr std::pair<const char*, const char*> kShort[] = {
        {"<R",     "<VOREN-HA-Remote"        },
        {"</R",    "</VOREN-HA-Remote"       },
        {"<Port",  "<ComPortName"            },
        {"</Port", "</ComPortName"           },
        {"@",      "<ComPortName str=\"P\"/>"},
        {"#",      "<ComPortName str=\"P\">" },
    };
    for (const auto& [brief, whole] : kShort)
        for (size_t at = 0; (at = text.find(brief, at)) != std::string::npos; ++at)
            text.replace(at, std::strlen(brief), whole);
    return text;
}

TEST(SettingsWithPort, ChangesThatElementOnly) {
    for (const SettingsRow& row : kSettings) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(settingsWithPort(expanded(row.before), "P"), expanded(row.after));
    }
    const std::string whole = kWhole;
    EXPECT_EQ(settingsWithPort(whole, "ttyS0"), whole);
    for (size_t length = 0; length + 2 < whole.size(); ++length)  // the last line's end isn't missed
        EXPECT_EQ(settingsWithPort(whole.substr(0, length), "P"), "") << length;
}

TEST(SettingsWithPort, WhateverThePortIsCalledTheFileStaysOne) {
    for (const std::string port : {"", "a\"b", "<a>", "a&b", "a'b", "]]>", "-->", "a\tb", "a b", "a$b`", "\xC3\xBC"}) {
        SCOPED_TRACE(port);
        const std::string once = settingsWithPort(kWhole, port);
        EXPECT_NE(once, "");
        EXPECT_EQ(settingsWithPort(once, "ttyS0"), kWhole);
    }
}

class SettingsFile : public HostFixture {
protected:
    const fs::path path = folder.path / "user/VOREN TALV Extension/Setup.xml";

    std::string content() const {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    void store(const std::string& text) {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    size_t files() const { return size_t(std::distance(fs::directory_iterator(path.parent_path()), {})); }

    const Application application;
};

TEST_F(SettingsFile, IsMadeNewWhenThereIsNoneOrItIsDamaged) {
    std::string fresh;
    for (const std::string& before : {std::string(), std::string("junk"), std::string(2 << 20, 'x')}) {
        if (!before.empty())
            store(before);
        ASSERT_TRUE(putPortIntoSettings("tty.a&b", error)) << error;
        EXPECT_EQ(files(), 1u);
        fresh = fresh.empty() ? content() : fresh;
        EXPECT_EQ(content(), fresh);
    }
    EXPECT_NE(fresh.find("<ComPortName str=\"tty.a&amp;b\"/>"), std::string::npos);
    EXPECT_NE(fresh.find("\t<DevId-Ch id=\"255\" ch=\"-1\"/>\r\n</VOREN-HA-Remote>\r\n"), std::string::npos);
    EXPECT_EQ(settingsWithPort(fresh, "tty.a&b"), fresh);
}

TEST_F(SettingsFile, KeepsItsAssignmentsWhateverThePortIsCalled) {
    store(kWhole);
    for (const char* port : {"tty.\xFC", "tty.\x01"}) {
        EXPECT_FALSE(putPortIntoSettings(port, error));
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(content(), kWhole);
    }
    ASSERT_TRUE(putPortIntoSettings("tty.a$b", error)) << error;
    EXPECT_NE(content().find("<ComPortName str=\"tty.a$b\"/>\r\n\t<DevId-Ch id=\"1\" ch=\"8\"/>"), std::string::npos);
}

TEST_F(SettingsFile, SaysWhenItCannotBeWritten) {
    fs::create_directories(path / "a folder of this name");
    EXPECT_FALSE(putPortIntoSettings("ttyS0", error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(files(), 1u) << "nothing lies about";
}
}  // namespace
}  // namespace HostTest
