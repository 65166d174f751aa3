#include "frame/source/graphics/cairo/cairofontcollection.h"
#include "base/source/fstringobject.h"
#include "pluginterfaces/filesystem/ipath.h"
#include <algorithm>

namespace Tessarine::Graphics {
namespace {
constexpr double kMinSize = 0.1;
constexpr double kSizeLimit = 1000;

/** Names that skins use wherever they are shown. A font that has one is taken, or what the configuration has in its place,
    or one of the kind. */
struct ToldName {
    const char* name;
    const char* family;
};
constexpr ToldName kToldNames[] = {
    {"Courier",       "Courier,monospace"                          },
    {"Geneva",        "Geneva,sans-serif"                          },
    {"Helvetica",     "Helvetica,sans-serif"                       },
    {"Lucida Grande", "Lucida Grande,sans-serif"                   },
    {"Monaco",        "Monaco,monospace"                           },
    {"Osaka",         "Osaka,Noto Sans CJK JP,IPAGothic,sans-serif"},
    {"Symbol",        "Symbol,serif"                               },
    {"Times",         "Times,serif"                                },
    {"Times Roman",   "Times Roman,Times,serif"                    },
};

std::string toUtf8(const ConstString& text) {
    FString copy(text);
    copy.toMultiByte(kCodePageUTF8);
    return std::string(units8(copy));
}

PangoFontDescription* newFont(const std::string& family, double size, unsigned style) {
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family(font, family.c_str());
    pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
    pango_font_description_set_weight(font, style & kFontBold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(font, style & kFontItalic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    return font;
}
}  // namespace

int32_t CairoFontDescription::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFontDescription>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

IFontFace* CairoFontDescription::createFace(double size, unsigned style) {
    if (!(size >= kMinSize && size < kSizeLimit))
        return nullptr;
    FontMetrics metrics;
    PangoHolder<PangoFontDescription> wanted(newFont(family, size, style));
    if (!fonts->measure(wanted.get(), metrics))
        return nullptr;
    CairoLayouts::Font font = {std::move(wanted), fonts->getLayouts().newFontNumber()};
    return new CairoFontFace(fonts, this, std::move(font), metrics, size, style);
}

CairoFontFace::CairoFontFace(CairoFonts* fonts, CairoFontDescription* description, CairoLayouts::Font&& font,
                             const FontMetrics& metrics, double size, unsigned style)
    : fonts(fonts), description(description), font(std::move(font)), metrics(metrics), size(size), style(style) {}

int32_t CairoFontFace::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFontFace>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

int32_t CairoFontFace::getStringWidth(const tchar* text, double& width) {
    if (!text)
        return kInvalidArgument;
    width = widthOf(text);
    return kResultOk;
}

int32_t CairoFontCollection::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFontCollection>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

IFontDescription* CairoFontCollection::getFontByIndex(unsigned index) {
    if (index >= countFonts())
        return nullptr;
    const FString& name = fonts->getNames()[index];
    return new CairoFontDescription(fonts, name, toUtf8(name).c_str());
}

IFontDescription* CairoFontCollection::getFontByName(const tchar* name) {
    const ConstString wanted(name);
    if (fonts->hasName(wanted))
        return new CairoFontDescription(fonts, wanted, toUtf8(wanted).c_str());
    const auto told =
        std::ranges::find_if(kToldNames, [&](const ToldName& row) { return FString(row.name) == wanted; });
    return told != std::end(kToldNames) ? new CairoFontDescription(fonts, wanted, told->family) : nullptr;
}

int32_t CairoFontCollection::registerFonts(IFileIterator* files) {
    if (!files)
        return kInvalidArgument;
    bool found = false;
    while (const OPtr<IPath> path = files->next()) {
        const OPtr<StringObject> full(new StringObject);
        if (path->getFullPath(full) == kResultOk && fonts->addFile(toUtf8(*full).c_str()))
            found = true;
    }
    if (!found)
        return kResultFalse;
    fonts->takeFiles();
    return kResultOk;
}

}  // namespace Tessarine::Graphics
