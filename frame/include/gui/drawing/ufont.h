#pragma once
#include "base/source/fstring.h"
#include "gui/values/ucolor.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ifont.h"

namespace Tessarine {

enum class UTextMode : int32_t { kTransparent, kOpaque };

enum UStandardFont : uint32_t {
    kSystemFont,
    kGenevaFont,
    kHelveticaFont,
    kCourierFont,
    kTimesFont,
    kSymbolFont,
    kNumStandardFonts
};

/** In whole pixels, each rounded up. */
struct UTextMetrics {
    int32_t height = 0;  // ascent and descent
    int32_t ascent = 0;
    int32_t descent = 0;
    int32_t leading = 0;
};

/** A font as it is wished for: the face that comes nearest is looked up when something is drawn or measured. */
class UFont : public CmObject {
public:
    enum Style : uint32_t { kBold = 1, kItalic = 2 };
    static const char* const fontNames[kNumStandardFonts];

    DECLARE_CLASS(UFont, CmObject)
    DECLARE_NEWCOPY(UFont)
    UFont() = default;
    UFont(const tchar* name, int32_t size, uint32_t style = 0);
    UFont(uint32_t standardFont, int32_t size, uint32_t style = 0);

    /** Without the face. */
    bool operator==(const UFont& other) const;
    bool isEqual(const CmObject* other) const override;

    int32_t getSize() const { return size; }
    uint32_t getStyle() const { return style; }
    UTextMode getTextMode() const { return textMode; }
    const FString& getName() const { return name; }
    const UColor& getColor() const { return color; }
    /** These three drop the face when the value changes. */
    void setSize(int32_t pixels);
    void setStyle(uint32_t bits);
    void setName(const tchar* face);
    void setTextMode(UTextMode mode) { textMode = mode; }
    void setColor(const UColor& newColor) { color = newColor; }
    /** An index of kNumStandardFonts or more takes the second font. */
    void setStandardFace(uint32_t standardFont);
    /** In any case; -1: none of the keys. */
    static int32_t getStdFontByString(const char* key);
    /** The bits that the boundary knows. */
    static unsigned frameToGraphicsStyle(uint32_t style) { return style & (kBold | kItalic); }

    /** The face, borrowed; null: there is none of the name, nor of its size. */
    Graphics::IFontFace* getGraphicsObject() const;
    void setGraphicsObject(Graphics::IFontFace* face);

private:
    int32_t size = 12;
    uint32_t style = 0;
    UTextMode textMode = UTextMode::kTransparent;
    UColor color;
    FString name;
    mutable IPtr<Graphics::IFontFace> face;
};

}  // namespace Tessarine
