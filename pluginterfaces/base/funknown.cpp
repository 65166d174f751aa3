#include "pluginterfaces/base/funknown.h"
#include <cstdio>
#include <sys/random.h>

namespace Tessarine {
namespace {
constexpr size_t kStringDigits = 32;
constexpr size_t kRegistryLength = 38;

struct ByteRun {
    int32_t first, count;
    size_t position;  // of its digits in the registry form
};
constexpr ByteRun kRegistryRuns[] = {
    {0,  4, 1 },
    {4,  2, 10},
    {6,  2, 15},
    {8,  2, 20},
    {10, 6, 25},
};

void printByte(char* dst, char byte) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    dst[0] = kDigits[uint8_t(byte) >> 4];
    dst[1] = kDigits[uint8_t(byte) & 0xF];
}

/** Two digits; what is no number leaves the byte at 0. */
char scanByte(const char* text) {
    const char pair[] = {text[0], text[1], 0};
    unsigned value = 0;
    std::sscanf(pair, "%2x", &value);
    return char(value);
}
}  // namespace

FUID& FUID::operator=(const char* bytes) {
    if (bytes)
        std::memmove(data, bytes, kSize);
    else
        std::memset(data, 0, kSize);
    return *this;
}

bool FUID::isValid() const {
    constexpr char kNone[kSize] = {};
    return !same(data, kNone);
}

bool FUID::generate() {
    char bytes[kSize];
    if (getrandom(bytes, kSize, 0) != kSize)
        return false;
    bytes[6] = char((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = char((bytes[8] & 0x3F) | 0x80);  // variant of RFC 4122
    *this = static_cast<const char*>(bytes);
    return true;
}

uint32_t FUID::word(int32_t index) const {
    uint32_t value = 0;
    for (int32_t i = 0; i < 4; ++i)
        value = value << 8 | uint8_t(data[4 * index + i]);
    return value;
}

void FUID::to4Int(uint32_t& word1, uint32_t& word2, uint32_t& word3, uint32_t& word4) const {
    word1 = word(0);
    word2 = word(1);
    word3 = word(2);
    word4 = word(3);
}

void FUID::print(char* dst, int32_t style) const {
    constexpr const char* kPrefixes[] = {"INLINE_UID (", "DECLARE_UID (", "FUID (", "DECLARE_CLASS_IID (Interface, "};
    const char* prefix = kPrefixes[style >= kInlineUID && style < kClassUID ? style : kClassUID];
    char line[128];
    std::snprintf(line, sizeof(line), "%s0x%08X, 0x%08X, 0x%08X, 0x%08X)", prefix, word(0), word(1), word(2), word(3));
    if (dst)
        std::strcpy(dst, line);
    else
        std::printf("%s\n", line);
}

void FUID::toString(char* dst) const {
    if (!dst)
        return;
    for (int32_t i = 0; i < kSize; ++i)
        printByte(dst + 2 * i, data[i]);
    dst[kStringDigits] = 0;
}

bool FUID::fromString(const char* text) {
    if (!text || std::strlen(text) != kStringDigits)
        return false;
    for (int32_t i = 0; i < kSize; ++i)
        data[i] = scanByte(text + 2 * i);
    return true;
}

void FUID::toRegistryString(char* dst) const {
    if (!dst)
        return;
    std::memset(dst, '-', kRegistryLength);
    dst[0] = '{';
    dst[kRegistryLength - 1] = '}';
    dst[kRegistryLength] = 0;
    for (const ByteRun& run : kRegistryRuns)
        for (int32_t i = 0; i < run.count; ++i)
            printByte(dst + run.position + 2 * size_t(i), data[run.first + i]);
}

bool FUID::fromRegistryString(const char* text) {
    if (!text || std::strlen(text) != kRegistryLength)
        return false;
    for (const ByteRun& run : kRegistryRuns)
        for (int32_t i = 0; i < run.count; ++i)
            data[run.first + i] = scanByte(text + run.position + 2 * size_t(i));
    return true;
}

}  // namespace Tessarine
