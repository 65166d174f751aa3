#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** What the colours of a group of a skin are shifted by. */
class IColorTransform : public FUnknown {
public:
    /** Bits of the groups that it is for. */
    virtual uint32_t getColorGroup() = 0;
    /** Degrees, -180 to 180. */
    virtual int32_t getDeltaHue() = 0;
    /** Percent, -100 to 100, as the next. */
    virtual int32_t getDeltaSaturation() = 0;
    virtual int32_t getDeltaLuminance() = 0;
    /** One of the three isn't 0. */
    virtual bool isOperative() = 0;

    DECLARE_INTERFACE(IColorTransform)
};

class IColorGroupInformation : public FUnknown {
public:
    virtual int32_t getColorGroupTransformTotal() = 0;
    /** Borrowed; null out of range. */
    virtual IColorTransform* getColorGroupTransform(int32_t index) = 0;

    DECLARE_INTERFACE(IColorGroupInformation)
};

}  // namespace Tessarine
