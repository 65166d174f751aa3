#include "base/source/classfactory.h"
#include "base/source/cmobject.h"
#include "base/source/fstringobject.h"
#include "pluginterfaces/base/ipersistent.h"
#include "pluginterfaces/base/smartpointer.h"
#include <gtest/gtest.h>
#include <string>

using namespace Tessarine;

namespace {
const FUID kID(0x11111111, 0x22222222, 0x33333333, 0x44444444);
constexpr char kDigits[] = "11111111222222223333333344444444";

class Fader : public CmObject {
    DECLARE_CLASS(Fader, CmObject)
};
IMPLEMENT_CLASS_V(Fader, CmObject, 2)

class AbstractFader : public Fader {
    DECLARE_ABSTRACT_CLASS(AbstractFader, Fader)
};
IMPLEMENT_ABSTRACT_CLASS(AbstractFader, Fader)

/** A class that nobody registered. */
struct HiddenFader : Fader {
    using Fader::isA;
    const char* isA() const override { return "HiddenFader"; }
};

/** A component that stores itself, of this or, without `ours`, of another module. */
class Component final : public FObject, public IPersistent {
public:
    Component(const FUID& classID, bool ours, int32_t answer = kResultOk) : id(classID), ours(ours), answer(answer) {}
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override {
        if (answerInterface<IPersistent>(this, iid, obj))
            return kResultOk;
        return ours || !FUID::same(iid, FObject::iid) ? FObject::queryInterface(iid, obj) : noInterface(obj);
    }
    int32_t getClassID(char* cid) override {
        id.toTUID(cid);
        return answer;
    }
    int32_t saveAttributes(IAttributes*) override { return kResultOk; }
    int32_t loadAttributes(IAttributes*) override { return kResultOk; }

private:
    FUID id;
    bool ours;
    int32_t answer;
};

ClassFactory& factory() {
    return *ClassFactory::instance(true);
}

std::string classOf(FUnknown* object) {
    const OPtr<FUnknown> owner(object);
    const CmObject* common = commonObject(object);
    return common ? common->isA() : "";
}
}  // namespace

TEST(ClassFactory, CreatesByNameOrDigits) {
    const MetaClass record("FaderById", Fader::__fCreate, kID, &Fader::__fClass);
    for (const char* text : {"Fader", "FaderById", kDigits})
        EXPECT_EQ(classOf(factory().createObjectByName(text)), "Fader") << text;
    for (const char* text : {"11111111222222223333333344444445", "00000000000000000000000000000000",
                             "1111111122222222333333334444444", "AbstractFader", "fader", ""})
        EXPECT_EQ(factory().createObjectByName(text), nullptr) << text;
    EXPECT_EQ(factory().createObjectByName(nullptr), nullptr);
    EXPECT_EQ(factory().getMetaClassByName("Fader")->version, 2);
    EXPECT_TRUE(!factory().createObjectByID(FUID()) && !factory().createObjectByID(nullptr));
}

TEST(ClassFactory, FindsTheOlderOfTwoAndForgetsTheRightOne) {
    const int32_t before = factory().countClasses();
    {
        MetaClass older("Twin", nullptr, kID, &Fader::__fClass);
        {
            MetaClass younger("Twin", Fader::__fCreate, kID, nullptr);
            EXPECT_EQ(factory().countClasses(), before + 2);
            EXPECT_EQ(factory().createObjectByName("Twin"), nullptr) << "the older one can't create";
        }
        EXPECT_TRUE(factory().getMetaClassByName("Twin") == &older && factory().getMetaClassByID(kID) == &older);
    }
    EXPECT_TRUE(!factory().getMetaClassByName("Twin") && !factory().getMetaClassByID(kID));
    EXPECT_EQ(factory().countClasses(), before);
}

TEST(ClassFactory, RegistersOnlyWhatCreatesOrDerives) {
    const MetaClass loose("Loose", nullptr, kID, nullptr);
    EXPECT_EQ(factory().getMetaClassByName("Loose"), nullptr);
    MetaClass nameless(nullptr, Fader::__fCreate, kID, nullptr);
    const MetaClass derived("Derived", nullptr, nullptr, &nameless);
    EXPECT_TRUE(derived.isTypeOf("Derived") && !derived.isTypeOf(nullptr)) << "a base without a name matches nothing";
}

TEST(ClassFactory, StoresARenamedClassUnderItsOldName) {
    MetaClass current("NewFader", Fader::__fCreate, kID, &Fader::__fClass, 3);
    const MetaClass renamed(&current, "OldFader");
    EXPECT_STREQ(current.persistentName, "OldFader");
    for (const char* name : {"OldFader", "NewFader"})
        EXPECT_EQ(classOf(factory().createObjectByName(name)), "Fader");
    EXPECT_EQ(factory().getMetaClassByID(kID), &current);
}

TEST(ClassFactory, GivesTheTextThatStandsForAClassInStorage) {
    const FUID unknownID(9, 9, 9, 9);
    const MetaClass byID("ComponentById", Fader::__fCreate, kID, nullptr);
    const MetaClass oldName(&Fader::__fClass, "FaderOfOld");
    const OPtr<FObject> fader(new Fader), hidden(new HiddenFader), plain(new FObject);
    const OPtr<FObject> ours(new Component(kID, true)), foreign(new Component(kID, false));
    const OPtr<FObject> unregistered(new Component(unknownID, false)), silent(new Component(kID, false, kResultFalse));
    // a text of null: there is none, and the target is left alone
    const std::tuple<const char*, FUnknown*, const char*, const char*> rows[] = {
        {"registered",          fader,        "Fader",                            "FaderOfOld"},
        {"not registered",      hidden,       "HiddenFader",                      nullptr     },
        {"no record at all",    plain,        "FObject",                          nullptr     },
        {"stores itself",       ours,         "FObject",                          kDigits     },
        {"of another module",   foreign,      kDigits,                            kDigits     },
        {"of an unknown class", unregistered, "00000009000000090000000900000009", nullptr     },
        {"won't say its class", silent,       nullptr,                            nullptr     },
        {"null",                nullptr,      nullptr,                            nullptr     },
    };
    for (const auto& [name, object, current, persistentText] : rows) {
        SCOPED_TRACE(name);
        for (const bool persistent : {false, true}) {
            const char* expected = persistent ? persistentText : current;
            const OPtr<StringObject> text(new StringObject("untouched"));
            EXPECT_EQ(factory().getStorageID(object, *text, persistent), expected != nullptr);
            EXPECT_STREQ(text->text8(), expected ? expected : "untouched");
        }
    }
    for (const OPtr<FObject>* each : {&fader, &hidden, &plain, &ours, &foreign, &unregistered, &silent})
        EXPECT_EQ(((*each)->addRef(), (*each)->release()), 1u);
    Fader::__fClass.persistentName = "Fader";
}
