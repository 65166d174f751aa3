#include "gui/drawing/ubitmapcollection.h"
#include "gui/drawing/hooks.h"
#include "gui/drawing/ubitmapresource.h"
#include <algorithm>

namespace Tessarine {

IMPLEMENT_CLASS(UBitmapCollection, UBitmap)
IMPLEMENT_ABSTRACT_CLASS(USkinBitmapCollection, UBitmapCollection)

bool UBitmapCollection::addImage(UBitmap* bitmap, const char* name) {
    const bool fits = bitmap && !isBehind(bitmap);
    if (fits)
        images.push_back({FString(name), bitmap});
    return fits;
}

bool UBitmapCollection::addImage(int32_t id, void* module) {
    const OPtr<UBitmap> resource(new UBitmapResource(id, module));
    return resource->getBitmap() && addImage(resource, nullptr);
}

bool UBitmapCollection::setCurrentImage(int32_t index) {
    const bool fits = isInside(index) && !isBehind(getIndexedImage(index));
    if (fits)
        current = index;
    return fits;
}

UBitmap* UBitmapCollection::getIndexedImage(int32_t index) const {
    return isInside(index) ? images[size_t(index)].bitmap.get() : nullptr;
}

UBitmap* UBitmapCollection::getNamedImage(const char* name) const {
    const ConstString wanted(name);
    const auto found = std::ranges::find_if(images, [&wanted](const Image& image) { return image.name == wanted; });
    return found == images.end() ? nullptr : found->bitmap.get();
}

USkinBitmapCollection::USkinBitmapCollection(const char* name) : name(name) {
    if (gDrawingHooks.skinBitmapCollection)
        gDrawingHooks.skinBitmapCollection(this->name.text8(), *this);
}

}  // namespace Tessarine
