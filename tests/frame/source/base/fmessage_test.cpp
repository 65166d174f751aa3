#include "base/fmessage.h"
#include "base/source/hooks.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fmstream.h"
#include "storage/fsimplearchive.h"
#include "tests/support/uncounted.h"
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace Tessarine;

namespace {
using Log = std::vector<std::string>;

/** Counts its living objects. */
class Probe : public CmObject {
public:
    Probe() { ++living; }
    ~Probe() override { --living; }
    inline static int32_t living = 0;
};

class Receiver : public CmObject {
public:
    explicit Receiver(std::string name = "") : name(std::move(name)) {}
    int32_t notify(FMessage* message) override {
        log.push_back(name + message->getMessageID());
        if (then)
            then(message);
        return 5;
    }
    std::string name;
    std::function<void(FMessage*)> then;
    inline static Log log;
};

/** Takes messages through the component model, and isn't known to the framework at all. */
struct ForeignReceiver final : Uncounted<IMessageReceiver> {
    int32_t notifyMessage(IMessage* message) override {
        Receiver::log.push_back(std::string("foreign ") + message->getMessageID());
        return 1;
    }
};

/** A message as another module makes it: all its faces, but not our handshake. */
class ForeignMessage final : public FMessage {
public:
    using FMessage::FMessage;
    int32_t queryInterface(const char* iid, void** obj) override {
        return FUID::same(iid, FObject::iid) ? noInterface(obj) : FMessage::queryInterface(iid, obj);
    }
};

class MessengerTest : public testing::Test {
protected:
    MessengerTest() {
        Receiver::log.clear();
        wakes = 0;
        gRunLoopHooks.wakeUpdates = [] { ++wakes; };
    }
    ~MessengerTest() override { gRunLoopHooks = hooksBefore; }

    /** Posts, with an object that must not outlive the message. */
    void post(CmObject* to, const char* id, bool replace = false, int32_t delay = 0) {
        auto* message = new FMessage(id);
        message->add("probe", new Probe, true);
        messenger.postMessage(to, message, replace, delay);
    }
    /** What was received since the last time, after another delivery. */
    Log delivered() {
        messenger.deliverMessages();
        return std::exchange(Receiver::log, {});
    }

    FMessenger messenger;
    Receiver a{"a "}, b{"b "};
    RunLoopHooks hooksBefore = gRunLoopHooks;
    inline static std::atomic<int32_t> wakes;
};
}  // namespace

TEST(Message, KeepsValuesByKey) {
    FMessage message("Gain");
    int32_t number = 9;
    float single = 9;
    String text("before");
    EXPECT_TRUE(message.hasMessageID("Gain") && !message.isType("gain") && !message.remove("n"));
    EXPECT_FALSE(message.getInt("n", number) == kResultOk || message.getString("n", text));
    EXPECT_TRUE(number == 9 && text == "before") << "a miss leaves its target alone";
    message.addInt("n", 1);
    message.addInt("n", -3);
    message.addFloat1("y", 1.5f);
    message.addString("t", ConstString("also"));
    message.addData("d", "abc", 3);
    const void* bytes = nullptr;
    uint32_t size = 0;
    EXPECT_TRUE(message.getInt("n", number) == kResultOk && number == -3);
    EXPECT_TRUE(message.getFloat("y", single) == kResultOk && single == 1.5f);
    EXPECT_TRUE(message.getString("t", text) && text == "also");
    EXPECT_TRUE(message.getData("d", bytes, size) && std::string(static_cast<const char*>(bytes), size) == "abc");
    EXPECT_TRUE(message.remove("n") && !message.contains("n"));
}

TEST(Message, HoldsObjectsAsItWasTold) {
    auto* probe = new Probe;
    {
        FMessage message;
        message.add("lent", probe, false);
        message.addUnknown("shared", probe);
        probe->addRef();
        message.add("given", probe, true);
        EXPECT_EQ(referencesOf(probe), 3u);
        const OPtr<CmObject> copy(message.newCopy());
        message.add("given", nullptr, true);
        EXPECT_EQ(static_cast<FMessage*>(copy.get())->get("given"), probe) << "a copy keeps its own";
    }
    EXPECT_EQ(referencesOf(probe), 1u);
    probe->release();
    EXPECT_EQ(Probe::living, 0);
}

