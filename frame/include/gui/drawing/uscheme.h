#pragma once
#include "gui/drawing/ucolorgroup.h"
#include "gui/drawing/udrawdevice.h"
#include <array>
#include <vector>

namespace Tessarine {

enum USchemeColor : int32_t {
    kSchemeButtonFace,
    kSchemeButtonHilight,
    kSchemeButtonTop,
    kSchemeButtonBottom,
    kSchemeButtonTop2,
    kSchemeButtonBottom2,
    kSchemeFrame,
    kSchemeFrameTop,
    kSchemeFrameBottom,
    kSchemeFrame2,
    kSchemeFrameTop2,
    kSchemeFrameBottom2,
    kSchemeDataFieldBack,
    kSchemeDataFieldFore,
    kSchemeDataFieldForeInactive,
    kSchemeDataFieldTop,
    kSchemeDataFieldBottom,
    kSchemeWindowBack,
    kSchemeDialogBack,
    kSchemePanelBack,
    kSchemeLabelColor,
    kSchemeLabelColorInactive,
    kSchemeWorkArea,
    kSchemeMultiPane,
    kSchemeFocus,
    kSchemeSelect,
    kSchemeText,
    kSchemeTextSelect,
    kSchemeListBack,
    kSchemeListFore,
    kSchemeListSelect,
    kSchemeListSelectText,
    kSchemeToolTipBack,
    kSchemeToolTipFore,
    kSchemeMenuBack,
    kSchemeHyperlink,
    kSchemePreferenceHeader,
    kSchemeSortMarker,
    kSchemeDataFieldLedBack,
    kSchemeProgressBar,
    kNumSchemeColors
};

enum USchemeSize : int32_t {
    kSchemeMargin,
    kSchemeButtonHeight,
    kSchemeButtonWidth,
    kSchemeDataFieldHeight,
    kSchemeDataFieldWidth,
    kSchemeDataFieldBorder,
    kSchemeScrollBarWidth,
    kSchemeListRowHeight,
    kSchemeRadioButtonHeight,
    kSchemeCheckBoxHeight,
    kSchemeTextEditFrame,
    kSchemeListBoxFrame,
    kSchemeTabHeight,
    kSchemeTabWidth,
    kSchemeTabOverlap,
    kSchemeColumnHeaderHeight,
    kSchemeColumnHeaderSpacing,
    kSchemeExpansionBoxWidth,
    kSchemeExpansionBoxHeight,
    kSchemeDialogInset,
    kSchemeDialogButtonInsetH,
    kSchemeDialogButtonInsetV,
    kSchemeDialogButtonSpacing,
    kSchemeDialogButtonSizerInset,
    kNumSchemeSizes
};

enum USchemeFont : int32_t {
    kSchemeMessageFont,
    kSchemeLabelFont,
    kSchemeSmallLabelFont,
    kSchemeTinyLabelFont,
    kSchemeLargeLabelFont,
    kSchemeDataFont,
    kSchemeSmallDataFont,
    kSchemeLargeDataFont,
    kSchemeDataXLFont,
    kSchemeMonospacedFont,
    kSchemeSmallMonospacedFont,
    kSchemeListFont,
    kSchemeTabFont,
    kSchemeColumnFont,
    kNumSchemeFonts
};

enum USchemeShape : int32_t {
    kShapeWorkAreaFrame,
    kShapeDialogFrame,
    kShapeGroupFrame,
    kShapeButtonReleased,
    kShapeButtonPressed,
    kShapeDataFieldActive,
    kShapeDataFieldInactive,
    kShapeDataFieldButtonReleased,
    kShapeDataFieldButtonPressed,
    kShapeMultiPane,
    kShapeTopTab,
    kShapeTopTabInactive,
    kShapeBottomTab,
    kShapeBottomTabInactive,
    kShapeSeparator,
    kShapeProgressBar,
    kShapeSimpleProgressBar,
    kShapeCross,
    kShapeCrossBox,
    kShapeCheckmark,
    kShapeExpansionBox,
    kShapeExpansionBoxOpen,
    kShapeMenuArrow,
    kShapeShadow,
    kShapeSortMarker,
    kShapeSortMarkerDown,
    kShapeViewSeparator,
    kShapeTransparentFrame,
    kShapeColumnHeader,
    kShapeColumnText,
    kNumSchemeShapes
};

/** A colour that a skin adds under a name of its own. */
struct USkinColorEntry {
    FString name;
    UColor color;
};

/** How the standard controls look: their colours, sizes and fonts, and the shapes that are drawn with these.

    Shapes    stay within their rectangle; one that is too small for a shape gets none, or a part. They leave a pen, a brush
              and a font of theirs behind. A text is optional.
    Ranges    an index out of its range takes the first entry. Rectangles lie within 2^20 units to each side of 0;
              drawShape cuts them to that.
    Threads   the main thread. */
class UScheme : public CmObject {
public:
    DECLARE_CLASS(UScheme, CmObject)
    UScheme();
    UScheme(const UScheme&) = delete;
    UScheme& operator=(const UScheme&) = delete;

    static const std::array<const char*, kNumSchemeColors> colorNames;
    static const std::array<const char*, kNumSchemeSizes> sizeNames;
    static const std::array<const char*, kNumSchemeFonts> fontNames;
    /** By the exact name; -1: there is none. */
    static int32_t getColorIndex(const char* name);
    static int32_t getSizeIndex(const char* name);
    static int32_t getFontIndex(const char* name);

