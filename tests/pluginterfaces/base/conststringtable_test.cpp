#include "pluginterfaces/base/conststringtable.h"
#include <gtest/gtest.h>
#include <string>

using namespace Tessarine;

TEST(ConstStrings, AreKeptByPointer) {
    static const char first[] = "TALV", second[] = "TALV";
    ConstStringTable* table = ConstStringTable::instance();
    const tchar* text = table->getString(first);
    EXPECT_NE(table->getString(second), text) << "equal texts at two places are two entries";
    static const std::string many(1000, 'x');
    for (const char& each : many)  // growth moves no text
        table->getString(&each);
    EXPECT_EQ(table->getString(first), text);
    EXPECT_EQ(table->getString(nullptr), nullptr);
}

TEST(ConstStrings, ExtendTheSignOfEachByte) {
    ConstStringTable* table = ConstStringTable::instance();
    EXPECT_EQ(std::u16string(table->getString("a\x7F\x80\xFF")), u"a\x007F\xFF80\xFFFF");
    EXPECT_TRUE(table->getString('\xE4') == 0xFFE4 && table->getString('\0') == 0);
}
