#include "pluginterfaces/base/iattributelist.h"
#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/base/imessage.h"
#include "pluginterfaces/base/imodulebundle.h"
#include "pluginterfaces/base/ipersistent.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/istringresult.h"
#include "pluginterfaces/base/iupdatehandler.h"

namespace Tessarine {

DEFINE_IID(FUnknown, 0x00000000, 0x00000000, 0xC0000000, 0x00000046);
DEFINE_IID(IString, 0xF99DB7A3, 0x0FC14821, 0x800B0CF9, 0x8E348EDF);
DEFINE_IID(IStringResult, 0x550798BC, 0x872049DB, 0x84920A15, 0x3B50B7A8);
DEFINE_IID(IDependent, 0xF52B7AAE, 0xDE72416D, 0x8AF18ACE, 0x9DD7BD5E);
DEFINE_IID(IUpdateHandler, 0xF5246D56, 0x86544D60, 0xB026AFB5, 0x7B697B37);
DEFINE_IID(IPersistent, 0xBA1A4637, 0x3C9F46D0, 0xA65DBA0E, 0xB85DA829);
DEFINE_IID(IAttributes, 0xFA1E32F9, 0xCA6D46F5, 0xA982F956, 0xB1191B58);
DEFINE_IID(IAttributes2, 0x1382126A, 0xFECA4871, 0x97D52A45, 0xB042AE99);
DEFINE_IID(IPluginBase, 0x22888DDB, 0x156E45AE, 0x8358B348, 0x08190625);
DEFINE_IID(IPluginFactory, 0x7A4D811C, 0x52114A1F, 0xAED9D2EE, 0x0B43BF9F);
DEFINE_IID(IPluginFactory2, 0x0007B650, 0xF24B4C0B, 0xA464EDB9, 0xF00B2ABB);
DEFINE_IID(IPluginFactory3, 0x4555A2AB, 0xC1234E57, 0x9B122910, 0x36878931);
DEFINE_IID(IBStream, 0xC3BF6EA2, 0x30994752, 0x9B6BF990, 0x1EE33E9B);
DEFINE_IID(ISizeableStream, 0x04F9549E, 0xE02F4E6E, 0x87E86A87, 0x47F4E17F);

DEFINE_IID_ROW(IAttributeList, kIAttributeListID);
DEFINE_IID_ROW(IUpdateManager, kIUpdateManagerID);
DEFINE_IID_ROW(IMessage, kIMessageID);
DEFINE_IID_ROW(IMessage2, kIMessage2ID);
DEFINE_IID_ROW(IMessageReceiver, kIMessageReceiverID);
DEFINE_IID_ROW(IMessenger, kIMessengerID);
DEFINE_IID_ROW(IMemoryStream, kIMemoryStreamID);
DEFINE_IID_ROW(IModuleBundle, kIModuleBundleID);

}  // namespace Tessarine
