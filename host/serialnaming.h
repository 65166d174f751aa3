#pragma once
#include "pluginterfaces/host/iserialportnaming.h"
#include <string>
#include <vector>

/** Which names the extension takes for serial ports on this machine: a folder, prefixes, and no port of the board's
    old kind that has no chip behind it. A static object of the program: the counts say that it stays. */
class SerialNaming final : public Tessarine::ISerialPortNaming {
public:
    /** The folder gets its closing "/". No prefixes: the usual ones. */
    SerialNaming(const std::string& folder, const std::vector<std::string>& prefixes);

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
    const char* getFolder() const override { return folder.c_str(); }
    int32_t countPrefixes() const override { return int32_t(prefixes.size()); }
    const char* getPrefix(int32_t index) const override;
    bool accepts(const char* name) const override;

private:
    std::string folder;
    std::vector<std::string> prefixes;
};
