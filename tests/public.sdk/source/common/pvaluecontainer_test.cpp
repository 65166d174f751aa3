#include "public.sdk/source/common/pvaluecontainer.h"
#include "base/fdefaults.h"
#include "base/fhostclasses.h"
#include "tests/frame/source/gui/values/valuefixture.h"

namespace Tessarine {
namespace {

class PValues : public ValueTest {
protected:
    PValues() : controller(log, true), values(&host, &controller) {}

    FHostClasses host;
    Controller controller;
    PValueContainer values;
};

constexpr const tchar* kNames[] = {u"one", u"two", nullptr};

TEST_F(PValues, StartAtTheirDefault) {
    auto** names = const_cast<const tchar**>(kNames);
    IValue* made[] = {
        values.addOnOffValue(1, "on", true, true),
        values.addIntValue(2, "int", -5, 5, 3, true, true),
        values.addFloatValue(3, "float", -1, 1, 0.5f, 8, false, false),
        values.addStringValue(4, "text", u"word", false),
        values.addStringListValue(5, "list", names, u"two", true),
        values.addStringListValue(6, "first", names, nullptr, true),
    };
    EXPECT_EQ(take(), Log{});
    struct Row {
        const char16_t* text;
        bool hasDefault, automated, wraps;
    };
    constexpr Row kRows[] = {
        {u"On",   false, true,  false}, // keeps no default
        {u"3",    true,  true,  true },
        {u"0.5",  true,  false, false}, // eight steps show in one digit
        {u"word", false, false, false},
        {u"two",  true,  true,  false},
        {u"one",  true,  true,  false},
    };
    for (size_t i = 0; i < std::size(kRows); ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(made[i]);
        EXPECT_EQ(textOf(made[i]), kRows[i].text);
        FUnknownPtr<IValue2> value(made[i]);
        EXPECT_EQ(value->getValueFlag(IValue2::kCanAutomate), kRows[i].automated);
        EXPECT_EQ(value->getValueFlag(IValue2::kWrapAround), kRows[i].wraps);
        made[i]->setValue2(0, false);
        EXPECT_EQ(value->resetToDefaultValue(), kRows[i].hasDefault);
        EXPECT_EQ(referencesOf(made[i]), 2u);  // the container's and that of the query
    }
    take();
    values.getValueByTag(2)->setTargetValue(4);
    EXPECT_EQ(take(), Log{"changed 2=4"});
    char name[128];
    EXPECT_TRUE(values.getValueName(5, name));
    EXPECT_STREQ(name, "first");
    EXPECT_FALSE(values.getValueName(6, name));
    EXPECT_EQ(values.getValue("float"), values.getValueByIndex(2));
    EXPECT_EQ(values.getValue("Float"), nullptr);
    values.setValueActive("on", false);
    values.setValueActive(7, false);
    EXPECT_FALSE(made[0]->isActive());
    PValueContainer alone;
    EXPECT_EQ(alone.addStringValue(1, "text", u"", false), nullptr);
    EXPECT_FALSE(alone.storeValues("Section", nullptr));
}

TEST_F(PValues, OwnWhatTheyAreGivenAndShareTheForeign) {
    OPtr<IValue> value(UValue::createParamInterface(OPtr<UValue>(new UValue)));
    values.addExternValue(value, "foreign");
    EXPECT_EQ(referencesOf(value), 2u);
    EXPECT_EQ(value->getTag(), 0);
    value->addRef();
    values.addValue(value, 3, "mine");
    EXPECT_EQ(value->getTag(), 3);
    values.removeAll();
    EXPECT_EQ(referencesOf(value), 1u);
    EXPECT_EQ(values.countValues(), 0);
}

TEST_F(PValues, MayBeEmptiedByTheirController) {
    struct Emptying : Controller {
        using Controller::Controller;
        void parameterChanged(IParameter*, int32_t) override { values->removeAll(); }
        PValueContainer* values = nullptr;
    } emptying(log, false);
    FDefaultPool* pool = FDefaultPool::use();
    PValueContainer container(&host, &emptying);
    emptying.values = &container;
    container.addIntValue(1, "int", 0, 9, 4, false, false);
    container.addStringValue(2, "text", u"word", false);
    container.storeValues("Section", pool);
    EXPECT_TRUE(container.loadValues("Section", true, pool));
    EXPECT_EQ(container.countValues(), 0);
    FDefaultPool::unuse();
}

TEST_F(PValues, KeepTheirStateInAPool) {
    FDefaultPool* pool = FDefaultPool::use();
    const tchar umlaut[] = u"\u00fc\u4e00";
    values.addIntValue(1, "int", 0, 9, 4, false, false);
    values.addFloatValue(2, "float", 0, 1, 0.5f, 0, false, false);
    values.addStringValue(3, "text", umlaut, false);
    values.addStringValue(4, "empty", u"", false);
    EXPECT_TRUE(values.storeValues("Section", nullptr));  // the host's
    values.addIntValue(5, "new", 0, 9, 6, false, false);
    for (int32_t i = 0; i < 2; ++i)
        values.getValueByIndex(i)->setValueFloat(0, false);
    for (int32_t i = 2; i < 4; ++i)
        values.getValueByIndex(i)->fromString2(u"other", false);
    take();
    EXPECT_TRUE(values.loadValues("Section", true, pool));
    EXPECT_EQ(take(), (Log{"changed 1=4", "changed 2=0", "changed 3=1", "changed 4=0"}));
    EXPECT_EQ(values.getValue("float")->getValueFloat(), 0.5f);
    EXPECT_EQ(textOf(values.getValue("text")), umlaut);
    EXPECT_EQ(values.getValue("new")->getValueInt(), 6);
    FDefaultPool::unuse();
}

}  // namespace
}  // namespace Tessarine
