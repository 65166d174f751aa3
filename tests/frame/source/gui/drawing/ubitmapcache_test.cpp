#include "gui/drawing/ubitmapcache.h"
#include "base/source/hooks.h"
#include "gui/drawing/udelegatedbitmap.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
/** Fires when the test says so. */
class HandTimer final : public Timer {
public:
    HandTimer(ITimerCallback* callback, uint32_t periodMs) : callback(callback), period(periodMs) { running = this; }
    ~HandTimer() override { running = nullptr; }
    void stop() override { callback = nullptr; }

    ITimerCallback* callback;
    const uint32_t period;
    inline static HandTimer* running = nullptr;
};

/** Tells of its end. */
class Mortal : public UBitmap {
public:
    Mortal() { ++living; }
    ~Mortal() override { --living; }
    inline static int32_t living = 0;
};

class ProcessedBitmaps : public testing::Test {
protected:
    ProcessedBitmaps() {
        gRunLoopHooks.createTimer = [](ITimerCallback* callback, uint32_t periodMs) -> Timer* {
            return new HandTimer(callback, periodMs);
        };
    }
    ~ProcessedBitmaps() override {
        termUBitmap();
        gRunLoopHooks.createTimer = nullptr;
        EXPECT_EQ(HandTimer::running, nullptr);
    }
    static int32_t count() {
        const auto* pool = UBitmapCache::UProcessedBitmapPool::instance(false);
        return pool ? pool->count() : 0;
    }
    /** Leaves the only reference to the pool. */
    static UBitmap* add(UBitmap* source, const char* key) {
        const OPtr<UBitmap> result(new Mortal);
        EXPECT_TRUE(UBitmapCache::addProcessedBitmap(source, key, result));
        return result;
    }
};
}  // namespace

TEST_F(ProcessedBitmaps, AreFoundByTheirSourceAndKey) {
    const OPtr<UBitmap> a(new UBitmap), b(new UBitmap);
    UBitmap *ax = add(a, "x"), *bx = add(b, "x");
    EXPECT_EQ(UBitmapCache::getProcessedBitmap(a, "x"), ax);
    EXPECT_EQ(UBitmapCache::getProcessedBitmap(b, "x"), bx);
    EXPECT_EQ(UBitmapCache::getProcessedBitmap(b, "X"), nullptr);
    EXPECT_FALSE(UBitmapCache::addProcessedBitmap(a, "x", b)) << "there is one";
    EXPECT_FALSE(UBitmapCache::addProcessedBitmap(a, "z", nullptr));
    EXPECT_FALSE(UBitmapCache::addProcessedBitmap(nullptr, "z", a));
    EXPECT_EQ(count(), 2);
}

TEST_F(ProcessedBitmaps, GoWhenNobodyElseHoldsThem) {
    const OPtr<UBitmap> source(new UBitmap);
    const IPtr<UBitmap> held(add(source, "held"));
    for (int32_t index = 0; index < 100; ++index)
        add(source, std::to_string(index).c_str());
    ASSERT_TRUE(HandTimer::running);
    EXPECT_EQ(HandTimer::running->period, 5000U);
    HandTimer::running->callback->onTimer(HandTimer::running);
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(Mortal::living, 1);
    EXPECT_EQ(UBitmapCache::getProcessedBitmap(source, "held"), held.get());

    UBitmapCache::useGarbageCollection(false);
    EXPECT_EQ(HandTimer::running, nullptr);
    EXPECT_FALSE(UBitmapCache::hasGarbageCollection());
    add(source, "x");
    EXPECT_EQ(HandTimer::running, nullptr);
    UBitmapCache::useGarbageCollection(true);
    EXPECT_TRUE(HandTimer::running && UBitmapCache::hasGarbageCollection());
    UBitmapCache::UProcessedBitmapPool::instance(false)->updateSkin();
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(Mortal::living, 1);
}

TEST_F(ProcessedBitmaps, GoWithTheirSource) {
    OPtr<UBitmap> source(new UBitmap), delegate(new UDelegatedBitmap(source));
    const OPtr<UBitmap> other(new UBitmap);
    UBitmap* first = add(source, "x");
    add(add(add(first, "of x"), "of that"), "and of that");  // each dies with the one before
    UBitmapCache::UProcessedBitmapPool::instance(true)->addProcessedBitmap(delegate, "x", OPtr<UBitmap>(new Mortal));
    add(other, "x");
    EXPECT_EQ(count(), 6);
    source = nullptr;
    EXPECT_EQ(count(), 6) << "the delegate holds it";
    delegate = nullptr;
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(Mortal::living, 1);
    add(add(other, "y"), "of y");
    UBitmapCache::cleanup();
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(Mortal::living, 0);
}

TEST_F(ProcessedBitmaps, OfOneOwnerStayUntilTheSkinChanges) {
    OPtr<UBitmapCache::BitmapCache> cache(UBitmapCache::createLocalCache());
    for (const char* key : {"m", "z", "a", "m", ""}) {
        const OPtr<UBitmap> result(new Mortal);
        EXPECT_TRUE(cache->addProcessed(key, result));
        EXPECT_TRUE(*key == 'm' || cache->getProcessed(key) == result.get());
    }
    EXPECT_FALSE(cache->addProcessed("x", nullptr));
    EXPECT_EQ(cache->getProcessed("M"), nullptr);
    EXPECT_EQ(cache->getProcessed(nullptr), cache->getProcessed(""));
    EXPECT_EQ(Mortal::living, 5);
    cache->updateSkin();
    EXPECT_EQ(Mortal::living, 0);
    EXPECT_EQ(cache->getProcessed("a"), nullptr);
}
