#include "host/settingsport.h"
#include "tests/host/hostfixture.h"
#include <fstream>
#include <sstream>
#include <sys/stat.h>

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
    {"empty",                    "",                                                                                       ""                                                                                               },
    {"no xml",                   "ComPortName",                                                                            ""                                                                                               },
    {"another root",             "<Else><ComPortName str=\"a\"/></Else>",                                                  ""                                                                                               },
    {"cut in the middle",        "<VOREN-HA-Remote><ComPortName str=\"a\"/>",                                              ""                                                                                               },
    {"cut in the tag",           "<VOREN-HA-Remote><ComPortName str=\"a",                                                  ""                                                                                               },
    {"something behind",         "<VOREN-HA-Remote></VOREN-HA-Remote><a/>",
     "<VOREN-HA-Remote>\r\n\t<ComPortName str=\"P\"/></VOREN-HA-Remote><a/>"                                                                                                                                                },
    {"nothing in the root",      "<VOREN-HA-Remote/>",                                                                     ""                                                                                               },
    {"no port yet",              "<VOREN-HA-Remote><DevId-Ch id=\"1\"/></VOREN-HA-Remote>",
     "<VOREN-HA-Remote>\r\n\t<ComPortName str=\"P\"/><DevId-Ch id=\"1\"/></VOREN-HA-Remote>"                                                                                                                                },
    {"in a comment first",
     "<VOREN-HA-Remote><!-- <ComPortName str=\"x\"/> > --><ComPortName str=\"a\"/></VOREN-HA-Remote>",                     "<VOREN-HA-Remote><!-- <ComPortName str=\"x\"/> > --><ComPortName str=\"P\"/></VOREN-HA-Remote>" },
    {"in character data first",
     "<VOREN-HA-Remote><![CDATA[<ComPortName str=\"x\"/>]]><ComPortName str=\"a\"/></VOREN-HA-Remote>",                    "<VOREN-HA-Remote><![CDATA[<ComPortName str=\"x\"/>]]><ComPortName str=\"P\"/></VOREN-HA-Remote>"},
    {"in an instruction first",  "<?x <VOREN-HA-Remote> ?><VOREN-HA-Remote><ComPortName/></VOREN-HA-Remote>",
     "<?x <VOREN-HA-Remote> ?><VOREN-HA-Remote><ComPortName str=\"P\"/></VOREN-HA-Remote>"                                                                                                                                  },
    {"in an attribute first",    "<VOREN-HA-Remote><a b='<ComPortName'/><ComPortName str=\"a\"/></VOREN-HA-Remote>",       ""                                                                                               },
    {"an angle in an attribute", "<VOREN-HA-Remote><a b='>'/><ComPortName str='a>b'/></VOREN-HA-Remote>",
     "<VOREN-HA-Remote><a b='>'/><ComPortName str=\"P\"/></VOREN-HA-Remote>"                                                                                                                                                },
    {"a longer name first",      "<VOREN-HA-Remote><ComPortNames str=\"x\"/><ComPortName\tstr=\"a\" /></VOREN-HA-Remote>",
     "<VOREN-HA-Remote><ComPortNames str=\"x\"/><ComPortName str=\"P\"/></VOREN-HA-Remote>"                                                                                                                                 },
    {"with an end tag",          "<VOREN-HA-Remote><ComPortName str=\"a\"></ComPortName></VOREN-HA-Remote>",
     "<VOREN-HA-Remote><ComPortName str=\"P\"></ComPortName></VOREN-HA-Remote>"                                                                                                                                             },
};

TEST(SettingsWithPort, ChangesThatElementOnly) {
    for (const SettingsRow& row : kSettings) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(settingsWithPort(row.before, "P"), row.after);
    }
    const std::string whole = kWhole;
    EXPECT_EQ(settingsWithPort(whole, "ttyS0"), whole);
    for (size_t length = 0; length + 2 < whole.size(); ++length)  // the last line's end isn't missed
        EXPECT_EQ(settingsWithPort(whole.substr(0, length), "P"), "") << length;
}

TEST(SettingsWithPort, WhateverThePortIsCalledTheFileStaysOne) {
    for (const std::string port : {"", "a\"b", "<a>", "a&b", "a'b", "]]>", "-->", "a\tb", "a b"}) {
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
        if (fresh.empty())
            fresh = content();
        EXPECT_EQ(content(), fresh);
        fs::remove(path);
    }
    EXPECT_NE(fresh.find("<ComPortName str=\"tty.a&amp;b\"/>"), std::string::npos);
    EXPECT_NE(fresh.find("\t<DevId-Ch id=\"255\" ch=\"-1\"/>\r\n</VOREN-HA-Remote>\r\n"), std::string::npos);
    EXPECT_EQ(settingsWithPort(fresh, "tty.a&b"), fresh);
}

TEST_F(SettingsFile, KeepsAllElse) {
    store(kWhole);
    ASSERT_TRUE(putPortIntoSettings("ttyS0", error)) << error;
    EXPECT_EQ(content(), kWhole);
    EXPECT_EQ(files(), 1u);
}

TEST_F(SettingsFile, SaysWhenItCannotBeWritten) {
    fs::create_directories(path / "a folder of this name");
    EXPECT_FALSE(putPortIntoSettings("ttyS0", error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(files(), 1u) << "nothing lies about";
}
}  // namespace
}  // namespace HostTest
