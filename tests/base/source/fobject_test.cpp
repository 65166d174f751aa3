#include "base/source/fobject.h"
#include "base/source/cmobject.h"
#include "base/source/updatehandler.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace Tessarine;

namespace {
class Probe : public CmObject {
    DECLARE_CLASS(Probe, CmObject)
    DECLARE_NEWCOPY(Probe)

    Probe() { ++living; }
    Probe(const Probe& other) : CmObject(other) { ++living; }
    Probe& operator=(const Probe&) = default;
    ~Probe() override {
        countInDestructor = refCount;
        addRef();  // as a farewell to dependents does
        release();
        --living;
    }
    void updateDone(int32_t message) override { done.push_back(message); }
    using CmObject::update;
    void update(CmObject* changed, int32_t message) override { heard.emplace_back(changed, message); }

    std::vector<int32_t> done;
    std::vector<std::pair<CmObject*, int32_t>> heard;
    inline static int32_t living = 0, countInDestructor = 0;
};
IMPLEMENT_CLASS(Probe, CmObject)

class AbstractProbe : public Probe {
    DECLARE_ABSTRACT_CLASS(AbstractProbe, Probe)
};
IMPLEMENT_ABSTRACT_CLASS(AbstractProbe, Probe)

/** Somebody else's, who only writes down what it is asked for. */
class OtherHandler : public Uncounted<IUpdateHandler> {
public:
    int32_t addDependent(FUnknown*, IDependent*) override { return note('a'); }
    int32_t removeDependent(FUnknown*, IDependent*) override { return note('r'); }
    int32_t triggerUpdates(FUnknown*, int32_t) override { return note('t'); }
    int32_t deferUpdates(FUnknown*, int32_t) override { return note('d'); }
    int32_t note(char call) {
        calls += call;
        return kResultOk;
    }
    std::string calls;
};

/** As another module hands it out: its own handshake isn't ours. */
using Foreign = Uncounted<FUnknown>;
}  // namespace

TEST(Object, DiesOnceWithItsLastReference) {
    auto* probe = new Probe;
    EXPECT_EQ(probe->addRef(), 2u);
    EXPECT_EQ(probe->release(), 1u);
    EXPECT_EQ(probe->release(), 0u);
    EXPECT_EQ(Probe::countInDestructor, -1000);
    EXPECT_EQ(Probe::living, 0) << "the pair in the destructor must not delete again";
}

TEST(Object, IsCountedOnAnyThread) {
    auto* probe = new Probe;
    std::vector<std::thread> threads;
    for (int32_t i = 0; i < 3; ++i)
        threads.emplace_back([object = IPtr<Probe>(probe)] {
            for (int32_t round = 0; round < 10'000; ++round)
                IPtr<Probe>(object.get());
        });
    probe->release();  // who comes last deletes it
    for (std::thread& each : threads)
        each.join();
    threads.clear();
    EXPECT_EQ(Probe::living, 0);
}

TEST(Object, ACopyCountsForItself) {
    auto* probe = new Probe;
    probe->addRef();
    CmObject* copy = probe->newCopy();
    EXPECT_EQ(referencesOf(copy), 1u);
    *static_cast<Probe*>(copy) = *probe;
    EXPECT_EQ(referencesOf(copy), 1u);
    EXPECT_EQ(copy->release(), 0u);
    probe->release();
    probe->release();
    EXPECT_EQ(Probe::living, 0);
    EXPECT_EQ(OPtr<CmObject>(new CmObject)->newCopy(), nullptr);
}

TEST(Object, AnswersItsFacesWithOneReference) {
    const OPtr<Probe> probe(new Probe);
    EXPECT_TRUE(FObject::iid.isValid()) << "two copies of the framework would take each other for one";
    for (const FUID* iid : {&FUnknown::iid, &IDependent::iid, &FObject::iid}) {
        void* face = nullptr;
        ASSERT_EQ(probe->queryInterface(*iid, &face), kResultOk);
        EXPECT_EQ(face, static_cast<FObject*>(probe.get()));
        EXPECT_EQ(probe->release(), 1u);
    }
    void* face = probe.get();
    EXPECT_EQ(probe->queryInterface(IUpdateHandler::iid, &face), kNoInterface);
    EXPECT_EQ(face, nullptr);
    EXPECT_EQ(referencesOf(probe), 1u);
    const FUID sameBytes(FUnknown::iid.data);  // asked for by another module
    EXPECT_EQ(probe->queryInterface(sameBytes, &face), kResultOk);
    probe->release();
}

TEST(Object, KnowsItsChainByName) {
    const OPtr<AbstractProbe> object(new AbstractProbe);
    const struct {
        const char* name;
        bool itself, anyBase;
    } rows[] = {
        {"AbstractProbe", true,  true },
        {"Probe",         false, true },
        {"FObject",       false, true },
        {"FUnknown",      false, false},
        {nullptr,         false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name ? row.name : "null");
        EXPECT_EQ(object->isA(row.name), row.itself);
        EXPECT_EQ(object->isTypeOf(row.name, false), row.itself);
        EXPECT_EQ(object->isTypeOf(row.name, true), row.anyBase);
        EXPECT_EQ(object->getClass()->isTypeOf(row.name), row.anyBase && std::string(row.name) != "FObject");
    }
    EXPECT_TRUE(classCast<Probe>(static_cast<CmObject*>(object.get())));
}

TEST(Object, IsDoneAtOnceWithoutAHandler) {
    ASSERT_EQ(FObject::gUpdateHandler, nullptr);
    const OPtr<Probe> probe(new Probe);
    probe->addDependent(probe);
    probe->changed();
    probe->deferUpdate(1000);
    probe->changed(kDestroyed);
    probe->removeDependent(probe);
    EXPECT_EQ(probe->done, (std::vector<int32_t>{1, 1000, 2}));
    EXPECT_TRUE(probe->heard.empty());
}

TEST(Object, AsksWhateverHandlerIsInstalled) {
    OtherHandler other;
    FObject::gUpdateHandler = &other;
    const OPtr<Probe> probe(new Probe);
    probe->addDependent(probe);
    probe->changed();
    probe->deferUpdate();
    probe->removeDependent(probe);
    FObject::gUpdateHandler = nullptr;
    EXPECT_EQ(other.calls, "atdr");
    EXPECT_TRUE(probe->done.empty());
}

TEST(Object, HearsOnlyOfObjectsOfItsOwnCopy) {
    const OPtr<Probe> listener(new Probe), changed(new Probe);
    Foreign foreign;
    const OPtr<FObject> plain(new FObject);
    IDependent* dependent = listener.get();
    for (FUnknown* each : std::initializer_list<FUnknown*>{&foreign, plain.get(), changed.get()})
        dependent->update(each, 7);
    dependent->update(nullptr, 7);
    EXPECT_EQ(listener->heard, (std::vector<std::pair<CmObject*, int32_t>>{
                                   {changed.get(), 7}
    }));
    EXPECT_EQ(foreign.references, 0);
    EXPECT_EQ(referencesOf(changed), 1u);
    EXPECT_EQ(referencesOf(plain), 1u);
    EXPECT_EQ(commonObject(changed), changed.get());
    EXPECT_EQ(commonObject(plain), nullptr);
    EXPECT_EQ(frameworkObject(&foreign), nullptr);
    EXPECT_EQ(frameworkObject(nullptr), nullptr);
}
