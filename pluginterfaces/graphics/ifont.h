#pragma once
#include "pluginterfaces/base/funknown.h"
#include "pluginterfaces/graphics/graphicstypes.h"

namespace Tessarine {
class IFileIterator;
}

namespace Tessarine::Graphics {
class IFontDescription;

/** A font of one size and style. Sizes are pixels at scale 1, and so is all that is measured, whatever the surface. */
class IFontFace : public FUnknown {
public:
    /** Borrowed. */
    virtual IFontDescription* getFontDescription() = 0;
    /** Whole ascent and descent. */
    virtual int32_t getMetrics(FontMetrics& metrics) = 0;
    /** The size it was made with. */
    virtual double getHeight() = 0;
    /** Bits of FontStyle. */
    virtual unsigned getStyle() = 0;
    virtual int32_t getStringWidth(const tchar* text, double& width) = 0;

    DECLARE_INTERFACE(IFontFace)
};

class IFontDescription : public FUnknown {
public:
    /** Borrowed. */
    virtual const tchar* getName() = 0;
    /** With a reference for the caller. Null: size isn't from 0.1 to below 1,000, or there is no font at all. */
    virtual IFontFace* createFace(double size, unsigned style) = 0;

    DECLARE_INTERFACE(IFontDescription)
};

/** The installed fonts, by name. */
class IFontCollection : public FUnknown {
public:
    virtual unsigned countFonts() = 0;
    /** With a reference for the caller, as getFontByName; null out of range. */
    virtual IFontDescription* getFontByIndex(unsigned index) = 0;
    /** An installed font, or the one that stands for a name that skins use everywhere. Null: neither. */
    virtual IFontDescription* getFontByName(const tchar* name) = 0;
    /** Fonts of the application. kResultFalse: none of the files is a font. */
    virtual int32_t registerFonts(IFileIterator* files) = 0;

    DECLARE_INTERFACE(IFontCollection)
};

}  // namespace Tessarine::Graphics
