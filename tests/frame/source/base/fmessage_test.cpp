#include "base/fmessage.h"
#include "base/source/hooks.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fmstream.h"
#include "storage/fsimplearchive.h"
#include "tests/support/uncounted.h"
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <set>
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
    ~Probe() override {
        --living;
        if (then)
            then();
    }
    std::function<void()> then;
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
class ForeignReceiver final : public Uncounted<IMessageReceiver> {
public:
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
    /** What was received since the last time, after so many deliveries. */
    Log delivered(int32_t times = 1) {
        for (; times > 0; --times)
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
    double real = 9;
    float single = 9;
    String text("before");
    EXPECT_TRUE(message.hasMessageID("Gain") && !message.isType("gain"));
    EXPECT_FALSE(message.contains("n") || message.remove("n"));
    EXPECT_FALSE(message.getInt("n", number) == kResultOk || message.getFloat("n", single) == kResultOk);
    EXPECT_FALSE(message.getFloat("n", real) || message.getString("n", text));
    EXPECT_TRUE(number == 9 && real == 9 && single == 9 && text == "before") << "a miss leaves its target alone";
    message.addInt("n", 1);
    EXPECT_EQ(message.addInt("n", -3), kResultOk);
    message.addFloat1("y", 1.5f);
    message.addString("t", ConstString("also"));
    message.addData("d", "abc", 3);
    const void* bytes = nullptr;
    uint32_t size = 0;
    EXPECT_TRUE(message.getInt("n", number) == kResultOk && number == -3);
    EXPECT_TRUE(message.getFloat("y", single) == kResultOk && single == 1.5f);
    EXPECT_TRUE(message.getString("t", text) && text == "also");
    ASSERT_TRUE(message.getData("d", bytes, size) && size == 3);
    EXPECT_EQ(std::memcmp(bytes, "abc", 3), 0);
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
        EXPECT_FALSE(message.contains("given"));
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
        FMemoryStream cut;
        cut.writeRaw(stream.getData(), length);
        cut.seek(0, kFromStart);
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
    for (const char* id : {"1", "2", "3"}) {
        post(&a, id);
        post(&b, id);
    }
    EXPECT_GE(wakes, 1) << "posts want to be served at the next turn of the loop";
    EXPECT_EQ(delivered(), (Log{"a 1", "b 1", "a 2", "b 2", "a 3", "b 3"}));
    messenger.postMessage(&a, nullptr);
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
    post(&a, "x");
    EXPECT_EQ(delivered(), (Log{"a x", "a x"})) << "only waiting ones count";
}

TEST_F(MessengerTest, DelayCountsDeliveries) {
    post(&a, "2", false, 2);
    post(&a, "1", false, 1);
    post(&a, "0");
    post(&a, "-1", false, -1);
    EXPECT_EQ(delivered(), (Log{"a 0", "a -1"}));
    wakes = 0;
    EXPECT_EQ(delivered(), (Log{"a 1"}));
    EXPECT_EQ(wakes, 1) << "the last one waits for its turn";
    EXPECT_EQ(delivered(), (Log{"a 2"}));
    EXPECT_EQ(wakes, 1);
}

TEST_F(MessengerTest, LockedItLetsPostsPileUp) {
    EXPECT_FALSE(messenger.lockMessageDeliverance(true));
    post(&a, "1");
    EXPECT_TRUE(delivered(3).empty());
    EXPECT_TRUE(messenger.areMessagesPosted(&a));
    wakes = 0;
    EXPECT_TRUE(messenger.lockMessageDeliverance(false));
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(delivered(), (Log{"a 1"}));
}

TEST_F(MessengerTest, PostsFromANotificationWaitUnlessItDeliversItself) {
    a.then = [this](FMessage* message) {
        if (message->isType("start"))
            post(&a, "next");
    };
    post(&a, "start");
    post(&b, "rest");
    EXPECT_EQ(delivered(), (Log{"a start", "b rest"}));
    EXPECT_EQ(delivered(), (Log{"a next"}));

    a.then = [this](FMessage* message) {
        if (!message->isType("start"))
            return;
        messenger.deliverMessages();  // nothing new: it isn't looked into
        Receiver::log.push_back("again");
        post(&a, "inner");
        messenger.deliverMessages();  // something new: the outer rest goes first
    };
    post(&a, "start");
    post(&b, "rest");
    EXPECT_EQ(delivered(), (Log{"a start", "again", "b rest", "a inner"}));
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
            SCOPED_TRACE(std::string(name) + (whileDelivered ? ", while they are delivered" : ""));
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

/** What a dropped message held may post and kill in its destructor. */
TEST_F(MessengerTest, DroppedMessagesMayComeBackToIt) {
    for (const bool all : {false, true}) {
        for (int32_t i = 0; i < 3; ++i) {
            auto* probe = new Probe;
            probe->then = [this] {
                messenger.killMessages(&a);
                post(&b, "farewell", true);
            };
            auto* message = new FMessage("x");
            message->add("probe", probe, true);
            messenger.postMessage(&a, message);
        }
        all ? messenger.clear() : messenger.killMessages(&a);
        EXPECT_FALSE(messenger.areMessagesPosted(&a));
        EXPECT_EQ(delivered(), (Log{"b farewell"}));
    }
    EXPECT_EQ(Probe::living, 0);
}

TEST_F(MessengerTest, TellsWhetherAMessageWaits) {
    post(&a, "x", false, 1);
    const auto looked = [this] {
        return std::vector<bool>{messenger.areMessagesPosted(&a), messenger.messagesPosted(&a, "x"),
                                 messenger.messagesPosted(&a, "y"), messenger.areMessagesPosted(&b)};
    };
    EXPECT_EQ(looked(), (std::vector<bool>{true, true, false, false}));
    Receiver first;
    first.then = [&](FMessage*) { EXPECT_EQ(looked(), (std::vector<bool>{true, true, false, true})); };
    post(&first, "");
    post(&b, "later in this delivery");
    messenger.deliverMessages();
    EXPECT_EQ(looked(), (std::vector<bool>{true, true, false, false}));
    messenger.deliverMessages();
    EXPECT_EQ(looked(), std::vector<bool>(4, false));
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
    EXPECT_TRUE(messenger.unregisterName("mixer"));
    EXPECT_FALSE(messenger.unregisterName("mixer") || messenger.unregisterName(nullptr));
    EXPECT_TRUE(delivered().empty()) << "its messages went with the name";
    for (const char* name : {"one", "two", "three", "four", "five"})
        EXPECT_TRUE(messenger.registerName(name, &a));
    messenger.clear();
    EXPECT_TRUE(messenger.registerName("three", &b));
}

TEST_F(MessengerTest, ServesTheComponentModel) {
    const OPtr<FMessage> ours(new FMessage("ours"));
    const OPtr<FMessage> foreign(new ForeignMessage("foreign"));
    ForeignReceiver receiver;
    const FUnknownPtr<IMessenger> face(static_cast<FObject*>(&messenger));
    EXPECT_EQ(face->postMessage(&receiver, ours), kResultOk);
    EXPECT_EQ(face->postMessage(&receiver, foreign), kResultFalse);
    EXPECT_EQ(face->postMessage(&receiver, nullptr), kResultFalse);
    EXPECT_EQ(face->postMessage(nullptr, ours), kResultFalse);
    EXPECT_TRUE(face->wasMessagePosted(&receiver));
    EXPECT_EQ(delivered(), (Log{"foreign ours"}));
    EXPECT_FALSE(face->wasMessagePosted(&receiver));
    face->postMessage(&receiver, ours);
    EXPECT_EQ(face->killMessages(&receiver, foreign), kResultFalse);
    EXPECT_EQ(face->killMessages(&receiver, ours), kResultOk);
    EXPECT_TRUE(delivered().empty());
    EXPECT_EQ(receiver.references, 0);
    EXPECT_EQ(referencesOf(ours), 1u);
    EXPECT_EQ(referencesOf(foreign), 1u);
}

TEST_F(MessengerTest, APostToWhoTakesNoneIsLost) {
    FObject plain;
    EXPECT_EQ(FPostedMessage(new FMessage("x"), static_cast<IDependent*>(&plain), 0).send(), -1);
    EXPECT_EQ(FPostedMessage(new FMessage("x"), static_cast<IDependent*>(&a), 0).send(), 5);
}

TEST_F(MessengerTest, AnyThreadMayPost) {
    constexpr int32_t kThreads = 3, kPosts = 2000;
    int32_t received = 0;
    std::set<std::thread::id> deliverers;
    a.then = [&](FMessage*) {
        ++received;
        deliverers.insert(std::this_thread::get_id());
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
    EXPECT_EQ(deliverers, std::set{std::this_thread::get_id()});
    EXPECT_FALSE(messenger.areMessagesPosted(&b));
}

TEST_F(MessengerTest, GroupsHearWhatIsSentAndPostedToThem) {
    const int32_t group = messenger.createNotifyGroup(), other = messenger.createNotifyGroup();
    EXPECT_NE(group, other);
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
    EXPECT_TRUE(messenger.deleteNotifyGroup(group));
    EXPECT_FALSE(messenger.deleteNotifyGroup(group));
}
