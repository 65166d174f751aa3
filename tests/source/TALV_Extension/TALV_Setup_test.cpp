#include "source/TALV_Extension/TALV_Setup.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include "storage/fpath.h"
#include "storage/hooks.h"
#include "tests/source/TALV_Extension/testhost.h"
#include <algorithm>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <sys/resource.h>

using namespace TALV;
using namespace TALV::Test;

namespace {
std::filesystem::path gUserFolder;

bool userFolder(int32_t number, FNPath& folder) {
    if (number != kUserFolder || gUserFolder.empty())
        return false;
    String text;
    text.fromUTF8(gUserFolder.c_str());
    folder.fromString(text.text16(), kFolderPath);
    return true;
}

class Setup : public testing::Test {
protected:
    Setup() : before(gStorageHooks) {
        gStorageHooks.standardFolder = userFolder;
        gUserFolder = folder.path;
        data.intialize();
        FObject::gUpdateHandler->addDependent(data.comPortValue, &manager);
    }
    ~Setup() override {
        FObject::gUpdateHandler->removeDependent(data.comPortValue, &manager);
        gStorageHooks = before;
    }
    std::filesystem::path file() { return gUserFolder / "Setup.xml"; }
    std::string content() {
        std::ostringstream text;
        text << std::ifstream(file(), std::ios::binary).rdbuf();
        return text.str();
    }
    void put(const std::string& text) { std::ofstream(file(), std::ios::binary) << text; }
    void load(const std::string& text) {
        put(text);
        setup->load();
    }
    std::string port() { return data.getCurrentCOMPortStr().text8(); }
    void setPort(const char* name) { data.comPortValue->fromString2(String(name).text16(), true); }
    /** The ids that have a channel. */
    std::map<int32_t, int32_t> assigned() {
        std::map<int32_t, int32_t> channels;
        for (const auto& connection : data.connections)
            if (connection.value != k_noItemForConnection)
                channels[connection.key] = connection.value;
        return channels;
    }

    Updates updates;
    TempFolder folder;
    StorageHooks before;
    TestHost host;
    Listener manager;
    TALV_DataManager data{&host, &manager};
    OPtr<TALV_Setup> setup{new TALV_Setup(&data)};
};
using Channels = std::map<int32_t, int32_t>;

std::string document(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><VOREN-HA-Remote>" + content + "</VOREN-HA-Remote>";
}
}  // namespace

TEST_F(Setup, IsWrittenToTheByte) {
    setPort("tty.usbserial-0");
    data.connections.replace(5, 8);
    setup->save();
    std::string expected =
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<VOREN-HA-Remote>\r\n"
        "\t<ComPortName str=\"tty.usbserial-0\"/>\r\n";
    for (int32_t id = 1; id <= 255; ++id)
        expected += "\t<DevId-Ch id=\"" + std::to_string(id) + "\" ch=\"" + (id == 5 ? "8" : "-1") + "\"/>\r\n";
    expected += "</VOREN-HA-Remote>\r\n";
    EXPECT_EQ(content(), expected);
    EXPECT_EQ(std::ranges::count(content(), '\n'), 259);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(gUserFolder), {}), 1) << "nothing is left beside it";
}

TEST_F(Setup, ComesBackAsItWas) {
    setPort("tty.&<>\"' \x7E");
    data.connections.replace(255, 0);
    data.connections.replace(1, 2032);
    setup->save();
    const std::string first = content();
    setPort("other");
    data.connections.replace(1, -1);
    setup->load();
    EXPECT_EQ(port(), "tty.&<>\"' \x7E");
    EXPECT_EQ(assigned(), (Channels{
                              {1,   2032},
                              {255, 0   }
    }));
    setup->save();
    EXPECT_EQ(content(), first);
}

TEST_F(Setup, AnEmptyNameIsStoredToo) {
    setup->save();
    EXPECT_NE(content().find("<ComPortName str=\"\"/>"), std::string::npos);
    setPort("tty.a");
    setup->load();
    EXPECT_EQ(port(), "");
}

TEST_F(Setup, ANameWithADollarEndsTheNextLoadThere) {
    setPort("tty.$a");
    data.connections.replace(5, 8);
    setup->save();
    EXPECT_NE(content().find("str=\"tty.&dollar;a\""), std::string::npos);
    setPort("tty.b");
    data.connections.replace(5, -1);
    setup->load();
    EXPECT_EQ(port(), "tty.b");
    EXPECT_EQ(assigned(), Channels());
}

TEST_F(Setup, WithoutAFileTheDefaultsStay) {
    setup->load();
    EXPECT_EQ(port(), "");
    EXPECT_EQ(assigned(), Channels());
    EXPECT_TRUE(manager.heard.empty());
    gUserFolder.clear();  // nor is there a folder
    setup->load();
    setup->save();
    EXPECT_EQ(assigned(), Channels());
}

