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
struct OtherHandler : Uncounted<IUpdateHandler> {
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
    EXPECT_TRUE(probe->addRef() == 2 && probe->release() == 1 && probe->release() == 0);
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
    EXPECT_EQ(copy->release(), 0u);
    EXPECT_TRUE(probe->release() == 1 && probe->release() == 0);
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
    EXPECT_TRUE(object->isA("AbstractProbe") && !object->isA("Probe") && !object->isA(nullptr));
    EXPECT_TRUE(object->isTypeOf("AbstractProbe", false) && !object->isTypeOf("Probe", false));
    EXPECT_TRUE(object->isTypeOf("Probe", true) && object->isTypeOf("FObject", true) && !object->isTypeOf("X", true));
    EXPECT_TRUE(object->getClass()->isTypeOf("Probe") && !object->getClass()->isTypeOf("FObject"));
    EXPECT_TRUE(classCast<Probe>(static_cast<CmObject*>(object.get())));
}

TEST(Object, AsksWhateverHandlerIsInstalledAndIsDoneAtOnceWithoutOne) {
    ASSERT_EQ(FObject::gUpdateHandler, nullptr);
    const OPtr<Probe> probe(new Probe);
    OtherHandler other;
    for (IUpdateHandler* handler : std::initializer_list<IUpdateHandler*>{&other, nullptr}) {
        FObject::gUpdateHandler = handler;
        probe->addDependent(probe);
        probe->changed();
        probe->deferUpdate(1000);
        probe->removeDependent(probe);
    }
    EXPECT_EQ(other.calls, "atdr");
    EXPECT_EQ(probe->done, (std::vector<int32_t>{1, 1000}));
    EXPECT_TRUE(probe->heard.empty());
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
    EXPECT_TRUE(foreign.references == 0 && referencesOf(changed) == 1 && referencesOf(plain) == 1);
    EXPECT_TRUE(commonObject(changed) == changed.get() && !commonObject(plain) && !frameworkObject(nullptr));
}
