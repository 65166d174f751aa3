#include "gui/values/uvalueactivator.h"
#include "gui/values/uvaluecontainer.h"

namespace Tessarine {

void UValueActivator::add(UValue* value) {
    values.add(value);
    changedBits.setSize(uint32_t(values.total()));
}

void UValueActivator::add(UValueContainer& container) {
    for (int32_t i = 0; i < container.total(); ++i)
        add(container.at(i));
}

void UValueActivator::setActive(bool state) {
    changedBits.clearAll();
    active = state;
    uint32_t index = 0;
    for (CmLinkedListIterator each(values); !each.done(); ++index) {
        auto* value = static_cast<UValue*>(each.next());
        if (value->isActive() == state)
            continue;
        value->setActive(state);
        changedBits.setBit(index);
    }
}

void UValueActivator::reset() {
    uint32_t index = 0;
    for (CmLinkedListIterator each(values); !each.done(); ++index) {
        auto* value = static_cast<UValue*>(each.next());
        if (changedBits.getBit(index))
            value->setActive(!active);
    }
    changedBits.clearAll();
}

}  // namespace Tessarine
