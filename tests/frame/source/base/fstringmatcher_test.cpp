#include "base/fstringmatcher.h"
#include <gtest/gtest.h>
#include <string>

namespace Tessarine {
namespace {

class Named : public FObject, public IObjectDescription {
public:
    explicit Named(const tchar* name) : name(name) {}
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IObjectDescription>(this, iid, obj) ? int32_t(kResultOk)
                                                                   : FObject::queryInterface(iid, obj);
    }
    const tchar* getName() override { return name; }
    FORWARD_REFCOUNT(FObject)

private:
    const tchar* name;
};

std::string bitsOf(const BitSet& set) {
    std::string bits;
    for (uint32_t i = 0; i < set.getSize(); ++i)
        bits += set.getBit(i) ? '1' : '0';
    return bits;
}

TEST(FStringMatcher, TellsHowANameMatches) {
    const std::u16string manyA(40, u'a');
    // type -1: no match
    const std::tuple<const tchar*, const tchar*, int32_t, uint32_t, const char*> rows[] = {
        {u"gain",          u"Gain Trim",     0,  0, "000000000"   },
        {u"TRIM",          u"gain trim",     1,  0, "000001111"   },
        {u"gian",          u"Gain",          2,  0, "1111"        }, // two edits by four in common
        {u"ab",            u"ba",            -1, 0, ""            }, // two in common only
        {u"abc12345678",   u"abcvwxyzuts",   2,  2, "11100000000" }, // eight by three
        {u"abc123456789",  u"abcvwxyzutsr",  2,  3, "111000000000"},
        {u"abc1234567890", u"abcvwxyzutsrq", -1, 0, ""            }, // ten edits
        {u"abcdefgh",      manyA.c_str(),    -1, 0, ""            },
    };
    for (const auto& [search, name, type, distance, bits] : rows) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(name)));
        const OPtr<IStringMatcher> matcher(StringMatcher::create(search));
        StringMatchInfos infos;
        infos.distance = 77;
        EXPECT_EQ(matcher->isMatch(name, infos), type >= 0);
        if (type < 0) {
            EXPECT_EQ(infos.distance, 77u);
            continue;
        }
        EXPECT_EQ(infos.matchType, type);
        EXPECT_EQ(infos.distance, distance);
        EXPECT_EQ(bitsOf(infos.matchPositions), bits);
    }
}

TEST(FStringMatcher, KeepsOnlyTheBestCandidates) {
    const std::tuple<const char*, std::vector<const tchar*>, std::vector<size_t>> rows[] = {
        {"exact first",        {u"my preset", u"preset 2", u"perset"},               {1, 0}},
        {"closest of partial", {u"prest1234", u"xxpreXXtyyzz", u"perset", u"prset"}, {2, 3}},
    };
    const OPtr<IStringMatcher> matcher(StringMatcher::create("preset"));
    for (const auto& [title, names, kept] : rows) {
        SCOPED_TRACE(title);
        TArray<IPtr<IObjectDescription>> list;
        for (const tchar* name : names)
            list.add(OPtr<IObjectDescription>(new Named(name)));
        FStringMatchList matches;
        matches.add(FStringMatch());  // from before
        matcher->filterCandidates(list, matches);
        ASSERT_EQ(matches.total(), int32_t(kept.size()));
        for (size_t i = 0; i < kept.size(); ++i)
            EXPECT_EQ(matches.at(int32_t(i)).object.get(), list.at(int32_t(kept[i])).get()) << i;
    }
}

}  // namespace
}  // namespace Tessarine
