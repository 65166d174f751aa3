#include "gui/drawing/ufont.h"
#include "gui/drawing/hooks.h"
#include "gui/drawing/ufontfacecache.h"
#include <algorithm>
#include <iterator>

namespace Tessarine {
namespace {
struct StandardFace {
    const char* name;
    const char* japanese;
};
constexpr StandardFace kFaces[] = {
    {"Lucida Grande", "Osaka" },
    {"Geneva",        "Osaka" },
    {"Helvetica",     "Osaka" },
    {"Courier",       "Osaka" },
    {"Times Roman",   "Osaka" },
    {"Symbol",        "Symbol"},
};
static_assert(std::size(kFaces) == kNumStandardFonts);
}  // namespace

IMPLEMENT_CLASS(UFont, CmObject)

const char* const UFont::fontNames[kNumStandardFonts] = {"System", "Geneva", "Helvetica", "Courier", "Times", "Symbol"};

UFont::UFont(const tchar* name, int32_t size, uint32_t style) : size(size), style(style), name(name) {}

UFont::UFont(uint32_t standardFont, int32_t size, uint32_t style) : size(size), style(style) {
    setStandardFace(standardFont);
}

bool UFont::operator==(const UFont& other) const {
    return name == other.name && textMode == other.textMode && size == other.size && style == other.style &&
           color == other.color;
}

bool UFont::isEqual(const CmObject* other) const {
    const auto* font = classCast<UFont>(other);
    return font && *this == *font;
}

void UFont::setSize(int32_t pixels) {
    if (pixels == size)
        return;
    size = pixels;
    face = nullptr;
}

void UFont::setStyle(uint32_t bits) {
    if (bits == style)
        return;
    style = bits;
    face = nullptr;
}

void UFont::setName(const tchar* newName) {
    const ConstString wanted(newName);
    if (name == wanted)
        return;
    name.assign(wanted);
    face = nullptr;
}

void UFont::setStandardFace(uint32_t standardFont) {
    const StandardFace& standard = kFaces[standardFont < kNumStandardFonts ? standardFont : uint32_t(kGenevaFont)];
    const bool japanese = gDrawingHooks.isJapanese && gDrawingHooks.isJapanese();
    setName(FString(japanese ? standard.japanese : standard.name).text16());
}

int32_t UFont::getStdFontByString(const char* key) {
    const ConstString wanted(key);
    const auto found = std::ranges::find_if(
        fontNames, [&wanted](const char* name) { return wanted.compare(ConstString(name), kIgnoreCase) == 0; });
    return key && found != std::end(fontNames) ? int32_t(found - std::begin(fontNames)) : -1;
}

Graphics::IFontFace* UFont::getGraphicsObject() const {
    if (!face)
        face = UFontFaceCache::instance().getFontFace(name, size, style);
    return face;
}

void UFont::setGraphicsObject(Graphics::IFontFace* newFace) {
    face = newFace;
}

}  // namespace Tessarine
