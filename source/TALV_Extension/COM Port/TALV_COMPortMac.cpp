#include "source/TALV_Extension/COM Port/TALV_COMPortMac.h"
#include "base/source/fstring.h"
#include "pluginterfaces/gui/iplatform.h"
#include "pluginterfaces/gui/ivalue.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Tessarine;

namespace TALV {
namespace {
constexpr int32_t kMaxRead = 255;  // bytes of one record
constexpr uint32_t kSendMs = 2000;
constexpr speed_t kBaud = B38400;

/** A path that doesn't fit is no path. */
class DevicePath {
public:
    DevicePath() = default;
    DevicePath(const char* folder, const char* name) {
        if (std::snprintf(text, sizeof(text), "%s%s", folder, name) >= int(sizeof(text)))
            text[0] = 0;
    }
    /** A file descriptor, or -1. */
    int32_t open() const { return ::open(text, O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }

private:
    char text[256] = {};
};

bool canOpen(const DevicePath& path) {
    const int32_t handle = path.open();
    if (handle == -1)
        return false;
    ::close(handle);
    return true;
}

/** The names in the folder that may be ports, in natural order. */
std::vector<std::string> candidates(const TALV_PortNaming& naming) {
    std::vector<std::string> names;
    DIR* folder = opendir(naming.folder());
    if (!folder)
        return names;
    while (const dirent* entry = readdir(folder))
        if (naming.accepts(entry->d_name))
            names.emplace_back(entry->d_name);
    closedir(folder);
    std::ranges::sort(names,
                      [](const std::string& a, const std::string& b) { return strnatcmp8(a.c_str(), b.c_str()) < 0; });
    return names;
}

/** Nobody hears of it. */
void replaceSilently(IValue* value, const String& text) {
    value->enableUpdates(false);
    value->fromString2(text.text16(), false);
    value->enableUpdates(true);
}
}  // namespace

TALV_COMPortMac::TALV_COMPortMac(IHostClasses* hostClasses, TALV_DataManager* dataManager)
    : hostClasses(hostClasses), dataManager(dataManager) {}

void TALV_COMPortMac::initialize() {
    TALV_COMPort::initialize();
    updateCOMInfo();
}

int32_t TALV_COMPortMac::openPort() {
    DevicePath path;
    if (dataManager)
        path = DevicePath(TALV_PortNaming(hostClasses).folder(), dataManager->getCurrentCOMPortStr().text8());
    portHandle = path.open();
    if (portHandle == -1)
        return 1;
    configure();
    if (thread)
        thread->run();
    return 0;
}

int32_t TALV_COMPortMac::closePort() {
    if (thread)
        thread->cleanup();
    const bool wasOpen = portHandle != -1;
    if (wasOpen) {
        tcsetattr(portHandle, TCSANOW, &savedSettings);
        ::close(portHandle);
        portHandle = -1;
    }
    if (buffer)
        buffer->clear();
    return wasOpen ? 0 : 1;
}

int32_t TALV_COMPortMac::sendMessage(const unsigned char* data, int32_t size) {
    if (portHandle == -1)
        return 1;
    const FInstancePtr<IPlatform2> platform(hostClasses);
    if (!platform)
        return 1;
    const uint32_t start = platform->getTickCount();
    int32_t written = 0;
    while (written < size) {
        const ssize_t count = ::write(portHandle, data + written, size_t(size - written));
        if (count != -1)
            written += int32_t(count);
        if (platform->getTickCount() - start >= kSendMs)
            break;
    }
    return written < size ? 1 : 0;
}

int32_t TALV_COMPortMac::receiveMessage() {
    if (portHandle == -1 || !buffer)
        return 1;
    int32_t result = 1;
    unsigned char chunk[kMaxRead];
    while (!thread || thread->isContinued()) {  // a line that never runs dry must not keep the thread
        const ssize_t count = ::read(portHandle, chunk, sizeof(chunk));
        if (count < 1)
            break;
        if (store(chunk, int32_t(count)))
            result = 0;
    }
    return result;
}

void TALV_COMPortMac::updateCOMInfo() {
    if (!dataManager)
        return;
    dataManager->removeAllCOMPort();
    const String current = dataManager->getCurrentCOMPortStr();
    const TALV_PortNaming naming(hostClasses);
    bool found = false;
    for (const std::string& name : candidates(naming)) {
        if (!canOpen(DevicePath(naming.folder(), name.c_str())))
            continue;
        dataManager->addCOMPort(name.c_str(), int32_t(name.size()));
        found = found || name == current.text8();
    }
    if (dataManager->comPortValue && !found)
        replaceSilently(dataManager->comPortValue, dataManager->getCOMPort(0));
}

void TALV_COMPortMac::configure() {
    savedSettings = {};
    tcgetattr(portHandle, &savedSettings);
    termios settings = savedSettings;
    settings.c_iflag = IGNPAR;
    settings.c_oflag = 0;
    settings.c_cflag = CS8 | CREAD | CLOCAL;
    settings.c_lflag = 0;
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 1;
    cfsetspeed(&settings, kBaud);  // last: the speed is kept in c_cflag too
    tcflush(portHandle, TCIOFLUSH);
    tcsetattr(portHandle, TCSANOW, &settings);
}

bool TALV_COMPortMac::store(const unsigned char* data, int32_t count) {
    FGuard guard(buffer->recordLock);
    if (count > buffer->space())
        return false;
    unsigned char header[sizeof(count)];
    std::memcpy(header, &count, sizeof(count));
    buffer->write(header, sizeof(header));
    buffer->write(data, count);
    return true;
}

}  // namespace TALV
