#include "base/fqueue.h"
#include <gtest/gtest.h>
#include <thread>

using namespace Tessarine;

namespace {
int gItems[100'000];

void* item(intptr_t number) {
    return &gItems[number];
}

intptr_t numberOf(void* item) {
    return item ? static_cast<int*>(item) - gItems : -1;
}

int gDeleted = 0;
void countDeleted(void* item) {
    gDeleted += static_cast<int>(numberOf(item));
}
}  // namespace

TEST(FQueueOrder, GivesNullWhenEmpty) {
    FQueue queue;
    EXPECT_TRUE(!queue.removeFirst() && !queue.removeLast());
    queue.append(item(2));
    queue.add(item(3));
    queue.prepend(item(1));
    EXPECT_EQ(queue.removeLast(), item(3));
    EXPECT_TRUE(queue.removeFirst() == item(1) && queue.removeFirst() == item(2) && queue.isEmpty());
}

TEST(FQueueOrder, LosesNothingBetweenThreads) {
    constexpr intptr_t kItems = 3000;
    FQueue queue;
    std::atomic<intptr_t> sum{0}, taken{0};
    const auto produce = [&] {
        for (intptr_t i = 1; i <= kItems; ++i)
            i % 2 ? queue.append(item(i)) : queue.prepend(item(i));
    };
    const auto consume = [&] {
        while (taken < 2 * kItems) {
            if (queue.isEmpty()) {
                sched_yield();
            } else if (void* got = queue.removeFirst()) {
                sum += numberOf(got);
                ++taken;
            }
        }
    };
    {
        const std::jthread threads[] = {std::jthread(produce), std::jthread(produce), std::jthread(consume),
                                        std::jthread(consume)};
    }
    EXPECT_EQ(sum, kItems * (kItems + 1));
    EXPECT_TRUE(queue.isEmpty());
}

TEST(FLockFreeQueueRoom, IsOneLessOnceTheReaderHasMoved) {
    FLockFreeQueue queue(4, nullptr);
    EXPECT_TRUE(!queue.pop() && queue.push(item(1)) && queue.peek() == item(1) && queue.pop() == item(1));
    for (intptr_t i = 2; i <= 5; ++i)
        EXPECT_EQ(queue.push(item(i)), i <= 4);
}

TEST(FLockFreeQueueRoom, EndsWithTheDeleter) {
    gDeleted = 0;
    {
        FLockFreeQueue queue(4, countDeleted);
        for (intptr_t i = 1; i <= 4; ++i)
            EXPECT_TRUE(queue.push(item(i)));
        EXPECT_EQ(queue.pop(), nullptr) << "one too many from the start: it reads as empty";
        queue.flush();
        EXPECT_EQ(gDeleted, 0);
        queue.push(item(5));
        queue.flush();
        EXPECT_EQ(gDeleted, 5);
        queue.push(item(10));
    }
    EXPECT_EQ(gDeleted, 15);
    FLockFreeQueue tiny(-3, nullptr);
    EXPECT_TRUE(tiny.push(item(1)) && !tiny.pop()) << "room for one, which reads as empty at once";
}

TEST(FLockFreeQueueRoom, KeepsTheOrderBetweenTwoThreads) {
    constexpr intptr_t kItems = 50'000;
    FLockFreeQueue queue(16, nullptr);
    std::atomic<intptr_t> popped{0};
    const std::jthread producer([&] {
        for (intptr_t i = 0; i < kItems; ++i) {
            while (i - popped >= 15)  // never one too many
                sched_yield();
            gItems[i] = static_cast<int>(i);  // written before it is seen
            EXPECT_TRUE(queue.push(item(i)));
        }
    });
    while (popped < kItems) {
        void* got = queue.pop();
        if (!got) {
            sched_yield();
            continue;
        }
        ASSERT_EQ(numberOf(got), popped);
        ASSERT_EQ(*static_cast<int*>(got), popped);
        ++popped;
    }
}
