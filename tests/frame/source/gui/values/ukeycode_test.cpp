#include "gui/values/ukeycode.h"
#include "base/source/fstring.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
std::string textOf(const UKeyCode& key) {
    String text;
    key.keyCode2String(text);
    return text.text8();
}

TEST(KeyCode, NormalizesCharacters) {
    struct Row {
        UKeyCode key, normalized;
        const char* text;
    };
    const Row rows[] = {
        {UKeyCode(u'7'), UKeyCode(0, '7' + 80), "7"},
        {UKeyCode(u'q', 0, 5), UKeyCode(0, 'Q' + 80, 5), "Ctrl+Shift+Q"},
        {UKeyCode(u'!', 0, 1), UKeyCode(u'!'), "!"},
        {UKeyCode(u'+', 0, 5), UKeyCode(u'+', 0, 5), "Ctrl+Shift++"},
        {UKeyCode(u' ', 0, 2), UKeyCode(0, 7, 2), "Alt+Space"},
        {UKeyCode(u'\u00e9', 0, 4), UKeyCode(u'\u00e9', 0, 4), nullptr},
        {UKeyCode(u'\u00f7', 0, 1), UKeyCode(u'\u00f7'), nullptr},
        {UKeyCode(u'4', 28), UKeyCode(0, 28), "Pad 4"},
        {UKeyCode(0, 200, 8), UKeyCode(0, 200, 8), "Super+Key 200"},
        {UKeyCode(0, 0, 4), UKeyCode(0, 0, 4), ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text ? row.text : "beyond ASCII");
        UKeyCode key(row.key);
        key.normalize();
        EXPECT_EQ(key, row.normalized);
        EXPECT_EQ(key.toLong(), row.key.toLong());
        EXPECT_EQ(row.text ? textOf(key) : "", row.text ? row.text : "");
        EXPECT_EQ(UKeyCode::fromLong(key.toLong()), key.isEmpty() ? UKeyCode() : key);
    }
}

TEST(KeyCode, EachTextComesBack) {
    for (int32_t modifiers = 0; modifiers < 16; ++modifiers)
        for (int32_t number = 1; number < 256 + 0x300; ++number) {
            UKeyCode key(number > 255 ? tchar(number - 223) : tchar(0), uint8_t(number > 255 ? 0 : number),
                         uint8_t(modifiers));
            key.normalize();
            String text;
            key.keyCode2String(text);
            UKeyCode read(u'x');
            ASSERT_TRUE(read.string2KeyCode(text)) << number;
            ASSERT_EQ(read, key) << number << " " << modifiers;
        }
}

TEST(KeyCode, RefusesWhatIsNoKey) {
    for (const char* text : {"Shift+", "Ctrl", "Left", "Q+Ctrl", "Key 0", "Key 256", "Key 9999999999", "Key x", "ab"}) {
        UKeyCode key(u'!');
        EXPECT_FALSE(key.string2KeyCode(ConstString(text))) << text;
        EXPECT_EQ(key, UKeyCode(u'!'));
    }
    UKeyCode key;
    EXPECT_TRUE(key.string2KeyCode(ConstString("cTRL+pgdown")));
    EXPECT_EQ(key, UKeyCode(0, 16, 4));
    EXPECT_TRUE(key.string2KeyCode(ConstString("")));
    EXPECT_TRUE(key.isEmpty());
}
}  // namespace
