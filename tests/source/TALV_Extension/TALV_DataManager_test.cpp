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

}  // namespace

TEST_F(DataManager, ANewDeviceHasItsValues) {
    data->addDevice(5);
    std::set<IValue*> values;
    for (const auto& param : *data->devices.lookupObject(5)) {
        values.insert(param.value);
        EXPECT_EQ(param.value->getValueInt(), 0) << "a default is no value";
        EXPECT_EQ(value(5, param.key), param.value);
        EXPECT_EQ(data->getParamInfo(param.value).devId, 5);
        EXPECT_EQ(data->getParamInfo(param.value).paramId, param.key);
    }
    EXPECT_EQ(values.size(), 55u);
    constexpr std::tuple<int32_t, float, float> kRows[] = {
  // parameter, highest and default value
        {kPrmBrightness,   7,   5 },
        {kPrmGain + 7,     72,  72},
        {kPrmMeter + 7,    127, 0 },
        {kPrmGainTrim + 7, 30,  15},
        {kPrmHPFFreq + 7,  59,  24},
    };
    for (const auto& [id, max, defaultValue] : kRows) {
        float found = -1;
        EXPECT_EQ(value(5, id)->getMaxValue(), max);
        EXPECT_TRUE(FUnknownPtr<IValue2>(value(5, id))->getDefault(found) && found == defaultValue) << id;
    }
}

TEST_F(DataManager, ForgettingDevicesReleasesTheirValues) {
    data->addDevice(5);
    data->addDevice(5);
    data->addDevice(6);
    EXPECT_EQ(data->devices.total(), 2);
    IPtr<IValue> kept = value(5, kPrmGain);
    data->comPortValue->fromString2(u"tty.a", true);
    EXPECT_EQ(value(5, 10308), nullptr);
    data->removeAllParams();
    EXPECT_EQ(value(5, kPrmGain), nullptr);
    EXPECT_EQ(data->getParamInfo(kept).paramId, kPrmNone);
    EXPECT_EQ(referencesOf(kept), 1u);
    EXPECT_STREQ(data->getCurrentCOMPortStr().text8(), "tty.a");
}

TEST_F(DataManager, ListenersMayLookUpWhileValuesGo) {
    Listener asker;
    asker.then = [this] {
        for (unsigned char devId = 5; devId <= 7; ++devId)
            data->getParamInfo(value(devId, kPrmBrightness));
    };
    for (unsigned char devId = 5; devId <= 7; ++devId) {
        data->addDevice(devId);
        FObject::gUpdateHandler->addDependent(value(devId, kPrmGain), &asker);
    }
    data->removeAllParams();
    EXPECT_EQ(asker.count(kDestroyed), 3);
    FObject::gUpdateHandler->removeDependent(nullptr, &asker);
}
