#include "base/source/fcpu.h"
#include <algorithm>
#include <sched.h>
#include <unistd.h>

namespace Tessarine {
namespace {
int32_t countAllowed(int32_t otherwise) {
    cpu_set_t mask;
    CPU_ZERO(&mask);
    return sched_getaffinity(getpid(), sizeof(mask), &mask) == 0 ? CPU_COUNT(&mask) : otherwise;
}
}  // namespace

FCpuInfo::FCpuInfo()
    : numberOfCpus(static_cast<int32_t>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)))),
      availableCpus(countAllowed(numberOfCpus)) {}

}  // namespace Tessarine
