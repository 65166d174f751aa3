#pragma once
#include <cmath>
#include <cstdint>

/** Plain records of the drawing boundary. Lengths are units of the surface (a pixel at scale 1), x to the right, y down. */

namespace Tessarine::Graphics {

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    /** Nothing is drawn into a side of 0 or less, nor into one that isn't a number. */
    bool isEmpty() const { return !(width > 0 && height > 0); }
    bool isFinite() const {
        return std::isfinite(x) && std::isfinite(y) && std::isfinite(width) && std::isfinite(height);
    }
    bool operator==(const Rect&) const = default;
};

/** x' = xx * x + xy * y + x0, y' = yx * x + yy * y + y0. */
struct TransformMatrix {
    double xx = 1;
    double yx = 0;
    double xy = 0;
    double yy = 1;
    double x0 = 0;
    double y0 = 0;

    bool operator==(const TransformMatrix&) const = default;
};

enum LineCap : int32_t { kCapButt, kCapRound, kCapSquare };
enum LineJoin : int32_t { kJoinMiter, kJoinRound, kJoinBevel };

struct LineStyle {
    static constexpr int32_t kMaxDashes = 8;

    int32_t cap = kCapButt;
    int32_t join = kJoinMiter;
    int32_t dashCount = 0;                // 0: a line without gaps
    double dashLengths[kMaxDashes] = {};  // on and off in turn

    bool operator==(const LineStyle&) const = default;
};
static_assert(sizeof(LineStyle) == 80);

inline constexpr double kDefaultOnOffDashLength[] = {1.0, 1.0};
inline constexpr LineStyle kSolidLine = {};
inline constexpr LineStyle kDottedLine = {
    kCapButt, kJoinMiter, 2, {kDefaultOnOffDashLength[0], kDefaultOnOffDashLength[1]}
};

/** How shapes are drawn: with the pen, with the brush, or the brush and then the pen. */
enum DrawMode : char { kDrawStroke = 1, kDrawFill = 2, kDrawFillAndStroke = 3 };

/** Sides that a text keeps to; neither of a pair: centred. */
enum TextAlignment : uint32_t { kAlignLeft = 1, kAlignRight = 2, kAlignTop = 4, kAlignBottom = 8 };

enum FontStyle : uint32_t { kFontBold = 1, kFontItalic = 2 };

struct FontMetrics {
    double ascent = 0;
    double descent = 0;
    double leading = 0;
};

/** Pixels are words of 0xAARRGGBB in the machine's order, colours not multiplied by alpha. */
enum PixelFormat : int32_t { kPixelFormatARGB32 = 1 };
enum PixelLock : uint32_t { kLockRead = 1, kLockWrite = 2 };

}  // namespace Tessarine::Graphics
