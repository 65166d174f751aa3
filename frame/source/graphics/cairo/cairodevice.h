#pragma once
#include "base/source/cmobject.h"
#include "frame/source/graphics/cairo/cairocells.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/idrawdevice.h"
#include <algorithm>
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
    /** Null: the bitmap has no surface. scale: pixels of a unit, 0.001 to 1,000. */
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
        PixelRect clip;           // the smallest in pixels that holds it
        bool clipIsWhole = true;  // and it is no smaller
        cairo_matrix_t matrix{};  // of the context
        double range = 0;         // coordinates that stay in those of cairo
    };
    /** Where a bitmap's part comes from and goes to. */
    struct Transfer {
        CairoBitmap* from;
        Rect source;
        Rect target;
        uint32_t opacity;  // 255ths
        cairo_filter_t filter;
    };

    CairoDevice(CairoBitmap* bitmap, cairo_t* context, const cairo_matrix_t& matrix);
    /** Brings the surface up to date; false: it can't be drawn on now. */
    bool begin();
    /** Something was drawn within the clip, and the rectangle. Answers the result. */
    int32_t end();
    int32_t end(const Rect& drawn);
    void useColor(uint32_t spec);
    void applyPen();
    /** Fills, strokes, or both, what the current path holds. */
    void finish(char mode);
    bool setMatrix(const cairo_matrix_t& matrix);
    double within(double coordinate) const { return std::clamp(coordinate, -state.range, state.range); }
    /** Within the range, so that a huge rectangle covers what it should. */
    bool toCairo(const Rect& rect, Rect& result) const;
    /** With the room that a mode takes around a shape. */
    Rect reachOf(const Rect& shape, char mode) const;
    bool isUpright() const { return state.matrix.xy == 0 && state.matrix.yx == 0; }
    /** In pixels: the rectangle around it. */
    Rect deviceRect(const Rect& rect) const;
    PixelRect pixelsOf(const Rect& rect) const;
    /** The pixels that begin within it. False: it is turned, or its sides lie elsewhere than at so many parts of a pixel. */
    bool partsOf(const Rect& rect, const Point& parts, PixelRect& pixels) const;
    bool wholePixelsOf(const Rect& rect, PixelRect& pixels) const { return partsOf(rect, {1, 1}, pixels); }
    void clipTo(const Rect& rect);
    /** Pixels are changed past cairo. */
    void beginPixels();
    void endPixels(const PixelRect& drawn);
    /** In one opaque colour. False: it isn't opaque, or the clip lies within pixels. */
    bool fillPixels(PixelRect area, uint32_t color);
    /** A rectangle of whole pixels, and a line of them, level or plumb. False: it isn't one. */
    bool fillRect(const Rect& rect);
    bool fillLine(const Point& from, const Point& to);
    bool blendPixels(const Transfer& transfer);
    int32_t paint(const Transfer& transfer);

    const IPtr<CairoBitmap> bitmap;
    const ContextHolder context;
    const PixelRows pixels;  // of the bitmap's surface
    const IPtr<StretchedCells> cells = StretchedCells::shared();
    State state;
    std::vector<State> saved;
    uint32_t sourceColor = 0;  // of the context
    bool sourceIsColor = false;
    bool penIsApplied = false;
};

}  // namespace Tessarine::Graphics
