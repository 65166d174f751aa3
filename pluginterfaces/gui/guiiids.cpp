#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/gui/icolorgroup.h"
#include "pluginterfaces/gui/ieventhook.h"
#include "pluginterfaces/gui/ihostcontroller.h"
#include "pluginterfaces/gui/iplatform.h"
#include "pluginterfaces/gui/iplugcontroller.h"
#include "pluginterfaces/gui/ivalue.h"
#include "pluginterfaces/gui/iwindow.h"

namespace Tessarine {

DEFINE_IID_ROW(IParameter, kIParameterID);
DEFINE_IID_ROW(IValue, kIValueID);
DEFINE_IID_ROW(IValue2, kIValue2ID);
DEFINE_IID_ROW(IFloatValue, kIFloatValueID);
DEFINE_IID_ROW(IValueTransformer, kIValueTransformerID);
DEFINE_IID_ROW(IValueTransformTarget, kIValueTransformTargetID);
DEFINE_IID_ROW(IValueProxy, kIValueProxyID);
DEFINE_IID_ROW(IStringList, kIStringListID);
DEFINE_IID_ROW(IStringRepresentationTarget, kIStringRepresentationTargetID);
DEFINE_IID_ROW(IValueStringRepresentation, kIValueStringRepresentationID);
DEFINE_IID_ROW(IPlugController, kIPlugControllerID);
DEFINE_IID_ROW(IPlugController4, kIPlugController4ID);
DEFINE_IID_ROW(IHostController, kIHostControllerID);
DEFINE_IID_ROW(IApplicationEventHook, kIApplicationEventHookID);
DEFINE_IID_ROW(IIdleHandler, kIIdleHandlerID);
DEFINE_IID_ROW(IPlatform, kIPlatformID);
DEFINE_IID_ROW(IPlatform2, kIPlatform2ID);
DEFINE_IID_ROW(ICloseWindowNotification, kICloseWindowNotificationID);
DEFINE_IID_ROW(IColorTransform, kIColorTransformID);
DEFINE_IID_ROW(IColorGroupInformation, kIColorGroupInformationID);

constinit const FUID IHostOnOffValue_iid(kIHostOnOffValueID);
constinit const FUID IHostIntValue_iid(kIHostIntValueID);
constinit const FUID IHostFloatValue_iid(kIHostFloatValueID);
constinit const FUID IHostStringValue_iid(kIHostStringValueID);
constinit const FUID IHostStringListValue_iid(kIHostStringListValueID);
constinit const FUID IHostTransformerValue_iid(kIHostTransformerValueID);
constinit const FUID IHostValueProxy_iid(kIHostValueProxyID);
constinit const FUID IHostAliasValue_iid(kIHostAliasValueID);

}  // namespace Tessarine
