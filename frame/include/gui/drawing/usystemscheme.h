#pragma once
#include "gui/drawing/uscheme.h"

namespace Tessarine {

/** For windows that look like those of the desktop: by way of translateColor, the same tables. */
class USystemScheme : public UScheme {
public:
    DECLARE_CLASS(USystemScheme, UScheme)
    using UScheme::getColor;

    const UColor& getColor(USchemeColor color) const override { return UScheme::getColor(translateColor(color)); }
    const UPen& getPen(USchemeColor color) const override { return UScheme::getPen(translateColor(color)); }
    const UBrush& getBrush(USchemeColor color) const override { return UScheme::getBrush(translateColor(color)); }
    const UFont& getFont(USchemeFont font) const override { return UScheme::getFont(font); }
    /** A flat line instead of a sunken one. */
    void drawWorkAreaFrame(UDrawDevice& device, const URect& rect) override;

    /** The entry of the tables that stands for the colour; out of range, the first. */
    static USchemeColor translateColor(USchemeColor color) { return USchemeColor(within(color)); }
};

}  // namespace Tessarine
