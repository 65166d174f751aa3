#pragma once
#include "gui/drawing/ubitmap.h"

namespace Tessarine {

/** A bitmap by its number: a resource of the module or, when that has none, the file "bitmap%05d" in the folder "Resources" of
    the application. */
class UBitmapResource : public UBitmap {
public:
    DECLARE_ABSTRACT_CLASS(UBitmapResource, UBitmap)
    UBitmapResource(int32_t id, void* module);

    int32_t getID() const { return id; }

private:
    void loadFromApplication();

    int32_t id;
};

}  // namespace Tessarine
