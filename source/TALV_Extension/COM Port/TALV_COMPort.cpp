#include "source/TALV_Extension/COM Port/TALV_COMPort.h"
#include <algorithm>
#include <cstring>

using namespace Tessarine;

namespace TALV {
namespace {
constexpr int32_t kPollMs = 500;
constexpr int32_t kEndMs = 5000;
constexpr int32_t kRingSize = 4096;  // bytes

constexpr const char* k_devName = "/dev/";
constexpr const char* k_ctrlDevStr = "tty.";
constexpr const char* k_serialPortStr = "ttyS";
constexpr const char* k_usbPortStr = "ttyUSB";
constexpr const char* k_modemPortStr = "ttyACM";
constexpr const char* kPrefixes[] = {k_ctrlDevStr, k_serialPortStr, k_usbPortStr, k_modemPortStr};

bool startsWith(const char* name, const char* prefix) {
    return std::strncmp(name, prefix, std::strlen(prefix)) == 0;
}
}  // namespace

COMPortThread::COMPortThread(COMPortThreadObserver* observer) : FThread("COM Port Thread"), observer(observer) {}

void COMPortThread::cleanup() {
    setContinued(false);
    if (!waitDead(kEndMs))
        terminate();
    setContinued(true);
}

void COMPortThread::entry() {
    while (isContinued()) {
        if (observer)
            observer->callObserver();
        FThreadSleep(kPollMs);
    }
}

bool COMPortThread::isContinued() const {
    FGuard guard(conditionLock);
    return continueFlag;
}

void COMPortThread::setContinued(bool state) {
    FGuard guard(conditionLock);
    continueFlag = state;
}

const char* TALV_PortNaming::folder() const {
    return hostNaming ? hostNaming->getFolder() : k_devName;
}

bool TALV_PortNaming::accepts(const char* name) const {
    return hasPrefix(name) && (!hostNaming || hostNaming->accepts(name));
}

bool TALV_PortNaming::hasPrefix(const char* name) const {
    if (!hostNaming)
        return std::ranges::any_of(kPrefixes, [name](const char* prefix) { return startsWith(name, prefix); });
    for (int32_t i = 0; i < hostNaming->countPrefixes(); ++i)
        if (startsWith(name, hostNaming->getPrefix(i)))
            return true;
    return false;
}

void TALV_COMPort::initialize() {
    buffer = std::make_unique<TALV_CircularBuffer>();
    buffer->initialize(kRingSize);
    thread = std::make_unique<COMPortThread>(this);
}

int32_t TALV_COMPort::readData(unsigned char* data, int32_t size) {
    if (!data || !buffer)
        return 0;
    FGuard guard(buffer->recordLock);
    int32_t total = 0;
    while (buffer->avail() > 0) {
        int32_t length = 0;
        unsigned char header[sizeof(length)] = {};  // a record that was cut off may have less than a header
        buffer->read(header, sizeof(header));
        std::memcpy(&length, header, sizeof(length));
        if (length < 0 || length > size - total) {
            buffer->stepBack(sizeof(header));
            break;
        }
        buffer->read(data + total, length);
        total += length;
    }
    return total;
}

}  // namespace TALV
