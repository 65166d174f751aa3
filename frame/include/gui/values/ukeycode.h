#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class ConstString;
class String;

/** A key with what is held down beside it: a key that has a number of its own, or else the character that it types.

    Texts     modifiers and the key's name with + between: "Ctrl+Shift+Left Arrow", "Alt+Q", "Ctrl++"; empty: no key. */
class UKeyCode {
public:
    enum Modifier : uint8_t { kShift = 1, kAlternate = 2, kCommand = 4, kSuper = 8, kOtherModifiers = 14 };
    enum VirtualKey : uint8_t {
        kNoKey,
        kBackspace,
        kTab,
        kClear,
        kReturn,
        kPause,
        kEscape,
        kSpace,
        kNext,
        kEnd,
        kHome,
        kLeft,
        kUp,
        kRight,
        kDown,
        kPageUp,
        kPageDown,
        kMenu,
        kPrint,
        kEnter,
        kBreak,
        kInsert,
        kDelete,
        kHelp,
        kPad0,  // to 9
        kPadMultiply = kPad0 + 10,
        kPadAdd,
        kPadSeparator,
        kPadSubtract,
        kPadDecimal,
        kPadDivide,
        kF1,  // to F24
        kNumLock = kF1 + 24,
        kScrollLock,
        kFirstCharacterKey = '0' + 80,  // digits and capitals follow as in ASCII
    };

    UKeyCode() = default;
    explicit UKeyCode(tchar character, uint8_t virtualKey = kNoKey, uint8_t modifiers = 0)
        : character(character), virtualKey(virtualKey), modifiers(modifiers) {}
    bool operator==(const UKeyCode&) const = default;

    /** No key; modifiers alone are none. */
    bool isEmpty() const { return character == 0 && virtualKey == kNoKey; }
    /** Digits, letters of ASCII and the space become virtual keys; what a virtual key types is dropped, and so is a
        Shift alone that was needed to type a character without case. */
    void normalize();
    /** The same for keys that are the same when normalized; 0: no key. */
    uint32_t toLong() const;
    static UKeyCode fromLong(uint32_t code);

    void keyCode2String(String& text) const;
    /** Names in any case. false, and as it was: it is no text of a key. The key is normalized. */
    bool string2KeyCode(const ConstString& text);

    tchar character = 0;
    uint8_t virtualKey = kNoKey;
    uint8_t modifiers = 0;
};

}  // namespace Tessarine
