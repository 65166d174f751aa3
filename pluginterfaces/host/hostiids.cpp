#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/host/icomponentfactory.h"
#include "pluginterfaces/host/idefaultpool.h"
#include "pluginterfaces/host/idevicelist.h"
#include "pluginterfaces/host/ihostclasses.h"
#include "pluginterfaces/host/ihosttools.h"
#include "pluginterfaces/host/iplugdevice.h"
#include "pluginterfaces/host/iportregistry.h"
#include "pluginterfaces/host/iserialportnaming.h"
#include "pluginterfaces/host/italvprmaccessor.h"

namespace Tessarine {

DEFINE_IID_ROW(IHostClasses, kIHostClassesID);
DEFINE_IID_ROW(IPlugDevice, kIPlugDeviceID);
DEFINE_IID_ROW(IDeviceList, kIDeviceListID);
DEFINE_IID_ROW(IDeviceList2, kIDeviceList2ID);
DEFINE_IID_ROW(IPort, kIPortID);
DEFINE_IID_ROW(IPortRegistry2, kIPortRegistry2ID);
DEFINE_IID_ROW(ISerialPortNaming, kISerialPortNamingID);
DEFINE_IID_ROW(IDefaultPool, kIDefaultPoolID);
DEFINE_IID_ROW(IDefaultPool2, kIDefaultPool2ID);
DEFINE_IID_ROW(IDefaultPool3, kIDefaultPool3ID);
DEFINE_IID_ROW(IComponentFactory, kIComponentFactoryID);
DEFINE_IID_ROW(IComparer, kIComparerID);
DEFINE_IID_ROW(IMemoryAllocator, kIMemoryAllocatorID);
DEFINE_IID_ROW(IList, kIListID);
DEFINE_IID_ROW(IDynamicLibrary, kIDynamicLibraryID);

}  // namespace Tessarine

namespace TALV {

/** The same sixteen bytes as the accessor's class. */
DEFINE_IID(ITALV_PrmAccessor, 0xA1F1CD5E, 0xAC5A4B21, 0xACC55855, 0xD48971A2);

}  // namespace TALV
