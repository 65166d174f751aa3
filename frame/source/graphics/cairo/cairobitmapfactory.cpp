#include "frame/source/graphics/cairo/cairobitmapfactory.h"
#include "base/source/fstringobject.h"
#include "frame/source/graphics/cairo/imagecodec.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/filesystem/ipath.h"
#include "pluginterfaces/host/ihosttools.h"
#include "storage/ffilesystem.h"
#include "storage/ffstream.h"

namespace Tessarine::Graphics {
namespace {
/** A row of the table as an object. */
class BitmapCodec : public FObject, public IBitmapCodec {
public:
    DECLARE_CLASS_NAME(BitmapCodec, FObject)
    FORWARD_REFCOUNT(FObject)
    explicit BitmapCodec(const ImageCodec& codec) : codec(codec) {}

    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IBitmapCodec>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
    }
    const char* getExtension() override { return codec.extension; }
    const char* getName() override { return codec.name; }
    const char* getMimeType() override { return codec.mimeType; }
    bool canEncode() override { return codec.write; }
    int32_t encode(IBitmap* bitmap, IBStream* stream) override {
        if (!bitmap || !stream)
            return kInvalidArgument;
        return codec.write && codec.write(bitmap, stream) ? kResultOk : kResultFalse;
    }

private:
    const ImageCodec& codec;
};
}  // namespace

int32_t CairoBitmapFactory::queryInterface(const char* iid, void** obj) {
    return answerInterface<IBitmapFactory>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

IBitmap* CairoBitmapFactory::createFromPath(IPath* path) {
    const OPtr<StringObject> text(new StringObject);
    if (!path || path->getFullPath(text) != kResultOk)
        return nullptr;
    FPath place;
    place.setFullPath(text->text16(), kFilePath);
    const OPtr<FFileStream> file(new FFileStream(kOpenRead));
    file->setPath(place);
    return file->open() ? readImage(file) : nullptr;
}

IBitmap* CairoBitmapFactory::createFromStream(IBStream* stream) {
    return readImage(stream);
}

IBitmap* CairoBitmapFactory::create(Size size) {
    return CairoBitmap::create(size.width, size.height);
}

int32_t CairoBitmapFactory::getCodecs(IList* codecs) {
    if (!codecs)
        return kInvalidArgument;
    for (const ImageCodec* each : imageCodecs()) {
        const OPtr<BitmapCodec> codec(new BitmapCodec(*each));
        codecs->add(static_cast<IBitmapCodec*>(codec));
    }
    return kResultOk;
}

}  // namespace Tessarine::Graphics
