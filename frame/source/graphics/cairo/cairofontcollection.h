#pragma once
#include "base/source/cmobject.h"
#include "frame/source/graphics/cairo/cairofonts.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ifont.h"

namespace Tessarine::Graphics {

class CairoFontDescription : public FObject, public IFontDescription {
public:
    FORWARD_REFCOUNT(FObject)
    /** family is what pango looks for, in UTF-8. */
    CairoFontDescription(CairoFonts* fonts, const ConstString& name, const char* family)
        : fonts(fonts), name(name), family(family) {}

    int32_t queryInterface(const char* iid, void** obj) override;
    const tchar* getName() override { return name.text16(); }
    IFontFace* createFace(double size, unsigned style) override;

private:
    const IPtr<CairoFonts> fonts;
    FString name;
    const std::string family;
};

class CairoFontFace : public FObject, public IFontFace {
public:
    DECLARE_CLASS_NAME(CairoFontFace, FObject)
    FORWARD_REFCOUNT(FObject)
    CairoFontFace(CairoFonts* fonts, CairoFontDescription* description, CairoLayouts::Font&& font,
                  const FontMetrics& metrics, double size, unsigned style);

    int32_t queryInterface(const char* iid, void** obj) override;
    IFontDescription* getFontDescription() override { return description; }
    int32_t getMetrics(FontMetrics& result) override { return result = metrics, kResultOk; }
    double getHeight() override { return size; }
    unsigned getStyle() override { return style; }
    int32_t getStringWidth(const tchar* text, double& width) override;

    const FontMetrics& getMetrics() const { return metrics; }
    double widthOf(const tchar* text) { return fonts->getLayouts().widthOf(font, text); }
    /** Borrowed until the next text is drawn or measured. */
    PangoLayoutLine* lineOf(const tchar* text, bool antialiased) {
        return fonts->getLayouts().lineOf(font, text, antialiased);
    }

private:
    const IPtr<CairoFonts> fonts;
    const IPtr<CairoFontDescription> description;
    const CairoLayouts::Font font;
    const FontMetrics metrics;
    const double size;
    const unsigned style;
};

class CairoFontCollection : public FObject, public IFontCollection {
public:
    FORWARD_REFCOUNT(FObject)
    CairoFontCollection() : fonts(OPtr<CairoFonts>(new CairoFonts)) {}

    int32_t queryInterface(const char* iid, void** obj) override;
    unsigned countFonts() override { return unsigned(fonts->getNames().size()); }
    IFontDescription* getFontByIndex(unsigned index) override;
    IFontDescription* getFontByName(const tchar* name) override;
    int32_t registerFonts(IFileIterator* files) override;

private:
    const IPtr<CairoFonts> fonts;
};

}  // namespace Tessarine::Graphics
