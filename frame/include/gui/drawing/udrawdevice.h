#pragma once
#include "base/source/tcontainer.h"
#include "gui/drawing/ufont.h"
#include "gui/drawing/upen.h"
#include "gui/drawing/upolygon.h"
#include "gui/drawing/urect.h"

namespace Tessarine {
class UBitmap;
class UView;

/** How a text stands in its rectangle; neither of a pair: centred. */
enum UTextFlags : int32_t { kTextLeft = 1, kTextRight = 2, kTextTop = 16, kTextBottom = 32 };

/** How a bitmap is drawn. */
enum UBitmapMode : int16_t {
    kBitmapPlain = 0,
    kBitmapTransparent = 3,
    kBitmapDisabled = 5,
    kBitmapTransparentDisabled = 8
};

/** What can be drawn, in whole pixels. Texts end with a zero. Main thread; nothing fails aloud. */
class UDrawDevice : public FObject {
public:
    DECLARE_CLASS_NAME(UDrawDevice, FObject)

    /** From the current place, which moves there. */
    virtual void lineTo(const UPoint& to) = 0;
    virtual void moveTo(const UPoint& to) = 0;
    virtual void moveBy(const UPoint& by) = 0;
    /** count numbers, four a line: x1, y1, x2, y2. A port changes them. */
    virtual void fastLines(int32_t* coordinates, int32_t count) = 0;
    virtual void eraseRect(const URect& rect) = 0;
    virtual void frameRect(const URect& rect) = 0;
    virtual void paintRect(const URect& rect) = 0;
    /** A radius of -1 is a tenth of the width. */
    virtual void frameRoundRect(const URect& rect, int32_t radius) = 0;
    virtual void paintRoundRect(const URect& rect, int32_t radius) = 0;
    /** A port changes the rectangles. */
    virtual void fastRects(TContainer<URect>& rects, bool filled) = 0;
    /** Angles in radians. */
    virtual void frameOval(const URect& rect, float startAngle, float arc) = 0;
    virtual void paintOval(const URect& rect, float startAngle, float arc) = 0;
    virtual void framePoly(const UPolygon& polygon) = 0;
    virtual void paintPoly(const UPolygon& polygon) = 0;
    virtual void polyLine(const UPolygon& polygon) = 0;
    virtual void setPen(const UPen& pen) = 0;
    virtual void setPen(UStandardColor color) = 0;
    virtual const UPen& getPen() = 0;
    virtual void setBrush(const UBrush& brush) = 0;
    virtual void setBrush(UStandardColor color) = 0;
    virtual const UBrush& getBrush() = 0;
    virtual void setFont(const UFont& font) = 0;
    virtual const UFont& getFont() = 0;
    /** In the font's colour. flags of UTextFlags; inset at both ends. */
    virtual void drawString(const tchar* text, const URect& rect, int32_t flags, int32_t inset) = 0;
    /** The place is the left end of the baseline. */
    virtual void drawString(const tchar* text, const UPoint& place) = 0;
    virtual void drawChar(int32_t character, const UPoint& place) = 0;
    virtual int32_t getStringWidth(const tchar* text) = 0;
    virtual void getTextExtents(const tchar* text, URect& extents) = 0;
    virtual void getTextMetrics(UTextMetrics& metrics) = 0;
    /** mode of UBitmapMode. */
    virtual void drawBitmap(UBitmap* bitmap, const UPoint& place, int32_t mode) = 0;
    virtual void drawBitmap(UBitmap* bitmap, const URect& source, const URect& target, int32_t mode) = 0;
    virtual void alphaBlend(UBitmap* bitmap, const URect& source, const URect& target, uint8_t alpha) = 0;
    virtual void setClip(const URect& clip) = 0;
    virtual void getClip(URect& clip) = 0;
    virtual void resetAttributes() = 0;
    /** Borrowed; null: none. */
    virtual UView* getConnectedView() = 0;
    virtual void saveState() = 0;
    virtual void restoreState() = 0;

    /** Measuring without a device. */
    static int32_t getStringWidth(const UFont& font, const tchar* text);
    static void getTextExtents(const UFont& font, const tchar* text, URect& extents);
    static void getTextMetrics(const UFont& font, UTextMetrics& metrics);
};

}  // namespace Tessarine
