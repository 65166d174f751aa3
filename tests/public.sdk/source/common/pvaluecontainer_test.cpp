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
    const std::tuple<IValue*, const char16_t*, bool, bool> rows[] = {
  // keeps a default, may be automated
        {values.addOnOffValue(1, "on", true, true), u"On", false, true},
        {values.addIntValue(2, "int", -5, 5, 3, true, true), u"3", true, true},
        {values.addFloatValue(3, "float", -1, 1, 0.5f, 8, false, false), u"0.5", true, false},
        {values.addStringValue(4, "text", u"word", false), u"word", false, false},
        {values.addStringListValue(5, "list", names, u"two", true), u"two", true, true},
        {values.addStringListValue(6, "first", names, nullptr, true), u"one", true, true},
    };
    EXPECT_EQ(take(), Log{});
    for (const auto& [made, text, hasDefault, automated] : rows) {
        ASSERT_TRUE(made);
        SCOPED_TRACE(made->getTag());
        EXPECT_EQ(textOf(made), text);
        FUnknownPtr<IValue2> value(made);
        EXPECT_EQ(value->getValueFlag(IValue2::kCanAutomate), automated);
        EXPECT_EQ(value->getValueFlag(IValue2::kWrapAround), made->getTag() == 2);
        made->setValue2(0, false);
        EXPECT_EQ(value->resetToDefaultValue(), hasDefault);
        EXPECT_EQ(referencesOf(made), 2u);  // the container's and that of the query
    }
    take();
    values.getValueByTag(2)->setTargetValue(4);
    EXPECT_EQ(take(), Log{"changed 2=4"});
    EXPECT_EQ(values.getValue("float"), values.getValueByIndex(2));
    EXPECT_EQ(values.getValue("Float"), nullptr);
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
