#include "graphics/bitmapfilters/bitmapfilterfactory.h"
#include "frame/source/graphics/bitmapfilters/filterbase.h"

namespace Tessarine::Graphics {

BitmapFilterFactory::BitmapFilterFactory(IBitmapFactory* bitmaps) : bitmaps(bitmaps) {
    for (const auto& filter : BitmapFilterImplementation::kDefaultFilters)
        registerFilter(BitmapFilterImplementation::CreateDefaultBitmapFilter, filter.name);
}

int32_t BitmapFilterFactory::queryInterface(const char* iid, void** obj) {
    return answerInterface<IBitmapFilterFactory>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

unsigned BitmapFilterFactory::countFilters() {
    return unsigned(creators.total());
}

const char* BitmapFilterFactory::getFilterName(unsigned index) {
    return index < countFilters() ? creators.at(int32_t(index)).key.text8() : nullptr;
}

IBitmapFilter* BitmapFilterFactory::createBitmapFilter(const char* name) {
    const Creator creator = name ? creators.lookupObject(FString(name)) : nullptr;
    return creator ? creator(name, bitmaps) : nullptr;
}

int32_t BitmapFilterFactory::registerFilter(Creator creator, const char* name) {
    if (!creator || !name || !*name)
        return kInvalidArgument;
    const FString key(name);
    if (!creators.addKeyAndObject(key, creator))
        creators.lookupObject(key) = creator;
    return kResultOk;
}

int32_t BitmapFilterFactory::unregisterFilter(const char* name) {
    if (!name)
        return kResultFalse;
    const FString key(name);
    const Creator creator = creators.lookupObject(key);
    return creator && creators.remove({key, creator}) ? kResultOk : kResultFalse;
}

}  // namespace Tessarine::Graphics
