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

TEST_F(UValueNews, ReachWhoStaysWhicheverWayOthersWent) {
    const OPtr<UIntValue> value(new UIntValue);
    CmObject* object = value;
    Watcher stays(log, value), left(log, "left"), everywhere(log, "everywhere");
    for (Watcher* other : {&left, &left, &everywhere})
        handler->addDependent(object, other);
    handler->removeDependent(object, &left);
    handler->removeDependent(nullptr, &everywhere);
    for (const bool straight : {true, false}) {
        value->setStraightUpdate(straight);
        value->increment();
        EXPECT_EQ(flush(), Log{"view 1"});
    }
    handler->removeDependent(object, nullptr);
    value->increment();
    EXPECT_EQ(flush(), Log{});
}

TEST_F(UValueNews, SilentUntilObserved) {
    struct Silent : UIntValue {
        Silent() { flags |= kSilentUntilObserved | kStraightUpdate; }
    };
    OPtr<Silent> value(new Silent);
    Watcher early(log, "early"), late(log, "late");
    handler->addDependent(static_cast<CmObject*>(value), &early);  // past the value: it can't know
    value->setValue(1);
    EXPECT_EQ(take(), Log{});
    value->addDependent(&late);
    value->setValue(2);
    EXPECT_EQ(take(), (Log{"early 1", "late 1"}));
    handler->removeDependent(static_cast<CmObject*>(value), nullptr);
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
    EXPECT_EQ(value->getValue(), 1);
}

TEST_F(UValueNews, TheEndIsToldAtOnceEvenWhenSilentAndWithdrawsWhatWaits) {
    Watcher view(log);
    UIntValue* value = new UIntValue;
    value->addDependent(&view);
    value->setValue(1);
    value->setUpdate(false);
    EXPECT_EQ(value->release(), 0u);
    EXPECT_EQ(take(), Log{"view 2"});
    EXPECT_EQ(flush(), Log{});
    handler->removeDependent(nullptr, &view);  // the dead address stays in the handler until the dependent goes
}

using UValueOwner = ValueTest;

TEST_F(UValueOwner, HearsOfUsersOnlyAndAfterTheViews) {
    OPtr<UIntValue> value(new UIntValue);
    Owner owner(log);
    Watcher view(log, value);
    value->connect(&owner, 7, false);
    value->setStraightUpdate(true);
    struct Row {
        const char* name;
        void (*act)(UIntValue&);
        Log told;
    };
    const Row rows[] = {
        {"setValue",           [](UIntValue& v) { v.setValue(1); },                {"view 1"}           },
        {"setTargetValue",     [](UIntValue& v) { v.setTargetValue(2); },          {"view 1", "owner 1"}},
        {"target, same value", [](UIntValue& v) { v.setTargetValue(2); },          {"owner 1"}          },
        {"setValue2 quiet",    [](UIntValue& v) { v.setValue2(3, false); },        {"view 1"}           },
        {"setValueFloat",      [](UIntValue& v) { v.setValueFloat(5.9f, true); },  {"view 1", "owner 1"}},
        {"increment",          [](UIntValue& v) { v.increment(); },                {"view 1", "owner 1"}},
        {"fromString2 quiet",  [](UIntValue& v) { v.fromString2(u"8", false); },   {"view 1"}           },
        {"fromString2",        [](UIntValue& v) { v.fromString2(u"9", true); },    {"view 1", "owner 1"}},
        {"fromString2 null",   [](UIntValue& v) { v.fromString2(nullptr, true); }, {}                   },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.act(*value);
        EXPECT_EQ(take(), row.told);
    }
    EXPECT_EQ(value->getValue(), 9);
    EXPECT_EQ(value->getOwner(), static_cast<FUnknown*>(&owner));
}

