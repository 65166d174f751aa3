#include "pluginterfaces/base/ipluginbase.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <string>

using namespace Tessarine;

namespace {
const FUID kID(1, 2, 3, 4);
const std::string kLong(500, 'x');

/** The text of a field, and nothing but zeros behind it. */
template <class Char, size_t Size>
std::basic_string<Char> fieldText(const Char (&field)[Size]) {
    const std::basic_string<Char> text(field, std::char_traits<Char>::length(field));
    EXPECT_LT(text.size(), Size) << "has no terminator";
    for (size_t i = text.size(); i < Size; ++i)
        EXPECT_EQ(field[i], 0) << i;
    return text;
}
}  // namespace

TEST(InfoRecords, CutTextsToTheirFields) {
    const char* text = kLong.c_str();
    const PFactoryInfo factory(text, text, text, 1);
    EXPECT_EQ(fieldText(factory.vendor) + fieldText(factory.url) + fieldText(factory.email), std::string(445, 'x'));
    EXPECT_EQ(factory.flags, 1 | PFactoryInfo::kUnicode);
    EXPECT_EQ(fieldText(PFactoryInfo(nullptr, nullptr, nullptr, 0).vendor), "");
    const PClassInfo2 info(kID, 3, text, text, 4, text, text, text, text);
    EXPECT_EQ(fieldText(info.category) + fieldText(info.name) + fieldText(info.subCategories), std::string(221, 'x'));
    EXPECT_EQ(fieldText(info.vendor) + fieldText(info.version) + fieldText(info.sdkVersion), std::string(189, 'x'));
    EXPECT_TRUE(FUID::same(info.cid, kID));
}

TEST(InfoRecords, AreWidenedOverWhateverWasThere) {
    const PClassInfo2 info(kID, 7, "Service", "Head \xE4mp", 5, "Remote", kLong.c_str(), "1.0", "");
    PClassInfoW wide;
    std::ranges::fill(wide.name, u'?');
    std::ranges::fill(wide.sdkVersion, u'?');
    wide.fromAscii(info);
    EXPECT_TRUE(FUID::same(wide.cid, kID));
    EXPECT_EQ(fieldText(wide.category) + fieldText(wide.subCategories), "ServiceRemote");
    EXPECT_EQ(fieldText(wide.name), u"Head \u00E4mp");
    EXPECT_EQ(fieldText(wide.vendor) + fieldText(wide.version) + fieldText(wide.sdkVersion),
              std::u16string(63, u'x') + u"1.0");
}
