#pragma once
#include "pluginterfaces/base/funknown.h"
#include <iterator>

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

/** The frequencies that kPrmHPFFreq counts through. */
inline constexpr const char* kHPFFreqTexts[] = {
    "20 Hz",   "21.2 Hz", "22.4 Hz", "23.6 Hz", "25 Hz",  "26.5 Hz", "28 Hz",  "30 Hz",  "31.5 Hz", "33.5 Hz",
    "35.5 Hz", "37.5 Hz", "40 Hz",   "42.5 Hz", "45 Hz",  "47.5 Hz", "50 Hz",  "53 Hz",  "56 Hz",   "60 Hz",
    "63 Hz",   "67 Hz",   "71 Hz",   "75 Hz",   "80 Hz",  "85 Hz",   "90 Hz",  "95 Hz",  "100 Hz",  "106 Hz",
    "112 Hz",  "118 Hz",  "125 Hz",  "132 Hz",  "140 Hz", "150 Hz",  "160 Hz", "170 Hz", "180 Hz",  "190 Hz",
    "200 Hz",  "212 Hz",  "224 Hz",  "236 Hz",  "250 Hz", "265 Hz",  "280 Hz", "300 Hz", "315 Hz",  "335 Hz",
    "355 Hz",  "375 Hz",  "400 Hz",  "425 Hz",  "450 Hz", "475 Hz",  "500 Hz", "530 Hz", "560 Hz",  "600 Hz",
};
static_assert(std::size(kHPFFreqTexts) == 60);

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