TEST_F(UValueOwner, IsReleasedOnlyWhenOwned) {
    OPtr<UValue> value(new UValue);
    auto* first = new Owner(log);
    value->connect(first, 1, true);
    {
        OPtr<CmObject> copy(value->newCopy());  // shares the owner
        EXPECT_EQ(referencesOf(first), 2u);
        EXPECT_EQ(classCast<UValue>(copy.get())->getTag(), 1);
    }
    EXPECT_EQ(referencesOf(first), 1u);
    auto* second = new Owner(log);
    value->connect(second, 2, false);
    EXPECT_EQ(Owner::living, 1);
    value->connect(nullptr, 3, true);
    EXPECT_EQ(value->getState(), uint32_t(UValue::kStateActive | 1));
    EXPECT_EQ(Owner::living, 1);
    value->connect(second, 2, true);
    struct Leaving : CmObject {
        ~Leaving() override { value->connect(next, 5, true); }
        UValue* value = nullptr;
        CmObject* next = nullptr;
    };
    auto* leaving = new Leaving;
    leaving->value = value;
    leaving->next = new Owner(log);
    value->connect(leaving, 4, true);
    value->connect(nullptr, 0, false);
    EXPECT_EQ(value->getTag(), 5);  // its end has the last word
    value = nullptr;
    EXPECT_EQ(Owner::living, 0);
}

TEST_F(UValueOwner, MayComeAndGoWhileATextIsReadUnheard) {
    struct View : FObject {
        void update(FUnknown*, int32_t message) override {
            if (message == kChanged)
                act(*value, *other);
        }
        void (*act)(UValue& value, Owner& other);
        UValue* value;
        Owner* other;
    };
    struct Row {
        const char* name;
        void (*act)(UValue& value, Owner& other);
        int32_t stillLiving;
        bool hasOwner;
    };
    const Row rows[] = {
        {"copied",         [](UValue& value, Owner&) { OPtr<CmObject> copy(value.newCopy()); },  2, true },
        {"let go",         [](UValue& value, Owner&) { value.connect(nullptr, 0, false); },      1, false},
        {"exchanged",      [](UValue& value, Owner& other) { value.connect(&other, 0, false); }, 1, true },
        {"read once more", [](UValue& value, Owner&) { value.fromString2(u"Off", false); },      2, true },
    };
    Owner other(log);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        OPtr<UValue> value(new UValue);
        View view;
        view.act = row.act;
        view.value = value;
        view.other = &other;
        value->connect(new Owner(log), 0, true);
        value->setStraightUpdate(true);
        value->addDependent(&view);
        value->fromString2(u"On", false);
        EXPECT_EQ(Owner::living, row.stillLiving);
        EXPECT_EQ(value->getOwner() != nullptr, row.hasOwner);
        value->removeDependent(&view);
        value = nullptr;
        EXPECT_EQ(Owner::living, 1);
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
    EXPECT_EQ(take(), Log{"discard 1"});
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

    auto* reset = new UIntDefValue(0, 9, 5);
    reset->canAutomate(true);
    reset->connect(&owner, 0, false);
    owner.held = OPtr<UValue>(reset);
    EXPECT_TRUE(reset->resetToDefaultValue());
    EXPECT_EQ(owner.held.get(), nullptr);
}

