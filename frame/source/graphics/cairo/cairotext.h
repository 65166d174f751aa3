#pragma once
#include "pluginterfaces/graphics/ifont.h"
#include <cairo.h>

namespace Tessarine::Graphics {

/** Draws a text as IDrawDevice::drawString() says, in the context's colour, and leaves the context as it was but for its font.
    False: the face is of somebody else. */
bool drawText(cairo_t* context, const tchar* text, const Rect& rect, IFontFace* face, unsigned alignment,
              bool antialiased);

}  // namespace Tessarine::Graphics
