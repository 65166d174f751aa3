#include "frame/source/graphics/bitmapfilters/areascale.h"
#include "frame/source/graphics/bitmapfilters/colorfilters.h"
#include "frame/source/graphics/bitmapfilters/transformfilters.h"
#include <algorithm>
#include <string_view>

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
template <class Filter>
FilterBase* made(IBitmapFactory* bitmaps) {
    return new Filter(bitmaps);
}
}  // namespace

constinit const DefaultFilter kDefaultFilters[] = {
    {"AdjustHSL",    made<AdjustHSL>   },
    {"Desaturate",   made<Desaturate>  },
    {"ReplaceColor", made<ReplaceColor>},
    {"Tint",         made<Tint>        },
    {"Mirror",       made<Mirror>      },
    {"Rotate",       made<Rotate>      },
    {"PNMScale",     made<PNMScale>    },
};

IBitmapFilter* CreateDefaultBitmapFilter(const char* name, FUnknown* bitmaps) {
    const auto row = std::ranges::find(kDefaultFilters, std::string_view(name), &DefaultFilter::name);
    if (row == std::end(kDefaultFilters))
        return nullptr;
    FilterBase* filter = row->make(FUnknownPtr<IBitmapFactory>(bitmaps));
    filter->init();
    return filter;
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
