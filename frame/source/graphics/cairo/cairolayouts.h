#pragma once
#include "pluginterfaces/base/funknown.h"
#include <array>
#include <memory>
#include <pango/pangocairo.h>
#include <string>

namespace Tessarine::Graphics {

struct PangoRelease {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
};
template <class Type>
using PangoHolder = std::unique_ptr<Type, PangoRelease>;

/** Texts laid out as lines without an end, in any script; those that come again and again are kept. They are measured at
    scale 1 without rounding, so that they are as wide on any surface, smoothed or not. Main thread. */
class CairoLayouts {
public:
    /** One font of the map. Each has a number of its own, never 0. */
    struct Font {
        PangoHolder<PangoFontDescription> description;
        uint64_t number = 0;
    };

    explicit CairoLayouts(PangoFontMap* map);

    /** Borrowed. */
    PangoContext* getContext() const { return contexts[0].get(); }
    uint64_t newFontNumber() { return ++lastNumber; }
    double widthOf(const Font& font, const tchar* text);
    /** Until the next call. */
    PangoLayoutLine* lineOf(const Font& font, const tchar* text, bool antialiased);
    void forget();

private:
    struct Kept {
        uint64_t font = 0;
        std::u16string text;
        PangoHolder<PangoLayout> layouts[2];  // without and with smoothing, as they are wanted
        double width = 0;
    };

    Kept& kept(const Font& font, const tchar* text);
    PangoLayoutLine* line(Kept& kept, const Font& font, bool antialiased);

    PangoHolder<PangoContext> contexts[2];
    std::array<Kept, 512> slots;
    Kept tooLong;                // the last text that isn't worth a slot
    bool wasAntialiased = true;  // of the line that was asked for last
    uint64_t lastNumber = 0;
};

}  // namespace Tessarine::Graphics
