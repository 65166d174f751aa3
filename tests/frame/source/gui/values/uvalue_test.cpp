#include "gui/values/uvalue.h"
#include "base/source/fstring.h"
#include "gui/values/ucolorvalue.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/uintvalue.h"
#include "gui/values/urationalvalue.h"
#include "pluginterfaces/base/imessage.h"
#include "pluginterfaces/base/istringresult.h"
#include "pluginterfaces/gui/ieventhook.h"
#include "valuefixture.h"

namespace Tessarine {
namespace {

using UValueNews = ValueTest;

TEST_F(UValueNews, AreDeferredAndMergedUnlessStraightAndNeverMadeUpFor) {
    OPtr<UIntValue> value(new UIntValue);
    Watcher view(log, value);
    value->setValue(1);
    value->setValue(2);
    EXPECT_EQ(take(), Log{});
    EXPECT_EQ(flush(), Log{"view 1"});
    value->setStraightUpdate(true);
    value->setValue(3);
    value->setValue(3);
    value->setValue(4);
    EXPECT_EQ(take(), (Log{"view 1", "view 1"}));
    value->setStraightUpdate(false);
    value->enableUpdates(false);
    value->setValue(5);
    value->enableUpdates(true);
    EXPECT_EQ(flush(), Log{});
    EXPECT_EQ(value->getValue(), 5);
}

TEST_F(UValueNews, SilentUntilObserved) {
    struct Silent : UIntValue {
        Silent() { flags |= kSilentUntilObserved | kStraightUpdate; }
    };
    OPtr<Silent> value(new Silent);
    Watcher early(log, "early");
    handler->addDependent(static_cast<CmObject*>(value), &early);  // past the value: it can't know
    value->setValue(1);
    EXPECT_EQ(take(), Log{});
    const Watcher late(log, value);
    value->setValue(2);
    EXPECT_EQ(take(), (Log{"early 1", "view 1"}));
}

TEST_F(UValueNews, EachKindHasItsCodeAndOnlyRealChangesCount) {
    OPtr<UValue> value(new UValue);
    value->setStraightUpdate(true);
    Watcher view(log, value);
    for (int repeat = 0; repeat < 2; ++repeat) {
        value->setValue(-7);
        value->setActive(false);
        value->setLock(true);
        value->isAutomated(true);
    }
    EXPECT_EQ(take(), (Log{"view 1", "view 1", "view 4", "view 5"}));
}

TEST_F(UValueNews, TheEndIsToldAtOnceEvenWhenSilentAndWithdrawsWhatWaits) {
    Watcher view(log);
    OPtr<UIntValue> value(new UIntValue);
    value->addDependent(&view);
    value->setValue(1);
    value->setUpdate(false);
    value = nullptr;
    EXPECT_EQ(take(), Log{"view 2"});
    EXPECT_EQ(flush(), Log{});
}

using UValueOwner = ValueTest;

TEST_F(UValueOwner, HearsOfUsersOnlyAndAfterTheViews) {
    OPtr<UIntValue> value(new UIntValue);
    Owner owner(log);
    Watcher view(log, value);
    value->connect(&owner, 7, false);
    value->setStraightUpdate(true);
    const Log told[] = {
        {},
        {"view 1"},
        {"owner 1"},
        {"view 1", "owner 1"}
    };
    enum { kNobody, kViews, kOwner, kBoth };
    const std::pair<void (*)(UIntValue&), int> rows[] = {
        {[](UIntValue& v) { v.setValue(1); },                kViews },
        {[](UIntValue& v) { v.setTargetValue(2); },          kBoth  },
        {[](UIntValue& v) { v.setTargetValue(2); },          kOwner },
        {[](UIntValue& v) { v.setValue2(3, false); },        kViews },
        {[](UIntValue& v) { v.setValueFloat(5.9f, true); },  kBoth  },
        {[](UIntValue& v) { v.increment(); },                kBoth  },
        {[](UIntValue& v) { v.fromString2(u"8", false); },   kViews },
        {[](UIntValue& v) { v.fromString2(u"9", true); },    kBoth  },
        {[](UIntValue& v) { v.fromString2(nullptr, true); }, kNobody},
    };
    for (int32_t row = 0; const auto& [act, hearing] : rows) {
        SCOPED_TRACE(row++);
        act(*value);
        EXPECT_EQ(take(), told[hearing]);
    }
    EXPECT_EQ(value->getValue(), 9);
}

TEST_F(UValueOwner, IsReleasedOnlyWhenOwned) {
    OPtr<UValue> value(new UValue);
    auto* first = new Owner(log);
    value->connect(first, 1, true);
    OPtr<CmObject> copy(value->newCopy());  // shares the owner
    EXPECT_EQ(referencesOf(first), 2u);
    copy = nullptr;
    auto* second = new Owner(log);
    value->connect(second, 2, false);
    EXPECT_EQ(Owner::living, 1);
    value->connect(nullptr, 3, true);
    EXPECT_EQ(value->getState(), uint32_t(UValue::kStateActive | 1));
    value->connect(second, 2, true);
    value = nullptr;
    EXPECT_EQ(Owner::living, 0);
}

TEST_F(UValueOwner, MayGoOrBeExchangedWhileATextIsReadUnheard) {
    struct View : FObject {
        void update(FUnknown*, int32_t message) override {
            if (message == kChanged)
                value->connect(next, 0, false);
        }
        UValue* value = nullptr;
        Owner* next = nullptr;
    };
    Owner other(log);
    for (Owner* next : {static_cast<Owner*>(nullptr), &other}) {
        View view;
        OPtr<UValue> value(new UValue);
        view.value = value;
        view.next = next;
        value->connect(new Owner(log), 0, true);
        value->setStraightUpdate(true);
        value->addDependent(&view);
        value->fromString2(u"On", false);
        EXPECT_EQ(Owner::living, 1);
        EXPECT_EQ(value->getOwner(), static_cast<FUnknown*>(next));
        value->removeDependent(&view);
    }
}

using UValueSession = ValueTest;

struct SessionValue : UValue {
    SessionValue(uint32_t state, bool automated) {
        flags |= state;
        canAutomate(automated);
    }
};

TEST_F(UValueSession, WithAPlainOwner) {
    struct Row {
        const char* name;
        uint32_t state;
        bool automated, commit;
        Log told;
    };
    const Row rows[] = {
        {"neither",          0,                       false, true,  {}                                        },
        {"automated",        0,                       true,  true,  {"owner 1", "owner 1"}                    },
        {"given up",         0,                       true,  false, {"owner 1", "discard 1"}                  },
        {"end always tells", UValue::kEndEditUpdates, false, false, {"discard 1"}                             },
        {"messages as well", UValue::kEditMessages,   true,  true,  {"notify", "owner 1", "notify", "owner 1"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        OPtr<SessionValue> value(new SessionValue(row.state, row.automated));
        Owner owner(log);
        value->connect(&owner, 0, false);
        value->beginEdit();
        EXPECT_TRUE(value->isEditLocked());
        value->endEdit(row.commit);
        EXPECT_FALSE(value->isEditLocked());
        EXPECT_EQ(value->getState() & UValue::kDiscarding, 0u);
        EXPECT_EQ(take(), row.told);
    }
}

TEST_F(UValueSession, EndsWellWhenTheOwnerFailsOrDropsTheValue) {
    OPtr<SessionValue> value(new SessionValue(0, true));
    Owner failing(log);
    failing.failing = true;
    value->connect(&failing, 0, false);
    EXPECT_THROW(value->endEdit(false), std::string);
    EXPECT_EQ(value->getState() & UValue::kDiscarding, 0u);
    EXPECT_EQ(referencesOf(static_cast<CmObject*>(value)), 1u);

    struct Releaser : CmObject {
        using CmObject::update;
        void update(CmObject*, int32_t) override { held = nullptr; }
        OPtr<UValue> held;
    } owner;
    value->connect(&owner, 0, false);
    UValue* dropped = value.detach();
    owner.held = OPtr<UValue>(dropped);
    dropped->endEdit(false);
    EXPECT_EQ(owner.held.get(), nullptr);
}

TEST_F(UValueSession, WithAPlugIn) {
    Controller takesPart(log, true), doesNot(log, false);
    OPtr<UIntValue> value(new UIntValue);
    value->canAutomate(true);
    for (Controller* controller : {&takesPart, &doesNot}) {
        value->connect(controller, 12);
        value->setEditLock(true);
        value->setTargetValue(3);
        value->setEditLock(false);
        const bool takes = controller == &takesPart;  // then the session alone changes nothing
        EXPECT_EQ(take(), takes ? (Log{"begin 0", "changed 12=3", "end 3"}) : Log(3, "changed 12=3"));
        EXPECT_TRUE(FUnknownPtr<IMessageReceiver>(value->getOwner()));
        value = OPtr<UIntValue>(new UIntValue(0, 9, 3));
        value->canAutomate(true);
    }
    EXPECT_EQ(takesPart.references + doesNot.references, 0);  // never counted
}

/** Notes touched values, and takes itself or another off while it is called. */
class Hook : public Uncounted<IApplicationEventHook> {
public:
    Hook(Log& log, std::string name) : log(log), name(std::move(name)) {}
    virtual ~Hook() { UValue::unregisterHook(this); }
    void onCommandFired(const char*, const char*, const tchar*) override {}
    void onActionExecuted(const char*, const char*, const tchar*, const tchar*) override {}
    void onValueChanged(IValue* value) override {
        log.push_back(name + " " + std::to_string(value->getTag()));
        if (toRemove)
            UValue::unregisterHook(std::exchange(toRemove, nullptr));
    }
    void notifyEvent(const char*, FUnknown*) override {}

    Hook* toRemove = nullptr;

private:
    Log& log;
    const std::string name;
};

using UValueHook = ValueTest;

TEST_F(UValueHook, HearsOfTouchedValuesAndMayGoMeanwhile) {
    OPtr<UValue> value(new UValue);
    value->setTag(3);
    Hook first(log, "first"), second(log, "second"), third(log, "third");
    EXPECT_TRUE(UValue::registerHook(&first));
    EXPECT_FALSE(UValue::registerHook(&first) || UValue::registerHook(nullptr));
    value->setValue(1);
    value->fromString2(u"On", false);
    EXPECT_EQ(take(), Log{"first 3"});
    UValue::bypassAllHooks = true;
    value->setTargetValue(0);
    UValue::bypassAllHooks = false;
    UValue::registerHook(&second);
    UValue::registerHook(&third);
    first.toRemove = &first;
    second.toRemove = &third;
    value->updateTarget();
    value->updateTarget();
    EXPECT_EQ(take(), (Log{"first 3", "second 3", "second 3"}));
    EXPECT_FALSE(UValue::unregisterHook(&third));
}

TEST(UValueFaces, FlagsThatHostsRead) {
    constexpr std::tuple<uint32_t, bool, bool> kRows[] = {
  // what an on/off value and an integer keep
        {IValue2::kCanAutomate, true,  true },
        {IValue2::kFlag2,       true,  true },
        {IValue2::kFlag4,       false, false},
        {IValue2::kFlag8,       false, false},
        {IValue2::kWrapAround,  false, true },
        {3,                     false, false},
    };
    const OPtr<UValue> onOff(new UValue), integer(new UIntValue);
    for (const auto& [mask, onOffKeeps, integerKeeps] : kRows) {
        for (UValue* value : {onOff.get(), integer.get()})
            value->setValueFlag(mask, true);
        EXPECT_EQ(onOff->getValueFlag(mask), onOffKeeps) << mask;
        EXPECT_EQ(integer->getValueFlag(mask), integerKeeps) << mask;
        for (UValue* value : {onOff.get(), integer.get()})
            value->setValueFlag(mask, false);
    }
    EXPECT_EQ(onOff->getState(), 0x201u);
    EXPECT_EQ(integer->getState(), 0x202u);
}

TEST(UValueText, FitsTheBuffer) {
    OPtr<UIntValue> value(new UIntValue(0, 100000, 12345));
    const std::pair<int32_t, std::u16string_view> rows[] = {
        {-1, u"#######" },
        {0,  u"#######" },
        {1,  u"\0######"},
        {3,  u"12\0####"},
        {6,  u"12345\0#"},
        {99, u"12345\0#"},
    };
    for (const auto& [size, written] : rows) {
        SCOPED_TRACE(size);
        std::u16string buffer(7, u'#');
        int32_t length = size;
        value->toString2(buffer.data(), &length);
        EXPECT_EQ(buffer, std::u16string(written.data(), 7));
    }
    value->toString2(nullptr, nullptr);
}

/** Has a word for 7 and knows "many". */
class InWords : public FObject, public IValueStringRepresentation {
public:
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override { return FObject::queryInterface(iid, obj); }
    int32_t valueToString(IValue* value, FUnknown* result) override {
        FUnknownPtr<IString> text(result);
        if (!text || value->getValueInt() != 7)
            return kResultFalse;
        return text->setText16(u"seven"), kResultOk;
    }
    int32_t stringToValue(IValue* value, const tchar* text) override {
        if (ConstString(text).compare(u"many") != 0)
            return kResultFalse;
        return value->setTargetValue(99), kResultOk;
    }
};

TEST(UValueText, TheRepresentationComesFirst) {
    auto* words = new InWords;
    OPtr<UIntValue> value(new UIntValue(0, 99, 7));
    value->setStringRepresentation(words);
    OPtr<CmObject> copy(value->newCopy());
    EXPECT_EQ(referencesOf(static_cast<FObject*>(words)), 3u);
    EXPECT_EQ(textOf(value), u"seven");
    value->fromString(u"many");
    EXPECT_EQ(textOf(value), u"99");
    value = nullptr;
    copy = nullptr;
    EXPECT_EQ(static_cast<FObject*>(words)->release(), 0u);
}

struct PersistenceRow {
    const char* name;
    OPtr<UValue> source, archiveTarget, attributeTarget;
    std::u16string archived, restored;
};

TEST(UValuePersistence, ComesBackInBothForms) {
    auto* on = new UValue;
    on->setValue(1);
    const auto made = [](UValue* value) { return OPtr<UValue>(value); };
    const PersistenceRow rows[] = {
        {"on", made(on), made(new UValue), made(new UValue), u"On", u"On"},
        {"integer keeps the reader's range", made(new UIntValue(-9, 99, 77)), made(new UIntValue(0, 50)),
         made(new UIntValue(0, 50)), u"50", u"77"},
        {"float", made(new UFloatValue(-9.f, 99.f, 2.5f)), made(new UFloatValue(0.f, 2.f)),
         made(new UFloatValue(0.f, 2.f)), u"2.0000", u"2.0000"},
        {"fraction", made(new URationalValue(-3, 4)), made(new URationalValue), made(new URationalValue), u"-3/4",
         u"-3/4"},
        {"colour", made(new UColorValue(0xFF00FF00)), made(new UColorValue), made(new UColorValue), u"green", u"green"},
    };
    for (const PersistenceRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(archived(*row.source, *row.archiveTarget, 1));
        EXPECT_TRUE(archived(*row.source, *row.archiveTarget));
        EXPECT_EQ(textOf(row.archiveTarget), row.archived);
        EXPECT_TRUE(passedAttributes(*row.source, *row.attributeTarget));
        EXPECT_EQ(textOf(row.attributeTarget), row.restored);
    }
}

using UValueTip = ValueTest;

TEST_F(UValueTip, ShowsAnotherPlaceUnheard) {
    OPtr<UIntValue> value(new UIntValue(0, 10, 4));
    value->setStraightUpdate(true);
    Watcher view(log, value);
    FString tip;
    value->toString(7, tip);
    EXPECT_EQ(tip.compare(u"7"), 0);
    value->toString(0.2f, tip);
    EXPECT_EQ(tip.compare(u"2"), 0);
    EXPECT_EQ(take(), Log{});
    value->increment();  // updates are on again
    EXPECT_EQ(take(), Log{"view 1"});
    EXPECT_EQ(value->getValue(), 5);
    value->setUpdate(false);
    value->toString(7, tip);
    value->setValue(6);  // and stay off when they were
    EXPECT_EQ(take(), Log{});
    const OPtr<UIntValue> large(new UIntValue(0, 1 << 30, (1 << 24) + 1));
    large->toString(0.f, tip);
    EXPECT_EQ(large->getValue(), 1 << 24);  // the way back is a position, which loses digits
}

}  // namespace
}  // namespace Tessarine
