#include "source/TALV_Extension/TALV_PrmAccessor.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include "tests/source/TALV_Extension/testhost.h"
#include <gtest/gtest.h>

using namespace TALV;
using namespace TALV::Test;

namespace {
class Accessor : public testing::Test {
protected:
    Accessor() { data.intialize(); }

    Updates updates;
    TestHost host;
    Listener manager;
    TALV_DataManager data{&host, &manager};
    OPtr<TALV_PrmAccessor> accessor{new TALV_PrmAccessor};
};
}  // namespace

TEST_F(Accessor, HasNothingWithoutADataManager) {
    for (int32_t round = 0; round < 2; ++round) {
        EXPECT_EQ(accessor->getIValue(5, kPrmGain), nullptr);
        EXPECT_FALSE(accessor->isReady());
        EXPECT_EQ(accessor->totalDevices(), 0);
        EXPECT_EQ(accessor->getConnectionPrm(8), 0);
        EXPECT_EQ(accessor->getIsConnectionUpdated(), nullptr);
        accessor->setConnectionPrm(3, 8);
        accessor->initialize(&data, &host);  // the second round: it has gone again
        data.addDevice(5);
        accessor->forgetDataManager();
    }
    EXPECT_TRUE(accessor->getIsPortUpdated());
}

TEST_F(Accessor, AssignsEachChannelToOneDevice) {
    constexpr std::tuple<const char*, int32_t, int32_t, int32_t, int32_t> kSteps[] = {
        {"5 takes 8",             5,   8,  0, 5  }, // device, channel; afterwards: who is on 0, on 8
        {"3 takes 8 from 5",      3,   8,  0, 3  },
        {"3 moves",               3,   0,  3, 0  },
        {"5 takes 8 again",       5,   8,  3, 5  },
        {"3 is freed",            3,   -1, 0, 5  },
        {"nobody on 8",           0,   8,  0, 0  },
        {"255 is the last",       255, 8,  0, 255},
        {"no such device: freed", 300, 8,  0, 0  },
    };
    accessor->initialize(&data, &host);
    for (const auto& [name, devId, channel, on0, on8] : kSteps) {
        SCOPED_TRACE(name);
        accessor->setConnectionPrm(devId, channel);
        EXPECT_EQ(accessor->getConnectionPrm(0), on0);
        EXPECT_EQ(accessor->getConnectionPrm(8), on8);
        EXPECT_EQ(data.connections.total(), 255);
    }
    data.connections.replace(200, 16);
    data.connections.replace(7, 16);  // goes to the end
    EXPECT_EQ(accessor->getConnectionPrm(16), 200);
    EXPECT_EQ(data.isConnectionUpdated->getValueInt(), 0) << "who changes the table toggles";
}
