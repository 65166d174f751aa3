// A PNG file from outside. The first byte says in which pieces it is read and, with an odd number, that its checksums are to be
// put right before; the second where it is cut as well.
#include "imagesubject.h"
#include <zlib.h>

namespace {
constexpr size_t kSignatureBytes = 8, kChunkBytes = 12;  // of a chunk: its length, name and checksum

uint32_t numberAt(const std::string& bytes, size_t place) {
    uint32_t number = 0;
    for (size_t i = 0; i < 4; ++i)
        number = number << 8 | uint8_t(bytes[place + i]);
    return number;
}

void putChecksumsRight(std::string& file) {
    for (size_t place = kSignatureBytes; place + kChunkBytes <= file.size();) {
        const size_t length = std::min<size_t>(numberAt(file, place), file.size() - place - kChunkBytes);
        const size_t end = place + 8 + length;
        const auto sum = uint32_t(crc32(0, reinterpret_cast<const Bytef*>(&file[place + 4]), uInt(length + 4)));
        for (size_t i = 0; i < 4; ++i)
            file[end + i] = char(sum >> (24 - 8 * i));
        place = end + 4;
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    std::string file(data + 2, data + size);
    if (data[0] % 2)
        putChecksumsRight(file);
    ImageSubject::check(file, size_t(data[0]) + 1, file.size() * data[1] / 256);
    return 0;
}
