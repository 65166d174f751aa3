#pragma once
#include "gui/values/ucolor.h"
#include "pluginterfaces/graphics/graphicstypes.h"

namespace Tessarine {

/** What lines are drawn with. */
class UPen : public CmObject {
public:
    enum Style : int32_t { kSolid, kDotted, kCustom };

    DECLARE_CLASS(UPen, CmObject)
    DECLARE_NEWCOPY(UPen)
    UPen() = default;
    explicit UPen(const UColor& color, int32_t width = 1, int32_t style = kSolid, bool antialias = false)
        : style(style), width(width), color(color), antialias(antialias) {}

    bool operator==(const UPen& other) const;
    bool isEqual(const CmObject* other) const override;
    /** The style of custom pens isn't stored; what is read keeps the one it had. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

    int32_t style = kSolid;
    Graphics::LineStyle lineStyle;  // of custom pens
    int32_t width = 1;              // in pixels
    UColor color;
    bool antialias = false;
};

/** What areas are filled with. */
class UBrush : public CmObject {
public:
    DECLARE_CLASS(UBrush, CmObject)
    DECLARE_NEWCOPY(UBrush)
    UBrush() = default;
    explicit UBrush(const UColor& color, bool antialias = false) : color(color), antialias(antialias) {}

    bool operator==(const UBrush& other) const;
    bool isEqual(const CmObject* other) const override;
    /** The flag is read of archives of version 2 and later. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    UColor color;
    bool antialias = false;
};

}  // namespace Tessarine
