#pragma once
#include "base/source/fobject.h"
#include "base/source/fstring.h"
#include "frame/source/graphics/cairo/cairolayouts.h"
#include "pluginterfaces/graphics/graphicstypes.h"
#include <fontconfig/fontconfig.h>
#include <optional>
#include <vector>

namespace Tessarine::Graphics {

/** The fonts that are known here: a configuration and a map of this copy's own, so that an application's fonts reach nobody
    else in the process. Faces keep it alive. Main thread. */
class CairoFonts : public FObject {
public:
    CairoFonts();
    ~CairoFonts() override;
    CairoFonts(const CairoFonts&) = delete;
    CairoFonts& operator=(const CairoFonts&) = delete;

    /** Names of families, each once, sorted: a font's English ones or those without a language, or else its first. */
    const std::vector<FString>& getNames() const { return names; }
    /** Whether a font has this name of a family in any language. */
    bool hasName(const ConstString& name) const;
    /** path in UTF-8. False: it holds no font. takeFiles() follows the last. */
    bool addFile(const char* path);
    void takeFiles();
    CairoLayouts& getLayouts() { return *layouts; }
    /** Whole ascent and descent. False: there is no font at all. */
    bool measure(const PangoFontDescription* description, FontMetrics& metrics);

private:
    void readNames();
    /** Pango's threads must not meet the map's end, but each look-up has its own and none can be waited for. One more
        look-up is waited for: those before it have mostly ended then, which isn't certain. */
    void settle();

    FcConfig* const config;  // null: it can't be read
    PangoHolder<PangoFontMap> map;
    std::optional<CairoLayouts> layouts;
    std::vector<FString> names, namesInAnyLanguage;  // sorted
};

/** Pango registers types that can't be registered twice: once it is loaded with a module, it stays. */
void keepPangoLoaded();

}  // namespace Tessarine::Graphics
