#include "gui/values/uvalue.h"
#include "base/source/fstring.h"
#include "gui/values/uintvalue.h"
#include "pluginterfaces/base/imessage.h"
#include "pluginterfaces/base/istringresult.h"
#include "pluginterfaces/gui/ieventhook.h"
#include "valuefixture.h"

namespace Tessarine {
namespace {

using UValueNews = ValueTest;

TEST_F(UValueNews, IsDeferredAndMergedUnlessStraight) {
    OPtr<UIntValue> value(new UIntValue);
    Watcher view(log);
    value->addDependent(&view);
    value->setValue(1);
    value->setValue(2);
    EXPECT_EQ(take(), Log{});
    EXPECT_EQ(flush(), Log{"view 1"});
    value->setStraightUpdate(true);
    value->setValue(3);
    value->setValue(3);
    value->setValue(4);
    EXPECT_EQ(take(), (Log{"view 1", "view 1"}));
    EXPECT_EQ(flush(), Log{});
    value->removeDependent(&view);
}

TEST_F(UValueNews, SilenceIsNotMadeUpFor) {
    OPtr<UIntValue> value(new UIntValue);
    Watcher view(log);
    value->addDependent(&view);
    value->enableUpdates(false);
    value->setValue(5);
    value->enableUpdates(true);
    EXPECT_EQ(flush(), Log{});
    EXPECT_EQ(value->getValue(), 5);
    value->removeDependent(&view);
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
    Watcher view(log);
    value->addDependent(&view);
    for (int repeat = 0; repeat < 2; ++repeat) {
        value->setValue(-7);
        value->setActive(false);
        value->setLock(true);
        value->isAutomated(true);
    }
    EXPECT_EQ(take(), (Log{"view 1", "view 1", "view 4", "view 5"}));
    EXPECT_EQ(value->getValue(), 1);
    value->removeDependent(&view);
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
    // the dead address stays in the handler until the dependent goes
    EXPECT_EQ(handler->removeDependent(nullptr, &view), kResultOk);
}

using UValueOwner = ValueTest;

TEST_F(UValueOwner, HearsOfUsersOnlyAndAfterTheViews) {
    OPtr<UIntValue> value(new UIntValue);
    Owner owner(log);
    Watcher view(log);
    value->connect(&owner, 7, false);
    value->setStraightUpdate(true);
    value->addDependent(&view);

    struct Row {
        const char* name;
        void (*act)(UIntValue&);
        Log told;
    };
    const Row rows[] = {
        {"setValue",             [](UIntValue& v) { v.setValue(1); },                {"view 1"}           },
        {"setTargetValue",       [](UIntValue& v) { v.setTargetValue(2); },          {"view 1", "owner 1"}},
        {"target, same value",   [](UIntValue& v) { v.setTargetValue(2); },          {"owner 1"}          },
        {"setValue2 quiet",      [](UIntValue& v) { v.setValue2(3, false); },        {"view 1"}           },
        {"setValue2",            [](UIntValue& v) { v.setValue2(4, true); },         {"view 1", "owner 1"}},
        {"setValueFloat",        [](UIntValue& v) { v.setValueFloat(5.9f, true); },  {"view 1", "owner 1"}},
        {"increment",            [](UIntValue& v) { v.increment(); },                {"view 1", "owner 1"}},
        {"fromString",           [](UIntValue& v) { v.fromString(u"7"); },           {"view 1", "owner 1"}},
        {"fromString2 quiet",    [](UIntValue& v) { v.fromString2(u"8", false); },   {"view 1"}           },
        {"fromString2",          [](UIntValue& v) { v.fromString2(u"9", true); },    {"view 1", "owner 1"}},
        {"fromString2 null",     [](UIntValue& v) { v.fromString2(nullptr, true); }, {}                   },
        {"tag and owner remain", [](UIntValue& v) { EXPECT_EQ(v.getTag(), 7); },     {}                   },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.act(*value);
        EXPECT_EQ(take(), row.told);
    }
    EXPECT_EQ(value->getValue(), 9);
    EXPECT_EQ(value->getOwner(), static_cast<FUnknown*>(&owner));
    value->removeDependent(&view);
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
    value = nullptr;
    EXPECT_EQ(Owner::living, 0);
}

using UValueSession = ValueTest;

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
        struct Probe : UValue {
            explicit Probe(uint32_t state) { flags |= state; }
        };
        OPtr<Probe> value(new Probe(row.state));
        Owner owner(log);
        value->connect(&owner, 0, false);
        value->canAutomate(row.automated);
        value->beginEdit();
        EXPECT_TRUE(value->isEditLocked());
        value->endEdit(row.commit);
        EXPECT_FALSE(value->isEditLocked());
        EXPECT_EQ(value->getState() & UValue::kDiscarding, 0u);
        EXPECT_EQ(take(), row.told);
    }
}

