#pragma once
#include "pluginterfaces/graphics/ifont.h"
#include <cairo.h>

namespace Tessarine::Graphics {

/** Draws a text as IDrawDevice::drawString() says, and leaves the context as it was. False: the face is of somebody else. */
bool drawText(cairo_t* context, const tchar* text, const Rect& rect, IFontFace* face, uint32_t colorSpec,
              unsigned alignment, bool antialiased);

}  // namespace Tessarine::Graphics
