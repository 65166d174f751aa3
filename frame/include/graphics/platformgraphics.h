#pragma once

namespace Tessarine {

namespace Graphics {
class IBitmap;
class IDrawDevice;

/** Draws onto a bitmap with so many pixels to a unit, 0.001 to 1,000, with a reference for the caller. Null: another scale, or
    the bitmap is of another factory, or locked for writing. */
IDrawDevice* createScaledDrawDevice(IBitmap* bitmap, double scale);
}  // namespace Graphics

/** Fills the hooks of drawing with this platform's factory. The first call of a program that draws, beside that of the
    platform's core; calling it again changes nothing. */
void installTessarinePlatformGraphics();

}  // namespace Tessarine
