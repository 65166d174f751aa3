#include "gui/drawing/ufontfacecache.h"
#include "gui/drawing/ufont.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include "pluginterfaces/graphics/ifactory.h"
#include <algorithm>
#include <tuple>

namespace Tessarine {
using Graphics::IFontDescription;
using Graphics::IFontFace;

UFontFaceCache& UFontFaceCache::instance() {
    static UFontFaceCache cache;
    return cache;
}

UFontFaceCache::Place UFontFaceCache::placeOf(const ConstString& name, int32_t size, uint32_t style) {
    return std::lower_bound(entries.begin(), entries.end(), std::tie(size, style),
                            [&name](const Entry& entry, const auto& wanted) {
                                const int32_t order = entry.name.compare(name);
                                return order != 0 ? order < 0 : std::tie(entry.size, entry.style) < wanted;
                            });
}

template <class Make>
IFontFace* UFontFaceCache::found(const ConstString& name, int32_t size, uint32_t style, const Make& make) {
    const Place place = placeOf(name, size, style);
    if (place != entries.end() && place->size == size && place->style == style && place->name.compare(name) == 0)
        return place->face;
    OPtr<IFontFace> face(make());
    if (!face)
        return nullptr;
    const FString kept(name);  // may be the text of a face that goes
    if (entries.size() >= kCapacity)
        entries.clear();
    return entries.insert(placeOf(kept, size, style), {kept, size, style, face})->face;
}

IFontFace* UFontFaceCache::getFontFace(IFontDescription* description, int32_t size, uint32_t style) {
    if (!description)
        return nullptr;
    const auto make = [&] { return description->createFace(size, UFont::frameToGraphicsStyle(style)); };
    return found(ConstString(description->getName()), size, style, make);
}

IFontFace* UFontFaceCache::getFontFace(const ConstString& name, int32_t size, uint32_t style) {
    const auto make = [&]() -> IFontFace* {
        Graphics::IFactory* factory = UPhysicalDrawDevice::getFactory(true);
        Graphics::IFontCollection* fonts = factory ? factory->getFontCollection() : nullptr;
        const OPtr<IFontDescription> description(fonts ? fonts->getFontByName(FString(name).text16()) : nullptr);
        return description ? description->createFace(size, UFont::frameToGraphicsStyle(style)) : nullptr;
    };
    return found(name, size, style, make);
}

void termUFontFaceCache() {
    UFontFaceCache::instance().empty();
}

}  // namespace Tessarine
