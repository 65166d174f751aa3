#include "base/source/fstreamer.h"
#include "base/source/fstringconvert.h"
#include "base/source/fstringobject.h"
#include "pluginterfaces/base/fvariant.h"
#include "pluginterfaces/base/iattributes.h"
#include <algorithm>

/** How a string meets what isn't one: streams, variants, attributes, counted bytes, the system's own strings. */

namespace Tessarine {
namespace {
constexpr int32_t kMaxStoredBytes = 50000;  // what load accepts
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr size_t kMaxPascal = 255;

/** A stored text: what of it is the text itself. */
struct StoredText {
    std::string_view bytes;
    bool utf8;
};

StoredText withoutMark(std::string_view bytes) {
    const bool behind = bytes.size() > kUtf8Mark.size() && bytes.ends_with(kUtf8Mark);
    const bool before = bytes.size() > kUtf8Mark.size() && bytes.starts_with(kUtf8Mark);
    if (behind)
        bytes.remove_suffix(kUtf8Mark.size());
    if (before)
        bytes.remove_prefix(std::min(kUtf8Mark.size(), bytes.size()));
    const size_t last = bytes.find_last_not_of('\0');
    return {bytes.substr(0, last == bytes.npos ? 0 : last + 1), behind || before};
}

bool storeBytes(FStreamer& stream, std::string_view text) {
    if (text.empty())
        return stream.writeInt32(0);
    const int64_t size = int64_t(text.size());
    return stream.writeInt32(int32_t(size) + 1) && stream.writeRaw(text.data(), size) == size && stream.writeChar8(0);
}

template <class Char>
const Char* duplicate(const Char* text, uint32_t length) {
    Char* copy = new Char[length + 1];
    std::copy_n(text, length + 1, copy);
    return copy;
}
}  // namespace

void* ConstString::toCFStringRef(uint32_t encoding, bool /*changeable*/) const {
    String text(*this);
    if (!isWide && !text.toWideString(codePageOfEncoding(encoding)))
        return nullptr;
    StringObject* object = new StringObject;
    object->take(text);
    return static_cast<IString*>(object);
}

bool String::fromCFStringRef(const void* ref, uint32_t encoding) {
    if (!ref)
        return false;
    IString* source = static_cast<IString*>(const_cast<void*>(ref));
    String text(source->getText16());
    if (!isWide && !text.toMultiByte(codePageOfEncoding(encoding)))
        return false;
    swapContent(text);
    return true;
}

void String::fromPascalString(const unsigned char* text) {
    if (text)
        assign(reinterpret_cast<const char*>(text) + 1, text[0]);
    else
        resize(0, false);
}

int32_t String::toPascalString(unsigned char* dst) const {
    const String copy(*this);
    const std::string_view bytes = std::string_view(copy.text8()).substr(0, kMaxPascal);
    dst[0] = static_cast<unsigned char>(bytes.size());
    std::ranges::copy(bytes, dst + 1);
    return dst[0];
}

bool String::fromVariant(const FVariant& value) {
    if (!value.isString())
        return false;
    assign(ConstString(value));
    return true;
}

/** A variant frees by array delete what came from malloc here, so that it gets a block of its own. */
void String::passToVariant(FVariant& value) {
    if (isEmpty()) {
        toVariant(value);
        return;
    }
    if (isWide)
        value.setString16(duplicate(buffer16, len));
    else
        value.setString8(duplicate(buffer8, len));
    value.setOwner(true);
    resize(0, isWide);
}

bool String::toAttributes(IAttributes* attributes, const char* key) const {
    FVariant value;
    toVariant(value);
    return attributes && attributes->set(key, value) == kResultOk;
}

bool String::fromAttributes(IAttributes* attributes, const char* key) {
    FVariant value;
    return attributes && attributes->get(key, value) == kResultOk && fromVariant(value);
}

bool FString::load(FStreamer& stream) {
    int32_t size = 0;
    if (!stream.readInt32(size) || size < 0)
        return false;
    if (size > kMaxStoredBytes) {
        stream.seek(size, kFromCurrent);
        return false;
    }
    std::string bytes(size_t(size), '\0');
    return stream.readRaw(bytes.data(), size) == size && fromStored(bytes);
}

bool FString::fromStored(std::string_view bytes) {
    const StoredText stored = withoutMark(bytes);
    const uint32_t length = uint32_t(stored.bytes.size());
    FString text;
    if (!text.resize(length, false))
        return false;
    stored.bytes.copy(text.buffer8, length);
    text.len = length;
    if (stored.utf8)
        text.toWideString(kCodePageUTF8);
    swapContent(text);
    return true;
}

bool FString::store(FStreamer& stream) const {
    return isWide ? storeString16(stream, buffer16, int32_t(len)) : storeBytes(stream, {buffer8, countedLength()});
}

bool FString::storeString8(FStreamer& stream, const char* text, int32_t count) {
    return storeBytes(stream, units8(ConstString(text, count)));
}

bool FString::storeString16(FStreamer& stream, const tchar* text, int32_t count) {
    const std::u16string_view units = units16(ConstString(text, count));
    if (units.empty())
        return stream.writeInt32(0);
    String utf8;
    utf8.take(encodedBlock(units, kCodePageUTF8).block, false);
    if (utf8.isEmpty())
        return false;
    const int32_t size = int32_t(utf8.length()) + 1;
    const int32_t markSize = int32_t(kUtf8Mark.size());
    return stream.writeInt32(size + markSize) && stream.writeRaw(utf8.text8(), size) == size &&
           stream.writeRaw(kUtf8Mark.data(), markSize) == markSize;
}

}  // namespace Tessarine
