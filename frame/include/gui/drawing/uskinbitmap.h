#pragma once
#include "gui/drawing/iskindependent.h"
#include "gui/drawing/udelegatedbitmap.h"

namespace Tessarine {

/** The bitmap that the skin has under a name, and after a change of skin the new one's. What the skin doesn't have leaves the
    old one in place. */
class USkinBitmap : public UDelegatedBitmap, public ISkinDependent {
public:
    DECLARE_ABSTRACT_CLASS(USkinBitmap, UDelegatedBitmap)
    explicit USkinBitmap(const char* name);

    const FString& getName() const { return name; }

    void updateSkin() override;

private:
    FString name;
    SkinDependence dependence{this};
};

}  // namespace Tessarine
