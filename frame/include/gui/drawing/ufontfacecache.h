#pragma once
#include "base/source/fstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ifont.h"
#include <vector>

namespace Tessarine {

/** Faces by name, size and style, so that fonts that are wished for again and again are made once. Main thread. */
class UFontFaceCache {
public:
    static constexpr size_t kCapacity = 50;  // a face more, and all are let go first

    static UFontFaceCache& instance();
    /** Borrowed until the cache is emptied; null: the platform has none. */
    Graphics::IFontFace* getFontFace(const ConstString& name, int32_t size, uint32_t style);
    Graphics::IFontFace* getFontFace(Graphics::IFontDescription* description, int32_t size, uint32_t style);
    void empty() { entries.clear(); }
    size_t count() const { return entries.size(); }

private:
    struct Entry {
        FString name;
        int32_t size;
        uint32_t style;
        IPtr<Graphics::IFontFace> face;
    };
    using Place = std::vector<Entry>::iterator;

    UFontFaceCache() { entries.reserve(10); }
    /** Where it is, or belongs. */
    Place placeOf(const ConstString& name, int32_t size, uint32_t style);
    template <class Make>
    Graphics::IFontFace* found(const ConstString& name, int32_t size, uint32_t style, const Make& make);

    std::vector<Entry> entries;  // sorted
};

/** At the end of the program, or before the platform's factory goes. */
void termUFontFaceCache();

}  // namespace Tessarine
