#include "frame/source/graphics/cairo/cairolayouts.h"
#include "base/source/fstring.h"
#include <algorithm>
#include <string_view>

namespace Tessarine::Graphics {
namespace {
constexpr size_t kMaxKeptText = 256;
constexpr int32_t kMaxUnits = 1'000'000;  // of length: lengths are whole 1024ths, in 32 bits

cairo_font_options_t* newOptions(cairo_antialias_t antialias) {
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, antialias);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    return options;
}

PangoContext* newContext(PangoFontMap* map, cairo_antialias_t antialias) {
    PangoContext* context = pango_font_map_create_context(map);
    cairo_font_options_t* options = newOptions(antialias);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(context, FALSE);
    return context;
}

/** As much of a text as can be measured. */
std::u16string_view measurable(const PangoFontDescription* description, const tchar* text) {
    const int32_t size = std::max(pango_font_description_get_size(description) / PANGO_SCALE, 1);
    const std::u16string_view all(text);
    return all.substr(0, size_t(kMaxUnits / size));
}

size_t hashOf(uint64_t font, std::u16string_view text) {
    uint64_t hash = font;
    for (const tchar unit : text)
        hash = (hash ^ unit) * 0x9E3779B97F4A7C15;
    return size_t(hash >> 32);
}

/** A line has no ends within: they become blanks. */
std::string oneLine(const std::u16string& text) {
    std::string result(size_t(ConstString::wideStringToMultiByte(nullptr, text.c_str(), 0, kCodePageUTF8)), 0);
    const int32_t size =
        ConstString::wideStringToMultiByte(result.data(), text.c_str(), int32_t(result.size()), kCodePageUTF8);
    result.resize(size_t(std::max(size - 1, 0)));
    std::ranges::replace_if(
        result, [](char each) { return each > 0 && each < ' '; }, ' ');
    return result;
}

PangoLayout* newLayout(PangoContext* context, const PangoFontDescription* description, const std::u16string& text) {
    PangoLayout* layout = pango_layout_new(context);
    const std::string line = oneLine(text);
    pango_layout_set_single_paragraph_mode(layout, TRUE);
    pango_layout_set_font_description(layout, description);
    pango_layout_set_text(layout, line.data(), int(line.size()));
    return layout;
}
}  // namespace

CairoLayouts::CairoLayouts(PangoFontMap* map)
    : contexts{PangoHolder<PangoContext>(newContext(map, CAIRO_ANTIALIAS_NONE)),
               PangoHolder<PangoContext>(newContext(map, CAIRO_ANTIALIAS_GRAY))} {}

void CairoLayouts::forget() {
    for (Kept& slot : slots)
        slot = {};
    tooLong = {};
}

CairoLayouts::Kept& CairoLayouts::kept(const Font& font, const tchar* text) {
    const std::u16string_view wanted = measurable(font.description.get(), text);
    Kept& slot = wanted.size() > kMaxKeptText ? tooLong : slots[hashOf(font.number, wanted) % slots.size()];
    if (slot.font != font.number || slot.text != wanted) {
        slot = {};
        slot.font = font.number;
        slot.text = wanted;
    }
    return slot;
}

PangoLayoutLine* CairoLayouts::line(Kept& kept, const Font& font, bool antialiased) {
    PangoHolder<PangoLayout>& layout = kept.layouts[antialiased];
    if (layout)
        return pango_layout_get_line_readonly(layout.get(), 0);
    layout.reset(newLayout(contexts[antialiased].get(), font.description.get(), kept.text));
    PangoLayoutLine* result = pango_layout_get_line_readonly(layout.get(), 0);
    PangoRectangle logical;
    pango_layout_line_get_extents(result, nullptr, &logical);
    kept.width = double(logical.width) / PANGO_SCALE;
    return result;
}

double CairoLayouts::widthOf(const Font& font, const tchar* text) {
    Kept& found = kept(font, text);
    if (!found.layouts[0] && !found.layouts[1])
        line(found, font, wasAntialiased);  // what is measured is drawn next, as a rule
    return found.width;
}

PangoLayoutLine* CairoLayouts::lineOf(const Font& font, const tchar* text, bool antialiased) {
    wasAntialiased = antialiased;
    return line(kept(font, text), font, antialiased);
}

}  // namespace Tessarine::Graphics
