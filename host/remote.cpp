#include "host/remote.h"
#include "base/fmessage.h"
#include "base/source/updatehandler.h"
#include "base/utimer.h"
#include "host/options.h"
#include "host/texts.h"
#include "pluginterfaces/gui/ivalue.h"
#include "pluginterfaces/host/iplugdevice.h"
#include <algorithm>
#include <vector>

using namespace Tessarine;

namespace {
constexpr uint32_t kLookPeriodMs = 50;
constexpr int32_t kLooksBetweenPorts = 2;  // by then the extension has dropped the devices of the old port
constexpr const char* kAccessorName = "TALV Param Accessor";

template <class Visit>
void forEachParam(int32_t device, Visit visit) {
    for (const ParamRow& row : kParams)
        for (int32_t channel = 0; channel < (row.perChannel ? TALV::kNumChannels : 1); ++channel)
            visit(ParamAddress{device, &row, row.perChannel ? channel : -1});
}

void depend(FUnknown* value, IDependent* dependent) {
    if (value)
        UpdateHandler::instance()->addDependent(value, dependent);
}

void undepend(FUnknown* value, IDependent* dependent) {
    if (value)
        UpdateHandler::instance()->removeDependent(value, dependent);
}
}  // namespace

const ParamRow* findParam(const std::string& name) {
    const auto row = std::ranges::find_if(kParams, [&name](const ParamRow& each) { return name == each.name; });
    return row == std::end(kParams) ? nullptr : row;
}

void Remote::start() {
    timer = new UTimer(this, 0, kLookPeriodMs);
    look();
}

void Remote::stop() {
    if (timer)
        timer->kill();
    timer = nullptr;
    for (const auto& [value, address] : watched)
        undepend(value, this);
    watched.clear();
    known.clear();
    if (!accessor)
        return;
    undepend(accessor->getIsPortUpdated(), this);
    undepend(accessor->getIsConnectionUpdated(), this);
    accessor = nullptr;
}

bool Remote::findAccessor() {
    for (int32_t i = 0; !accessor && i < deviceList->countDevices(); ++i) {
        IPlugDevice* device = deviceList->getDevice(i);
        const char* category = device->getDeviceCategory();
        if (!category || std::strcmp(category, kAccessorName) != 0)
            continue;
        accessor = FUnknownPtr<TALV::ITALV_PrmAccessor>(device).detach();
        if (!accessor)
            continue;
        depend(accessor->getIsPortUpdated(), this);
        depend(accessor->getIsConnectionUpdated(), this);
    }
    return accessor;
}

void Remote::look() {
    if (!findAccessor())
        return;
    if (looksToSkip > 0)
        --looksToSkip;
    else
        lookForDevices();
    setReady(accessor->isReady());
}

void Remote::setReady(bool state) {
    if (ready == state)
        return;
    ready = state;
    listener.readyChanged(ready);
}

void Remote::lookForDevices() {
    const int32_t total = accessor->totalDevices();
    if (total == int32_t(known.size()))
        return;
    if (total < int32_t(known.size()))
        forgetDevices();
    for (int32_t device = 1; device <= kMaxDevice; ++device)
        if (!known.contains(device) && accessor->getIValue(uint8_t(device), TALV::kPrmDevMode))
            watchDevice(device);
}

void Remote::watchDevice(int32_t device) {
    known.insert(device);
    forEachParam(device, [this](const ParamAddress& address) {
        if (IValue* value = getValue(address)) {
            depend(value, this);
            watched.emplace(value, address);
        }
    });
    listener.deviceFound(device);
}

void Remote::forgetDevices() {
    for (const auto& [value, address] : watched)
        undepend(value, this);
    watched.clear();
    if (known.empty())
        return;
    known.clear();
    listener.devicesGone();
}

IValue* Remote::getValue(const ParamAddress& address) const {
    if (!accessor || !known.contains(address.device))
        return nullptr;
    const int32_t id = address.param->firstId + std::max(address.channel, 0);
    return accessor->getIValue(uint8_t(address.device), TALV::TALV_ParamId(id));
}

int32_t Remote::getChannel(int32_t device) {
    if (!channelsKnown)
        readChannels();
    return device > 0 && device <= kMaxDevice ? channels[size_t(device)] : -1;
}

/** The table answers by channel only, and each answer is a search. */
void Remote::readChannels() {
    channels.fill(-1);
    for (int32_t channel = kMaxInputs - 1; accessor && channel >= 0; --channel)
        if (const int32_t device = accessor->getConnectionPrm(channel); device > 0 && device <= kMaxDevice)
            channels[size_t(device)] = channel;
    channelsKnown = accessor;
}

int32_t Remote::getDeviceOn(int32_t channel) const {
    return accessor ? accessor->getConnectionPrm(channel) : 0;
}

bool Remote::assign(int32_t device, int32_t channel) {
    IValue* notice = accessor ? accessor->getIsConnectionUpdated() : nullptr;
    if (!notice)
        return false;
    accessor->setConnectionPrm(device, channel);
    channelsKnown = false;
    notice->setValue2(!notice->getValueInt(), true);
    return true;
}

void Remote::update(FUnknown* changed, int32_t message) {
    const FUnknownPtr<IValue> value(changed);
    if (!value || !accessor)
        return;
    if (message == kDestroyed) {
        watched.erase(value);
        return;
    }
    if (message != kChanged)
        return;
    if (value.get() == accessor->getIsPortUpdated()) {
        if (!accessor->isReady()) {
            forgetDevices();
            looksToSkip = kLooksBetweenPorts;
        } else
            lookForDevices();  // who hears of ready asks for them
        setReady(accessor->isReady());
    } else if (value.get() == accessor->getIsConnectionUpdated()) {
        channelsKnown = false;
        listener.connectionChanged();
    } else if (const auto found = watched.find(value); found != watched.end())
        listener.valueChanged(found->second);
}

int32_t Remote::notify(FMessage* message) {
    if (!message || !message->isType("Timer"))
        return CmObject::notify(message);
    look();
    return 1;
}

std::string textOf(IValue* value) {
    int32_t length = 0;
    value->toString2(nullptr, &length);
    std::vector<tchar> buffer(size_t(std::max(length, 1)));
    value->toString2(buffer.data(), &length);
    return utf8Of(ConstString(buffer.data()));
}

bool setText(IValue* value, const std::string& text) {
    String wide;
    if (!wideOf(text, wide))
        return false;
    value->fromString2(wide.text16(), true);
    return true;
}
