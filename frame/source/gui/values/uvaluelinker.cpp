#include "gui/values/uvaluelinker.h"
#include "collect/cmarray.h"

namespace Tessarine {

IMPLEMENT_CLASS(UValueLinker, CmObject)

void UValueLinker::update(CmObject* source, int32_t message) {
    if (!source || source != master)
        return;
    if (message == kDestroyed)
        addMaster(nullptr);
    else
        updateSlaves();
}

void UValueLinker::addMaster(UValue* value) {
    if (master)
        master->removeDependent(this);
    master = value;
    if (master)
        master->addDependent(this);
    updateSlaves();
}

void UValueLinker::addSlave(UValue* value) {
    if (value && !slaves.contains(value))
        slaves.add(value);
    updateSlaves();
}

/** The owners may change list and master meanwhile; what they push in turn is newer than the rest of this. */
void UValueLinker::updateSlaves() {
    const uint32_t push = ++pushes;
    if (!master)
        return;
    const IPtr<UValueLinker> kept(this);
    const float level = master->getValueFloat();
    CmArray told(slaves.total());
    told._ownsObjects = CmContainer::kShares;
    told.addAllFrom(&slaves);
    for (CmObject* slave : told)
        if (push == pushes && slaves.contains(slave))
            static_cast<UValue*>(slave)->setValueFloat(level, true);
}

}  // namespace Tessarine
