#include "pluginterfaces/base/smartpointer.h"
#include "countedobject.h"
#include "pluginterfaces/base/ibstream.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>
#include <utility>

using namespace Tessarine;

namespace {
using Object = CountedObject;

/** Hands out one object as whatever is asked for, once; afterwards it fails and leaves rubbish behind. */
class Host final : public Uncounted<IHostClasses> {
public:
    explicit Host(FUnknown* object) : offered(object) {}
    int32_t createClassInstance(const char* iid, void** obj) override {
        asked = iid;
        *obj = offered ? offered : static_cast<FUnknown*>(this);
        return std::exchange(offered, nullptr) ? kResultOk : kResultFalse;
    }
    FUID asked;

private:
    FUnknown* offered;
};

/** Looks at the count; the test has one reference and gives another away. */
using Use = void (*)(Object*);

void expectCount(Object* object, int32_t count) {
    EXPECT_EQ(object->count, count);
}
}  // namespace

TEST(SmartPointers, CountEachReferenceOnce) {
    const std::tuple<const char*, Use, int32_t> rows[] = {
        {"takes over",
         [](Object* object) {
             OPtr<Object> owner(object);
             owner = object;
             expectCount(object, 2);
         }, 1},
        {"a copy of an owner shares",
         [](Object* object) {
             const OPtr<Object> owner(object);
             const OPtr<Object> copy = owner;
             const IPtr<Object> third = copy;
             expectCount(object, 4);
         }, 1},
        {"moving counts nothing",
         [](Object* object) {
             OPtr<Object> owner(object);
             OPtr<Object> next = std::move(owner);
             const IPtr<Object> last = std::move(next);
             EXPECT_TRUE(!owner.get() && !next.get());
             expectCount(object, 2);
         }, 1},
        {"the same once more",
         [](Object* object) {
             IPtr<Object> shared = object;
             shared = object;
             shared = *&shared;
             expectCount(object, 3);
             shared = nullptr;
             expectCount(object, 2);
         }, 2},
        {"a query",
         [](Object* object) {
             FUnknownPtr<FUnknown> face(object);
             face = object;
             expectCount(object, 3);
             EXPECT_FALSE(FUnknownPtr<IBStream>(object));
         }, 2},
        {"from a host",
         [](Object* object) {
             Host host(object);
             const FInstancePtr<FUnknown> made(&host);
             EXPECT_EQ(host.asked, FUnknown::iid);
             expectCount(object, 2);
             EXPECT_FALSE(FInstancePtr<FUnknown>(&host));
         }, 1},
    };
    for (const auto& [name, use, after] : rows) {
        SCOPED_TRACE(name);
        auto* object = new Object;
        object->addRef();
        use(object);
        EXPECT_EQ(object->count, after);
        while (object->release() > 0) {}
        EXPECT_EQ(Object::living, 0);
    }
}

/** An object that clears the pointer to it while it dies. */
TEST(SmartPointers, StandReassignmentFromADestructor) {
    struct Clearing : Object {
        explicit Clearing(IPtr<Object>& holder) : holder(holder) {}
        ~Clearing() override { holder = nullptr; }
        IPtr<Object>& holder;
    };
    IPtr<Object> holder;
    holder = OPtr<Object>(new Clearing(holder));
    auto* next = new Object;
    holder = next;
    EXPECT_FALSE(holder);
    EXPECT_EQ(next->count, 1);
    next->release();
    EXPECT_EQ(Object::living, 0);
}
