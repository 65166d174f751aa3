#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/graphics/ifactory.h"

namespace Tessarine::Graphics {

DEFINE_IID_ROW(IFactory, kIFactoryID);
DEFINE_IID_ROW(IDrawDevice, kIDrawDeviceID);
DEFINE_IID_ROW(IFastLines, kIFastLinesID);
DEFINE_IID_ROW(IFastRects, kIFastRectsID);
DEFINE_IID_ROW(IGraphicsPath, kIGraphicsPathID);
DEFINE_IID_ROW(IGraphicsPathAccessor, kIGraphicsPathAccessorID);
DEFINE_IID_ROW(IBitmap, kIBitmapID);
DEFINE_IID_ROW(IBitmapPixelAccessor, kIBitmapPixelAccessorID);
DEFINE_IID_ROW(IBitmapCodec, kIBitmapCodecID);
DEFINE_IID_ROW(IBitmapFactory, kIBitmapFactoryID);
DEFINE_IID_ROW(IFontFace, kIFontFaceID);
DEFINE_IID_ROW(IFontDescription, kIFontDescriptionID);
DEFINE_IID_ROW(IFontCollection, kIFontCollectionID);
DEFINE_IID_ROW(IVector, kIVectorID);
DEFINE_IID_ROW(ITransformMatrix, kITransformMatrixID);
DEFINE_IID_ROW(IBitmapFilter, kIBitmapFilterID);
DEFINE_IID_ROW(IBitmapFilterFactory, kIBitmapFilterFactoryID);

}  // namespace Tessarine::Graphics
