#pragma once
#include "gui/drawing/udrawdevice.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/idrawdevice.h"
#include <vector>

namespace Tessarine {

namespace Graphics {
class IFactory;

namespace Meta {
/** The process's factory, with a reference for the caller; null: there is no platform. */
IFactory* createHostIFactory();
}  // namespace Meta

/** The platform's factory of a name, "default", with a reference for the caller; null: another name, or no platform. */
IFactory* createFactory(const char* name);
}  // namespace Graphics

/** paintOval also draws the outline of whole ellipses. */
extern bool gPaintOvalUsePen;

/** Draws on the platform's boundary. Lines of odd widths are moved by half a pixel, so that they are sharp. Without a device
    nothing is drawn. */
class UPhysicalDrawDevice : public UDrawDevice {
public:
    DECLARE_CLASS_NAME(UPhysicalDrawDevice, UDrawDevice)
    explicit UPhysicalDrawDevice(Graphics::IDrawDevice* device);

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
    void setPen(const UPen& newPen) override;
    void setPen(UStandardColor color) override;
    const UPen& getPen() override { return pen; }
    void setBrush(const UBrush& newBrush) override;
    void setBrush(UStandardColor color) override;
    const UBrush& getBrush() override { return brush; }
    void setFont(const UFont& newFont) override { font = newFont; }
    const UFont& getFont() override { return font; }
    void drawString(const tchar* text, const URect& rect, int32_t flags, int32_t inset) override;
    void drawString(const tchar* text, const UPoint& place) override;
    void drawChar(int32_t character, const UPoint& place) override;
    int32_t getStringWidth(const tchar* text) override;
    void getTextExtents(const tchar* text, URect& extents) override;
    void getTextMetrics(UTextMetrics& metrics) override;
    void drawBitmap(UBitmap* bitmap, const UPoint& place, int32_t mode) override;
    void drawBitmap(UBitmap* bitmap, const URect& source, const URect& target, int32_t mode) override;
    void alphaBlend(UBitmap* bitmap, const URect& source, const URect& target, uint8_t alpha) override;
    void setClip(const URect& newClip) override;
    void getClip(URect& result) override { result = clip; }
    void resetAttributes() override;
    UView* getConnectedView() override { return nullptr; }
    void saveState() override;
    void restoreState() override;

    /** Borrowed; null: none. */
    Graphics::IDrawDevice* getDevice() const { return device; }

    /** The clip of any device. Of a larger one, the 60000 pixels each way that are nearest to 0, so that work within it
        ends. */
    static URect visibleOn(UDrawDevice& device);

    static void setFactory(Graphics::IFactory* factory);
    /** Borrowed. create: it is made when there is none. */
    static Graphics::IFactory* getFactory(bool create);

private:
    static constexpr int32_t kFarAway = 30000;

    IPtr<Graphics::IDrawDevice> device;
    UPoint location;
    UPen pen;
    UBrush brush;
    UFont font;
    URect clip = {-kFarAway, -kFarAway, kFarAway, kFarAway};
    std::vector<URect> savedClips;  // in step with the boundary's states
};

}  // namespace Tessarine