TEST_F(Setup, TakesConnectionsAsFarAsTheyGo) {
    struct Row {
        const char* xml;
        Channels assigned;
    };
    const Row rows[] = {
        {R"(<DevId-Ch id="7" ch="8"/>)",                                  {{7, 8}}        },
        {R"(<DevId-Ch ch="8" id="7"/>)",                                  {{7, 8}}        },
        {R"(<DevId-Ch id="7"/>)",                                         {{7, 0}}        },
        {R"(<DevId-Ch ch="8"/>)",                                         {}              },
        {R"(<DevId-Ch id="7" ch=""/>)",                                   {{7, 0}}        },
        {R"(<DevId-Ch id="7" ch="x"/>)",                                  {{7, 0}}        },
        {R"(<DevId-Ch id="7" ch="5x"/>)",                                 {{7, 5}}        },
        {R"(<DevId-Ch id="7x" ch=" 5"/>)",                                {{7, 5}}        },
        {R"(<DevId-Ch id="x7" ch="5"/>)",                                 {}              },
        {R"(<DevId-Ch id="7" ch="-7"/>)",                                 {{7, -7}}       },
        {R"(<DevId-Ch id="7" ch="9"/>)",                                  {{7, 9}}        },
        {R"(<DevId-Ch id="0" ch="8"/>)",                                  {}              },
        {R"(<DevId-Ch id="256" ch="8"/>)",                                {}              },
        {R"(<DevId-Ch id="-1" ch="8"/>)",                                 {}              },
        {R"(<DevId-Ch id="4294967303" ch="8"/>)",                         {}              },
        {R"(<DevId-Ch id="99999999999999999999" ch="8"/>)",               {}              },
        {R"(<DevId-Ch id="7" ch="8"/><DevId-Ch id="7" ch="16"/>)",        {{7, 16}}       },
        {R"(<DevId-Ch id="7" ch="8"/><DevId-Ch id="8" ch="8"/>)",         {{7, 8}, {8, 8}}},
        {R"(<Other><DevId-Ch id="7" ch="8"/></Other>)",                   {{7, 8}}        },
        {R"(<devid-ch id="7" ch="8"/>)",                                  {}              },
        {R"(<DevId-Ch id="7" ch="8"/><broken)",                           {{7, 8}}        },
        {R"(<DevId-Ch id="7" ch="8"/></wrong><DevId-Ch id="9" ch="8"/>)", {{7, 8}}        },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.xml);
        for (int32_t id = 1; id <= 255; ++id)
            data.connections.replace(id, k_noItemForConnection);
        load(document(row.xml));
        EXPECT_EQ(assigned(), row.assigned);
        EXPECT_EQ(data.connections.total(), 255);
    }
}

TEST_F(Setup, AnyRootWillDo) {
    load(R"(<else><ComPortName str="tty.a"/></else>)");
    EXPECT_EQ(port(), "tty.a");
    load(R"(<ComPortName str="tty.b"/>)");
    EXPECT_EQ(port(), "tty.b");
    load(document("<ComPortName/>"));
    EXPECT_EQ(port(), "tty.b");
}

TEST_F(Setup, EachLoadHasItsOwnText) {
    for (const char* name : {"tty.first", "tty.secnd", "tty.third"}) {  // of one length: a parser reuses its memory
        load(document("<ComPortName str=\"" + std::string(name) + "\"/>"));
        EXPECT_EQ(port(), name);
    }
    load(document(R"(<ComPortName str="tty.four4"/><ComPortName str="tty.five5"/>)"));
    EXPECT_EQ(port(), "tty.five5");
    EXPECT_EQ(manager.heard.size(), 5u);
}

TEST_F(Setup, CutAnywhereItTakesWhatCameBefore) {
    setPort("tty.a");
    for (int32_t id = 1; id <= 255; ++id)
        data.connections.replace(id, id % 3);
    setup->save();
    const std::string whole = content();
    for (size_t size = 0; size < whole.size(); size += 97) {
        SCOPED_TRACE(size);
        load(whole.substr(0, size));
        EXPECT_EQ(data.connections.total(), 255);
    }
    load(whole);
    EXPECT_EQ(assigned().size(), 255u);
}

TEST_F(Setup, AnUnwritableFolderKeepsTheOldFile) {
    put("old");
    std::filesystem::create_directory(gUserFolder / "sub");
    std::ofstream(gUserFolder / "plain") << "a file where a folder is looked for";
    gUserFolder = gUserFolder / "plain";
    setup->save();
    setup->load();
    gUserFolder = folder.path;
    EXPECT_EQ(content(), "old");
}

TEST_F(Setup, AFullDiskKeepsTheOldFile) {
    put("old");
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit few{1000, unlimited.rlim_max};
    const auto former = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &few);
    setup->save();
    setrlimit(RLIMIT_FSIZE, &unlimited);
    signal(SIGXFSZ, former);
    EXPECT_EQ(content(), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(gUserFolder), {}), 1);
}

TEST_F(Setup, WithoutADataManagerItHoldsNothing) {
    load(document(R"(<ComPortName str="tty.a"/>)"));
    setup->forgetDataManager();
    load(document(R"(<ComPortName str="tty.b"/><DevId-Ch id="7" ch="8"/>)"));
    EXPECT_EQ(port(), "tty.a");
    EXPECT_EQ(assigned(), Channels());
    setup->save();
    EXPECT_EQ(content(),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<VOREN-HA-Remote>\r\n"
              "</VOREN-HA-Remote>\r\n");
}

TEST_F(Setup, AnswersForItsHandlerFace) {
    const FUnknownPtr<INewXmlHandler> handler(setup.get());
    EXPECT_EQ(handler.get(), setup.get());
    EXPECT_FALSE(FUnknownPtr<IHostClasses>(setup.get()));
    const char* attributes[] = {"str", "tty.x", nullptr};
    setup->startTag(nullptr, "ComPortName", attributes);
    EXPECT_EQ(port(), "");
}
