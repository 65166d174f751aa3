#include "base/utranslatedstring.h"
#include "pluginterfaces/base/conststringtable.h"

namespace Tessarine {

const tchar* UTranslatedString::text() const {
    return ConstStringTable::instance()->getString(english);
}

}  // namespace Tessarine
