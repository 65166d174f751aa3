#pragma once
#include "collect/cmcontainer.h"
#include "pluginterfaces/base/smartpointer.h"
#include <vector>

namespace Tessarine {

/** The objects of a stored container, whatever ownership it was stored with. false: one is missing, and there are none. */
template <class Container>
bool readObjects(FArchive& archive, Container& container, std::vector<OPtr<CmObject>>& objects) {
    const bool all = container.internalize(archive);
    for (int32_t i = 0; i < container.total(); ++i) {
        objects.emplace_back(container.at(i));
        if (container._ownsObjects != CmContainer::kBorrows)
            objects.back()->addRef();
    }
    if (!all)
        objects.clear();
    return all;
}

}  // namespace Tessarine
