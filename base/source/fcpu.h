#pragma once
#include <cstdint>

namespace Tessarine {

/** The processors, as they are when it is made. */
struct FCpuInfo {
    FCpuInfo();

    bool isLogicalAvailable(int32_t index) const { return index >= 0 && index < availableCpus; }

    int32_t numberOfCpus;   // online in the machine
    int32_t availableCpus;  // of these, the process may use
};

}  // namespace Tessarine
