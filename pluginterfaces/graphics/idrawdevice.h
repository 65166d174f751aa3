#pragma once
#include "pluginterfaces/graphics/ibitmap.h"
#include "pluginterfaces/graphics/ifont.h"
#include "pluginterfaces/graphics/igraphicspath.h"

namespace Tessarine::Graphics {

/** Lines that are drawn at once. */
class IFastLines : public FUnknown {
public:
    virtual int32_t addLine(Point from, Point to) = 0;

    DECLARE_INTERFACE(IFastLines)
};

/** Rectangles that are drawn at once. */
class IFastRects : public FUnknown {
public:
    virtual int32_t addRect(Rect rect) = 0;

    DECLARE_INTERFACE(IFastRects)
};

/** A surface to draw on. Colours are specs, 0xAARRGGBB. Empty rectangles, and coordinates that are no numbers, draw nothing:
    kInvalidArgument. */
class IDrawDevice : public FUnknown {
public:
    /** Without smoothing a butt line colours the pixels whose middle it passes, from its left or upper end up to the other,
        which is left out, in whichever direction it is drawn. */
    virtual int32_t drawLine(Point from, Point to) = 0;
    /** mode is a DrawMode, here and below. */
    virtual int32_t drawRect(Rect rect, char mode) = 0;
    virtual int32_t drawEllipse(Rect rect, char mode) = 0;
    /** Null matrix: as it stands. */
    virtual int32_t drawPath(IGraphicsPath* path, char mode, const TransformMatrix* matrix) = 0;
    /** alignment: bits of TextAlignment. The text isn't clipped to the rectangle, nor broken into lines. */
    virtual int32_t drawString(const tchar* text, Rect rect, IFontFace* face, unsigned colorSpec,
                               unsigned alignment) = 0;
    /** alpha 0 to 1, clamped. Nothing outside of the source rectangle is sampled. */
    virtual int32_t drawBitmap(IBitmap* bitmap, Rect source, Point target, double alpha) = 0;
    virtual int32_t drawBitmapStretched(IBitmap* bitmap, Rect source, Rect target, double alpha) = 0;
    /** Makes the rectangle transparent. */
    virtual int32_t clearRect(Rect rect) = 0;
    /** Smoothing of shapes and text from here on. */
    virtual int32_t setDrawAntialiased(unsigned char antialiased) = 0;
    virtual int32_t setPenColor(unsigned colorSpec) = 0;
    virtual int32_t setPenWidth(double width) = 0;
    virtual int32_t setLineStyle(const LineStyle& style) = 0;
    virtual int32_t setBrushColor(unsigned colorSpec) = 0;
    virtual int32_t concatTransformMatrix(const TransformMatrix& matrix) = 0;
    /** In place of the clip before; an empty rectangle lets nothing through. */
    virtual int32_t setClip(Rect rect) = 0;
    /** Colours, pen, smoothing, transformation and clip. */
    virtual int32_t saveGlobalState() = 0;
    /** kResultFalse: nothing is saved. */
    virtual int32_t restoreGlobalState() = 0;
    /** With a reference for the caller; null, as createFastRects: callers draw one by one. count is a hint. */
    virtual IFastLines* createFastLines(int count) = 0;
    virtual int32_t drawFastLines(IFastLines* lines) = 0;
    virtual IFastRects* createFastRects(int count) = 0;
    virtual int32_t drawFastRects(IFastRects* rects, char mode) = 0;

    DECLARE_INTERFACE(IDrawDevice)
};

}  // namespace Tessarine::Graphics
