#include "frame/source/graphics/bitmapfilters/areascale.h"
#include "frame/source/graphics/bitmapfilters/colorfilters.h"
#include "frame/source/graphics/bitmapfilters/transformfilters.h"
#include <cstring>
#include <iterator>

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
template <class Filter>
FilterBase* made(IBitmapFactory* bitmaps) {
    return new Filter(bitmaps);
}

using Maker = FilterBase* (*)(IBitmapFactory* bitmaps);
constexpr Maker kMakers[] = {made<AdjustHSL>, made<Desaturate>, made<ReplaceColor>, made<Tint>,
                             made<Mirror>,    made<Rotate>,     made<PNMScale>};
}  // namespace

const char* const kDefaultFilterNames[7] = {"AdjustHSL", "Desaturate", "ReplaceColor", "Tint",
                                            "Mirror",    "Rotate",     "PNMScale"};
static_assert(std::size(kDefaultFilterNames) == std::size(kMakers));

IBitmapFilter* CreateDefaultBitmapFilter(const char* name, FUnknown* bitmaps) {
    const FUnknownPtr<IBitmapFactory> factory(bitmaps);
    for (size_t index = 0; index < std::size(kMakers); ++index)
        if (std::strcmp(name, kDefaultFilterNames[index]) == 0) {
            FilterBase* filter = kMakers[index](factory);
            filter->init();
            return filter;
        }
    return nullptr;
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
