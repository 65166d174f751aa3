#include "host/commands.h"
#include "tests/host/hostfixture.h"
#include "tests/support/pieces.h"
#include <fstream>
#include <sstream>

using namespace Tessarine;

namespace HostTest {
namespace {
/** Devices whose values have no line behind them: what is set stands, unless somebody changes it meanwhile. */
class Desk final : public IPlugDevice, public TALV::ITALV_PrmAccessor, public IDeviceList {
public:
    explicit Desk(HostClasses& source)
        : classes(source), portNotice(newValue(IHostOnOffValue_iid)), tableNotice(newValue(IHostOnOffValue_iid)) {}

    void add(int32_t device) {
        for (const ParamRow& row : kParams)
            for (int32_t channel = 0; channel < (row.perChannel ? TALV::kNumChannels : 1); ++channel)
                values[device][row.firstId + channel] =
                    newValue(row.isText                           ? IHostStringValue_iid
                             : row.name == std::string("plus48V") ? IHostOnOffValue_iid
                                                                  : IHostIntValue_iid);
    }
    /** A change of port begins, or has ended. */
    void setReady(bool state) {
        ready = state;
        portNotice->setValue2(!portNotice->getValueInt(), true);
    }
    /** All values end. */
    void drop() {
        setReady(false);
        values.clear();
    }

    /** Three in all. */
    void comeBack() {
        for (int32_t device = 1; device <= 3; ++device)
            if (!values.contains(device))
                add(device);
        setReady(true);
    }

    IValue* getIValue(unsigned char device, TALV::TALV_ParamId id) override {
        const auto found = values.find(device);
        return found == values.end() ? nullptr : found->second[id].get();
    }
    bool isReady() const override { return ready; }
    IValue* getIsPortUpdated() const override { return portNotice; }
    int32_t totalDevices() const override { return int32_t(values.size()); }
    void setConnectionPrm(int32_t device, int32_t channel) override {
        std::erase_if(table, [&](const auto& each) { return each.first == channel || each.second == device; });
        if (device > 0 && channel >= 0)
            table[channel] = device;
    }
    int32_t getConnectionPrm(int32_t channel) override {
        const auto found = table.find(channel);
        return found == table.end() ? 0 : found->second;
    }
    IValue* getIsConnectionUpdated() const override { return tableNotice; }

    int32_t countDevices() override { return 1; }
    IPlugDevice* getDevice(int32_t) override { return this; }
    const char* getDeviceCategory() override { return "TALV Param Accessor"; }
    void reset() override {}
    void loadDefaults(const char*) override {}
    void storeDefaults(const char*) override {}
    int32_t createSetupView(IDependent*, FUnknown**) override { return kResultFalse; }
    int32_t getClassIcon(FUnknown**) override { return kResultFalse; }
    int32_t providesPanel() override { return kResultFalse; }
    IWindow* createPanel() override { return nullptr; }
    int32_t suspend(bool) override { return kResultFalse; }
    int32_t resume(bool) override { return kResultFalse; }
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<TALV::ITALV_PrmAccessor>(this, iid, obj) ? kResultOk : noInterface(obj);
    }
    uint32_t addRef() override { return 2; }
    uint32_t release() override { return 1; }

private:
    OPtr<IValue> newValue(const FUID& iid) {
        void* made = nullptr;
        classes.createClassInstance(iid, &made);
        auto* value = static_cast<IValue*>(made);
        value->setMinValue(0);
        value->setMaxValue(100);
        return OPtr<IValue>(value);
    }

    HostClasses& classes;
    std::map<int32_t, std::map<int32_t, OPtr<IValue>>> values;
    std::map<int32_t, int32_t> table;
    const OPtr<IValue> portNotice, tableNotice;
    bool ready = true;
};

class EditorTest : public HostFixture, public SilentListener {
protected:
    void SetUp() override {
        desk->comeBack();
        remote->start();
        commands = OPtr<Commands>(new Commands(
            *remote, module, [this](const Json& reply) { replies.push_back(reply); }, [] {}));
    }
    void TearDown() override {
        commands = nullptr;
        remote->stop();
    }

    void beginAnew() {
        TearDown();
        desk->drop();
        SetUp();
    }

    void deviceFound(int32_t device) override {
        if (commands)
            commands->deviceFound(device);
    }
    void valueChanged(const ParamAddress& address) override {
        if (onChange)
            onChange(address);
    }

