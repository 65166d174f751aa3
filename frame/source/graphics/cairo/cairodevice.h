#pragma once
#include "base/source/cmobject.h"
#include "frame/source/graphics/cairo/cairobitmap.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/idrawdevice.h"
#include <cairo.h>
#include <memory>
#include <vector>

namespace Tessarine::Graphics {

struct ContextRelease {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using ContextHolder = std::unique_ptr<cairo_t, ContextRelease>;

/** Draws on a surface of cairo: a bitmap's, or one of a window. Coordinates are those of scale 1. */
class CairoDevice : public FObject, public IDrawDevice {
public:
    DECLARE_CLASS_NAME(CairoDevice, FObject)
    FORWARD_REFCOUNT(FObject)
    /** Null: the bitmap has no surface. scale: pixels of a unit, above 0. */
    static CairoDevice* create(CairoBitmap* bitmap, double scale);
    CairoDevice(const CairoDevice&) = delete;
    CairoDevice& operator=(const CairoDevice&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t drawLine(Point from, Point to) override;
    int32_t drawRect(Rect rect, char mode) override;
    int32_t drawEllipse(Rect rect, char mode) override;
    int32_t drawPath(IGraphicsPath* path, char mode, const TransformMatrix* matrix) override;
    int32_t drawString(const tchar* text, Rect rect, IFontFace* face, unsigned colorSpec, unsigned alignment) override;
    int32_t drawBitmap(IBitmap* bitmap, Rect source, Point target, double alpha) override;
    int32_t drawBitmapStretched(IBitmap* bitmap, Rect source, Rect target, double alpha) override;
    int32_t clearRect(Rect rect) override;
    int32_t setDrawAntialiased(unsigned char antialiased) override;
    int32_t setPenColor(unsigned colorSpec) override;
    int32_t setPenWidth(double width) override;
    int32_t setLineStyle(const LineStyle& style) override;
    int32_t setBrushColor(unsigned colorSpec) override;
    int32_t concatTransformMatrix(const TransformMatrix& matrix) override;
    int32_t setClip(Rect rect) override;
    int32_t saveGlobalState() override;
    int32_t restoreGlobalState() override;
    IFastLines* createFastLines(int count) override;
    int32_t drawFastLines(IFastLines* lines) override;
    IFastRects* createFastRects(int count) override;
    int32_t drawFastRects(IFastRects* rects, char mode) override;

private:
    /** What saveGlobalState() keeps beside what cairo does. */
    struct State {
        uint32_t penColor = 0xFF000000;
        uint32_t brushColor = 0xFFFFFFFF;
        double penWidth = 1;
        LineStyle lineStyle;
        bool antialiased = false;
        PixelRect clip;  // the smallest in pixels that holds it
    };

    CairoDevice(CairoBitmap* bitmap, cairo_t* context);
    /** Brings the surface up to date; false: it can't be drawn on now. */
    bool begin();
    /** Something was drawn. Answers the result. */
    int32_t end();
    void useColor(uint32_t spec);
    void applyPen();
    /** Fills, strokes, or both, what the current path holds. */
    int32_t finish(char mode);
    /** Within the range of cairo's coordinates. */
    double within(double coordinate) const;
    bool toCairo(const Rect& rect, Rect& result) const;
    PixelRect pixelsOf(const Rect& rect) const;
    /** A rectangle of whole pixels in one opaque colour, past cairo. False: it isn't one. */
    bool fillPixels(const Rect& rect);

    const IPtr<CairoBitmap> bitmap;
    const ContextHolder context;
    State state;
    std::vector<State> saved;
    uint32_t sourceColor = 0;  // of the context
    bool sourceIsColor = false;
    bool penIsApplied = false;
};

}  // namespace Tessarine::Graphics
