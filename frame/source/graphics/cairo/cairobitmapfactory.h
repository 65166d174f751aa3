#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/graphics/ibitmap.h"

namespace Tessarine::Graphics {

/** Makes CairoBitmaps, and reads them from files. */
class CairoBitmapFactory : public FObject, public IBitmapFactory {
public:
    DECLARE_CLASS_NAME(CairoBitmapFactory, FObject)
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override;
    IBitmap* createFromPath(IPath* path) override;
    IBitmap* createFromStream(IBStream* stream) override;
    IBitmap* create(Size size) override;
    int32_t getCodecs(IList* codecs) override;
};

}  // namespace Tessarine::Graphics
