#include "collect/cmvariant.h"
#include "collect/cmdate.h"
#include "collect/cmstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fpersistent.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>
#include <limits>

namespace Tessarine {
namespace {

TEST(CmVariant, ReadsNumbersOutOfWhateverItHolds) {
    constexpr int64_t kMin = std::numeric_limits<int64_t>::min(), kMax = std::numeric_limits<int64_t>::max();
    const std::tuple<CmVariant, int64_t, double> kRows[] = {
        {CmVariant(7),                                 7,    7.    },
        {CmVariant(-2.9),                              -2,   -2.9  },
        {CmVariant(1e300),                             kMax, 1e300 },
        {CmVariant(-1e300),                            kMin, -1e300},
        {CmVariant(" 12abc"),                          12,   12.   },
        {CmVariant("abc12"),                           0,    0.    },
        {CmVariant("1,5"),                             1,    1.    },
        {CmVariant(u"abc12"),                          12,   12.   },
        {CmVariant(u"1,5"),                            1,    1.5   },
        {CmVariant(static_cast<const char*>(nullptr)), 0,    0.    },
        {CmVariant(static_cast<FUnknown*>(nullptr)),   0,    0.    },
    };
    for (const auto& [value, whole, real] : kRows) {
        EXPECT_EQ(value.getLong(), whole);
        EXPECT_EQ(value.getFloat(), real);
    }
    EXPECT_EQ(CmVariant(std::numeric_limits<double>::quiet_NaN()).getLong(), 0);
}

TEST(CmVariant, HasTextForNumbersAndSomeObjects) {
    const OPtr<CmTime> time(new CmTime(CmDate(2026, 11, 21), 9 * 3600 + 5 * 60));
    const OPtr<CmDate> date(new CmDate(2026, 11, 21));
    const std::pair<CmVariant, const char*> kRows[] = {
        {CmVariant(std::numeric_limits<int64_t>::min()), "-9223372036854775808"},
        {CmVariant(1.005),                               "1.00"                },
        {CmVariant("as it is"),                          "as it is"            },
        {CmVariant(time),                                "2026-11-21 9:05:00"  },
    };
    String text("before");
    EXPECT_FALSE(CmVariant(date).getString(text) || CmVariant().getString(text) || text != "before");
    for (const auto& [value, expected] : kRows) {
        EXPECT_TRUE(value.getString(text));
        EXPECT_STREQ(text.text8(), expected);
    }
}

TEST(CmVariant, OrdersByKindThenByValue) {
    const CmVariant rising[] = {
        CmVariant(),          CmVariant(-1),
        CmVariant(1000),      CmVariant(-5.),
        CmVariant(0.5),       CmVariant("10"),
        CmVariant("9"),       CmVariant("A"),
        CmVariant("b"),       CmVariant(static_cast<const char*>(nullptr)),
        CmVariant(u"\u00C4"), CmVariant(u"\u00F6"),
    };
    for (size_t i = 0; i < std::size(rising); ++i)
        for (size_t j = 0; j < std::size(rising); ++j) {
            const int32_t order = rising[i].compare(rising[j]);
            EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j)) << i << " " << j;
            EXPECT_EQ(rising[i] == rising[j], i == j);
        }
    EXPECT_EQ(CmVariant("Text"), CmVariant("tEXT"));
    EXPECT_EQ(CmVariant(0.), CmVariant(-0.));
    const OPtr<CmString> a(new CmString("a")), sameText(new CmString("a")), b(new CmString("b"));
    const auto object = [](CmString* string) { return CmVariant(static_cast<CmObject*>(string)); };
    EXPECT_EQ(object(a), object(sameText));
    EXPECT_LT(object(a).compare(object(b)), 0);
    EXPECT_GT(object(a).compare(CmVariant("z")), 0);
}

TEST(CmVariant, OwnsOnlyWhatItsBitSays) {
    const char text[] = "text";
    const OPtr<CmString> object(new CmString("object"));
    auto* counted = static_cast<CmObject*>(object.get());
    {
        CmVariant borrowed(text), owned(u"wide", true), shared(counted);
        EXPECT_EQ(CmVariant(borrowed).getString8(), text) << "a copy of what is borrowed";
        EXPECT_NE(CmVariant(owned).getString16(), owned.getString16());
        EXPECT_EQ(owned.view().getString16(), owned.getString16());
        EXPECT_EQ(referencesOf(object), 2u);
        const CmVariant copy(shared);
        EXPECT_EQ(referencesOf(object), 3u);
        EXPECT_EQ(CmVariant(shared.view()).isOwner(), false);
        EXPECT_EQ(copy.getObject("CmString"), counted);
        EXPECT_EQ(copy.getObject("CmTime"), nullptr);
        borrowed.emancipate();
        EXPECT_NE(borrowed.getString8(), text);
        EXPECT_STREQ(borrowed.getString8(), "text");
        owned = *&owned;
        EXPECT_EQ(ConstString(owned.getString16()), u"wide");
        CmVariant adopted(new char[2]{'x', 0});
        adopted.setOwner(true);
        EXPECT_TRUE(FVariant(adopted).isOwner());
    }
    EXPECT_EQ(referencesOf(object), 1u);
}

TEST(CmVariant, MapsTheOtherVariantsKinds) {
    const OPtr<CmString> object(new CmString("object"));
    const std::pair<FVariant, uint16_t> rows[] = {
        {FVariant(int64_t(-3)),                                            CmVariant::kInteger },
        {FVariant(2.5),                                                    CmVariant::kFloat   },
        {FVariant("narrow"),                                               CmVariant::kString8 },
        {FVariant(u"wide"),                                                CmVariant::kString16},
        {FVariant(static_cast<FUnknown*>(static_cast<CmObject*>(object))), CmVariant::kObject  },
        {FVariant(),                                                       CmVariant::kEmpty   },
    };
    for (const auto& [other, type] : rows) {
        const CmVariant variant(other);
        EXPECT_TRUE(variant.getType() == type && variant.isOwner() == other.isOwner()) << type;
        EXPECT_EQ(CmVariant::compareVariants(FVariant(variant), other), 0);
    }
}

TEST(CmVariant, IsStoredAndRestoredWhole) {
    const OPtr<CmString> object(new CmString("object"));
    const CmVariant rows[] = {
        CmVariant(int64_t(1) << 60),
        CmVariant(0.1),
        CmVariant("narrow"),
        CmVariant(u"w\u00EFde"),
        CmVariant(static_cast<CmObject*>(object)),
        CmVariant(),
    };
    for (const CmVariant& row : rows) {
        FAttributes stored;
        CmVariant read(u"before");
        EXPECT_TRUE(row.storeAttributes(stored) && read.restoreAttributes(stored));
        EXPECT_TRUE(read == row && read.getType() == row.getType());
    }
    FAttributes stored;
    for (const int64_t type : {1, 4, 8, 16, 3, 32, 64, 1 << 16}) {
        stored.set("type", type);
        CmVariant read(5);
        EXPECT_FALSE(read.restoreAttributes(stored)) << type;
        EXPECT_EQ(read.getLong(), 5);
    }
}

}  // namespace
}  // namespace Tessarine
