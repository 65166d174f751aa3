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

class EditorTest : public HostFixture, public RemoteListener {
protected:
    void SetUp() override {
        for (int32_t device = 1; device <= 3; ++device)
            desk->add(device);
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
        desk->setReady(true);
        SetUp();
    }

    void readyChanged(bool) override {}
    void deviceFound(int32_t device) override {
        if (commands)
            commands->deviceFound(device);
    }
    void devicesGone() override {}
    void valueChanged(const ParamAddress& address) override {
        if (onChange)
            onChange(address);
    }
    void connectionChanged() override {}

    Json ask(const std::string& line) {
        commands->take(line);
        return replies.back();
    }
    bool isDone(const std::string& line) { return ask(line)["ok"]; }
    void run(const char* lines) {
        for (const std::string& line : piecesOf(lines))
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

TEST_F(EditorTest, TheLastThousandStepsAreKept) {
    for (int32_t i = 0; i < 1010; ++i)
        run(i % 2 ? "set 1 gain 0 1|ready" : "set 1 gain 0 2|ready");
    EXPECT_EQ(countSteps(), 1000u);
    int32_t undone = 0;
    while (isDone("undo"))
        ++undone;
    EXPECT_EQ(undone, 1000);
    EXPECT_EQ(channelsOf("gain"), "1 0 0");
    EXPECT_EQ(ask("history")["position"], 0);
}

TEST_F(EditorTest, LinksAndStepsOutliveTheValues) {
    run("link 1 0 2 0|set 1 gain 0 7");
    desk->drop();
    EXPECT_FALSE(isDone("undo"));
    EXPECT_FALSE(isDone("set 1 gain 0 8"));
    desk->add(1);
    desk->setReady(true);
    value(1, "gain")->setValue2(7, true);
    EXPECT_EQ(ask("undo")["missing"], Json::array({2}));
    EXPECT_EQ(value(1, "gain")->getValueInt(), 0);
    desk->add(2);
    desk->add(3);
    desk->setReady(true);
    EXPECT_EQ(channelsOf("gain"), "0 0 0");
    run("redo|set 1 hpf 0 1");
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

TEST_F(EditorTest, AnswersUnderWayUndoNothing) {
    const auto report = [this](int32_t device, int32_t level) { value(device, "gain")->setValue2(level, true); };
    run("set 1 gain 0 10|set 2 gain 0 20|link 1 0 2 0|set 1 gain 0 33|undo");
    for (const auto& [device, level] : {
             std::pair{1, 33},
             {2, 33},
             {1, 10},
             {2, 20}
    })
        report(device, level);
    EXPECT_EQ(channelsOf("gain"), "10 20 0");
    report(1, 11);
    EXPECT_EQ(channelsOf("gain"), "11 11 0");
    report(1, 10);
    EXPECT_EQ(channelsOf("gain"), "10 10 0") << "by hand";
    report(2, 12);
    EXPECT_EQ(channelsOf("gain"), "10 12 0");
}

TEST_F(EditorTest, WhatOnlyLooksLikeAnAnswerIsFollowed) {
    const auto report = [this](int32_t level) { value(1, "gain")->setValue2(level, true); };
    run("set 1 gain 0 10|link 1 0 2 0|set 1 gain 0 33");
    report(10);
    EXPECT_EQ(channelsOf("gain"), "10 10 0") << "it stood there when the link was made; nobody has set it since";
    run("set 1 gain 0 20|set 1 gain 0 33");
    desk->drop();
    for (int32_t device = 1; device <= 3; ++device)
        desk->add(device);
    desk->setReady(true);
    report(20);
    EXPECT_EQ(channelsOf("gain"), "20 20 0") << "these devices weren't asked";
    run("set 1 gain 0 30|set 1 gain 0 33");
    report(30);
    EXPECT_EQ(channelsOf("gain"), "30 33 0");
    application.run(5500);
    EXPECT_EQ(channelsOf("gain"), "30 30 0") << "nothing newer has come";
}

TEST_F(EditorTest, NamesOfScenes) {
    struct Row {
        std::string word;
        bool isName;
    };
    const Row rows[] = {
        {"\"a/b\"", false},
        {"\"\"", false},
        {".hidden", false},
        {"..", false},
        {"\" a\"", false},
        {"\"a \"", false},
        {"\"a\\u0000b\"", false},
        {"\"a\\u001bb\"", false},
        {std::string(201, 'x'), false},
        {"a*", false},
        {"\xFF", false},
        {"\"Take 1.5\"", true},
        {std::string(200, 'x'), true},
        {"A.xml", true},
        {"--allow-48v", true},
        {"\"\xC3\x9C \xF0\x9F\x98\x80\"", true},
        {"\"Show 1\"", true},
        {"C:\\\\nul", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.word);
        const bool saved = isDone("scene save " + row.word);
        EXPECT_EQ(saved, row.isName);
        if (!saved)
            continue;
        EXPECT_TRUE(isDone("scene save " + row.word)) << "instead of the first";
        const Json name = replies[replies.size() - 1]["name"];
        EXPECT_EQ(ask("scenes")["scenes"], Json::array({name}));
        EXPECT_TRUE(isDone("scene recall " + row.word));
        EXPECT_TRUE(isDone("scene delete " + row.word));
        EXPECT_EQ(ask("scenes")["scenes"], Json::array());
    }
}

TEST_F(EditorTest, AFolderThatIsInTheWayIsNoScene) {
    const fs::path scenes = folder.path / "user/talv-host/Presets/Scenes";
    run("set 1 gain 0 5|scene save Show|set 1 gain 0 6");
    fs::create_directory(scenes / "Taken.xml");
    EXPECT_FALSE(isDone("scene save Taken"));
    EXPECT_EQ(ask("scenes")["scenes"], Json::array({"Show"}));
    fs::copy(scenes / "Show.xml", scenes / "Copy.xml");  // by somebody else
    EXPECT_TRUE(isDone("scene recall Copy"));
    EXPECT_EQ(channelsOf("gain"), "5 0 0");
    fs::copy(scenes / "Show.xml", scenes / (std::string(230, 'x') + ".xml"));
    EXPECT_EQ(ask("scenes")["scenes"], Json::array({"Copy", "Show"})) << "those that can be recalled";
    fs::remove_all(scenes);
    std::ofstream(scenes) << "no folder";
    EXPECT_FALSE(isDone("scene save Show"));
    EXPECT_FALSE(isDone("scene recall Show"));
    desk->drop();
    EXPECT_FALSE(isDone("scene save Nothing"));
}
}  // namespace
}  // namespace HostTest
