#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IValue;
}

namespace TALV {

/** Parameters of a head amp. Hosts ask by these numbers: never change one. A channel parameter is a run of eight
    numbers, channel 0 first; the meters start at a number ending in 1, since 10600 is the meter mode. */
enum TALV_ParamId : int32_t {
    kPrmNone = 0,
    kPrmDevMode = 10100,
    kPrmDevName = 10101,
    kPrmWordClock = 10200,
    kPrmGain = 10300,
    kPrmPlus48V = 10400,
    kPrmHPF = 10500,
    kPrmMeterMode = 10600,
    kPrmMeter = 10601,
    kPrmGainTrim = 10700,
    kPrmPanelLock = 10800,
    kPrmBrightness = 10900,
    kPrmPlus48VMaster = 11000,
    kPrmHPFFreq = 11100,
};
inline constexpr int32_t kNumChannels = 8;

/** What a host reaches the hardware's parameters by. It hands out the values themselves: set one to send, depend on one
    to hear. All values are borrowed, and go away when a port change starts: read isReady() at each toggle of the port
    notice, and look again now and then, since not every change is announced. Main thread only. */
class ITALV_PrmAccessor : public Tessarine::FUnknown {
public:
    /** devId is 1 to 255. Null when device or parameter is unknown. */
    virtual Tessarine::IValue* getIValue(unsigned char devId, TALV_ParamId paramId) = 0;
    virtual bool isReady() const = 0;
    /** Toggles when a port change starts, and when it has ended in an open port. */
    virtual Tessarine::IValue* getIsPortUpdated() const = 0;
    virtual int32_t totalDevices() const = 0;
    /** Assigns a device to the channel, and takes the channel from who had it. Channel -1 frees the device, device 0
        frees the channel. Who changes the table toggles the connection notice. */
    virtual void setConnectionPrm(int32_t devId, int32_t channel) = 0;
    /** The device on that channel, or 0. */
    virtual int32_t getConnectionPrm(int32_t channel) = 0;
    virtual Tessarine::IValue* getIsConnectionUpdated() const = 0;

    DECLARE_INTERFACE(ITALV_PrmAccessor)
};

}  // namespace TALV
