#include "gui/values/uvalueproxy.h"
#include "gui/values/hooks.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/ustringvalue.h"
#include "gui/values/uvaluelinker.h"
#include "valuefixture.h"
#include <functional>

namespace Tessarine {
namespace {

constexpr Log kNothing;

FString shown(UValue& value) {
    FString text;
    value.toString(text);
    return text;
}

struct UValueProxies : ValueTest {
    template <class Proxy = UValueProxy>
    static std::pair<CmObject*, int32_t> connectionOf(const OPtr<Proxy>& proxy) {
        return {commonObject(proxy->getOwner()), proxy->getTag()};
    }
};

TEST_F(UValueProxies, WithoutADelegateAreNothing) {
    OPtr<UValueProxy> proxy(new UValueProxy);
    proxy->connect(new Owner(log), 3, true);
    proxy->setTargetValue(1);
    proxy->beginEdit();
    FString text(u"as it was");
    proxy->toString(text);
    float standard = 0;
    void* face = nullptr;
    EXPECT_EQ(text.compare("as it was"), 0);
    EXPECT_EQ((std::vector<int32_t>{proxy->getValue(), proxy->getMin(), proxy->getMax(), proxy->bound(7),
                                    proxy->isActive(), proxy->isLocked(), proxy->getDefault(standard)}),
              (std::vector<int32_t>{0, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(proxy->getNormalized(), 0);
    EXPECT_NE(proxy->queryInterface(IFloatValue::iid, &face), kResultOk);
    EXPECT_EQ(take(), kNothing);
    proxy = nullptr;
    EXPECT_EQ(Owner::living, 0);
}

TEST_F(UValueProxies, PassEverythingOn) {
    OPtr<UFloatDefValue> value(new UFloatDefValue(0, 8, 2));
    OPtr<UValueProxy> proxy(new UValueProxy(value));
    Watcher view(log, value);
    value->setStraightUpdate(true);
    EXPECT_TRUE(FUnknownPtr<IFloatValue>(static_cast<IValue*>(proxy.get())));  // the delegate's
    proxy->setFloatMax(4);
    proxy->setValueFloat(1, true);
    proxy->fromString2(u"2*", false);
    EXPECT_EQ(value->getFloatValue(), 2);
    EXPECT_EQ(shown(*proxy).compare(shown(*value)), 0);
    EXPECT_EQ(take(), (Log{"view 1", "view 1", "view 1"}));
    FString tip;
    proxy->toString(1.f, tip);
    EXPECT_EQ(tip.compare("4.0000"), 0);
    proxy->setUpdate(false);
    proxy->setValue(3);
    EXPECT_EQ(take(), kNothing);  // nor do the delegate's dependents hear of a tool tip
    proxy->setUpdate(true);
    EXPECT_TRUE(proxy->resetToDefaultValue());
    EXPECT_EQ(value->getValue(), 2);
}

TEST_F(UValueProxies, FollowOwnerAndTagOfTheirDelegate) {
    Owner first(log), second(log);
    OPtr<UIntValue> value(new UIntValue), other(new UIntValue);
    OPtr<UValueProxy> proxy(new UValueProxy(value));
    Watcher view(log, proxy);
    value->connect(&first, 1, false);
    other->connect(&second, 2, false);
    proxy->delegateTo(value);  // the same one, connected anew
    EXPECT_EQ(connectionOf(proxy), std::pair(static_cast<CmObject*>(&first), 1));
    EXPECT_EQ(flush(), Log{"view 1"});
    proxy->delegateTo(value);
    EXPECT_EQ(flush(), kNothing);
    value->connect(&second, 5, false);
    value->setStraightUpdate(true);
    value->fromString2(u"7", false);
    EXPECT_EQ(take(), Log{"view 1"});
    value->changed();
    EXPECT_EQ(take(), Log{"view 1"});
    EXPECT_EQ(connectionOf(proxy), std::pair(static_cast<CmObject*>(&second), 5));
    proxy->delegateTo(other);
    value->setValue(1);
    EXPECT_EQ(flush(), Log{"view 1"});  // of the exchange, not of the old delegate
    other->CmObject::changed(kDestroyed);
    EXPECT_EQ(proxy->getValueObject(), nullptr);
    EXPECT_EQ(connectionOf(proxy), std::pair(static_cast<CmObject*>(nullptr), -1));
    EXPECT_EQ(referencesOf(value) + referencesOf(other), 2u);
}

TEST_F(UValueProxies, LeaveTheConnectionOfTheirDelegateAlone) {
    Controller controller(log, true);
    OPtr<UIntValue> value(new UIntValue), other(new UIntValue);
    value->connect(&controller, 7);
    auto* target = commonObject(value->getOwner());
    OPtr<UValueProxy> proxy(new UValueProxy(value));
    proxy->delegateTo(other);
    proxy->delegateTo(value);
    value->changed(UValue::kLockChanged);
    flush();
    EXPECT_EQ(referencesOf(target), 1u);
    proxy->setTargetValue(4);
    proxy->setEditLock(true);
    proxy->delegateTo(other);
    proxy->connect(&controller, 8);
    proxy->setTargetValue(5);
    EXPECT_EQ(take(), (Log{"changed 7=4", "begin 4", "changed 8=5"}));
    proxy = nullptr;
    other->setTargetValue(6);  // its owner has outlived the proxy
    value->setTargetValue(6);
    EXPECT_EQ(take(), (Log{"changed 8=6", "changed 7=6"}));
}

TEST_F(UValueProxies, TellTheirOwnOwnerWhenTheDelegateHasNone) {
    Owner owner(log);
    OPtr<UIntValue> value(new UIntValue);
    OPtr<UValueProxy> proxy(new UValueProxy(value));
    proxy->connect(&owner, 1);
    proxy->setTargetValue(1);  // the delegate's, which was connected as well
    value->connect(nullptr, 0, false);
    proxy->setTargetValue(2);
    EXPECT_EQ(take(), Log(2, "owner 1"));
    value->connect(&owner, 1, false);
    value->canAutomate(true);
    owner.failing = true;
    EXPECT_THROW(proxy->endEdit(false), std::string);
    EXPECT_EQ(take(), Log{"discard 1"});
    EXPECT_EQ(proxy->getState() & UValue::kDiscarding, 0u);
}

TEST_F(UValueProxies, OfProxiesKnowBothEndsAndMakeNoCircle) {
    OPtr<UIntValue> value(new UIntValue);
    OPtr<UValueProxy> inner(new UValueProxy(value)), outer(new UValueProxy(inner));
    EXPECT_EQ(outer->getValueObject(), inner.get());
    EXPECT_EQ(outer->getRepresentedObject(), value.get());
    inner->setDelegated(outer);
    EXPECT_EQ(inner->getDelegated(), nullptr);
}

TEST_F(UValueProxies, OwnersMayExchangeTheDelegateMeanwhile) {
    struct Exchanging : CmObject {
        using CmObject::update;
        void update(CmObject*, int32_t) override { proxy->delegateTo(nullptr); }
        UValueProxy* proxy = nullptr;
    } owner;
    OPtr<UValueProxy> proxy(new UValueProxy);
    owner.proxy = proxy;
    for (const auto act :
         {+[](UValueProxy& of) { of.resetToDefaultValue(); }, +[](UValueProxy& of) { of.endEdit(false); },
          +[](UValueProxy& of) { of.setTargetValue(1); }, +[](UValueProxy& of) { of.updateTarget(); }}) {
        OPtr<UIntDefValue> value(new UIntDefValue(0, 9, 5));
        value->canAutomate(true);
        value->connect(&owner, 0, false);
        proxy->delegateTo(value);
        value = nullptr;  // the proxy has the last reference
        act(*proxy);
        EXPECT_EQ(proxy->getValueObject(), nullptr);
    }
}

TEST_F(UValueProxies, MayEndWhenTheyAreHeardOf) {
    struct Leaving : FObject {
        ~Leaving() override { UpdateHandler::instance()->removeDependent(nullptr, this); }
        void update(FUnknown*, int32_t) override { proxy = nullptr; }
        OPtr<UValueProxy> proxy;
    };
    OPtr<UValue> value(new UValue);
    for (const bool isAlias : {false, true})
        for (const bool isExchanged : {false, true}) {
            Leaving view;
            view.proxy = isAlias ? new UAliasValue(value) : new UValueProxy(value);
            view.proxy->setStraightUpdate(true);
            view.proxy->UValue::addDependent(&view);
            isExchanged ? view.proxy->delegateTo(nullptr) : value->setValue(!value->getValue());
            EXPECT_EQ(view.proxy.get(), nullptr);
        }
    EXPECT_EQ(referencesOf(value), 1u);
}

TEST_F(UValueProxies, TellAtOnceWhileUpdatesAreBroughtOut) {
    OPtr<UIntValue> value(new UIntValue);
    OPtr<UValueProxy> proxy(new UValueProxy);
    Watcher view(log, proxy);
    const ValueHooks before = gValueHooks;
    gValueHooks.isInUpdatePhase = [] { return true; };
    proxy->delegateTo(value);
    EXPECT_EQ(take(), Log{"view 1"});
    gValueHooks = before;
    proxy->delegateTo(nullptr);
    EXPECT_EQ(take(), kNothing);
    EXPECT_EQ(flush(), Log{"view 1"});
}

TEST_F(UValueProxies, AliasesKeepTheirIdentity) {
    Owner owner(log);
    OPtr<UAliasValue> alias(new UAliasValue);
    alias->connect(new Owner(log), 1, true);
    EXPECT_EQ(Owner::living, 1);  // nobody is there to own it
    OPtr<UIntValue> value(new UIntValue);
    value->connect(&owner, 2, false);
    alias->delegateTo(value);
    alias->setTag(10);
    alias->setTargetValue(3);
    EXPECT_EQ(value->getTag(), 2);
    EXPECT_EQ(take(), Log{"owner 1"});
    alias->connect(nullptr, 4, false);
    EXPECT_EQ(connectionOf(value), std::pair(static_cast<CmObject*>(nullptr), 4));
    const OPtr<UAliasValue> copy(new UAliasValue(*alias));
    EXPECT_EQ(connectionOf(copy), std::pair(static_cast<CmObject*>(nullptr), 10));
    EXPECT_EQ(referencesOf(value), 3u);
}

TEST_F(UValueProxies, GuardsLetGoOfTheDead) {
    OPtr<UIntValue> value(new UIntValue);
    OPtr<UValueGuard> guard(new UValueGuard(value)), copy(new UValueGuard(*guard));
    EXPECT_EQ(copy->getValueObject(), value.get());
    EXPECT_EQ(referencesOf(value), 1u);
    value = nullptr;
    EXPECT_EQ(guard->getValueObject(), nullptr);
    EXPECT_EQ(copy->getValueObject(), nullptr);
}

TEST_F(UValueProxies, SelectorsFollowTheirIndex) {
    OPtr<UIntValue> value(new UIntValue(0, 5, 1)), other(new UIntValue(0, 5, 2));
    OPtr<UValueSelector> choice(new UValueSelector);
    choice->addValue(value);
    choice->addValue(other);
    flush();
    EXPECT_EQ(choice->getValue(), 1);
    choice->getSelector()->setValue(5);  // bounded
    flush();
    const OPtr<UValueSelector> copy(new UValueSelector(*choice));
    choice->getSelector()->setMax(2);
    choice->getSelector()->setValue(2);
    flush();
    EXPECT_EQ(choice->getValueObject(), nullptr);
    EXPECT_EQ(copy->getValueObject(), other.get());
    choice = nullptr;
    EXPECT_EQ(referencesOf(value), 2u);  // and the copy's
}

TEST_F(UValueProxies, LinkersPushToTheirSlaves) {
    OPtr<UIntValue> master(new UIntValue(0, UIntValue::kUnlimited, 7)), slave(new UIntValue(0, 5));
    Owner owner(log);
    slave->connect(&owner, 0, false);
    UValueLinker linker, back;
    linker.addSlave(slave);
    EXPECT_EQ(take(), kNothing);
    linker.addMaster(master);
    linker.addSlave(slave);  // once is enough, but it is pushed to
    EXPECT_EQ(take(), (Log{"owner 1", "owner 1"}));
    EXPECT_EQ(slave->getValue(), 5);
    back.addSlave(master);
    back.addMaster(slave);
    EXPECT_EQ(master->getValue(), 5);  // the narrower one pulls it back
    flush();
    flush();
    EXPECT_EQ(flush(), kNothing);  // settled
    back.addMaster(nullptr);
    OPtr<UIntValue> copy(new UIntValue);
    linker.removeSlave(slave);
    linker.addSlave(copy);
    EXPECT_EQ(referencesOf(copy), 2u);
    master->setValue((1 << 24) + 1);
    EXPECT_EQ(flush(), kNothing);
    EXPECT_EQ(copy->getValue(), 1 << 24);  // a float holds no more digits
    back.removeSlave(master);
    master = nullptr;
    linker.updateSlaves();  // it has let go of the dead master
}

TEST_F(UValueProxies, LinkersMayBeChangedByTheOwnersOfSlaves) {
    struct Meddling : CmObject {
        using CmObject::update;
        void update(CmObject*, int32_t) override {
            std::exchange(meddle, [] {})();
        }
        std::function<void()> meddle;
    } owner;
    OPtr<UIntValue> master(new UIntValue(0, 9, 2)), first(new UIntValue), last(new UIntValue);
    first->connect(&owner, 0, false);
    OPtr<UValueLinker> linker(new UValueLinker);
    linker->addSlave(first);
    linker->addSlave(last);
    owner.meddle = [&] { linker->addMaster(master); };
    linker->addMaster(OPtr<UIntValue>(new UIntValue(0, 9, 1)));
    EXPECT_EQ(last->getValue(), 2);  // the latest push counts
    owner.meddle = [&] { linker->removeSlave(last); };
    linker->updateSlaves();
    owner.meddle = [&] { linker = nullptr; };
    master->setValue(4);
    flush();
    EXPECT_EQ(last->getValue(), 2);
    EXPECT_EQ(linker.get(), nullptr);
    EXPECT_EQ(referencesOf(first), 1u);
}

}  // namespace
}  // namespace Tessarine
