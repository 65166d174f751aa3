#pragma once
#include "pluginterfaces/base/funknown.h"
#include <cstdint>
#include <cstring>

namespace Tessarine {

/** A number for a table of buckets, in another way in each process: so no file can be made whose numbers all fall into one
    bucket. */
inline uint64_t spread(uint64_t number) {
    static const uint64_t kSeed = [] {
        FUID id;
        id.generate();
        uint64_t seed;
        std::memcpy(&seed, id.data, sizeof seed);
        return seed;
    }();
    uint64_t mixed = number ^ kSeed;
    for (int32_t round = 0; round < 2; ++round)
        mixed = (mixed ^ mixed >> 33) * 0xFF51AFD7ED558CCDu;
    return mixed ^ mixed >> 33;
}

}  // namespace Tessarine
