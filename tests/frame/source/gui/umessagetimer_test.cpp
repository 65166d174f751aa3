#include "gui/umessagetimer.h"
#include "base/utimer.h"
#include "collect/cmlinkedlist.h"
#include "tests/frame/source/gui/controllerfixture.h"

using namespace Tessarine;

namespace {
class MessageTimer : public ControllerTest {
protected:
    MessageTimer() : application(new UPluginApplication("message timer test")) {}
    ~MessageTimer() override { application->release(); }

    static void idleFor(uint32_t ms) {
        for (const uint32_t start = SystemTime::getTicks(); SystemTime::getTicks() - start < ms;)
            gController->onIdle(false);
    }

    UApplication* application;
    int32_t heard = 0;
    Listener listener{[this](FMessage* message) { heard += message->isType("Later"); }};
};
}  // namespace

TEST_F(MessageTimer, SendsOnceWhenItsTimeHasCome) {
    for (const int16_t ownership : {CmContainer::kBorrows, CmContainer::kTakesOver, CmContainer::kShares}) {
        heard = 0;
        CmLinkedList holder;
        holder._ownsObjects = ownership;
        new UMessageTimer(&listener, 250, new FMessage("Later"), &holder);
        EXPECT_EQ(holder.total(), 1);
        idleFor(10);
        EXPECT_EQ(heard, 0);
        idleFor(300);
        EXPECT_EQ(heard, 1);
        EXPECT_TRUE(holder.isEmpty()) << ownership;
        EXPECT_FALSE(gController->wantsIdle());
    }
}

TEST_F(MessageTimer, CanBeHurriedOrGivenUp) {
    auto* hurried = new UMessageTimer(&listener, 10'000, new FMessage("Later"), nullptr);
    hurried->deliverNow();
    EXPECT_EQ(heard, 1);
    CmLinkedList holder;
    holder._ownsObjects = CmContainer::kTakesOver;
    new UMessageTimer(&listener, 30, new FMessage("Later"), &holder);
    holder.removeAll();
    idleFor(60);
    EXPECT_EQ(heard, 1);
    EXPECT_FALSE(gController->wantsIdle());
}
