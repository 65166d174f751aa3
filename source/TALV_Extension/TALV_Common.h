#pragma once
#include "pluginterfaces/base/conststringtable.h"
#include "pluginterfaces/host/italvprmaccessor.h"
#include <array>

/** The extension's common vocabulary. */

namespace TALV {

/** The address of a parameter. */
struct PrmInfo {
    unsigned char devId;  // 1 to 255
    TALV_ParamId paramId;
};

/** A device that is assigned to no channel. */
inline constexpr int32_t k_noItemForConnection = -1;

namespace Common {
template <size_t Size>
std::array<const Tessarine::tchar*, Size> texts(const char* const (&literals)[Size]) {
    std::array<const Tessarine::tchar*, Size> wide;
    for (size_t i = 0; i < Size; ++i)
        wide[i] = Tessarine::ConstStringTable::instance()->getString(literals[i]);
    return wide;
}
}  // namespace Common

/** The frequencies that kPrmHPFFreq counts through. Each unit that includes this has its own table, built at load: not
    for use before other globals are there, nor in late destructors. */
[[maybe_unused]] static const auto k_hpfFreqStringList = Common::texts(kHPFFreqTexts);

}  // namespace TALV
