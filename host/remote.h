#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/idevicelist.h"
#include "pluginterfaces/host/italvprmaccessor.h"
#include <array>
#include <map>
#include <set>
#include <string>

namespace Tessarine {
class IValue;
class UTimer;
}  // namespace Tessarine

/** A parameter as users name it. */
struct ParamRow {
    const char* name;
    TALV::TALV_ParamId firstId;
    bool perChannel;
    bool isText;
    bool isSent;  // a setting goes to the hardware
};
inline constexpr ParamRow kParams[] = {
    {"devMode",       TALV::kPrmDevMode,       false, false, true },
    {"devName",       TALV::kPrmDevName,       false, true,  false},
    {"wordClock",     TALV::kPrmWordClock,     false, false, true },
    {"gain",          TALV::kPrmGain,          true,  false, true },
    {"plus48V",       TALV::kPrmPlus48V,       true,  false, true },
    {"hpf",           TALV::kPrmHPF,           true,  false, true },
    {"meterMode",     TALV::kPrmMeterMode,     false, false, false},
    {"meter",         TALV::kPrmMeter,         true,  false, false},
    {"gainTrim",      TALV::kPrmGainTrim,      true,  false, true },
    {"panelLock",     TALV::kPrmPanelLock,     false, false, true },
    {"brightness",    TALV::kPrmBrightness,    false, false, true },
    {"plus48VMaster", TALV::kPrmPlus48VMaster, false, false, false},
    {"hpfFreq",       TALV::kPrmHPFFreq,       true,  false, true },
};
/** Null: there is no such parameter. */
const ParamRow* findParam(const std::string& name);

/** One value of a device; channel is -1 for a parameter of the device as a whole. */
struct ParamAddress {
    int32_t device;
    const ParamRow* param;
    int32_t channel;

    bool operator==(const ParamAddress&) const = default;
};

/** Hears what happens to the remote. */
class RemoteListener {
public:
    virtual void readyChanged(bool ready) = 0;
    virtual void deviceFound(int32_t device) = 0;
    virtual void devicesGone() = 0;
    virtual void valueChanged(const ParamAddress& address) = 0;
    virtual void connectionChanged() = 0;

protected:
    ~RemoteListener() = default;
};

/** The extension's parameters as this host uses them: found through the device list, watched for changes. Not every
    change of state is announced, so that it looks itself too.

    Owns      nothing of the extension: values are borrowed from one announcement to the next.
    Threads   main. */
class Remote : public Tessarine::CmObject {
public:
    Remote(Tessarine::IDeviceList* devices, RemoteListener& listener) : deviceList(devices), listener(listener) {}
    ~Remote() override { stop(); }

    void start();
    /** Lets go of everything; before the module's service ends. */
    void stop();

    /** The extension has made itself known. */
    bool isThere() const { return accessor; }
    bool isReady() const { return ready; }
    const std::set<int32_t>& getDevices() const { return known; }
    /** Null: no such device now. Borrowed for the moment. */
    Tessarine::IValue* getValue(const ParamAddress& address) const;
    /** The channel that a device is assigned to, or -1. */
    int32_t getChannel(int32_t device);
    /** The device on the channel, or 0. */
    int32_t getDeviceOn(int32_t channel) const;
    /** Assigns, and tells all who watch the assignments. false: there is no remote. */
    bool assign(int32_t device, int32_t channel);

    using CmObject::update;
    void update(Tessarine::FUnknown* changed, int32_t message) override;
    int32_t notify(Tessarine::FMessage* message) override;

private:
    void look();
    void readChannels();
    bool findAccessor();
    void lookForDevices();
    void watchDevice(int32_t device);
    void forgetDevices();
    void setReady(bool state);

    Tessarine::IDeviceList* deviceList;  // borrowed
    RemoteListener& listener;
    Tessarine::OPtr<TALV::ITALV_PrmAccessor> accessor;
    Tessarine::UTimer* timer = nullptr;                  // owned
    std::map<Tessarine::IValue*, ParamAddress> watched;  // borrowed
    std::set<int32_t> known;
    std::array<int32_t, 256> channels = {};  // of each device, as far as they are known
    bool channelsKnown = false;              // false: the table changed
    bool ready = false;
    int32_t looksToSkip = 0;  // the old devices are about to go
};

/** The value as text; numbers in their own form. */
std::string textOf(Tessarine::IValue* value);
/** Sets a text in UTF-8; false: it is malformed. */
bool setText(Tessarine::IValue* value, const std::string& text);
