#pragma once
#include "storage/fpath.h"
#include "unitsof.h"

/** An input of a byte of options, a byte that says how long the first text is, and two texts: bytes of UTF-8, or 16-bit units
    with kAnyUnits, half surrogate pairs among them. */
struct TwoTexts {
    enum Options : uint8_t { kAnyUnits = 1, kAsFolder = 2 };
    static constexpr size_t kLeast = 2;  // bytes of an input

    TwoTexts(const uint8_t* data, size_t size) {
        const Bytes bytes(data + 2, size - 2);
        const size_t length = std::min<size_t>(data[1], bytes.size());
        const bool any = data[0] & kAnyUnits;
        text = unitsOf(bytes.substr(0, length), any);
        name = unitsOf(bytes.substr(length), any);
        kind = data[0] & kAsFolder ? Tessarine::kFolderPath : Tessarine::kFilePath;
    }

    std::u16string text, name;
    int32_t kind;
};

inline std::u16string textOf(const Tessarine::FPath& path) {
    Tessarine::FString text;
    path.getFullPath(text);
    return text.text16();
}
