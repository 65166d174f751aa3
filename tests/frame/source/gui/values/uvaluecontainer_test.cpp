#include "gui/values/uvaluecontainer.h"
#include "gui/values/hooks.h"
#include "gui/values/uvalueactivator.h"
#include "storage/fpersistent.h"
#include "valuefixture.h"

namespace Tessarine {
namespace {

constexpr Log kNothing;

class UValueContainers : public ValueTest {
protected:
    UValueContainers() : owner(log), values(new UValueContainer) {}

    Owner owner;
    OPtr<UValueContainer> values;
};

TEST_F(UValueContainers, FindTheFirstByTagOrName) {
    UValue* first = values->newValue(&owner, 1, "on");
    values->newIntValue(0, 9, &owner, 1, "on");
    values->newFloatValue(0, 1, &owner, 2, "");
    EXPECT_EQ(values->getValueObject(1), first);
    EXPECT_EQ(values->lookupValue("on"), first);
    EXPECT_EQ(values->lookupValue(""), nullptr);
    EXPECT_EQ(values->lookupValue(nullptr), nullptr);
    EXPECT_STREQ(values->getNameByTag(2), "");
    EXPECT_EQ(values->getNameByTag(3), nullptr);
    values->toggleValue("on");
    values->setFloatValue(2, 0.5f);
    EXPECT_EQ(take(), Log{"owner 1"});
    EXPECT_EQ(values->getFloatValue(2), 0.5f);
    values->setTargetValue("off", 1);  // of nobody
    values->setStringValue(1, "text");
    EXPECT_EQ(take(), kNothing);
    EXPECT_EQ(values->getValue("off"), 0);
}

TEST_F(UValueContainers, ConnectWhatTheyAreGiven) {
    UAliasValue* alias = values->newAliasValue(&owner, 4, "alias");
    UValueProxy* proxy = values->newValueProxy(&owner, 5, "proxy");
    EXPECT_EQ(values->getValueObject(4), alias);
    EXPECT_EQ(values->getValueProxy(5), proxy);
    proxy->delegateTo(values->newIntDefValue(0, 9, 6, &owner, 7, "six"));
    EXPECT_EQ(values->getValueObject(7), proxy);  // under its delegate's
    EXPECT_EQ(values->getValueObject(5), nullptr);
    EXPECT_EQ(values->getValueProxy(4), alias);
    auto* value = new UValue;
    values->addValue(value, nullptr, 8, "mine");
    EXPECT_EQ(referencesOf(static_cast<CmObject*>(value)), 1u);
    EXPECT_EQ(values->getValueObject(8), value);
    static CmObject command;
    const ValueHooks before = std::exchange(gValueHooks, {});
    EXPECT_EQ(values->newCommandValue("File", "Open", "none")->getOwner(), nullptr);
    gValueHooks.commandByName = [](const char*, const char*) { return &command; };
    EXPECT_EQ(commonObject(values->newCommandValue("File", "Open", "open")->getOwner()), &command);
    gValueHooks = before;
}

TEST_F(UValueContainers, StoreByClassAndRestoreToTheOwners) {
    values->newIntValue(0, 9, &owner, 1, "int")->setValue(7);
    values->newFloatValue(0, 9, &owner, 2, "float")->setFloatValue(2.5f);
    values->newStringValue(&owner, 3, "text")->setStringValue(u"\u00fc");
    values->newStringValue(&owner, 4, "")->setStringValue(u"no name");
    OPtr<UStringValue> delegate(new UStringValue(u"delegate"));
    values->newValueProxy(&owner, 5, "proxy")->delegateTo(delegate);
    OPtr<FAttributes> kept(new FAttributes);
    values->store(*kept);
    EXPECT_EQ(kept->countAttributes(), 4);
    EXPECT_EQ(kept->getInt("proxy"), 1);
    kept->set("int", 3.9);  // read as a whole number all the same
    kept->removeAttribute("float");
    values->setFloatValue("float", 1);
    values->setStringValue("text", "");
    values->restore(*kept);
    EXPECT_EQ(take(), (Log{"owner 1", "owner 1"}));  // not of the one that was missing
    EXPECT_EQ(values->getValue("int"), 3);
    EXPECT_EQ(values->getFloatValue("float"), 1);
    FString text;
    values->toString("text", text);
    EXPECT_EQ(text.compare(ConstString(u"\u00fc")), 0);
}

TEST_F(UValueContainers, MayBeEmptiedByAnOwner) {
    struct Emptying : CmObject {
        using CmObject::update;
        void update(CmObject*, int32_t) override { values->removeAll(); }
        UValueContainer* values = nullptr;
    } emptying;
    emptying.values = values;
    OPtr<FAttributes> kept(new FAttributes);
    kept->set("on", 1);
    for (int32_t i = 0; i < 2; ++i)
        values->newValue(&emptying, 1, "on");
    values->restore(*kept);
    values->newValue(&emptying, 1, "on");
    values->fromString("on", u"On");
    EXPECT_EQ(values->total(), 0);
}

TEST_F(UValueContainers, AreSwitchedAndBackByAnActivator) {
    UValue* active = values->newValue(nullptr, 1, "active");
    UValue* inactive = values->newValue(nullptr, 2, "inactive");
    inactive->setActive(false);
    UValueActivator activator;
    activator.add(*values);
    activator.setActive(false);
    EXPECT_FALSE(active->isActive());
    activator.reset();
    EXPECT_TRUE(active->isActive());
    EXPECT_FALSE(inactive->isActive());
}

}  // namespace
}  // namespace Tessarine
