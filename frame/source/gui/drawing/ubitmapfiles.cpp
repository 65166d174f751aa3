#include "base/fhostclasses.h"
#include "collect/cmcontainer.h"
#include "gui/drawing/ubitmap.h"
#include "pluginterfaces/host/ihosttools.h"
#include "storage/fasidefile.h"
#include "storage/fbstream.h"
#include <algorithm>
#include <cstring>
#include <vector>

namespace Tessarine {
using Graphics::IBitmapCodec;

namespace {
constexpr const char* kDefaultExtension = "png";

std::vector<IPtr<IBitmapCodec>> allCodecs() {
    std::vector<IPtr<IBitmapCodec>> codecs;
    const OPtr<IList> list(UBitmap::getCodecs());
    for (int32_t index = 0; list && index < list->count(); ++index)
        if (FUnknownPtr<IBitmapCodec> codec(list->at(index)); codec)
            codecs.push_back(codec);
    return codecs;
}

FString wide(const char* text) {
    FString result(text);
    result.text16();
    return result;
}

/** Both the extension and the second half of the mime type are extensions of the files. */
FFileType typeOf(IBitmapCodec& codec) {
    const FString name(wide(codec.getName())), extension(wide(codec.getExtension())), mime(wide(codec.getMimeType()));
    const char* slash = std::strchr(codec.getMimeType(), '/');
    return FFileType(name.text16(), extension.text16(), wide(slash ? slash + 1 : codec.getExtension()).text16(), 0,
                     mime.text16());
}

template <class Fits>
IPtr<IBitmapCodec> codecThat(const Fits& fits) {
    const auto codecs = allCodecs();
    const auto found = std::ranges::find_if(codecs, [&fits](IBitmapCodec* codec) { return fits(typeOf(*codec)); });
    return found == codecs.end() ? nullptr : found->get();
}

IPtr<IBitmapCodec> codecOf(const FPath& path) {
    FString extension;
    return path.getExtension(extension)
               ? codecThat([&extension](const FFileType& type) { return type.hasExtension(extension); })
               : nullptr;
}
}  // namespace

bool UBitmap::saveToStream(FStream* stream, IAttributes* /*attributes*/) {
    const OPtr<UBitmap> part(getTargetBitmap() == this ? nullptr : getSection(bounds()));
    Graphics::IBitmap* pixels = part ? part->graphicsObject : graphicsObject;
    if (!stream || !pixels)
        return false;
    const FString png(wide(kDefaultExtension));
    const FFileType& told = stream->getFileType();
    const IPtr<IBitmapCodec> codec(
        codecThat([&](const FFileType& type) { return told.isValid() ? type == told : type.hasExtension(png); }));
    return codec && codec->canEncode() && codec->encode(pixels, stream) == kResultOk;
}

bool UBitmap::saveToFile(FPath* path, IAttributes* attributes) {
    const IPtr<IBitmapCodec> codec(path ? codecOf(*path) : nullptr);
    if (!codec || !codec->canEncode())
        return false;
    FAsideFile file(gFileSystem, *path);
    FStream* stream = file.getStream();
    if (!stream)
        return false;
    stream->setFileType(typeOf(*codec));
    return saveToStream(stream, attributes) && file.commit();
}

bool UBitmap::isBitmapFile(FPath* path) {
    return path && codecOf(*path);
}

IList* UBitmap::getCodecs() {
    Graphics::IBitmapFactory* factory = getFactory();
    FHostClasses classes;
    FInstancePtr<IList> list(factory ? &classes : nullptr);
    return list && factory->getCodecs(list) == kResultOk ? list.detach() : nullptr;
}

IBitmapCodec* UBitmap::getCodec(const FFileType& type) {
    return codecThat([&type](const FFileType& each) { return each == type; }).detach();
}

bool UBitmap::getFileTypes(CmContainer& types, bool encoders) {
    if (types._ownsObjects == CmContainer::kBorrows)
        return false;
    for (const IPtr<IBitmapCodec>& codec : allCodecs()) {
        if (encoders && !codec->canEncode())
            continue;
        auto* type = new FFileType(typeOf(*codec));
        if (!types.add(type) || types._ownsObjects == CmContainer::kShares)
            type->release();
    }
    return true;
}

}  // namespace Tessarine
