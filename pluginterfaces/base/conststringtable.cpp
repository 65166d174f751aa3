#include "pluginterfaces/base/conststringtable.h"

namespace Tessarine {
namespace {
tchar widen(char character) {
    return tchar(int16_t(character));
}
}  // namespace

ConstStringTable::ConstStringTable()
    : stringMap(std::make_unique<std::unordered_map<const char*, Text>>()),
      charMap(std::make_unique<std::unordered_map<char, tchar>>()) {}

ConstStringTable* ConstStringTable::instance() {
    static ConstStringTable table;
    return &table;
}

const tchar* ConstStringTable::getString(const char* text) {
    if (!text)
        return nullptr;
    Text& copy = (*stringMap)[text];
    if (!copy) {
        const size_t length = std::strlen(text);
        copy = std::make_unique<tchar[]>(length + 1);
        for (size_t i = 0; i < length; ++i)
            copy[i] = widen(text[i]);
    }
    return copy.get();
}

tchar ConstStringTable::getString(char character) {
    return charMap->try_emplace(character, widen(character)).first->second;
}

}  // namespace Tessarine
