#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"
#include "base/source/tdlinkedlist.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ibitmap.h"
#include "pluginterfaces/graphics/ibitmapfilter.h"

namespace Tessarine::Graphics {

/** The filters by name: at first those that come with the system, in whose place a platform may register its own.
    Main thread. */
class BitmapFilterFactory : public FObject, public IBitmapFilterFactory {
public:
    DECLARE_CLASS_NAME(BitmapFilterFactory, FObject)
    FORWARD_REFCOUNT(FObject)
    /** bitmaps makes the results; null: nothing can be filtered but in place. */
    explicit BitmapFilterFactory(IBitmapFactory* bitmaps);
    BitmapFilterFactory(const BitmapFilterFactory&) = delete;
    BitmapFilterFactory& operator=(const BitmapFilterFactory&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    unsigned countFilters() override;
    const char* getFilterName(unsigned index) override;
    IBitmapFilter* createBitmapFilter(const char* name) override;
    int32_t registerFilter(Creator creator, const char* name) override;
    int32_t unregisterFilter(const char* name) override;

private:
    IPtr<IBitmapFactory> bitmaps;
    TDictionary<FString, Creator> creators;
};

}  // namespace Tessarine::Graphics
