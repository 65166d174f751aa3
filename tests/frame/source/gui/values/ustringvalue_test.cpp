#include "gui/values/ustringvalue.h"
#include "valuefixture.h"

namespace Tessarine {
namespace {

using UStringValueNews = ValueTest;

TEST_F(UStringValueNews, TheOwnerHearsOfTheSameTextTooViewsDoNot) {
    OPtr<UStringValue> value(new UStringValue);
    value->setStraightUpdate(true);
    Owner owner(log);
    Watcher view(log, value);
    value->connect(&owner, 0, false);
    value->fromString(u"ttyUSB0");
    EXPECT_EQ(take(), (Log{"view 1", "owner 1"}));
    value->fromString(u"ttyUSB0");
    EXPECT_EQ(take(), Log{"owner 1"});
    value->setStringValue("ttyUSB0");  // the width is no difference
    EXPECT_EQ(take(), Log{});
    *value = ConstString("ttyusb0");
    EXPECT_EQ(take(), Log{"view 1"});
    value->fromString2(u"", false);
    EXPECT_EQ(take(), Log{"view 1"});
    const OPtr<UStringValue> source(new UStringValue("Stage"));
    EXPECT_TRUE(passedAttributes(*source, *value));
    EXPECT_EQ(take(), Log{"view 1"});
    EXPECT_TRUE(archived(*source, *value));
    EXPECT_EQ(take(), (Log{"owner 1", "view 1"}));  // of what an archive holds
    EXPECT_FALSE(archived(*source, *value, 1));
    EXPECT_EQ(textOf(value), u"Stage");
}

TEST(UStringValueText, IsAssignedFromTextsOnlyAndCutForSmallBuffers) {
    OPtr<UStringValue> value(new UStringValue(u"\u4e2d\U0001F399")), target(new UStringValue);
    OPtr<UIntValue> number(new UIntValue(0, 9, 5));
    target->assignTo(value);
    target->assignTo(number);
    EXPECT_EQ(textOf(target), u"\u4e2d\U0001F399");
    tchar buffer[128];
    target->fromString(std::u16string(300, u'x').c_str());
    target->toString1(buffer);
    EXPECT_EQ(std::u16string(buffer), std::u16string(127, u'x'));
}

struct ListState {
    int32_t value, min, max;
    std::u16string selected;
    bool operator==(const ListState&) const = default;
};

void PrintTo(const ListState& state, std::ostream* out) {
    *out << state.value << " of " << state.min << ".." << state.max << " \""
         << std::string(state.selected.begin(), state.selected.end()) << '"';
}

ListState stateOf(UStringListValue& list) {
    return {list.getValue(), list.getMin(), list.getMax(), textOf(&list)};
}

using List = UStringListValue;

struct MutationRow {
    const char* name;
    bool (*act)(List& list);
    bool done;
    ListState after;
};

const MutationRow kMutations[] = {
    {"empty",                     [](List& l) { return l.removeAt(0); },                        false, {-1, -1, -1, u""}},
    {"first is selected",         [](List& l) { return l.addString(u"b"); },                    true,  {0, 0, 0, u"b"}  },
    {"prepend keeps it",          [](List& l) { return l.prependString(u"a"); },                true,  {1, 0, 1, u"b"}  },
    {"insert shifts it",          [](List& l) { return l.insertString(0, u"0"); },              true,  {1, 0, 2, u"a"}  },
    {"insert at the end",         [](List& l) { return l.insertString(3, u"d"); },              true,  {1, 0, 3, u"a"}  },
    {"insert beyond",             [](List& l) { return l.insertString(5, u"x"); },              false, {1, 0, 3, u"a"}  },
    {"sorted",                    [](List& l) { return l.addSortedString(u"c"); },              true,  {1, 0, 4, u"a"}  },
    {"replace",                   [](List& l) { return l.replaceStringAt(1, u"A"); },           true,  {1, 0, 4, u"A"}  },
    {"select",                    [](List& l) { return l.fromString(u"d"), true; },             true,  {4, 0, 4, u"d"}  },
    {"no match",                  [](List& l) { return l.fromString(u"D"), l.contains(u"D"); }, false, {4, 0, 4, u"d"}  },
    {"remove another",            [](List& l) { return l.removeAt(0); },                        true,  {3, 0, 3, u"d"}  },
    {"remove the first",          [](List& l) { return l.setValue(0), l.removeStringAt(0); },   true,  {0, 0, 2, u"b"}  },
    {"remove all",                [](List& l) { return l.removeAllStrings(), true; },           true,  {-1, -1, -1, u""}},
    {"only one",                  [](List& l) { return l.addString(u"e"); },                    true,  {0, 0, 0, u"e"}  },
    {"the last leaves the value", [](List& l) { return l.removeAt(0); },                        true,  {0, 0, -1, u""}  },
    {"on nothing",                [](List& l) { return l.getStringAt(0) != nullptr; },          false, {0, 0, -1, u""}  },
    {"remove all of nothing",     [](List& l) { return l.removeAllStrings(), false; },          false, {-1, -1, -1, u""}},
};

TEST(UStringListValue, EveryMutationKeepsTheRange) {
    OPtr<UStringListValue> list(new UStringListValue);
    list->fromString(u"");
    for (const MutationRow& row : kMutations) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.act(*list), row.done);
        EXPECT_EQ(stateOf(*list), row.after);
        EXPECT_EQ(list->countStrings(), row.after.max + 1);
    }
}

