#include "pluginterfaces/base/ixmlparser.h"

namespace Tessarine {

DEFINE_IID(INewXmlHandler, 0x8BC2E9B8, 0x99104B12, 0xAB3540EA, 0x0F9DD7E1);
DEFINE_IID(INewXmlParser, 0xF36C8ED3, 0x96534BCC, 0xB627E1B8, 0x4951078F);

}  // namespace Tessarine
