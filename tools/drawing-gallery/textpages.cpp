#include "tools/drawing-gallery/page.h"
#include <string>

namespace Tessarine::Gallery {
namespace {
constexpr struct {
    const char* caption;
    int32_t flag;
} kAcross[] =
    {
        {"left",   kTextLeft },
        {"centre", 0         },
        {"right",  kTextRight},
},
  kDown[] = {
      {"top", kTextTop},
      {"middle", 0},
      {"bottom", kTextBottom},
};

struct ScriptRow {
    const char* caption;
    const tchar* text;
};
constexpr ScriptRow kScripts[] = {
    {"Latin",      u"The quick brown fox: \u201EB\u00E4r\u201C, caf\u00E9, fi fl AV To"         },
    {"Greek",      u"\u039E\u03B5\u03C3\u03BA\u03B5\u03C0\u03AC\u03B6\u03C9 \u03C4\u1F74\u03BD" },
    {"Cyrillic",   u"\u0421\u044A\u0435\u0448\u044C \u0435\u0449\u0451 \u044D\u0442\u0438\u0445"},
    {"Hebrew",     u"\u05D3\u05D2 \u05E1\u05E7\u05E8\u05DF \u05E9\u05D8 \u05D1\u05D9\u05DD 48"  },
    {"Arabic",     u"\u0646\u0635 \u062D\u0643\u064A\u0645 \u0644\u0647 \u0633\u0631 42 dB"     },
    {"Marks",      u"a\u0301 e\u0308 n\u0303 o\u0302\u0301 Z\u030C"                             },
    {"Japanese",   u"\u97F3\u91CF\u3092\u4E0A\u3052\u308B"                                      },
    {"Two units",  u"\U0001D11E \U0001D49C \U00010348"                                          },
    {"Half a one", u"before \xD834 behind"                                                      },
};
constexpr int32_t kSizes[] = {9, 11, 13, 16, 24};
}  // namespace

void drawAlignments(UDrawDevice& device, UScheme& scheme) {
    Sheet sheet(device, scheme, {209, 74}, 3);
    for (const auto& down : kDown)
        for (const auto& across : kAcross) {
            const std::string caption = std::string(down.caption) + ", " + across.caption;
            const URect place = sheet.next(caption.c_str());
            device.setPen(scheme.getPen(kSchemeFrameBottom));
            device.frameRect(place);
            device.setFont(scheme.getFont(kSchemeDataXLFont));
            device.drawString(u"Ag \u00C5 jqy", place, down.flag | across.flag, 4);
        }
}

void drawScripts(UDrawDevice& device, UScheme& scheme) {
    int32_t y = 12;
    for (const ScriptRow& row : kScripts) {
        device.setPen(scheme.getPen(kSchemeLabelColor));
        device.setFont(scheme.getFont(kSchemeSmallLabelFont));
        device.drawString(FString(row.caption).text16(), {12, y, 90, y + 26}, kTextRight, 0);
        UFont font(scheme.getFont(kSchemeDataXLFont));
        font.setStyle(0);
        device.setFont(font);
        device.drawString(row.text, {104, y, 664, y + 26}, kTextLeft, 0);
        y += 28;
    }
    y += 16;
    for (const int32_t size : kSizes) {
        UFont font(scheme.getFont(kSchemeMessageFont));
        font.setSize(size);
        UTextMetrics metrics;
        UDrawDevice::getTextMetrics(font, metrics);
        int32_t x = 24;
        y += metrics.ascent + 4;
        for (const uint32_t style : {0U, uint32_t(UFont::kBold), uint32_t(UFont::kItalic)}) {
            font.setStyle(style);
            device.setFont(font);
            device.drawString(u"Gain 42.5 dB", UPoint(x, y));
            x += 210;
        }
        y += metrics.descent + 4;
    }
}
}  // namespace Tessarine::Gallery
