#include "gui/drawing/uscheme.h"
#include "gui/drawing/hooks.h"
#include <algorithm>
#include <string_view>

namespace Tessarine {
namespace {
struct ColorRow {
    const char* name;
    UStandardColor standard;
    int32_t theme;  // 0: none
};
constexpr ColorRow kColors[] = {
    {"buttonface",            kGray20,      4 },
    {"buttonhilight",         kWhite,       6 },
    {"buttontop",             kWhite,       7 },
    {"buttonbottom",          kGray50,      8 },
    {"buttontop2",            kWhite,       7 },
    {"buttonbottom2",         kGray70,      9 },
    {"frame",                 kBlack,       0 },
    {"frametop",              kWhite,       0 },
    {"framebottom",           kGray40,      0 },
    {"frame2",                kBlack,       0 },
    {"frametop2",             kWhite,       0 },
    {"framebottom2",          kGray40,      0 },
    {"datafieldback",         kWhite,       28},
    {"datafieldfore",         kBlack,       29},
    {"datafieldforeinactive", kGray40,      11},
    {"datafieldtop",          kGray70,      7 },
    {"datafieldbottom",       kWhite,       8 },
    {"windowback",            kGray20,      0 },
    {"dialogback",            kGray20,      0 },
    {"panelback",             kGray20,      0 },
    {"labelcolor",            kBlack,       29},
    {"labelcolorinactive",    kGray60,      11},
    {"workarea",              kWhite,       0 },
    {"multipane",             kGray20,      0 },
    {"focus",                 kGray60,      16},
    {"select",                kGray90,      20},
    {"text",                  kBlack,       29},
    {"textselect",            kBlack,       25},
    {"listback",              kWhite,       4 },
    {"listfore",              kBlack,       5 },
    {"listselect",            kGray30,      20},
    {"listselecttext",        kBlack,       21},
    {"tooltipback",           kLightYellow, 0 },
    {"tooltipfore",           kBlack,       0 },
    {"menuback",              kGray20,      0 },
    {"hyperlink",             kBlue,        0 },
    {"preferenceheader",      kGray60,      0 },
    {"sortmarker",            kGray40,      0 },
    {"datafieldledback",      kBlack,       0 },
    {"progressbar",           kDarkGreen,   0 },
};
static_assert(std::size(kColors) == kNumSchemeColors);

struct SizeRow {
    const char* name;
    int32_t pixels;
};
constexpr SizeRow kSizes[] = {
    {"margin",              8 },
    {"buttonheight",        28},
    {"buttonwidth",         82},
    {"datafieldheight",     20},
    {"datafieldwidth",      80},
    {"datafieldborder",     2 },
    {"scrollbarwidth",      15},
    {"listrowheight",       14},
    {"radiobuttonheight",   18},
    {"checkboxheight",      18},
    {"texteditframe",       2 },
    {"listboxframe",        2 },
    {"tabheight",           23},
    {"tabwidth",            50},
    {"taboverlap",          3 },
    {"columnheaderheight",  16},
    {"columnheaderspacing", 0 },
    {"expansionboxwidth",   11},
    {"expansionboxheight",  11},
    {"dlg.inset",           0 },
    {"dlg.btn.inset.h",     8 },
    {"dlg.btn.inset.v",     8 },
    {"dlg.btn.spacing",     8 },
    {"dlg.btn.sizer.inset", 15},
};
static_assert(std::size(kSizes) == kNumSchemeSizes);

constexpr const tchar* kProportional = u"Lucida Grande";
constexpr const tchar* kMonospaced = u"Monaco";
struct FontRow {
    const char* name;
    const tchar* face;
    int32_t size;
    uint32_t style;
};
constexpr FontRow kFonts[] = {
    {"message",         kProportional, 12, 0           },
    {"label",           kProportional, 11, 0           },
    {"smalllabel",      kProportional, 10, 0           },
    {"tinylabel",       kProportional, 9,  0           },
    {"largelabel",      kProportional, 12, 0           },
    {"data",            kProportional, 11, UFont::kBold},
    {"smalldata",       kProportional, 10, UFont::kBold},
    {"largedata",       kProportional, 13, UFont::kBold},
    {"dataXL",          kProportional, 16, UFont::kBold},
    {"monospaced",      kMonospaced,   12, 0           },
    {"smallmonospaced", kMonospaced,   10, 0           },
    {"list",            kProportional, 11, 0           },
    {"tab",             kProportional, 12, 0           },
    {"column",          kProportional, 11, 0           },
};
static_assert(std::size(kFonts) == kNumSchemeFonts);

constexpr int32_t kSelectedTextTheme = 33;
constexpr USchemeColor kSelectedTexts[] = {kSchemeTextSelect, kSchemeListSelectText};

template <class Row, size_t count>
constexpr std::array<const char*, count> namesOf(const Row (&rows)[count]) {
    std::array<const char*, count> names{};
    std::ranges::transform(rows, names.begin(), &Row::name);
    return names;
}

template <size_t count>
int32_t indexIn(const std::array<const char*, count>& names, const char* name) {
    const auto found = name ? std::ranges::find(names, std::string_view(name)) : names.end();
    return found == names.end() ? -1 : int32_t(found - names.begin());
}

/** The theme's, or else the fallback. */
UColor themeColor(int32_t index, const UColor& fallback) {
    UColor color(fallback);
    const bool found = index != 0 && gDrawingHooks.themeColor && gDrawingHooks.themeColor(index, color);
    return found ? color : fallback;
}
}  // namespace

IMPLEMENT_CLASS(UScheme, CmObject)

constinit const std::array<const char*, kNumSchemeColors> UScheme::colorNames = namesOf(kColors);
constinit const std::array<const char*, kNumSchemeSizes> UScheme::sizeNames = namesOf(kSizes);
constinit const std::array<const char*, kNumSchemeFonts> UScheme::fontNames = namesOf(kFonts);
constinit UScheme* UScheme::gScheme = nullptr;
constinit UScheme* UScheme::gDialogScheme = nullptr;
constinit UScheme* UScheme::gSystemScheme = nullptr;
constinit UScheme* UScheme::gCurrentScheme = nullptr;

int32_t UScheme::getColorIndex(const char* name) {
    return indexIn(colorNames, name);
}

int32_t UScheme::getSizeIndex(const char* name) {
    return indexIn(sizeNames, name);
}

int32_t UScheme::getFontIndex(const char* name) {
    return indexIn(fontNames, name);
}

UScheme::UScheme() {
    for (UPen& pen : pens)
        pen.antialias = true;
    for (UBrush& brush : brushes)
        brush.antialias = true;
    initSizes();
    UScheme::resetScheme();
}

void UScheme::initSizes() {
    std::ranges::transform(kSizes, sizes.begin(), &SizeRow::pixels);
}

void UScheme::updateColors() {
    for (int32_t index = 0; index < kNumSchemeColors; ++index) {
        const UColor standard(UColor::getStandardColorSpec(kColors[index].standard));
        setSchemeColor(USchemeColor(index), themeColor(kColors[index].theme, standard), kNoColorGroup);
    }
    for (const USchemeColor color : kSelectedTexts)
        setSchemeColor(color, themeColor(kSelectedTextTheme, getColor(color)), kNoColorGroup);
}

void UScheme::updateFonts() {
    for (size_t index = 0; index < std::size(kFonts); ++index) {
        const FontRow& row = kFonts[index];
        fonts[index] = UFont(row.face, row.size, row.style);
        fonts[index].setColor(UColor(UColor::getStandardColorSpec(kBlack)));
    }
}

void UScheme::resetScheme() {
    overridden = false;
    skinColors.clear();
    updateColors();
    updateFonts();
}

const UFont& UScheme::getFont(USchemeFont font) const {
    return fonts[size_t(font) < kNumSchemeFonts ? size_t(font) : 0];
}

void UScheme::setSize(USchemeSize size, int32_t pixels) {
    if (size_t(size) < kNumSchemeSizes)
        sizes[size_t(size)] = pixels;
}

void UScheme::setFont(USchemeFont font, const UFont& value) {
    if (size_t(font) < kNumSchemeFonts)
        fonts[size_t(font)] = value;
}

void UScheme::setSchemeColor(USchemeColor color, const UColor& value, ColorGroup group) {
    if (size_t(color) >= kNumSchemeColors)
        return;
    pens[size_t(color)].color = value;
    brushes[size_t(color)].color = value;
    groups[size_t(color)] = group;
}

bool UScheme::getColor(const char* name, UColor& color) const {
    const auto found = std::ranges::find(skinColors, ConstString(name), &USkinColorEntry::name);
    if (!name || found == skinColors.end())
        return false;
    color = found->color;
    return true;
}

void UScheme::setSkinColor(const char* name, const UColor& color) {
    if (!name || !*name)
        return;
    const auto found = std::ranges::find(skinColors, ConstString(name), &USkinColorEntry::name);
    if (found == skinColors.end())
        skinColors.push_back({FString(name), color});
    else
        found->color = color;
}

}  // namespace Tessarine
