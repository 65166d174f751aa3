#include "base/utranslatedstring.h"
#include "tests/frame/source/storage/archiveprobes.h"

namespace Tessarine {
namespace {

constexpr UTranslatedString kOn("On"), kCopy("Copy{{Noun}}"), kLevel("Level", "Meter.Level");

bool load(const std::string& xml) {
    const OPtr<FMemoryStream> stream = streamOf(xml);
    return UTranslatedString::loadTable(stream);
}

class TranslationTable : public testing::Test {
protected:
    ~TranslationTable() override { UTranslatedString::forgetTable(); }
    static std::u16string all() {
        return std::u16string(kOn) + u'|' + std::u16string(kCopy) + u'|' + std::u16string(kLevel);
    }
};

TEST_F(TranslationTable, StandsInForEnglish) {
    EXPECT_EQ(all(), u"On|Copy|Level");
    const tchar* held = kOn.text();
    EXPECT_TRUE(load(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><translations><text key=\"On\">E&amp;in \xC3\xA9</text>"
        "<text key=\"Copy{{Noun}}\">Kopie</text><text>?</text><other key=\"Meter.Level\">x</other></translations>"));
    const tchar* translated = kOn.text();
    EXPECT_EQ(all(), u"E&in \u00E9|Kopie|Level");
    EXPECT_TRUE(load("<translations><text key='Meter.Level'>Pegel</text><text key='On'></text></translations>"));
    EXPECT_EQ(all(), u"|Copy|Pegel");
    UTranslatedString::forgetTable();
    EXPECT_EQ(all(), u"On|Copy|Level");
    EXPECT_EQ(std::u16string(held) + translated, u"OnE&in \u00E9");  // live on
}

TEST_F(TranslationTable, KeepsTheOldOneWhenTheNewIsNone) {
    const std::string good = "<translations><text key='On'>Ein</text></translations>";
    ASSERT_TRUE(load(good));
    for (size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(load("<translations><text key='On'>Other" + good.substr(0, length))) << length;
    EXPECT_FALSE(load("<skin><text key='On'>Other</text></skin>"));
    EXPECT_FALSE(load("<skin/>"));
    EXPECT_EQ(all(), u"Ein|Copy|Level");
}

}  // namespace
}  // namespace Tessarine
