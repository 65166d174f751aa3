#pragma once
#include "pluginterfaces/base/funknown.h"

/** Identifiers that were made for this system. Modules in the field carry them: never change one, only add. */

namespace Tessarine {

// host
inline constexpr FUIDWords kIHostClassesID = {0xBD759080, 0x73C34859, 0xB7B50BAF, 0xC68309C2};
inline constexpr FUIDWords kIDeviceListID = {0x337F2BBA, 0xFCB14E21, 0x8F5F1EE2, 0xA8785DD7};
inline constexpr FUIDWords kIDeviceList2ID = {0x0C33365E, 0x74124909, 0x9B4A3F55, 0xEDFC9629};
inline constexpr FUIDWords kIPlugDeviceID = {0x6AD7ACF0, 0x4C7147A5, 0xA007C194, 0x664C3D48};
inline constexpr FUIDWords kIPortID = {0xA79E38D5, 0x9D8B4438, 0xB0CCDB48, 0x9E6BD03B};
inline constexpr FUIDWords kIPortRegistry2ID = {0x8A14023F, 0x476C4850, 0xBE0E8DD2, 0xBDCE207E};
inline constexpr FUIDWords kISerialPortNamingID = {0x240DAA7E, 0xA445483A, 0xB744E444, 0xE76568C1};
inline constexpr FUIDWords kIDefaultPoolID = {0x260AFE6E, 0x556448B9, 0xA39D910D, 0x086A081B};
inline constexpr FUIDWords kIDefaultPool2ID = {0x0CB9063D, 0xE1CF48A7, 0x93F091F7, 0x18647B50};
inline constexpr FUIDWords kIDefaultPool3ID = {0xC414DADE, 0x995C453B, 0xB3189814, 0xB162110F};
inline constexpr FUIDWords kIComponentFactoryID = {0xA1AA4B9E, 0x7BFC480F, 0xBA911E2B, 0x1519E1DD};
inline constexpr FUIDWords kIComparerID = {0x09DDA326, 0x1CCC4134, 0x93BA28A7, 0xB89FC40A};
inline constexpr FUIDWords kIMemoryAllocatorID = {0x2C07C33B, 0xD1DE4786, 0xABC64BEC, 0xE0568336};
inline constexpr FUIDWords kIListID = {0xC881BC35, 0x78DD4068, 0xB0533381, 0x351F237B};
inline constexpr FUIDWords kIDynamicLibraryID = {0x7C8F3101, 0x7A814F05, 0xAB51B94A, 0xDC7B1776};

// values
inline constexpr FUIDWords kIParameterID = {0x31A6CAA1, 0x1FE44333, 0x83E6CDEC, 0x107CBCE2};
inline constexpr FUIDWords kIValueID = {0x27621AB2, 0xEA1540BA, 0xA5CE90D3, 0xACC25BAA};
inline constexpr FUIDWords kIValue2ID = {0xF492697F, 0xE3CC40F1, 0x9CD0985C, 0x7E4724F2};
inline constexpr FUIDWords kIFloatValueID = {0x953AC83D, 0xE0794340, 0xBE7628C3, 0x3AEC58D9};
inline constexpr FUIDWords kIValueTransformerID = {0x5CDA6CDA, 0x236246DC, 0x8FAF927F, 0x68A25975};
inline constexpr FUIDWords kIValueTransformTargetID = {0x0CDC34F0, 0xDCEA49BA, 0xB85B8444, 0xD84E11FC};
inline constexpr FUIDWords kIValueProxyID = {0xDCB88944, 0xC4F256DF, 0x038D3471, 0x86853630};
inline constexpr FUIDWords kIStringListID = {0xB84D767B, 0xFEC74701, 0xB321260F, 0x796EF153};
inline constexpr FUIDWords kIStringRepresentationTargetID = {0x9D01627C, 0x396D40CC, 0xB522221E, 0x4AA03CA6};
inline constexpr FUIDWords kIValueStringRepresentationID = {0x09794A94, 0x8BDC4C2A, 0x8F5DAECC, 0x71E357C5};
inline constexpr FUIDWords kIHostOnOffValueID = {0xFE20C85A, 0x6CB14679, 0xA5421F34, 0x1DA92FC0};
inline constexpr FUIDWords kIHostIntValueID = {0x8E809BD0, 0xFDE24334, 0x859CB86C, 0x7A163095};
inline constexpr FUIDWords kIHostFloatValueID = {0x80F5D0DE, 0x2C304A35, 0x884F2E12, 0xB0286235};
inline constexpr FUIDWords kIHostStringValueID = {0x3E542CC0, 0x90B44629, 0xAB152078, 0x9CA6EC4C};
inline constexpr FUIDWords kIHostStringListValueID = {0xF3C84442, 0xF11746ED, 0xAE813802, 0x530BD961};
inline constexpr FUIDWords kIHostTransformerValueID = {0xBD60A3E4, 0xA88D4428, 0x9E5B559B, 0xDC0BE52F};
inline constexpr FUIDWords kIHostValueProxyID = {0xF0714CE3, 0xF3365F8A, 0x4CB4297C, 0x9517F825};
inline constexpr FUIDWords kIHostAliasValueID = {0xC7DE6309, 0xF2B87829, 0x9F619417, 0x4EDCF4DA};

// controllers and hooks
inline constexpr FUIDWords kIControllerID = {0x16763FA2, 0xE7A14BE6, 0x5E26FF5D, 0xDE76F0F0};
inline constexpr FUIDWords kIHostControllerID = {0xE7904D89, 0x9F31BA88, 0x7172CCD8, 0x34F914A8};
inline constexpr FUIDWords kIPlugControllerID = {0x37433723, 0xD0864777, 0x9618585A, 0x502B6BF9};
inline constexpr FUIDWords kIPlugController4ID = {0x908D4138, 0x12F84929, 0xB46438D4, 0x226914DF};
inline constexpr FUIDWords kIApplicationEventHookID = {0x0AEC1E51, 0x49D44490, 0x978DC636, 0xA4742BCE};
inline constexpr FUIDWords kIEventHookRegistryID = {0x9174F7CA, 0x5E0849D0, 0xB1BE16FF, 0x9144A581};

// application and windows
inline constexpr FUIDWords kIPlatformID = {0x923B1661, 0xE2DF48A4, 0xAB4833F4, 0xD6CC2C02};
inline constexpr FUIDWords kIPlatform2ID = {0x07D3649E, 0x58DD4CB4, 0xB8F10462, 0x419284C3};
inline constexpr FUIDWords kIIdleHandlerID = {0xC25DBF05, 0x24284629, 0xBC32D680, 0xB0EDE2AA};
inline constexpr FUIDWords kIPlatformEventHandlerID = {0xE279FB62, 0xBCFB4F44, 0xA3F0ECFA, 0xC92E28DA};
inline constexpr FUIDWords kIWindowID = {0xDDCE62DC, 0x5F9F439F, 0xBE156A55, 0x56670298};
inline constexpr FUIDWords kICloseWindowNotificationID = {0xFD5ED9E7, 0x887940E0, 0xB21D0C02, 0x5FFBD02B};
inline constexpr FUIDWords kIGuiDescriptionID = {0x8A77797D, 0x2B59446D, 0xAE98826B, 0xB515DB8B};

// change notification
inline constexpr FUIDWords kIUpdateManagerID = {0x1B095249, 0x611A4A17, 0x94A9D436, 0xB9A61CE6};

// attributes
inline constexpr FUIDWords kIAttributeListID = {0x11F789E3, 0x99FD4C52, 0xB352DE36, 0x6C0F483C};

// messages
inline constexpr FUIDWords kIMessageID = {0x41EC7D91, 0xBF394194, 0xB0CE2F16, 0x6543DA7B};
inline constexpr FUIDWords kIMessage2ID = {0x502B2740, 0xC0BE4D3A, 0xB7885748, 0x6FE9F373};
inline constexpr FUIDWords kIMessageReceiverID = {0xCBED8408, 0xA5464BC5, 0x877CFB04, 0xB658BA34};
inline constexpr FUIDWords kIMessengerID = {0xE9B7D89C, 0x06C04F5E, 0xB00F49DB, 0xFE519639};

// names that are searched for
inline constexpr FUIDWords kIObjectDescriptionID = {0xBF61A991, 0xAF2E4F49, 0xB5A4814B, 0x7CBDD31A};
inline constexpr FUIDWords kIStringMatcherID = {0x4F99203B, 0xBEEC45B8, 0x93A29CFC, 0x5CFFC0D8};

// streams
inline constexpr FUIDWords kIMemoryStreamID = {0x0EFEC079, 0x30534387, 0xBDEF1E47, 0x24BC0CE7};

// file systems
inline constexpr FUIDWords kIVirtualFileSystemID = {0x78947604, 0x13424C58, 0x82501A9D, 0xE7034D75};
inline constexpr FUIDWords kIVirtualFileIteratorID = {0x11FA09D3, 0x68474C6F, 0x93443669, 0xE124E268};
inline constexpr FUIDWords kIPathID = {0x0D0F702C, 0x5AA44653, 0x94709DB0, 0x14AAE674};
inline constexpr FUIDWords kIFileIteratorID = {0x66F3469B, 0x0AEF4E93, 0xB320AD41, 0x01C65555};

// drawing
inline constexpr FUIDWords kIFactoryID = {0x871D4EAD, 0xBDEE4CFC, 0xBB5606F5, 0xB7636095};
inline constexpr FUIDWords kIDrawDeviceID = {0xA02DC293, 0x6FFA4718, 0x88B91334, 0xA7A35319};
inline constexpr FUIDWords kIFastLinesID = {0x4F804A3C, 0xA6404A49, 0x8057FAEE, 0x02C5416F};
inline constexpr FUIDWords kIFastRectsID = {0xF66BAEFE, 0xFBAB4370, 0x98073906, 0x77A46452};
inline constexpr FUIDWords kIGraphicsPathID = {0x58C8F691, 0x39B04DFC, 0xBE917175, 0x67C418FD};
inline constexpr FUIDWords kIGraphicsPathAccessorID = {0xE7932EDB, 0x0B694B91, 0x8ED8C671, 0x07D0E631};
inline constexpr FUIDWords kIBitmapID = {0x8F9073D8, 0x185C4C64, 0xB6272156, 0x53B8BCFC};
inline constexpr FUIDWords kIBitmapPixelAccessorID = {0x7049B06B, 0xA01B427B, 0xABD3654F, 0x0D9C5067};
inline constexpr FUIDWords kIBitmapCodecID = {0x0D175069, 0xD8D448E3, 0x9EA29E30, 0x05EE5A3B};
inline constexpr FUIDWords kIBitmapFactoryID = {0xC7951FF4, 0x12F94173, 0x9DEE84E6, 0x7B299DC0};
inline constexpr FUIDWords kIFontFaceID = {0xC92D527C, 0x6C2244FD, 0x8E40916B, 0xE9ACFAB5};
inline constexpr FUIDWords kIFontDescriptionID = {0xE7BAC63E, 0xCA8940D6, 0xA7A20598, 0x29D2ABA7};
inline constexpr FUIDWords kIFontCollectionID = {0x192AD3B8, 0x11F74D41, 0x8FD4C117, 0xF02FBE0C};
inline constexpr FUIDWords kIVectorID = {0xC81E35A5, 0x57484AF3, 0xBEDAC7A1, 0xB4B8E850};
inline constexpr FUIDWords kITransformMatrixID = {0x001563A4, 0xCB75408F, 0xAC5F0A9A, 0x0E18F3C6};
inline constexpr FUIDWords kIBitmapFilterID = {0xE4423E4E, 0xE60F42B5, 0x85CCA427, 0x2FA21459};
inline constexpr FUIDWords kIBitmapFilterFactoryID = {0x5073D4A8, 0x79E94074, 0xA676704C, 0x059F5006};
inline constexpr FUIDWords kIColorTransformID = {0xC4A424C8, 0xDC144232, 0x960AB060, 0xC8018A60};
inline constexpr FUIDWords kIColorGroupInformationID = {0x4C1351F0, 0xAD1D4777, 0xA40487F8, 0x625D68A5};

// scripts
inline constexpr FUIDWords kIScriptObjectID = {0xE73D8248, 0x86986AB6, 0x6CB5B4BE, 0x77F2846D};
inline constexpr FUIDWords kIScriptContextID = {0xDF79BE69, 0x5C752E2E, 0x92C03A3D, 0xB6AAF23F};
inline constexpr FUIDWords kIScriptErrorHookID = {0x697F1643, 0x694D5737, 0x927F1563, 0x0719A235};
inline constexpr FUIDWords kIScriptConsoleID = {0x81981C6D, 0x24B0C0F3, 0x81B7FDAD, 0x7DD4CEAA};
inline constexpr FUIDWords kIScriptEngineID = {0x830D8D28, 0x8946AB38, 0x57CFE90F, 0xBD19A2B1};

// undo and commands
inline constexpr FUIDWords kIActionTargetID = {0x38D8747E, 0x93F44FC3, 0x9754CA51, 0xC31C8019};
inline constexpr FUIDWords kIActionDispatcherID = {0xA3266E20, 0x2FBE4BF6, 0x993AD7EF, 0x53B0F995};
inline constexpr FUIDWords kIActionHandlerID = {0xEF3628C1, 0xA65D445A, 0xB45CC21B, 0x0411965F};
inline constexpr FUIDWords kIActionManagerID = {0xFA286B91, 0x9DBF40DD, 0x8878ABDA, 0x6429F256};
inline constexpr FUIDWords kIActionManager2ID = {0x4F9BA9B5, 0x1008477B, 0x9F56C62F, 0xCABAEE8C};

// modules
inline constexpr FUIDWords kIModuleBundleID = {0xA0FAF614, 0x77F44E6C, 0xB75DA7F7, 0x29A7586C};

// interfaces that are known by identifier only
inline constexpr FUIDWords kICloneableID = {0xD45406B9, 0x3A2D4443, 0x9DAD9BA9, 0x85A1454B};
inline constexpr FUIDWords kIErrorContextID = {0x12BCD07B, 0x7C694336, 0xB7DA77C3, 0x444A0CD0};
inline constexpr FUIDWords kIPersistentChunkID = {0x7041A824, 0xFC9A488A, 0x8F07DAC0, 0x5061E933};

}  // namespace Tessarine