    Json ask(const std::string& line) {
        commands->take(line);
        return replies.back();
    }
    bool isDone(const std::string& line) { return ask(line)["ok"]; }
    /** Commands, and what devices do: "report ID LEVEL" of a gain, "drop" and "back"; "anew" is another program. */
    void run(const char* lines) {
        int32_t device = 0, level = 0;
        for (const std::string& line : piecesOf(lines))
            if (std::sscanf(line.c_str(), "report %d %d", &device, &level) == 2)
                value(device, "gain")->setValue2(level, true);
            else if (line == "anew")
                beginAnew();
            else if (line == "drop")
                desk->drop();
            else if (line == "back")
                desk->comeBack();
            else if (line == "patience")
                application.run(5500);
            else
                ask(line);
    }
    IPtr<IValue> value(int32_t device, const char* param, int32_t channel = 0) {
        return remote->getValue({device, findParam(param), channel});
    }
    /** Of channel 0 of each device: "5 0 1". */
    std::string channelsOf(const char* param) {
        std::ostringstream text;
        for (int32_t device = 1; device <= 3; ++device)
            text << (device > 1 ? " " : "") << value(device, param)->getValueInt();
        return text.str();
    }
    size_t countSteps() { return ask("history")["entries"].size(); }

    const Application application;
    const std::unique_ptr<Desk> desk = std::make_unique<Desk>(classes);
    const OPtr<Remote> remote{new Remote(desk.get(), *this)};
    OPtr<Commands> commands;
    std::vector<Json> replies;
    std::function<void(const ParamAddress& address)> onChange;
};

TEST_F(EditorTest, PhantomPowerComesOnByTheWordOnly) {
    struct Row {
        const char *lines, *expected;
    };
    constexpr Row kRows[] = {
        {"link 1 0 2 0|set 1 plus48V 0 1",                                                           "1 0 0"},
        {"link 1 0 2 0|set 2 plus48V 0 1",                                                           "0 1 0"},
        {"link 1 0 2 0 --allow-48v|set 2 plus48V 0 1",                                               "1 1 0"},
        {"link 1 0 2 0 --allow-48v|link 2 0 3 0|set 1 plus48V 0 1",                                  "1 1 0"},
        {"link 1 0 2 0|link 2 0 3 0|set 1 plus48V 0 1|set 3 plus48V 0 1",                            "1 0 1"},
        {"set 1 plus48V 0 1|link 1 0 2 0 --now",                                                     "1 0 0"},
        {"set 1 plus48V 0 1|link 1 0 2 0 --now --allow-48v",                                         "1 1 0"},
        {"set 1 plus48V 0 1|set 2 plus48V 0 1|link 1 0 2 0|set 1 plus48V 0 0",                       "0 0 0"},
        {"set 1 plus48V 0 1|set 2 plus48V 0 1|link 1 0 2 0|set 1 plus48V 0 0|undo",                  "0 0 0"},
        {"set 1 plus48V 0 1|set 2 plus48V 0 1|link 1 0 2 0|set 1 plus48V 0 0|undo --allow-48v",      "1 1 0"},
        {"set 1 plus48V 0 1|undo|redo",                                                              "0 0 0"},
        {"set 1 plus48V 0 1|undo|redo --allow-48v",                                                  "1 0 0"},
        {"link 1 0 2 0 --allow-48v|set 1 plus48V 0 1|scene save A|set 1 plus48V 0 0|scene recall A", "0 0 0"},
        {"set 1 plus48V 0 1|scene save A|set 1 plus48V 0 0|link 1 0 2 0|scene recall A --allow-48v", "1 0 0"},
        {"set 1 plus48V 0 1|scene save A|set 1 plus48V 0 0|scene recall A --allow-48v|undo|redo",    "0 0 0"},
        {"set 1 plus48V 0 1|scene save A|set 1 plus48V 0 0|set 1 gain 0 5|scene recall A|undo|redo", "0 0 0"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.lines);
        beginAnew();
        run(row.lines);
        EXPECT_EQ(channelsOf("plus48V"), row.expected);
    }
}

TEST_F(EditorTest, QuickSettingsOfOneAddressAreOneStep) {
    struct Row {
        const char* lines;
        size_t expected;
        const char* undone;
    };
    constexpr Row kRows[] = {
        {"set 1 gain 0 1|set 1 gain 0 2",                                       1, "0 0 0"},
        {"set 1 gain 0 1|get 2 gain 0|set 1 gain 0 2",                          1, "0 0 0"},
        {"set 1 gain 0 1|ready|set 1 gain 0 2",                                 2, "1 0 0"},
        {"set 1 gain 0 1|set 2 gain 0 0|set 1 gain 0 2",                        2, "1 0 0"},
        {"set 1 gain 0 1|\"|set 1 gain 0 2",                                    2, "1 0 0"},
        {"set 1 gain 0 1|assign 1 0|set 1 gain 0 2",                            3, "1 0 0"},
        {"set 1 gain 0 5|link 1 0 2 0 --now|set 1 gain 0 6",                    3, "5 5 0"},
        {"scene save A|set 1 gain 0 1|scene recall A|set 1 gain 0 2",           3, "0 0 0"},
        {"set 1 gain 0 1|undo|set 1 gain 0 2",                                  1, "0 0 0"},
        {"set 2 gain 0 9|link 1 0 2 0|set 1 gain 0 9|set 1 gain 0 8",           2, "0 9 0"},
        {"set 2 gain 0 9|link 1 0 2 0|set 2 gain 0 9",                          2, "0 9 0"},
        {"set 1 gain 0 9|link 1 0 2 0 --now|link 2 0 3 0 --now|set 3 gain 0 4", 4, "9 9 9"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.lines);
        beginAnew();
        run(row.lines);
        const std::string before = channelsOf("gain");
        EXPECT_EQ(countSteps(), row.expected);
        run("undo");
        EXPECT_EQ(channelsOf("gain"), row.undone);
        run("redo");
        EXPECT_EQ(channelsOf("gain"), before);
    }
}

TEST_F(EditorTest, LinksAndStepsOutliveTheValues) {
    run("link 1 0 2 0|set 1 gain 0 7|drop");
    EXPECT_FALSE(isDone("undo"));
    EXPECT_FALSE(isDone("set 1 gain 0 8"));
    desk->add(1);
    desk->setReady(true);
    run("report 1 7");
    EXPECT_EQ(ask("undo")["missing"], Json::array({2}));
    EXPECT_EQ(value(1, "gain")->getValueInt(), 0);
    run("back|redo|set 1 hpf 0 1");
    EXPECT_EQ(channelsOf("gain"), "7 7 0");
    EXPECT_EQ(channelsOf("hpf"), "1 1 0");
}

TEST_F(EditorTest, ValuesMayEndWithinAPush) {
    run("link 1 0 2 0|link 2 0 3 0");
    onChange = [this](const ParamAddress& address) {
        if (address.device == 2)
            desk->drop();
    };
    EXPECT_FALSE(isDone("set 2 gain 0 5"));
    EXPECT_TRUE(remote->getDevices().empty());
    EXPECT_EQ(ask("links")["links"].size(), 2u);
}

TEST_F(EditorTest, ADeviceMayAnswerSomethingElse) {
    onChange = [this](const ParamAddress& address) {
        const IPtr<IValue> answering = value(address.device, "gain");
        if (address.device == 2 && answering->getValueInt() > 30)
            answering->setValue2(30, true);
    };
    run("link 1 0 2 0|link 2 0 3 0|set 1 gain 0 40");
    EXPECT_EQ(channelsOf("gain"), "40 30 30");
    run("undo");
    EXPECT_EQ(channelsOf("gain"), "0 0 0");
    run("set 2 gain 0 50");
    EXPECT_EQ(channelsOf("gain"), "30 30 30");
}

TEST_F(EditorTest, AnswersUnderWayUndoNothingAndReportsAreFollowed) {
    struct Row {
        const char *name, *lines, *expected;
    };
    constexpr Row kRows[] = {
        {"answers",                                                        "set 1 gain 0 10|set 2 gain 0 20|link 1 0 2 0|set 1 gain 0 33|undo", "10 20 0"},
        {"late ones",                                                      "report 1 33|report 2 33|report 1 10|report 2 20",                   "10 20 0"},
        {"by hand",                                                        "report 1 11",                                                       "11 11 0"},
        {"again",                                                          "report 1 10",                                                       "10 10 0"},
        {"of the slave",                                                   "report 2 12",                                                       "10 12 0"},
        {"it stood there when the link was made; nobody has set it since",
         "anew|set 1 gain 0 10|link 1 0 2 0|set 1 gain 0 33|report 1 10",                                                                       "10 10 0"},
        {"these devices weren't asked",                                    "set 1 gain 0 20|set 1 gain 0 33|drop|back|report 1 20",             "20 20 0"},
        {"newer ones are awaited",                                         "set 1 gain 0 30|set 1 gain 0 33|report 1 30",                       "30 33 0"},
        {"none has come",                                                  "patience",                                                          "30 30 0"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        run(row.lines);
        EXPECT_EQ(channelsOf("gain"), row.expected);
    }
}

TEST_F(EditorTest, LinksAreRefusedAndEnd) {
    run("set 1 gain 0 10|link 1 0 2 0|link 2 1 2 7");
    for (const std::string& line :
         piecesOf("link 1 0 1 0|link 2 0 1 0|link 1 1 2 0|link 1 0 9 0|link 1 0 2 8|link 1 0 2|"
                  "link 1 2 2 2 --allow-48v --now|unlink 1 0 2 2|unlink 1 0 2|unlink 1 5"))
        EXPECT_FALSE(isDone(line)) << line;
    const Json step = {
        {"id",    3     },
        {"param", "gain"},
        {"ch",    0     },
        {"value", 10    }
    };
    EXPECT_EQ(ask("link 1 0 3 0 --now")["steps"], Json::array({step}));
    EXPECT_EQ(ask("unlink 2 0 1 0")["links"].size(), 2u) << "either way round";
    run("set 1 gain 0 11");
    EXPECT_EQ(channelsOf("gain"), "11 0 11");
    run("link 2 7 2 3");
    EXPECT_EQ(ask("unlink 2 7")["links"].size(), 1u) << "as a slave and as a master";
}

TEST_F(EditorTest, NamesOfScenes) {
    auto refused = piecesOf("\"a/b\"|\"\"|.hidden|..|\" a\"|\"a \"|\"a\\u0000b\"|\"a\\u001bb\"|a*|\xFF");
    auto names = piecesOf("\"Take 1.5\"|A.xml|--allow-48v|\"\xC3\x9C \xF0\x9F\x98\x80\"|C:\\\\nul");
    refused.emplace_back(201, 'x');
    names.emplace_back(200, 'x');
    for (const std::string& word : refused)
        EXPECT_FALSE(isDone("scene save " + word)) << word;
    for (const std::string& word : names) {
        SCOPED_TRACE(word);
        EXPECT_TRUE(isDone("scene save " + word));
        EXPECT_TRUE(isDone("scene save " + word)) << "instead of the first";
        const Json name = replies.back()["name"];
        EXPECT_EQ(ask("scenes")["scenes"], Json::array({name}));
        EXPECT_TRUE(isDone("scene recall " + word));
        EXPECT_TRUE(isDone("scene delete " + word));
        EXPECT_EQ(ask("scenes")["scenes"], Json::array());
    }
}

TEST_F(EditorTest, WhatIsInTheWayIsNoScene) {
    const fs::path scenes = folder.path / "user/talv-host/Presets/Scenes";
    run("set 1 gain 0 5|scene save Show|set 1 gain 0 6");
    fs::create_directory(scenes / "Taken.xml");
    fs::copy(scenes / "Show.xml", scenes / (std::string(230, 'x') + ".xml"));
    fs::copy(scenes / "Show.xml", scenes / "Copy.xml");  // by somebody else
    for (const std::string& line : piecesOf("scene save Taken|scene save|scene burn Show|scene save Show --allow-48v|"
                                            "scene delete Nowhere|scene recall Nowhere|scene recall ../Show"))
        EXPECT_FALSE(isDone(line)) << line;
    EXPECT_EQ(ask("scenes")["scenes"], Json::array({"Copy", "Show"})) << "those that can be recalled";
    EXPECT_TRUE(isDone("scene recall Copy"));
    EXPECT_EQ(channelsOf("gain"), "5 0 0");
    std::ostringstream stored;
    stored << std::ifstream(scenes / "Show.xml").rdbuf();
    const std::string text = stored.str();
    const auto with = [&](std::string_view from, const char* to) {
        return std::string(text).replace(text.find(from), from.size(), to);
    };
    for (const std::string& bad :
         {with(R"("Scene")", R"("CmString")"), with(R"(ID" value="2")", R"(ID" value="1")"),
          with(R"(ID" value="1")", R"(ID" value="256")"), text.substr(0, 300), std::string()}) {
        std::ofstream(scenes / "Copy.xml") << bad;
        EXPECT_FALSE(isDone("scene recall Copy")) << bad;
    }
    std::ofstream(scenes / "Copy.xml") << with(R"("gain 0" value="5")", R"("gain 0" value="99999999999")");
    run("scene recall Copy");
    EXPECT_EQ(channelsOf("gain"), "100 0 0");
    fs::remove_all(scenes);
    std::ofstream(scenes) << "no folder";
    for (const char* line : {"scene save Show", "scene recall Show"})
        EXPECT_FALSE(isDone(line));
    run("drop");
    EXPECT_FALSE(isDone("scene save Nothing"));
}
}  // namespace
}  // namespace HostTest
