#pragma once
#include "gui/drawing/hooks.h"

namespace Tessarine {

/** Holds something of the skin, and looks for it again when the skin has changed. Main thread. */
class ISkinDependent {
public:
    virtual void updateSkin() = 0;

protected:
    ~ISkinDependent() = default;
};

/** Keeps a dependent registered at the skin, if there is one, as long as it lives itself. */
class SkinDependence {
public:
    explicit SkinDependence(ISkinDependent* dependent) : dependent(dependent) {
        if (gDrawingHooks.addSkinDependent)
            gDrawingHooks.addSkinDependent(dependent);
    }
    ~SkinDependence() {
        if (gDrawingHooks.removeSkinDependent)
            gDrawingHooks.removeSkinDependent(dependent);
    }
    SkinDependence(const SkinDependence&) = delete;
    SkinDependence& operator=(const SkinDependence&) = delete;

private:
    ISkinDependent* dependent;  // borrowed, the owner
};

}  // namespace Tessarine