TEST_F(UValueSession, TheMarkerGoesEvenWhenTheOwnerFails) {
    OPtr<UValue> value(new UValue);
    Owner owner(log);
    value->connect(&owner, 0, false);
    value->canAutomate(true);
    owner.failing = true;
    EXPECT_THROW(value->endEdit(false), std::string);
    EXPECT_EQ(take(), Log{"discard 1"});
    EXPECT_EQ(value->getState() & UValue::kDiscarding, 0u);
    EXPECT_EQ(referencesOf(static_cast<CmObject*>(value)), 1u);
}

TEST_F(UValueSession, AValueMayDieInIt) {
    struct Releaser : CmObject {
        using CmObject::update;
        void update(CmObject*, int32_t) override { held = nullptr; }
        OPtr<UValue> held;
    } owner;
    auto* value = new UValue;
    value->canAutomate(true);
    value->connect(&owner, 0, false);
    owner.held = OPtr<UValue>(value);
    value->endEdit(false);
    EXPECT_EQ(owner.held.get(), nullptr);
}

TEST_F(UValueSession, WithAPlugInThatTakesPart) {
    EditController controller(log);
    {
        OPtr<UIntValue> value(new UIntValue);
        value->connect(&controller, 12);
        value->canAutomate(true);
        value->setEditLock(true);
        value->setTargetValue(3);
        value->setEditLock(false);
        EXPECT_EQ(take(), (Log{"begin 0", "changed 12=3", "end 3"}));  // the session alone changes nothing
        FUnknownPtr<IMessageReceiver> target(value->getOwner());
        ASSERT_TRUE(target);
        value->connect(static_cast<IPlugController*>(nullptr), 0);
        value->setTargetValue(4);
        EXPECT_EQ(take(), Log{});
    }
    EXPECT_EQ(controller.references, 1);  // never counted
}

TEST_F(UValueSession, WithAPlugInThatDoesNot) {
    Controller<IPlugController> controller(log);
    OPtr<UIntValue> value(new UIntValue);
    value->connect(&controller, 5);
    value->canAutomate(true);
    value->beginEdit();
    value->endEdit(true);
    EXPECT_EQ(take(), (Log{"changed 5=0", "changed 5=0"}));
}

TEST_F(UValueSession, ResettingIsOneSessionOfAnAutomatedValue) {
    OPtr<UIntDefValue> value(new UIntDefValue(0, 10, 4));
    Owner owner(log);
    value->connect(&owner, 0, false);
    EXPECT_TRUE(value->resetToDefaultValue());
    EXPECT_EQ(take(), Log{"owner 1"});
    value->canAutomate(true);
    EXPECT_TRUE(value->resetToDefaultValue());
    EXPECT_EQ(take(), (Log{"owner 1", "owner 1", "owner 1"}));
    EXPECT_EQ(value->getValue(), 4);
    OPtr<UIntValue> plain(new UIntValue);
    EXPECT_FALSE(plain->resetToDefaultValue());
    EXPECT_FALSE(plain->setDefault(3));
}

