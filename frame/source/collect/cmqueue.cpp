#include "collect/cmqueue.h"

namespace Tessarine {

IMPLEMENT_CLASS(CmQueue, CmLinkedList)
IMPLEMENT_CLASS(CmStack, CmLinkedList)

}  // namespace Tessarine
