#include "source/TALV_Extension/TALV_Setup.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include "storage/fpath.h"
#include "storage/hooks.h"
#include "tests/source/TALV_Extension/testhost.h"
#include <gtest/gtest.h>
#include <map>

using namespace TALV;
using namespace TALV::Test;

namespace {
class Setup : public testing::Test {
protected:
    Setup() {
        userFolder = folder.path;
        gStorageHooks.standardFolder = [](int32_t number, FNPath& path) {
            path.fromString(String(userFolder.c_str()).text16(), kFolderPath);
            return number == kUserFolder;
        };
        data.intialize();
        FObject::gUpdateHandler->addDependent(data.comPortValue, &manager);
    }
    ~Setup() override {
        FObject::gUpdateHandler->removeDependent(data.comPortValue, &manager);
        gStorageHooks = before;
    }
    std::filesystem::path file() { return folder.path / "Setup.xml"; }
    void load(const std::string& text) {
        std::ofstream(file(), std::ios::binary) << text;
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

    static inline std::string userFolder;
    const StorageHooks before = gStorageHooks;
    Updates updates;
    TemporaryFolder folder;
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

TEST_F(Setup, ComesBackAsItWasButForADollar) {
    for (const std::string name : {"tty.&<>\"' \x7E", "tty.$a"}) {
        SCOPED_TRACE(name);
        const bool isWhole = name.find('$') == name.npos;  // is stored as "&dollar;", where a reader stops
        setPort(name.c_str());
        data.connections.replace(255, 2032);
        setup->save();
        setPort("other");
        data.connections.replace(255, k_noItemForConnection);
        setup->load();
        EXPECT_EQ(port(), isWhole ? name : "other");
        EXPECT_EQ(data.connections.lookupObject(255), isWhole ? 2032 : k_noItemForConnection);
    }
    EXPECT_NE(contentOf(file()).find("str=\"tty.&dollar;a\""), std::string::npos);
}

TEST_F(Setup, TakesConnectionsAsFarAsTheyGo) {
    const std::pair<const char*, Channels> rows[] = {
        {R"(<DevId-Ch id="7" ch="8"/>)",                                  {{7, 8}}        },
        {R"(<DevId-Ch id="7"/>)",                                         {{7, 0}}        },
        {R"(<DevId-Ch id="7" ch="5x"/>)",                                 {{7, 5}}        },
        {R"(<DevId-Ch id="7x" ch=" 5"/>)",                                {{7, 5}}        },
        {R"(<DevId-Ch id="x7" ch="5"/>)",                                 {}              },
        {R"(<DevId-Ch id="7" ch="-7"/>)",                                 {{7, -7}}       },
        {R"(<DevId-Ch id="256" ch="8"/>)",                                {}              },
        {R"(<DevId-Ch id="99999999999999999999" ch="8"/>)",               {}              },
        {R"(<DevId-Ch id="7" ch="8"/><DevId-Ch id="7" ch="16"/>)",        {{7, 16}}       },
        {R"(<DevId-Ch id="7" ch="8"/><DevId-Ch id="8" ch="8"/>)",         {{7, 8}, {8, 8}}},
        {R"(<Other><DevId-Ch id="7" ch="8"/></Other>)",                   {{7, 8}}        },
        {R"(<DevId-Ch id="7" ch="8"/><broken)",                           {{7, 8}}        },
        {R"(<DevId-Ch id="7" ch="8"/></wrong><DevId-Ch id="9" ch="8"/>)", {{7, 8}}        },
    };
    for (const auto& [xml, channels] : rows) {
        SCOPED_TRACE(xml);
        for (int32_t id = 1; id <= 255; ++id)
            data.connections.replace(id, k_noItemForConnection);
        load(document(xml));
        EXPECT_EQ(assigned(), channels);
    }
}

TEST_F(Setup, EachLoadHasItsOwnText) {
    for (const char* name : {"tty.first", "tty.secnd", "tty.third"}) {  // of one length: a parser reuses its memory
        load(document("<ComPortName str=\"" + std::string(name) + "\"/>"));
        EXPECT_EQ(port(), name);
    }
    load(document(R"(<ComPortName str="tty.four4"/><ComPortName/><ComPortName str="tty.five5"/>)"));
    EXPECT_EQ(port(), "tty.five5");
    EXPECT_EQ(manager.heard.size(), 5u);
    load(R"(<ComPortName str="tty.six66"/>)");
    EXPECT_EQ(port(), "tty.six66") << "any root will do";
}