TEST(UStringListValue, KeepsItsSelectionInAttributesNotInArchives) {
    constexpr const tchar* kTexts[] = {u"a", u"b", u"c"};
    const OPtr<List> source(new List(kTexts, 3)), target(new List(kTexts + 1, 1)), empty(new List);
    source->setValue(2);
    EXPECT_TRUE(passedAttributes(*source, *target));
    EXPECT_EQ(stateOf(*target), (ListState{2, 0, 2, u"c"}));
    for (int64_t cut : {1, 4, 9}) {
        EXPECT_FALSE(archived(*source, *target, cut));
        EXPECT_EQ(stateOf(*target), (ListState{2, 0, 2, u"c"}));
    }
    EXPECT_TRUE(archived(*source, *target));
    EXPECT_EQ(stateOf(*target), (ListState{0, 0, 2, u"a"}));
    EXPECT_TRUE(passedAttributes(*empty, *target));
    EXPECT_EQ(stateOf(*target), (ListState{-1, -1, -1, u""}));
    const OPtr<FAttributes> rest(new FAttributes);
    rest->set("Min", INT32_MAX);
    rest->set("Max", 3);
    source->restoreAttributes(*rest);
    source->prependString(u"0");  // no index is one more than the stored value
    EXPECT_EQ(stateOf(*source), (ListState{3, 0, 3, u"c"}));
}

TEST(URecentStringListValue, GrowsPastItsMaximumUntilItIsCut) {
    const OPtr<URecentStringListValue> list(new URecentStringListValue(2)), copy(new URecentStringListValue);
    for (const tchar* text : {u"a", u"b", u"c", u"a"})
        EXPECT_TRUE(list->addString(text));
    EXPECT_TRUE(passedAttributes(*list, *copy));
    const auto textsOf = [](List& strings) {
        std::u16string texts;
        for (int32_t i = 0; i < strings.countStrings(); ++i)
            texts += strings.getStringAt(i);
        return texts;
    };
    EXPECT_EQ(textsOf(*list), u"acb");
    EXPECT_EQ(textsOf(*copy), u"acb");
    EXPECT_EQ(copy->getMaxRecent(), 2);
    EXPECT_TRUE(copy->addString(copy->getStringAt(2)));  // which it removes first
    EXPECT_EQ(textsOf(*copy), u"bac");
    list->setMaxRecent(2);
    EXPECT_EQ(textsOf(*list), u"ac");
    list->setMaxRecent(-1);
    EXPECT_EQ(textsOf(*list), u"");
}

}  // namespace
}  // namespace Tessarine
