#include "frame/source/graphics/bitmapfilters/areascale.h"
#include "frame/source/graphics/bitmapfilters/arearows.h"
#include <algorithm>
#include <cmath>

namespace Tessarine::Graphics::BitmapFilterImplementation {

void PNMScale::init() {
    FilterBase::init();
    registerVectorInputValue("destinationSize");
}

bool PNMScale::resultSize(const Size& /*input*/, Size& result) {
    IVector* size = getVector("destinationSize");
    if (!size)
        return false;
    result = {std::trunc(size->getComponent(0)), std::trunc(size->getComponent(1))};
    return true;
}

void PNMScale::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    if (from.getWidth() == to.getWidth() && from.getHeight() == to.getHeight()) {
        for (int32_t y = 0; y < to.getHeight(); ++y)
            std::copy_n(from.row(y), to.getWidth(), to.row(y));
        return;
    }
    scaleArea(from, to);
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
