#pragma once
#include "pluginterfaces/base/conststringtable.h"
#include "pluginterfaces/host/italvprmaccessor.h"
#include <iterator>

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
inline const Tessarine::tchar* text(const char* literal) {
    return Tessarine::ConstStringTable::instance()->getString(literal);
}
}  // namespace Common

/** The frequencies that kPrmHPFFreq counts through. Each unit that includes this has its own table, built at load: not
    for use before other globals are there, nor in late destructors. */
[[maybe_unused]] static const Tessarine::tchar* const k_hpfFreqStringList[] = {
    Common::text("20 Hz"),   Common::text("21.2 Hz"), Common::text("22.4 Hz"), Common::text("23.6 Hz"),
    Common::text("25 Hz"),   Common::text("26.5 Hz"), Common::text("28 Hz"),   Common::text("30 Hz"),
    Common::text("31.5 Hz"), Common::text("33.5 Hz"), Common::text("35.5 Hz"), Common::text("37.5 Hz"),
    Common::text("40 Hz"),   Common::text("42.5 Hz"), Common::text("45 Hz"),   Common::text("47.5 Hz"),
    Common::text("50 Hz"),   Common::text("53 Hz"),   Common::text("56 Hz"),   Common::text("60 Hz"),
    Common::text("63 Hz"),   Common::text("67 Hz"),   Common::text("71 Hz"),   Common::text("75 Hz"),
    Common::text("80 Hz"),   Common::text("85 Hz"),   Common::text("90 Hz"),   Common::text("95 Hz"),
    Common::text("100 Hz"),  Common::text("106 Hz"),  Common::text("112 Hz"),  Common::text("118 Hz"),
    Common::text("125 Hz"),  Common::text("132 Hz"),  Common::text("140 Hz"),  Common::text("150 Hz"),
    Common::text("160 Hz"),  Common::text("170 Hz"),  Common::text("180 Hz"),  Common::text("190 Hz"),
    Common::text("200 Hz"),  Common::text("212 Hz"),  Common::text("224 Hz"),  Common::text("236 Hz"),
    Common::text("250 Hz"),  Common::text("265 Hz"),  Common::text("280 Hz"),  Common::text("300 Hz"),
    Common::text("315 Hz"),  Common::text("335 Hz"),  Common::text("355 Hz"),  Common::text("375 Hz"),
    Common::text("400 Hz"),  Common::text("425 Hz"),  Common::text("450 Hz"),  Common::text("475 Hz"),
    Common::text("500 Hz"),  Common::text("530 Hz"),  Common::text("560 Hz"),  Common::text("600 Hz"),
};
static_assert(std::size(k_hpfFreqStringList) == 60);

}  // namespace TALV