TEST(Message, IsReadWholeOrNotAtAll) {
    FMemoryStream stream;
    FSimpleArchive writer(&stream, true);
    FMessage message("Gain");
    message.addInt("n", -3);
    message.addString8("s", "text");
    ASSERT_TRUE(message.externalize(writer));
    const int64_t size = stream.getSize();
    for (int64_t length = 0; length <= size; ++length) {
        SCOPED_TRACE(length);
        FMemoryStream cut(stream.getData(), static_cast<int32_t>(length));
        FSimpleArchive reader(&cut, false);
        FMessage read("before");
        read.addInt("n", 5);
        int32_t number = 0;
        EXPECT_EQ(read.internalize(reader), length == size);
        EXPECT_TRUE(read.isType(length == size ? "Gain" : "before"));
        EXPECT_TRUE(read.getInt("n", number) == kResultOk && number == (length == size ? -3 : 5));
        EXPECT_EQ(read.contains("s"), length == size);
    }
}

TEST_F(MessengerTest, DeliversInTheOrderOfPosting) {
    for (const char* id : {"1", "2"}) {
        post(&a, id);
        post(&b, id);
    }
    EXPECT_GE(wakes, 1) << "posts want to be served at the next turn of the loop";
    EXPECT_EQ(delivered(), (Log{"a 1", "b 1", "a 2", "b 2"}));
    post(nullptr, "to nobody");
    EXPECT_EQ(Probe::living, 0);
}

TEST_F(MessengerTest, ReplacingKeepsTheOlder) {
    post(&a, "x");
    post(&b, "x");
    for (const char* id : {"x", "X"})
        post(&a, id, true);
    EXPECT_EQ(Probe::living, 3);
    EXPECT_EQ(delivered(), (Log{"a x", "b x", "a X"}));
    post(&a, "x", true);
    EXPECT_EQ(delivered(), (Log{"a x"})) << "only waiting ones count";
}

TEST_F(MessengerTest, DelayCountsDeliveries) {
    for (const int32_t delay : {2, 1, 0, -1})
        post(&a, std::to_string(delay).c_str(), false, delay);
    EXPECT_EQ(delivered(), (Log{"a 0", "a -1"}));
    wakes = 0;
    EXPECT_EQ(delivered(), (Log{"a 1"}));
    EXPECT_EQ(wakes, 1) << "the last one waits for its turn";
    EXPECT_EQ(delivered(), (Log{"a 2"}));
}

TEST_F(MessengerTest, LockedItLetsPostsPileUp) {
    messenger.lockMessageDeliverance(true);
    post(&a, "1");
    EXPECT_TRUE(delivered().empty() && messenger.areMessagesPosted(&a) && messenger.messagesPosted(&a, "1"));
    EXPECT_FALSE(messenger.messagesPosted(&a, "y") || messenger.areMessagesPosted(&b));
    wakes = 0;
    messenger.lockMessageDeliverance(false);
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(delivered(), (Log{"a 1"}));
}

TEST_F(MessengerTest, PostsFromANotificationWaitUnlessItDeliversItself) {
    a.then = [this](FMessage* message) {
        if (!message->isType("start"))
            return;
        messenger.deliverMessages();  // nothing new: it isn't looked into
        Receiver::log.push_back("again");
        post(&a, "inner");
        messenger.deliverMessages();  // something new: the outer rest goes first
        post(&a, "next");
    };
    post(&a, "start");
    post(&b, "rest");
    EXPECT_EQ(delivered(), (Log{"a start", "again", "b rest", "a inner"}));
    EXPECT_EQ(delivered(), (Log{"a next"}));
}

TEST_F(MessengerTest, KilledMessagesNeverArrive) {
    FMessage like("x");
    const std::tuple<const char*, std::function<void()>, Log> rows[] = {
        {"all of one receiver", [this] { messenger.killMessages(&a); },             {"b x"}                     },
        {"those alike",         [&] { messenger.killMessages(&a, &like); },         {"b x", "a y"}              },
        {"of somebody else",    [&] { messenger.killMessages(&messenger, &like); }, {"a x", "b x", "a y", "a x"}},
        {"everything",          [this] { messenger.clear(); },                      {}                          },
    };
    for (const auto& [name, kill, arriving] : rows) {
        for (const bool whileDelivered : {false, true}) {
            SCOPED_TRACE(name);
            Receiver first("first ");
            first.then = [&](FMessage*) { kill(); };
            if (whileDelivered)
                post(&first, "");
            post(&a, "x");
            post(&b, "x");
            post(&a, "y");
            post(&a, "x");
            if (!whileDelivered)
                kill();
            Log arrived = delivered();
            std::erase(arrived, "first ");
            EXPECT_EQ(arrived, arriving);
            EXPECT_EQ(Probe::living, 0);
        }
    }
}

