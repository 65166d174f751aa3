#include "fholders.h"
#include "base/fattributelistimp.h"
#include "base/fmessage.h"
#include "collect/cmassociation.h"
#include "collect/cmcontainer.h"
#include "collect/cmvariant.h"
#include "storage/fpersistent.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr const MetaClass* kHolders[] = {&CmContainer::__fClass,       &CmAssociation::__fClass,   &CmVariant::__fClass,
                                         &FAttributes::__fClass,       &FAttributeValue::__fClass, &FAttrList::__fClass,
                                         &FAttributeListImp::__fClass, &FMessage::__fClass};
constexpr const char* kHoldersAbove[] = {"FPreset", "FPresetList", "FMultiPreset", "FDefaults",
                                         "FDefaultPool"};  // of the library above
}  // namespace

bool holdsObjects(const CmObject* object) {
    for (const MetaClass* each = object ? object->getClass() : nullptr; each; each = each->baseClass) {
        if (std::ranges::find(kHolders, each) != std::end(kHolders))
            return true;
    }
    return object && std::ranges::any_of(kHoldersAbove,
                                         [object](const char* name) { return object->getClass()->isTypeOf(name); });
}

}  // namespace Tessarine
