#pragma once
#include "base/source/cmobject.h"

namespace Tessarine {
class String;

enum UStandardColor : uint32_t {
    kBlack,
    kWhite,
    kGray5,
    kGray10,
    kGray20,
    kGray30,
    kGray40,
    kGray50,
    kGray60,
    kGray70,
    kGray80,
    kGray90,
    kRed,
    kLightRed,
    kDarkRed,
    kGreen,
    kLightGreen,
    kDarkGreen,
    kBlue,
    kLightBlue,
    kDarkBlue,
    kMagenta,
    kLightMagenta,
    kDarkMagenta,
    kYellow,
    kLightYellow,
    kDarkYellow,
    kOrange,
    kLightOrange,
    kDarkOrange,
    kGold,
    kBlack50,
    kBlack70,
    kNumStandardColors,
};

/** A colour of four channels of 16 bits.

    Units     0 to 65535. What comes from 8 bits stands in the upper byte: opaque is then 0xFF00, which differs from the
              0xFFFF of a colour that was built from channels. A spec is 0xAARRGGBB, of the upper bytes. */
class UColor : public CmObject {
public:
    DECLARE_CLASS(UColor, CmObject)
    DECLARE_NEWCOPY(UColor)
    static constexpr uint16_t kOpaque = 0xFFFF;

    UColor() = default;
    explicit UColor(uint32_t spec) { fromColorSpec(spec); }
    explicit UColor(UStandardColor color) : UColor(getStandardColorSpec(color)) {}
    UColor(uint16_t red, uint16_t green, uint16_t blue, uint16_t alpha = kOpaque)
        : red(red), green(green), blue(blue), alpha(alpha) {}

    /** a with the lower bytes of its channels cut off, moved by f towards b. */
    UColor(const UColor& a, const UColor& b, float f);
    /** A name of the skin, or a text as below; else the fallback. */
    UColor(const char* name, const UColor& fallback);

    uint32_t toColorSpec() const;
    void fromColorSpec(uint32_t spec);
    operator unsigned int() const { return toColorSpec(); }
    UColor& operator()(unsigned int spec) { return fromColorSpec(spec), *this; }
    bool operator==(const UColor& other) const;

    /** "#RRGGBB", "#RRGGBBAA", "$h,s,v" or "$h,s,v,a" (degrees and percent), or the name of a standard colour. Three
        numbers behind "$" leave alpha as it was. false, and the colour as it was: none of these. */
    static bool colorFromString(const char* text, UColor& color);
    /** A standard colour's name, or the "#" form; with alpha unless that is 0xFFFF, so that other colours from specs
        have eight digits. */
    void colorToString(String& text) const;
    /** Black out of range. */
    static uint32_t getStandardColorSpec(uint32_t index);
    /** As skins write it; null out of range. */
    static const char* getStandardColorName(uint32_t index);
    /** For the user, in his language. */
    static const tchar* getStandardColorTitle(uint32_t index);
    /** Colours that the skin above names; null until it installs itself. false, and the colour as it was: it has none. */
    using SkinColor = bool (*)(const char* name, UColor& color);
    static SkinColor gSkinColor;

    /** How bright it looks, 0 to 1: weights of 0.299, 0.587 and 0.114. */
    float getTrueLuminance() const;
    bool isTrueBright(float threshold) const { return getTrueLuminance() > threshold; }
    /** 0 for the same channels; each counts by how well it is seen, squared. */
    float getTrueDifference(const UColor& other) const;
    bool isSimilar(const UColor& other, float threshold) const { return threshold > getTrueDifference(other); }

    // All below leave alpha as it is.

    void invert();
    /** By f of the way to the other one. */
    void blend(const UColor& other, float f);
    /** Of the six-sided cone, 0 to 255: 0 without saturation, and of black. */
    int32_t getHue() const;
    int32_t getSaturation() const;
    void setHue(int32_t hue);
    void setSaturation(int32_t saturation);
    /** The saturation of the double cone, 0 to 255, in spite of its name. */
    int32_t getLumination() const;
    /** All 0 to 255; hue once around. */
    void fromHSL(double hue, double saturation, double lightness);
    /** The lightness times f; black becomes grey with what f is above 1. */
    void changeBrightness(float f);
    /** Another lightness far enough to be read on this one, and the saturation times f. */
    void makeContrastColor(float f);
    /** Degrees, and percent from -100 to 100. */
    void adjustHSL(int32_t hue, int32_t saturation, int32_t luminance);
    /** From 0 to 255 each, to degrees and percent, and back; rounded up. */
    static void convertLegacyToRealHSV(int32_t& hue, int32_t& saturation, int32_t& value);
    static void convertRealToLegacyHSV(int32_t& hue, int32_t& saturation, int32_t& value);

    bool isEqual(const CmObject* other) const override;
    uint32_t hash(uint32_t buckets) const override;
    /** Without alpha: what is read is opaque. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    /** Missing alpha is opaque; false, and the colour as it was: another channel is missing. */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    uint16_t red = 0;
    uint16_t green = 0;
    uint16_t blue = 0;
    uint16_t alpha = kOpaque;
};

}  // namespace Tessarine
