#include "source/TALV_Extension/TALV_DataManager.h"
#include "tests/source/TALV_Extension/testhost.h"
#include <gtest/gtest.h>
#include <set>

using namespace TALV;
using namespace TALV::Test;

namespace {
class DataManager : public testing::Test {
protected:
    DataManager() { data->intialize(); }
    ~DataManager() override {
        data->removeAllCOMPort();
        data.reset();
    }
    IValue* value(unsigned char devId, int32_t id) { return data->getParamIValue({devId, TALV_ParamId(id)}); }

    Updates updates;
    TestHost host;
    Listener manager;
    std::unique_ptr<TALV_DataManager> data = std::make_unique<TALV_DataManager>(&host, &manager);
};

struct ParamRow {
    const char* name;
    int32_t id, count, type, min, max, defaultValue;  // defaultValue -1: has none
};
constexpr ParamRow kParams[] = {
    {"mode",        10100, 1, IValue::kInteger, 0, 3,   0 },
    {"name",        10101, 1, IValue::kString,  0, 0,   -1},
    {"word clock",  10200, 1, IValue::kInteger, 0, 5,   0 },
    {"gain",        10300, 8, IValue::kInteger, 0, 72,  72},
    {"+48V",        10400, 8, IValue::kOnOff,   0, 1,   -1},
    {"HPF",         10500, 8, IValue::kOnOff,   0, 1,   -1},
    {"meter mode",  10600, 1, IValue::kOnOff,   0, 1,   -1},
    {"meter",       10601, 8, IValue::kInteger, 0, 127, 0 },
    {"trim",        10700, 8, IValue::kInteger, 0, 30,  15},
    {"lock",        10800, 1, IValue::kOnOff,   0, 1,   -1},
    {"brightness",  10900, 1, IValue::kInteger, 0, 7,   5 },
    {"+48V master", 11000, 1, IValue::kOnOff,   0, 1,   -1},
    {"frequency",   11100, 8, IValue::kInteger, 0, 59,  24},
};
}  // namespace

TEST_F(DataManager, ANewDeviceHasItsValues) {
    data->addDevice(5);
    std::set<IValue*> values;
    for (const ParamRow& row : kParams)
        for (int32_t id = row.id; id < row.id + row.count; ++id) {
            SCOPED_TRACE(testing::Message() << row.name << " " << id);
            IValue* each = value(5, id);
            ASSERT_TRUE(each);
            values.insert(each);
            EXPECT_EQ(each->getValueType(), row.type);
            EXPECT_EQ(each->getValueInt(), 0) << "a default is no value";
            if (row.type != IValue::kString) {
                EXPECT_EQ(each->getMinValue(), row.min);
                EXPECT_EQ(each->getMaxValue(), row.max);
            }
            float defaultValue = -1;
            FUnknownPtr<IValue2>(each)->getDefault(defaultValue);
            EXPECT_EQ(defaultValue, float(row.defaultValue));
            EXPECT_EQ(data->getParamInfo(each).devId, 5);
            EXPECT_EQ(data->getParamInfo(each).paramId, id);
        }
    EXPECT_EQ(values.size(), 55u);
    EXPECT_EQ(data->devices.lookupObject(5)->total(), 55);
}

TEST_F(DataManager, WhatIsUnknownIsNull) {
    EXPECT_EQ(value(5, kPrmGain), nullptr);
    data->addDevice(5);
    for (const int32_t id : {0, 10099, 10308, 10609, 11108})
        EXPECT_EQ(value(5, id), nullptr) << id;
    EXPECT_EQ(value(4, kPrmGain), nullptr);
    EXPECT_EQ(data->getParamInfo(nullptr).paramId, kPrmNone);
    EXPECT_EQ(data->getParamInfo(nullptr).devId, 0);
    EXPECT_EQ(data->getParamInfo(data->comPortValue).paramId, kPrmNone);
}

TEST_F(DataManager, ForgettingDevicesReleasesTheirValues) {
    data->addDevice(5);
    data->addDevice(5);
    data->addDevice(6);
    EXPECT_EQ(data->devices.total(), 2);
    IPtr<IValue> kept = value(5, kPrmGain);
    data->comPortValue->fromString2(u"tty.a", true);
    data->removeAllParams();
    EXPECT_EQ(data->devices.total(), 0);
    EXPECT_EQ(data->getParamInfo(kept).paramId, kPrmNone);
    EXPECT_EQ(kept.detach()->release(), 0u) << "the last reference";
    EXPECT_STREQ(data->getCurrentCOMPortStr().text8(), "tty.a");
    EXPECT_EQ(data->connections.total(), 255);
}

TEST_F(DataManager, ListenersMayLookUpWhileValuesGo) {
    class Asker : public Listener {
    public:
        explicit Asker(TALV_DataManager& data) : data(data) {}
        void update(FUnknown* changedUnknown, int32_t message) override {
            Listener::update(changedUnknown, message);
            for (unsigned char devId = 5; devId <= 7; ++devId)
                data.getParamInfo(data.getParamIValue({devId, kPrmBrightness}));
        }
        TALV_DataManager& data;
    } asker(*data);
    for (unsigned char devId = 5; devId <= 7; ++devId) {
        data->addDevice(devId);
        FObject::gUpdateHandler->addDependent(value(devId, kPrmGain), &asker);
    }
    data->removeAllParams();
    EXPECT_EQ(asker.count(kDestroyed), 3u);
    FObject::gUpdateHandler->removeDependent(nullptr, &asker);
}

TEST_F(DataManager, ConnectionsHoldAllIdsAndTheFirstOnAChannelIsFound) {
    EXPECT_EQ(data->connections.total(), 255);
    EXPECT_EQ(data->getDevIdByChForConnection(0), 0);
    EXPECT_EQ(data->getDevIdByChForConnection(-1), 1);
    data->connections.replace(200, 8);
    data->connections.replace(7, 8);  // goes to the end
    EXPECT_EQ(data->getDevIdByChForConnection(8), 200);
    data->connections.replace(300, 16);
    EXPECT_EQ(data->getDevIdByChForConnection(16), 0);
}

TEST_F(DataManager, WithoutAnUpdateHandlerADeviceHasNoValues) {
    class Mute : public TestHost {
        int32_t createClassInstance(const char* iid, void** obj) override {
            return FUID::same(iid, IUpdateHandler::iid) ? kResultFalse : TestHost::createClassInstance(iid, obj);
        }
    } mute;
    TALV_DataManager quiet(&mute, &manager);
    quiet.addDevice(5);
    EXPECT_EQ(quiet.getParamIValue({5, kPrmGain}), nullptr);
    quiet.addIntValue(nullptr, kPrmGain, 0, 1, 0);
}