TEST_F(UValueSession, WithAPlugIn) {
    Controller takesPart(log, true), doesNot(log, false);
    {
        OPtr<UIntValue> value(new UIntValue);
        value->connect(&takesPart, 12);
        value->canAutomate(true);
        value->setEditLock(true);
        value->setTargetValue(3);
        value->setEditLock(false);
        EXPECT_EQ(take(), (Log{"begin 0", "changed 12=3", "end 3"}));  // the session alone changes nothing
        EXPECT_TRUE(FUnknownPtr<IMessageReceiver>(value->getOwner()));
        value->connect(static_cast<IPlugController*>(nullptr), 0);
        value->setTargetValue(4);
        EXPECT_EQ(take(), Log{});
        OPtr<UIntValue> other(new UIntValue);
        other->connect(&doesNot, 5);
        other->canAutomate(true);
        other->beginEdit();
        other->endEdit(true);
        EXPECT_EQ(take(), (Log{"changed 5=0", "changed 5=0"}));
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
    EXPECT_FALSE(UValue::registerHook(&first));
    EXPECT_FALSE(UValue::registerHook(nullptr));
    value->setValue(1);
    value->fromString2(u"On", false);
    EXPECT_EQ(take(), Log{"first 3"});
    UValue::bypassAllHooks = true;
    value->setTargetValue(0);
    UValue::bypassAllHooks = false;
    EXPECT_EQ(take(), Log{});
    UValue::registerHook(&second);
    UValue::registerHook(&third);
    first.toRemove = &first;
    second.toRemove = &third;
    value->updateTarget();
    EXPECT_EQ(take(), (Log{"first 3", "second 3"}));
    value->updateTarget();
    EXPECT_EQ(take(), Log{"second 3"});
    EXPECT_FALSE(UValue::unregisterHook(&third));
}

TEST(UValueFaces, FlagsThatHostsRead) {
    struct Row {
        uint32_t mask;
        bool onOffKeeps, integerKeeps;
    };
    constexpr Row kRows[] = {
        {IValue2::kCanAutomate,                   true,  true },
        {IValue2::kFlag2,                         true,  true },
        {IValue2::kFlag4,                         false, false}, // readable only
        {IValue2::kFlag8,                         false, false},
        {IValue2::kWrapAround,                    false, true },
        {IValue2::kCanAutomate | IValue2::kFlag2, false, false}, // one at a time
    };
    OPtr<UValue> onOff(new UValue);
    OPtr<UIntValue> integer(new UIntValue);
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.mask);
        onOff->setValueFlag(row.mask, true);
        integer->setValueFlag(row.mask, true);
        EXPECT_EQ(onOff->getValueFlag(row.mask), row.onOffKeeps);
        EXPECT_EQ(integer->getValueFlag(row.mask), row.integerKeeps);
        onOff->setValueFlag(row.mask, false);
        integer->setValueFlag(row.mask, false);
    }
    EXPECT_EQ(onOff->getState(), 0x201u);
    EXPECT_EQ(integer->getState(), 0x202u);
}

TEST(UValueText, OnOffReadsExactlyOn) {
    OPtr<UValue> value(new UValue);
    EXPECT_EQ(textOf(value), u"Off");
    for (const tchar* off : {u"on", u"On ", u"1", u""}) {
        value->fromString(u"On");
        EXPECT_EQ(value->getValue(), 1);
        value->fromString(off);
        EXPECT_EQ(value->getValue(), 0);
    }
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
    {
        OPtr<UIntValue> value(new UIntValue);
        value->setStringRepresentation(words);
        OPtr<CmObject> copy(value->newCopy());
        EXPECT_EQ(referencesOf(static_cast<FObject*>(words)), 3u);
        value->fromString(u"7");
        EXPECT_EQ(textOf(value), u"seven");
        value->fromString(u"many");
        EXPECT_EQ(textOf(value), u"99");
    }
    EXPECT_EQ(static_cast<FObject*>(words)->release(), 0u);
}

TEST(UValueText, YesAndNoAreShownOnly) {
    const OPtr<UYesNoValue> value(new UYesNoValue);
    value->setStringRepresentation(OPtr<InWords>(new InWords));
    value->fromString(u"On");
    EXPECT_EQ(textOf(value), u"Yes");
    value->fromString(u"Yes");
    EXPECT_EQ(textOf(value), u"No");
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
    EXPECT_EQ(value->getValue(), 4);
    EXPECT_EQ(take(), Log{});
    value->setValue(5);  // updates are on again
    EXPECT_EQ(take(), Log{"view 1"});
    value->setUpdate(false);
    value->toString(7, tip);
    const OPtr<UIntValue> large(new UIntValue(0, 1 << 30, (1 << 24) + 1));
    large->toString(0.f, tip);
    EXPECT_EQ(large->getValue(), 1 << 24);  // the way back is a position, which loses digits
    value->setValue(6);                     // and stay off when they were
    EXPECT_EQ(take(), Log{});
}

}  // namespace
}  // namespace Tessarine