/** Notes touched values, and takes itself or another off while it is called. */
class Hook : public IApplicationEventHook {
public:
    Hook(Log& log, std::string name) : log(log), name(std::move(name)) {}
    virtual ~Hook() { UValue::unregisterHook(this); }
    int32_t queryInterface(const char*, void** obj) override { return noInterface(obj); }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
    void onCommandFired(const char*, const char*, const tchar*) override {}
    void onActionExecuted(const char*, const char*, const tchar*) override {}
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

TEST_F(UValueHook, HearsOfTouchedValuesWithoutAnOwnerToo) {
    OPtr<UValue> value(new UValue);
    value->setTag(3);
    Hook hook(log, "hook");
    EXPECT_TRUE(UValue::registerHook(&hook));
    EXPECT_FALSE(UValue::registerHook(&hook));
    value->setValue(1);
    value->fromString2(u"On", false);
    EXPECT_EQ(take(), Log{"hook 3"});
    UValue::bypassAllHooks = true;
    value->setTargetValue(0);
    UValue::bypassAllHooks = false;
    EXPECT_EQ(take(), Log{});
    EXPECT_TRUE(UValue::unregisterHook(&hook));
    EXPECT_FALSE(UValue::unregisterHook(&hook));
    EXPECT_FALSE(UValue::registerHook(nullptr));
    EXPECT_FALSE(UValue::unregisterHook(nullptr));
}

TEST_F(UValueHook, MayGoWhileTheyAreTold) {
    OPtr<UValue> value(new UValue);
    Hook first(log, "first"), second(log, "second"), third(log, "third");
    for (Hook* hook : {&first, &second, &third})
        UValue::registerHook(hook);
    first.toRemove = &first;
    second.toRemove = &third;
    value->updateTarget();
    EXPECT_EQ(take(), (Log{"first 0", "second 0"}));
    value->updateTarget();
    EXPECT_EQ(take(), Log{"second 0"});
}

TEST(UValueFaces, AllOfOneObject) {
    UValue* value = new UValue;
    const FUID faces[] = {FUnknown::iid,
                          IDependent::iid,
                          FObject::iid,
                          IParameter::iid,
                          IValue::iid,
                          IValue2::iid,
                          IStringRepresentationTarget::iid};
    void* identity = nullptr;
    ASSERT_EQ(value->queryInterface(FUnknown::iid, &identity), kResultOk);
    for (const FUID& face : faces) {
        void* found = nullptr;
        ASSERT_EQ(value->queryInterface(face, &found), kResultOk);
    }
    EXPECT_EQ(referencesOf(static_cast<IValue*>(value)), 2 + std::size(faces));
    void* missed = value;
    EXPECT_EQ(value->queryInterface(IFloatValue::iid, &missed), kNoInterface);
    EXPECT_EQ(missed, nullptr);
    IValue* outside = UValue::createParamInterface(value);
    EXPECT_EQ(outside->release(), 2 + std::size(faces));
    FUnknownPtr<FUnknown> sameIdentity(outside);
    EXPECT_EQ(sameIdentity.get(), identity);
    EXPECT_EQ(UValue::createParamInterface(nullptr), nullptr);
    sameIdentity = nullptr;
    while (value->release() > 0) {}
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
        {0,                                       false, false},
        {32,                                      false, false},
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
    struct Row {
        const tchar* text;
        int32_t value;
    };
    constexpr Row kRows[] = {
        {u"On",  1},
        {u"on",  0},
        {u"On",  1},
        {u"On ", 0},
        {u"1",   0},
        {u"",    0},
    };
    for (const Row& row : kRows) {
        value->fromString(row.text);
        EXPECT_EQ(value->getValue(), row.value);
    }
}

TEST(UValueText, FitsTheBuffer) {
    OPtr<UIntValue> value(new UIntValue(0, 100000, 12345));
    struct Row {
        int32_t length;
        std::u16string_view written;
    };
    constexpr Row kRows[] = {
        {-1, u"#######" },
        {0,  u"#######" },
        {1,  u"\0######"},
        {3,  u"12\0####"},
        {6,  u"12345\0#"},
        {99, u"12345\0#"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.length);
        std::u16string buffer(7, u'#');
        int32_t length = row.length;
        value->toString2(buffer.data(), &length);
        EXPECT_EQ(buffer, std::u16string(row.written.data(), 7));
        EXPECT_EQ(length, row.length);
    }
    value->toString2(nullptr, nullptr);
    EXPECT_EQ(textOf(value), u"12345");
}

class InWords : public FObject, public IValueStringRepresentation {
public:
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override { return FObject::queryInterface(iid, obj); }
    int32_t valueToString(IValue* value, FUnknown* result) override {
        FUnknownPtr<IString> text(result);
        if (!text || value->getValueInt() > 2)
            return kResultFalse;
        constexpr const tchar* kWords[] = {u"zero", u"one", u"two"};
        text->setText16(kWords[value->getValueInt()]);
        return kResultOk;
    }
    int32_t stringToValue(IValue* value, const tchar* text) override {
        if (ConstString(text).compare(u"many") != 0)
            return kResultFalse;
        value->setTargetValue(99);
        return kResultOk;
    }
};

TEST(UValueText, TheRepresentationComesFirst) {
    auto* words = new InWords;
    {
        OPtr<UIntValue> value(new UIntValue);
        value->setStringRepresentation(words);
        OPtr<CmObject> copy(value->newCopy());
        EXPECT_EQ(referencesOf(static_cast<FObject*>(words)), 3u);
        EXPECT_EQ(textOf(value), u"zero");
        value->fromString(u"7");
        EXPECT_EQ(textOf(value), u"7");  // it has no word for it
        value->fromString(u"many");
        EXPECT_EQ(value->getValue(), 99);
        FString tip;
        value->toString(2, tip);
        EXPECT_EQ(tip.compare(u"two"), 0);
        EXPECT_EQ(value->getValue(), 99);
    }
    EXPECT_EQ(static_cast<FObject*>(words)->release(), 0u);
}

using UValueTip = ValueTest;

TEST_F(UValueTip, ShowsAnotherPlaceUnheard) {
    OPtr<UIntValue> value(new UIntValue(0, 10, 4));
    value->setStraightUpdate(true);
    Watcher view(log);
    value->addDependent(&view);
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
    value->setValue(6);  // and stay off when they were
    EXPECT_EQ(take(), Log{});
    value->removeDependent(&view);
}

}  // namespace
}  // namespace Tessarine
