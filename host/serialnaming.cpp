#include "host/serialnaming.h"
#include <fstream>

using namespace Tessarine;

namespace {
constexpr const char* kUsualPrefixes[] = {"tty.", "ttyS", "ttyUSB", "ttyACM"};
constexpr const char* kDeviceFolder = "/dev/";

/** The kernel lists ports of the board that nothing answers behind; their type is 0. */
bool hasNoChip(const std::string& name) {
    std::ifstream type("/sys/class/tty/" + name + "/type");
    int number = -1;
    return type >> number && number == 0;
}

std::string closed(std::string folder) {
    if (folder.empty() || folder.back() != '/')
        folder += '/';
    return folder;
}
}  // namespace

SerialNaming::SerialNaming(const std::string& where, const std::vector<std::string>& which)
    : folder(closed(where)), prefixes(which) {
    if (prefixes.empty())
        prefixes.assign(std::begin(kUsualPrefixes), std::end(kUsualPrefixes));
}

int32_t SerialNaming::queryInterface(const char* iid, void** obj) {
    const bool known = answerInterface<ISerialPortNaming>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj);
    return known ? kResultOk : noInterface(obj);
}

const char* SerialNaming::getPrefix(int32_t index) const {
    return index >= 0 && index < countPrefixes() ? prefixes[size_t(index)].c_str() : nullptr;
}

bool SerialNaming::accepts(const char* name) const {
    return folder != kDeviceFolder || !hasNoChip(name);
}
