#include "frame/source/graphics/cairo/cairofonts.h"
#include <algorithm>
#include <dlfcn.h>
#include <pango/pangofc-fontmap.h>

namespace Tessarine::Graphics {
namespace {
/** Whole units of a length in 1024ths, upwards. */
int32_t roundedUp(int32_t length) {
    return (length + PANGO_SCALE - 1) / PANGO_SCALE;
}

int32_t countFonts(FcConfig* config, FcSetName kind) {
    const FcFontSet* fonts = FcConfigGetFonts(config, kind);
    return fonts ? fonts->nfont : 0;
}

const char* textOf(const FcPattern* font, const char* object, int32_t index) {
    FcChar8* text = nullptr;
    return FcPatternGetString(font, object, index, &text) == FcResultMatch ? reinterpret_cast<const char*>(text)
                                                                           : nullptr;
}

void addNames(const FcPattern* font, std::vector<FString>& listed, std::vector<FString>& all) {
    const size_t listedBefore = listed.size(), first = all.size();
    for (int32_t index = 0; const char* text = textOf(font, FC_FAMILY, index); ++index) {
        FString name;
        if (!name.fromUTF8(text))
            continue;
        all.push_back(name);
        const char* language = textOf(font, FC_FAMILYLANG, index);
        if (!language || ConstString(language).startsWith("en"))
            listed.push_back(name);
    }
    if (listed.size() == listedBefore && all.size() > first)
        listed.push_back(all[first]);
}

void sortOnce(std::vector<FString>& names) {
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
}
}  // namespace

void keepPangoLoaded() {
    Dl_info pango{};
    if (dladdr(reinterpret_cast<const void*>(&pango_cairo_show_layout_line), &pango) != 0)
        dlopen(pango.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

CairoFonts::CairoFonts()
    : config(FcInitLoadConfigAndFonts()), map(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT)) {
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map.get()), config);
    layouts.emplace(map.get());
    readNames();
}

CairoFonts::~CairoFonts() {
    settle();
    layouts.reset();
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map.get()), nullptr);  // a map that goes would keep it
    map.reset();
    if (config)
        FcConfigDestroy(config);
}

void CairoFonts::settle() {
    if (names.empty())
        return;
    const PangoHolder<PangoFontDescription> last(pango_font_description_from_string("none of this name"));
    const PangoHolder<PangoFontset> fonts(
        pango_font_map_load_fontset(map.get(), layouts->getContext(), last.get(), pango_language_get_default()));
    int32_t seen = 0;
    const auto isSecond = [](PangoFontset*, PangoFont*, void* count) -> gboolean {
        return ++*static_cast<int32_t*>(count) > 1;
    };
    if (fonts)
        pango_fontset_foreach(fonts.get(), isSecond, &seen);
}

void CairoFonts::readNames() {
    names.clear();
    namesInAnyLanguage.clear();
    for (const FcSetName kind : {FcSetSystem, FcSetApplication}) {
        const FcFontSet* fonts = config ? FcConfigGetFonts(config, kind) : nullptr;
        for (int32_t index = 0; fonts && index < fonts->nfont; ++index)
            addNames(fonts->fonts[index], names, namesInAnyLanguage);
    }
    sortOnce(names);
    sortOnce(namesInAnyLanguage);
}

bool CairoFonts::hasName(const ConstString& name) const {
    return std::binary_search(namesInAnyLanguage.begin(), namesInAnyLanguage.end(), name);
}

bool CairoFonts::addFile(const char* path) {
    if (!config)
        return false;
    const int32_t before = countFonts(config, FcSetApplication);
    FcConfigAppFontAddFile(config, reinterpret_cast<const FcChar8*>(path));
    return countFonts(config, FcSetApplication) > before;
}

void CairoFonts::takeFiles() {
    layouts->forget();
    pango_fc_font_map_config_changed(PANGO_FC_FONT_MAP(map.get()));
    readNames();
}

bool CairoFonts::measure(const PangoFontDescription* description, FontMetrics& metrics) {
    if (names.empty())
        return false;  // pango ends the program when it finds none
    const PangoHolder<PangoFont> font(pango_font_map_load_font(map.get(), layouts->getContext(), description));
    if (!font)
        return false;
    PangoFontMetrics* exact = pango_font_get_metrics(font.get(), nullptr);
    const int32_t ascent = pango_font_metrics_get_ascent(exact), descent = pango_font_metrics_get_descent(exact);
    const int32_t leading = std::max(pango_font_metrics_get_height(exact) - ascent - descent, 0);
    metrics = {double(roundedUp(ascent)), double(roundedUp(descent)), double(leading) / PANGO_SCALE};
    pango_font_metrics_unref(exact);
    return true;
}

}  // namespace Tessarine::Graphics