    // Of the process, null at first; who sets one keeps a reference for it.

    static UScheme* gScheme;
    static UScheme* gDialogScheme;
    static UScheme* gSystemScheme;
    static UScheme* gCurrentScheme;
    static UScheme* getCurrentScheme(UScheme* fallback) { return gCurrentScheme ? gCurrentScheme : fallback; }

    /** From the table of the standard colours and the desktop's theme. */
    virtual void updateColors();
    virtual void updateFonts();
    /** What a skin has changed goes, but for sizes. */
    virtual void resetScheme();
    virtual const UColor& getColor(USchemeColor color) const { return pens[within(color)].color; }
    virtual const UPen& getPen(USchemeColor color) const { return pens[within(color)]; }
    virtual const UBrush& getBrush(USchemeColor color) const { return brushes[within(color)]; }
    virtual const UFont& getFont(USchemeFont font) const;

    virtual void drawWorkAreaFrame(UDrawDevice& device, const URect& rect);
    virtual void drawDialogFrame(UDrawDevice& device, const URect& rect);
    /** The text stands in the line at the top. */
    virtual void drawGroupFrame(UDrawDevice& device, const URect& rect, const tchar* text);
    virtual void drawButtonReleased(UDrawDevice& device, const URect& rect, const tchar* text);
    virtual void drawButtonPressed(UDrawDevice& device, const URect& rect, const tchar* text);
    virtual void drawDataFieldActive(UDrawDevice& device, const URect& rect, const tchar* text);
    virtual void drawDataFieldInactive(UDrawDevice& device, const URect& rect, const tchar* text);
    /** Within a data field. */
    virtual void drawDataFieldButtonReleased(UDrawDevice& device, const URect& rect);
    virtual void drawDataFieldButtonPressed(UDrawDevice& device, const URect& rect);
    virtual void drawMultiPane(UDrawDevice& device, const URect& rect);
    /** The lowest row of a top tab, and the highest of a bottom one, lies on the pane's frame: an active tab opens it. */
    virtual void drawTopTab(UDrawDevice& device, const URect& rect, const tchar* text, bool active);
    virtual void drawBottomTab(UDrawDevice& device, const URect& rect, const tchar* text, bool active);
    /** Along the longer side. */
    virtual void drawSeparator(UDrawDevice& device, const URect& rect);
    /** part: 0 to 1. */
    virtual void drawProgressBar(UDrawDevice& device, const URect& rect, const tchar* text, float part);
    virtual void drawSimpleProgressBar(UDrawDevice& device, const URect& rect, float part);
    virtual void drawCross(UDrawDevice& device, const URect& rect);
    virtual void drawCrossBox(UDrawDevice& device, const URect& rect);
    virtual void drawCheckmark(UDrawDevice& device, const URect& rect);
    virtual void drawExpansionBox(UDrawDevice& device, const URect& rect, bool open);
    virtual void drawMenuArrow(UDrawDevice& device, const URect& rect);
    /** The soft edge falls within the rectangle; what casts it is to be drawn on top. */
    virtual void drawShadow(UDrawDevice& device, const URect& rect);
    virtual void drawSortMarker(UDrawDevice& device, const URect& rect, bool down);
    /** A bar across the shorter side, that a hand can move. */
    virtual void drawViewSeparator(UDrawDevice& device, const URect& rect);
    virtual void drawTransparentFrame(UDrawDevice& device, const URect& rect);
    virtual void drawColumnHeader(UDrawDevice& device, const URect& rect);
    virtual void drawColumnText(UDrawDevice& device, const URect& rect, const tchar* text);

    /** By the operation of the shape; a progress bar is full. An unknown shape draws nothing. */
    void drawShape(UDrawDevice& device, const URect& rect, USchemeShape shape, const tchar* text = nullptr);

    int32_t getSize(USchemeSize size) const { return sizes[size_t(size) < kNumSchemeSizes ? size : 0]; }
    void setSize(USchemeSize size, int32_t pixels);
    void setFont(USchemeFont font, const UFont& value);
    /** For pen and brush; ignored out of range. */
    void setSchemeColor(USchemeColor color, const UColor& value, ColorGroup group);
    ColorGroup getColorGroup(USchemeColor color) const { return groups[within(color)]; }

    /** Of those that a skin has added, by the exact name. false, and the colour as it was: there is none. */
    bool getColor(const char* name, UColor& color) const;
    /** In place of one of this name. */
    void setSkinColor(const char* name, const UColor& color);
    const std::vector<USkinColorEntry>& getSkinColors() const { return skinColors; }
    bool isOverridden() const { return overridden; }
    void setOverridden(bool state) { overridden = state; }

protected:
    static size_t within(USchemeColor color) { return size_t(color) < kNumSchemeColors ? size_t(color) : 0; }
    void initSizes();

private:
    std::array<UPen, kNumSchemeColors> pens;
    std::array<UBrush, kNumSchemeColors> brushes;
    std::array<UFont, kNumSchemeFonts> fonts;
    std::array<int32_t, kNumSchemeSizes> sizes = {};
    std::array<ColorGroup, kNumSchemeColors> groups = {};
    std::vector<USkinColorEntry> skinColors;
    bool overridden = false;
};

}  // namespace Tessarine
