#pragma once
#include "gui/drawing/udrawdevice.h"
#include "gui/drawing/utransform2d.h"
#include "pluginterfaces/base/smartpointer.h"

namespace Tessarine {

/** Draws in coordinates of its own onto a part of a device, whose clip it gives back when it ends. Without a device it does
    nothing. */
class UDrawPort : public UDrawDevice {
public:
    DECLARE_CLASS_NAME(UDrawPort, UDrawDevice)
    /** origin is where 0, 0 lies in the device; clip in coordinates of the port. */
    UDrawPort(UDrawDevice* device, const UPoint& origin, const URect& clip);
    ~UDrawPort() override;
    UDrawPort(const UDrawPort&) = delete;
    UDrawPort& operator=(const UDrawPort&) = delete;

    void lineTo(const UPoint& to) override;
    void moveTo(const UPoint& to) override;
    void moveBy(const UPoint& by) override;
    void fastLines(int32_t* coordinates, int32_t count) override;
    void eraseRect(const URect& rect) override;
    void frameRect(const URect& rect) override;
    void paintRect(const URect& rect) override;
    void frameRoundRect(const URect& rect, int32_t radius) override;
    void paintRoundRect(const URect& rect, int32_t radius) override;
    void fastRects(TContainer<URect>& rects, bool filled) override;
    void frameOval(const URect& rect, float startAngle, float arc) override;
    void paintOval(const URect& rect, float startAngle, float arc) override;
    void framePoly(const UPolygon& polygon) override;
    void paintPoly(const UPolygon& polygon) override;
    void polyLine(const UPolygon& polygon) override;
    void setPen(const UPen& pen) override;
    void setPen(UStandardColor color) override;
    const UPen& getPen() override;
    void setBrush(const UBrush& brush) override;
    void setBrush(UStandardColor color) override;
    const UBrush& getBrush() override;
    void setFont(const UFont& font) override;
    const UFont& getFont() override;
    void drawString(const tchar* text, const URect& rect, int32_t flags, int32_t inset) override;
    void drawString(const tchar* text, const UPoint& place) override;
    void drawChar(int32_t character, const UPoint& place) override;
    int32_t getStringWidth(const tchar* text) override;
    void getTextExtents(const tchar* text, URect& extents) override;
    void getTextMetrics(UTextMetrics& metrics) override;
    void drawBitmap(UBitmap* bitmap, const UPoint& place, int32_t mode) override;
    void drawBitmap(UBitmap* bitmap, const URect& source, const URect& target, int32_t mode) override;
    void alphaBlend(UBitmap* bitmap, const URect& source, const URect& target, uint8_t alpha) override;
    /** Within the port's own clip. */
    void setClip(const URect& newClip) override;
    void getClip(URect& result) override;
    void resetAttributes() override;
    UView* getConnectedView() override;
    void saveState() override;
    void restoreState() override;

    const UTransform2D& getTransform() const { return transform; }
    /** Borrowed; null: the port is inert. */
    UDrawDevice* getDrawDevice() const { return device; }

private:
    UPolygon mapped(const UPolygon& polygon) const;

    IPtr<UDrawDevice> device;
    UTransform2D transform;
    URect clip;       // of the port, in its coordinates
    URect savedClip;  // of the device
};

}  // namespace Tessarine
