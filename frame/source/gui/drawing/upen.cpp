#include "gui/drawing/upen.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"

namespace Tessarine {
namespace {
constexpr int32_t kVersionWithFlag = 2;
}

IMPLEMENT_CLASS(UPen, CmObject)
IMPLEMENT_CLASS_V(UBrush, CmObject, kVersionWithFlag)

bool UPen::operator==(const UPen& other) const {
    return style == other.style && lineStyle == other.lineStyle && width == other.width && color == other.color &&
           antialias == other.antialias;
}

bool UPen::isEqual(const CmObject* other) const {
    const auto* pen = classCast<UPen>(other);
    return pen && *this == *pen;
}

bool UPen::externalize(FArchive& archive) const {
    FStreamer& stream = archive.getStream();
    return color.externalize(archive) && stream.writeInt16(0) && stream.writeInt16(int16_t(style)) &&
           stream.writeInt32(width) && stream.writeFloat(1) && stream.writeBool(antialias);
}

bool UPen::internalize(FArchive& archive) {
    FStreamer& stream = archive.getStream();
    UPen read(*this);
    int16_t unused = 0, readStyle = 0;
    float unusedFactor = 0;
    if (!read.color.internalize(archive) || !stream.readInt16(unused) || !stream.readInt16(readStyle) ||
        !stream.readInt32(read.width) || !stream.readFloat(unusedFactor) || !stream.readBool(read.antialias))
        return false;
    read.style = readStyle;
    *this = read;
    return true;
}

bool UBrush::operator==(const UBrush& other) const {
    return color == other.color && antialias == other.antialias;
}

bool UBrush::isEqual(const CmObject* other) const {
    const auto* brush = classCast<UBrush>(other);
    return brush && *this == *brush;
}

bool UBrush::externalize(FArchive& archive) const {
    FStreamer& stream = archive.getStream();
    return color.externalize(archive) && stream.writeInt16(0) && stream.writeInt16(1) && stream.writeFloat(1) &&
           stream.writeBool(antialias);
}

bool UBrush::internalize(FArchive& archive) {
    FStreamer& stream = archive.getStream();
    UBrush read;
    int16_t unused = 0;
    float unusedFactor = 0;
    if (!read.color.internalize(archive) || !stream.readInt16(unused) || !stream.readInt16(unused) ||
        !stream.readFloat(unusedFactor))
        return false;
    if (archive.getClassVersion(className()) >= kVersionWithFlag && !stream.readBool(read.antialias))
        return false;
    *this = read;
    return true;
}

bool UBrush::storeAttributes(FAttributes& attributes) const {
    return attributes.setMember("Color", color) && attributes.set("Antialias", antialias);
}

bool UBrush::restoreAttributes(FAttributes& attributes) {
    UBrush stored;
    if (!attributes.getMember("Color", stored.color))
        return false;
    attributes.get("Antialias", stored.antialias);
    *this = stored;
    return true;
}

}  // namespace Tessarine
