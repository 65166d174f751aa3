#include "collect/cmdate.h"
#include "base/source/fstring.h"
#include "storage/fpersistent.h"
#include "tests/frame/source/storage/tempfolder.h"
#include <gtest/gtest.h>
#include <string>

namespace Tessarine {
namespace {

std::string textOf(const CmDate& date, int32_t format = CmDate::kIsoDate) {
    String text;
    date.toString(text, format);
    text.toMultiByte(kCodePageUTF8);
    return text.text8();
}

TEST(CmDate, IsADayOfTheCalendarOrNone) {
    struct Row {
        int32_t year, month, day, julianDay;
        const char* text;
    };
    constexpr Row kRows[] = {
        {1970,  1,  1,  2440588,  "1970-01-01" },
        {2000,  2,  29, 2451604,  "2000-02-29" },
        {1601,  1,  1,  2305814,  "1601-01-01" },
        {32767, 12, 31, 13689325, "32767-12-31"},
        {1,     1,  1,  1721426,  "0001-01-01" },
        {1900,  2,  29, -1,       ""           },
        {2026,  -1, 1,  -1,       ""           },
        {32768, 1,  1,  -1,       ""           },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.year << " " << row.month << " " << row.day);
        const CmDate date(row.year, row.month, row.day);
        EXPECT_EQ(date.getJulianDay(), row.julianDay);
        EXPECT_EQ(textOf(date), row.text);
        CmDate scanned;
        EXPECT_EQ(scanned.fromString(row.text), date.isValid());
        EXPECT_TRUE(scanned.isEqual(&date));
        const CmDate same(row.julianDay);
        EXPECT_TRUE(!date.isValid() ||
                    (same.getYear() == row.year && same.getMonth() == row.month && same.getDay() == row.day));
    }
    EXPECT_EQ(CmDate(2026, 11, 21).getWeekday(), 6);
    for (const int32_t beyond : {1721425, 13689326, INT32_MIN, INT32_MAX})
        EXPECT_FALSE(CmDate(beyond).isValid()) << beyond;
}

TEST(CmDate, KeepsItselfWhenTheTextIsNone) {
    CmDate date(2026, 11, 21);
    for (const char* text : {"", " ", "2026", "2026-11", "2026-11-", "2026-11-21-", "2026-02-30", "2026-11-21x",
                             "-1-1-1", "99999999999-1-1", "2026-+1-1"})
        EXPECT_FALSE(date.fromString(text)) << text;
    EXPECT_EQ(textOf(date), "2026-11-21");
    EXPECT_TRUE(date.fromString(u"  2027-1-2 "));
    EXPECT_EQ(textOf(date), "2027-01-02");
}

/** A language of the environment, made for this test. */
class Language {
public:
    explicit Language(const std::string& name) {
        const std::string make = "localedef -i " + name + " -f UTF-8 " + (folder / (name + ".UTF-8")) + " 2>/dev/null";
        made = std::system(make.c_str()) == 0;
        setenv("LOCPATH", (folder / "").c_str(), 1);
        setenv("LC_ALL", (name + ".UTF-8").c_str(), 1);
    }
    ~Language() {
        unsetenv("LOCPATH");
        unsetenv("LC_ALL");
    }
    bool exists() const { return made; }

private:
    TempFolder folder;
    bool made;
};

TEST(CmDate, SpeaksTheUsersForm) {
    struct Row {
        const char* language;
        const char* text;
    };
    constexpr Row kRows[] = {
        {"en_GB", "21/11/2026"       }, // all digits of the year, though the language has two
        {"ja_JP", "2026年11月21日"},
    };
    const CmDate date(2026, 11, 21);
    for (const Row& row : kRows) {
        const Language language(row.language);
        if (!language.exists())
            GTEST_SKIP() << "no source of " << row.language;
        EXPECT_EQ(textOf(date, CmDate::kLocaleDate), row.text);
        String text;
        text.fromUTF8(row.text);
        CmDate scanned;
        EXPECT_TRUE(scanned.fromString(text) && scanned.isEqual(&date)) << row.text;
        EXPECT_EQ(textOf(date), "2026-11-21");
    }
    setenv("LC_ALL", "C", 1);
    EXPECT_EQ(textOf(date, CmDate::kLocaleDate), "2026-11-21");
    unsetenv("LC_ALL");
}

TEST(CmTime, ReadsAndWritesClocks) {
    struct Row {
        const char* text;
        int32_t seconds;  // -1: refused
        const char* printed;
    };
    constexpr Row kRows[] = {
        {"0:00:00",         0,         "0:00:00"     },
        {" 9:5 ",           32700,     "9:05:00"     },
        {"596523:14:07",    INT32_MAX, "596523:14:07"},
        {"596523:14:08",    -1,        ""            },
        {"9",               -1,        ""            },
        {"9:60",            -1,        ""            },
        {"9:00:",           -1,        ""            },
        {"4294967296:0:00", -1,        ""            },
    };
    for (const Row& row : kRows) {
        CmTime time(CmDate(2026, 11, 21), 77);
        EXPECT_EQ(time.fromString(row.text), row.seconds >= 0) << row.text;
        EXPECT_EQ(time.getTotalSeconds(), row.seconds >= 0 ? row.seconds : 77) << row.text;
        String text;
        time.toString(text);
        EXPECT_STREQ(text.text8(), row.seconds >= 0 ? row.printed : "0:01:17");
        EXPECT_TRUE(time.getDate().isValid());
    }
}

TEST(CmTime, ConvertsSystemTimeThereAndBack) {
    for (const int64_t unixTime :
         {int64_t{0}, int64_t{-1}, int64_t{1795251900}, int64_t{1774746000}, int64_t{971890963199 - 86400}}) {
        int64_t back = 77;
        const CmTime time = CmTime::fromUnixTime(unixTime);
        EXPECT_TRUE(time.toUnixTime(back));
        EXPECT_EQ(back, unixTime);
    }
    for (const int64_t beyond : {INT64_MAX, INT64_MIN, int64_t{67767976233532799}}) {
        int64_t kept = 77;
        EXPECT_FALSE(CmTime::fromUnixTime(beyond).toUnixTime(kept));
        EXPECT_EQ(kept, 77);
    }
}

TEST(CmTime, OrdersByDateFirst) {
    const CmTime none(50), early(CmDate(2026, 11, 20), 86399), late(CmDate(2026, 11, 21), 0);
    EXPECT_LT(none.compare(&early), 0);
    EXPECT_LT(early.compare(&late), 0);
    EXPECT_GT(late.compare(&early), 0);
    FAttributes bag;
    CmTime restored(1);
    EXPECT_FALSE(restored.restoreAttributes(bag));
    EXPECT_TRUE(late.storeAttributes(bag) && restored.restoreAttributes(bag));
    EXPECT_TRUE(restored.isEqual(&late));
    EXPECT_EQ(restored.hash(100), late.hash(100));
}

}  // namespace
}  // namespace Tessarine
