#include "collect/cmdate.h"
#include "base/source/fstring.h"
#include "storage/fpersistent.h"
#include "tests/frame/source/storage/tempfolder.h"
#include "tests/support/utf8.h"
#include <gtest/gtest.h>
#include <string>

namespace Tessarine {
namespace {

std::string textOf(const CmDate& date, int32_t format = CmDate::kIsoDate) {
    String text;
    date.toString(text, format);
    return utf8(text);
}

TEST(CmDate, IsADayOfTheCalendarOrNone) {
    constexpr std::tuple<int32_t, int32_t, int32_t, int32_t, const char*> kRows[] = {
        {2000,  2,  29, 2451604,  "2000-02-29" },
        {32767, 12, 31, 13689325, "32767-12-31"},
        {1,     1,  1,  1721426,  "0001-01-01" },
        {1900,  2,  29, -1,       ""           },
        {2026,  -1, 1,  -1,       ""           },
        {32768, 1,  1,  -1,       ""           },
    };
    for (const auto& [year, month, day, julianDay, text] : kRows) {
        SCOPED_TRACE(testing::Message() << year << " " << month << " " << day);
        const CmDate date(year, month, day);
        EXPECT_EQ(date.getJulianDay(), julianDay);
        EXPECT_EQ(textOf(date), text);
        CmDate scanned;
        EXPECT_TRUE(scanned.fromString(text) == date.isValid() && scanned.isEqual(&date));
        const CmDate same(julianDay);
        EXPECT_TRUE(!date.isValid() || (same.getYear() == year && same.getMonth() == month && same.getDay() == day));
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
}

/** A user's form of dates to the end of the block, made of nothing but what this test writes down. */
class UserForm {
public:
    explicit UserForm(const std::string& form) {
        folder.write("letters",
                     "<code_set_name> UTF-8\n<mb_cur_min> 1\n<mb_cur_max> 6\n<escape_char> /\nCHARMAP\n"
                     "<U5E74> /xe5/xb9/xb4\n<U6708> /xe6/x9c/x88\n<U65E5> /xe6/x97/xa5\nEND CHARMAP\n");
        folder.write("form", "LC_TIME\nd_fmt \"" + form + "\"\nEND LC_TIME\n");
        const std::string make =
            "cd " + folder / "" + "; localedef -c -i form -f ./letters ./own.UTF-8 >/dev/null 2>&1";
        EXPECT_NE(std::system(make.c_str()), -1);
        EXPECT_TRUE(std::filesystem::exists(folder / "own.UTF-8/LC_TIME"));
        setenv("LOCPATH", (folder / "").c_str(), 1);
        setenv("LC_ALL", "own.UTF-8", 1);
    }
    ~UserForm() {
        unsetenv("LOCPATH");
        unsetenv("LC_ALL");
    }

private:
    TempFolder folder;
};

TEST(CmDate, SpeaksTheUsersForm) {
    const std::pair<const char*, const char*> rows[] = {
        {"%d/%m/%y",                    "21/11/2026"       }, // all digits of the year, though the language has two
        {"%Y<U5E74>%m<U6708>%d<U65E5>", "2026年11月21日"},
    };
    const CmDate date(2026, 11, 21);
    for (const auto& [form, expected] : rows) {
        const UserForm user(form);
        EXPECT_EQ(textOf(date, CmDate::kLocaleDate), expected);
        String text;
        text.fromUTF8(expected);
        CmDate scanned;
        EXPECT_TRUE(scanned.fromString(text) && scanned.isEqual(&date)) << expected;
        EXPECT_EQ(textOf(date), "2026-11-21");
    }
}

TEST(CmTime, ReadsAndWritesClocks) {
    // seconds -1: refused
    constexpr std::tuple<const char*, int32_t, const char*> kRows[] = {
        {" 9:5 ",           32700,     "9:05:00"     },
        {"596523:14:07",    INT32_MAX, "596523:14:07"},
        {"596523:14:08",    -1,        "0:01:17"     },
        {"9",               -1,        "0:01:17"     },
        {"9:60",            -1,        "0:01:17"     },
        {"9:00:",           -1,        "0:01:17"     },
        {"4294967296:0:00", -1,        "0:01:17"     },
    };
    for (const auto& [typed, seconds, printed] : kRows) {
        CmTime time(CmDate(2026, 11, 21), 77);
        EXPECT_EQ(time.fromString(typed), seconds >= 0) << typed;
        EXPECT_EQ(time.getTotalSeconds(), seconds >= 0 ? seconds : 77) << typed;
        String text;
        time.toString(text);
        EXPECT_STREQ(text.text8(), printed);
    }
}

TEST(CmTime, ConvertsSystemTimeThereAndBack) {
    int64_t back = 77;
    for (const int64_t beyond : {INT64_MAX, INT64_MIN, int64_t{67767976233532799}})
        EXPECT_TRUE(!CmTime::fromUnixTime(beyond).toUnixTime(back) && back == 77);
    for (const int64_t unixTime : {int64_t{-1}, int64_t{1795251900}, int64_t{971890963199 - 86400}})
        EXPECT_TRUE(CmTime::fromUnixTime(unixTime).toUnixTime(back) && back == unixTime);
}

TEST(CmTime, OrdersByDateFirst) {
    const CmTime none(50), early(CmDate(2026, 11, 20), 86399), late(CmDate(2026, 11, 21), 0);
    EXPECT_TRUE(none.compare(&early) < 0 && early.compare(&late) < 0 && late.compare(&early) > 0);
    EXPECT_FALSE(CmTime(1).restoreAttributes(*std::make_unique<FAttributes>()));
}

}  // namespace
}  // namespace Tessarine