TEST_F(MessengerTest, NamesLeadToTheirObjects) {
    FMessage now("now");
    EXPECT_EQ(messenger.sendMessage(&b, &now), 5);
    EXPECT_TRUE(messenger.registerName("mixer", &a));
    EXPECT_FALSE(messenger.registerName("mixer", &b)) << "names are unique";
    EXPECT_FALSE(messenger.registerName(nullptr, &a) || messenger.registerName("nobody", nullptr));
    EXPECT_EQ(messenger.sendMessage("mixer", &now, false), 5);
    EXPECT_EQ(messenger.sendMessage("Mixer", &now, false), 0);
    messenger.postMessage("mixer", new FMessage("x"), false);
    messenger.postMessage("other", new FMessage("y"), false);
    EXPECT_EQ(delivered(), (Log{"b now", "a now", "a x"}));
    messenger.postMessage("mixer", new FMessage("x"), false);
    EXPECT_TRUE(messenger.unregisterName("mixer") && !messenger.unregisterName("mixer"));
    EXPECT_TRUE(delivered().empty()) << "its messages went with the name";
}

TEST_F(MessengerTest, ServesTheComponentModel) {
    const OPtr<FMessage> ours(new FMessage("ours"));
    const OPtr<FMessage> foreign(new ForeignMessage("foreign"));
    ForeignReceiver receiver;
    const FUnknownPtr<IMessenger> face(static_cast<FObject*>(&messenger));
    EXPECT_EQ(face->postMessage(&receiver, ours), kResultOk);
    EXPECT_EQ(face->postMessage(&receiver, foreign), kResultFalse);
    EXPECT_EQ(face->postMessage(nullptr, ours), kResultFalse);
    EXPECT_TRUE(face->wasMessagePosted(&receiver));
    EXPECT_EQ(delivered(), (Log{"foreign ours"}));
    face->postMessage(&receiver, ours);
    EXPECT_EQ(face->killMessages(&receiver, foreign), kResultFalse);
    EXPECT_EQ(face->killMessages(&receiver, ours), kResultOk);
    EXPECT_TRUE(delivered().empty() && !face->wasMessagePosted(&receiver));
    EXPECT_TRUE(receiver.references == 0 && referencesOf(ours) == 1 && referencesOf(foreign) == 1);
}

TEST_F(MessengerTest, APostToWhoTakesNoneIsLost) {
    FObject plain;
    EXPECT_EQ(FPostedMessage(new FMessage("x"), static_cast<IDependent*>(&plain), 0).send(), -1);
    EXPECT_EQ(FPostedMessage(new FMessage("x"), static_cast<IDependent*>(&a), 0).send(), 5);
}

TEST_F(MessengerTest, AnyThreadMayPost) {
    constexpr int32_t kThreads = 3, kPosts = 2000;
    int32_t received = 0;
    a.then = [&, here = std::this_thread::get_id()](FMessage*) {
        received += std::this_thread::get_id() == here;
        Receiver::log.clear();
    };
    std::atomic<int32_t> running{kThreads};
    const auto work = [&] {
        for (int32_t post = 0; post < kPosts; ++post)
            messenger.postMessage(&a, new FMessage("x"), false, post % 2);
        messenger.postMessage(&b, new FMessage("killed"));
        messenger.killMessages(&b);
        --running;
    };
    const std::jthread threads[kThreads] = {std::jthread(work), std::jthread(work), std::jthread(work)};
    while (running > 0)
        messenger.deliverMessages();
    messenger.deliverMessages();
    messenger.deliverMessages();
    EXPECT_EQ(received, kThreads * kPosts);
    EXPECT_FALSE(messenger.areMessagesPosted(&b));
}

TEST_F(MessengerTest, GroupsHearWhatIsSentAndPostedToThem) {
    const int32_t group = messenger.createNotifyGroup(), other = messenger.createNotifyGroup();
    EXPECT_FALSE(messenger.addToNotifyGroup(-1, &a));
    EXPECT_TRUE(messenger.addToNotifyGroup(group, &a) && messenger.addToNotifyGroup(group, &b));
    FMessage now("now");
    EXPECT_EQ(messenger.sendMessage(group, &now), 5);
    EXPECT_EQ(messenger.sendMessage(other, &now), 0);
    messenger.postMessage(group, new FMessage("later"));
    EXPECT_EQ(delivered(), (Log{"a now", "b now", "a later", "b later"}));
    a.then = [&](FMessage*) { messenger.removeFromNotifyGroup(group, &b); };
    messenger.sendMessage(group, &now);
    EXPECT_EQ(delivered(), (Log{"a now"})) << "b left before its turn";
    EXPECT_FALSE(messenger.removeFromNotifyGroup(group, &b));
    EXPECT_TRUE(messenger.deleteNotifyGroup(group) && !messenger.deleteNotifyGroup(group));
}
