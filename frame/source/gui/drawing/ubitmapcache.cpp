#include "gui/drawing/ubitmapcache.h"
#include "base/source/finitializer.h"
#include <memory>
#include <utility>
#include <vector>

namespace Tessarine {
using Pool = UBitmapCache::UProcessedBitmapPool;

namespace {
FObject* gPool = nullptr;  // owned

uint32_t referencesOf(UBitmap* bitmap) {
    bitmap->addRef();
    return bitmap->release();
}
}  // namespace

UBitmap* UBitmapCache::BitmapCache::getProcessed(const char* key) {
    const ConstString wanted(key);
    for (const Entry& entry : entries)
        if (entry.key == wanted)
            return entry.bitmap;
    return nullptr;
}

bool UBitmapCache::BitmapCache::addProcessed(const char* key, UBitmap* bitmap) {
    return bitmap && entries.add({FString(key), bitmap});
}

Pool::UProcessedBitmapPool() {
    startTimer();
}

Pool::~UProcessedBitmapPool() {
    stopTimer();
    if (gPool == this)
        gPool = nullptr;  // bitmaps that die from here on look for no pool
}

Pool* Pool::instance(bool create) {
    if (!gPool && create && !Singleton::isTerminated()) {
        gPool = new Pool;
        Singleton::registerInstance(&gPool);
    }
    return static_cast<Pool*>(gPool);
}

void Pool::end() {
    const OPtr<FObject> last(std::exchange(gPool, nullptr));
}

int32_t Pool::hash(const Item& item, int32_t buckets) {
    constexpr int32_t kAlignmentBits = 4;
    const uint64_t sum = (reinterpret_cast<uintptr_t>(item.source) >> kAlignmentBits) +
                         hashString8(item.key.text8(), uint32_t(INT32_MAX));
    return int32_t(sum % uint64_t(buckets));
}

UBitmap* Pool::getProcessedBitmap(UBitmap* source, const char* key) const {
    return items.lookup({source, FString(key), nullptr}).result;
}

bool Pool::addProcessedBitmap(UBitmap* source, const char* key, UBitmap* result) {
    const Item item = {source, FString(key), result};
    if (!source || !result || items.contains(item))
        return false;
    if (collectsGarbage)
        startTimer();
    const bool added = items.add(item);
    source->isInPool |= added;
    return added;
}

/** The bitmaps die when all is done: each may remove others. */
template <class Goes>
void Pool::removeThose(const Goes& goes) {
    std::vector<IPtr<UBitmap>> removed;
    const std::unique_ptr<TIterator<Item>> walk(items.newIterator());
    while (!walk->done()) {
        if (!goes(walk->current())) {
            walk->next();
            continue;
        }
        removed.push_back(walk->current().result);
        items.remove(*walk);
    }
}

void Pool::removeProcessedBitmap(UBitmap* source) {
    removeThose([source](const Item& item) { return item.source == source; });
}

void Pool::cleanup() {
    removeThose([](const Item& item) { return referencesOf(item.result) <= 1; });
}

void Pool::updateSkin() {
    removeThose([](const Item&) { return true; });
}

void Pool::useGarbageCollection(bool state) {
    collectsGarbage = state;
    if (state)
        startTimer();
    else
        stopTimer();
}

void Pool::startTimer() {
    if (!timer)
        timer = Timer::create(this, kCleanupMs);
}

void Pool::stopTimer() {
    if (Timer* running = std::exchange(timer, nullptr)) {
        running->stop();
        running->release();
    }
}

UBitmap* UBitmapCache::getProcessedBitmap(UBitmap* source, const char* key) {
    const Pool* all = Pool::instance(false);
    return all ? all->getProcessedBitmap(source, key) : nullptr;
}

bool UBitmapCache::addProcessedBitmap(UBitmap* source, const char* key, UBitmap* result) {
    Pool* all = Pool::instance(true);
    return all && all->addProcessedBitmap(source, key, result);
}

void UBitmapCache::removeProcessedBitmap(UBitmap* source) {
    if (Pool* all = Pool::instance(false))
        all->removeProcessedBitmap(source);
}

void UBitmapCache::cleanup() {
    if (Pool* all = Pool::instance(false))
        all->cleanup();
}

void UBitmapCache::useGarbageCollection(bool state) {
    if (Pool* all = Pool::instance(true))
        all->useGarbageCollection(state);
}

bool UBitmapCache::hasGarbageCollection() {
    const Pool* all = Pool::instance(true);
    return all && all->hasGarbageCollection();
}

}  // namespace Tessarine
