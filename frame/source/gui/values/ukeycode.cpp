#include "gui/values/ukeycode.h"
#include "base/source/fstring.h"
#include <algorithm>
#include <optional>
#include <string_view>

namespace Tessarine {
namespace {
using namespace std::string_view_literals;

constexpr int32_t kCharacterKeys = 80;    // from a character to the number of its key
constexpr auto kNumberedKey = u"Key "sv;  // a key without a name

struct ModifierName {
    uint8_t modifier;
    std::u16string_view prefix;
};
constexpr ModifierName kModifiers[] = {
    {UKeyCode::kSuper,     u"Super+"},
    {UKeyCode::kCommand,   u"Ctrl+" },
    {UKeyCode::kAlternate, u"Alt+"  },
    {UKeyCode::kShift,     u"Shift+"},
};

constexpr std::u16string_view kKeyNames[] = {
    u"",      u"Backspace", u"Tab",         u"Clear",    u"Return",      u"Pause",      u"Esc",   u"Space",  u"Next",
    u"End",   u"Home",      u"Left Arrow",  u"Up Arrow", u"Right Arrow", u"Down Arrow", u"PgUp",  u"PgDown", u"Menu",
    u"Print", u"Enter",     u"Break",       u"Insert",   u"Delete",      u"Help",       u"Pad 0", u"Pad 1",  u"Pad 2",
    u"Pad 3", u"Pad 4",     u"Pad 5",       u"Pad 6",    u"Pad 7",       u"Pad 8",      u"Pad 9", u"Pad *",  u"Pad +",
    u"Pad ,", u"Pad -",     u"Pad .",       u"Pad /",    u"F1",          u"F2",         u"F3",    u"F4",     u"F5",
    u"F6",    u"F7",        u"F8",          u"F9",       u"F10",         u"F11",        u"F12",   u"F13",    u"F14",
    u"F15",   u"F16",       u"F17",         u"F18",      u"F19",         u"F20",        u"F21",   u"F22",    u"F23",
    u"F24",   u"Num Lock",  u"Scroll Lock",
};
static_assert(std::size(kKeyNames) == UKeyCode::kScrollLock + 1, "each key has its name");

constexpr bool isDigit(tchar c) {
    return c >= '0' && c <= '9';
}

constexpr tchar upper(tchar c) {
    return c >= 'a' && c <= 'z' ? tchar(c - 32) : c;
}

constexpr bool isLetter(tchar c) {
    return upper(c) >= 'A' && upper(c) <= 'Z';
}

bool hasCase(tchar c) {
    return ConstString::toUpper(c) != ConstString::toLower(c);
}

/** kNoKey: the character stands for itself. */
uint8_t virtualKeyOf(tchar character) {
    if (character == ' ')
        return UKeyCode::kSpace;
    return isDigit(character) || isLetter(character) ? uint8_t(upper(character) + kCharacterKeys) : uint8_t(0);
}

bool isSameName(std::u16string_view a, std::u16string_view b) {
    return std::ranges::equal(a, b, {}, upper, upper);
}

bool takePrefix(std::u16string_view& text, std::u16string_view prefix) {
    const bool isThere = text.size() > prefix.size() && isSameName(text.substr(0, prefix.size()), prefix);
    if (isThere)
        text.remove_prefix(prefix.size());
    return isThere;
}

uint8_t takeModifiers(std::u16string_view& text) {
    uint8_t modifiers = 0;
    for (bool any = true; any;) {
        any = false;
        for (const ModifierName& row : kModifiers)
            if (takePrefix(text, row.prefix)) {
                modifiers |= row.modifier;
                any = true;
            }
    }
    return modifiers;
}

std::optional<UKeyCode> namedKey(std::u16string_view name) {
    const auto row = std::ranges::find_if(kKeyNames, [&](std::u16string_view each) { return isSameName(each, name); });
    if (row != std::end(kKeyNames))
        return UKeyCode(0, uint8_t(row - kKeyNames));
    if (name.size() == 1)
        return virtualKeyOf(name.front()) ? UKeyCode(0, virtualKeyOf(name.front())) : UKeyCode(name.front());
    return {};
}

std::optional<UKeyCode> numberedKey(std::u16string_view text) {
    if (!takePrefix(text, kNumberedKey) || text.size() > 3)
        return {};
    int32_t number = 0;
    for (const tchar digit : text) {
        if (!isDigit(digit))
            return {};
        number = number * 10 + digit - '0';
    }
    if (number == 0 || number > 255)
        return {};
    return UKeyCode(0, uint8_t(number));
}

/** Of a virtual key that stands for a digit or letter; 0: of another one. */
tchar characterOf(uint8_t virtualKey) {
    const int32_t character = virtualKey - kCharacterKeys;
    const bool isOne = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z');
    return isOne ? tchar(character) : tchar(0);
}

void appendKey(String& text, const UKeyCode& key) {
    const tchar character = key.virtualKey ? characterOf(key.virtualKey) : key.character;
    if (character) {
        text.append(&character, 1);
    } else if (key.virtualKey < std::size(kKeyNames)) {
        text.append(kKeyNames[key.virtualKey].data());
    } else {
        text.append(kNumberedKey.data());
        text.append(String().printInt64(key.virtualKey));
    }
}
}  // namespace

void UKeyCode::normalize() {
    if (virtualKey != kNoKey) {
        character = 0;
        return;
    }
    if (character && !hasCase(character) && modifiers == kShift)
        modifiers = 0;
    virtualKey = virtualKeyOf(character);
    if (virtualKey != kNoKey)
        character = 0;
}

uint32_t UKeyCode::toLong() const {
    UKeyCode key(*this);
    key.normalize();
    return key.isEmpty() ? 0 : uint32_t(key.modifiers) << 24 | uint32_t(key.virtualKey) << 16 | key.character;
}

UKeyCode UKeyCode::fromLong(uint32_t code) {
    return UKeyCode(tchar(code), uint8_t(code >> 16), uint8_t(code >> 24));
}

void UKeyCode::keyCode2String(String& text) const {
    text.assign(u"");
    if (isEmpty())
        return;
    for (const ModifierName& row : kModifiers)
        if (modifiers & row.modifier)
            text.append(row.prefix.data());
    appendKey(text, *this);
}

bool UKeyCode::string2KeyCode(const ConstString& text) {
    const String wide(text);
    std::u16string_view rest(wide.text16());
    UKeyCode key;
    if (!rest.empty()) {
        const uint8_t held = takeModifiers(rest);
        const std::optional<UKeyCode> found = namedKey(rest);
        const std::optional<UKeyCode> known = found ? found : numberedKey(rest);
        if (!known)
            return false;
        key = *known;
        key.modifiers = held;
    }
    key.normalize();
    *this = key;
    return true;
}

}  // namespace Tessarine
