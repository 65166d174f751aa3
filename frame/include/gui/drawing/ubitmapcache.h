#pragma once
#include "base/source/tarray.h"
#include "base/source/thashtable.h"
#include "base/source/timer.h"
#include "gui/drawing/iskindependent.h"
#include "gui/drawing/ubitmap.h"

namespace Tessarine {

/** Copies of bitmaps that a filter, a scaling or a weaving has made, so that each is made once. Keys are exact texts, and
    null is empty. What is found is borrowed; who keeps it takes a reference. Main thread. */
class UBitmapCache {
public:
    class IBitmapCache {
    public:
        /** Null: there is none. */
        virtual UBitmap* getProcessed(const char* key) = 0;
        /** false: no bitmap. */
        virtual bool addProcessed(const char* key, UBitmap* bitmap) = 0;
        virtual void removeAll() = 0;

    protected:
        ~IBitmapCache() = default;
    };

    /** Those of one owner, until the skin changes. */
    class BitmapCache : public FObject, public IBitmapCache, public ISkinDependent {
    public:
        DECLARE_CLASS_NAME(BitmapCache, FObject)

        UBitmap* getProcessed(const char* key) override;
        bool addProcessed(const char* key, UBitmap* bitmap) override;
        void removeAll() override { entries.removeAll(); }
        void updateSkin() override { removeAll(); }

    private:
        struct Entry {
            FString key;
            IPtr<UBitmap> bitmap;

            int32_t compare(const Entry& other) const { return key.compare(other.key); }
            bool operator==(const Entry& other) const { return compare(other) == 0; }
        };

        TSortableArray<Entry> entries;
        SkinDependence dependence{this};
    };

    /** Those of the process. Every five seconds it lets go of what nobody else holds. */
    class UProcessedBitmapPool : public FObject, public ISkinDependent, public ITimerCallback {
    public:
        DECLARE_CLASS_NAME(UProcessedBitmapPool, FObject)
        static constexpr int32_t kBuckets = 25;
        static constexpr uint32_t kCleanupMs = 5000;

        UProcessedBitmapPool();
        ~UProcessedBitmapPool() override;
        UProcessedBitmapPool(const UProcessedBitmapPool&) = delete;
        UProcessedBitmapPool& operator=(const UProcessedBitmapPool&) = delete;

        /** Borrowed; null: there is none, and none is to be made. */
        static UProcessedBitmapPool* instance(bool create);
        static void end();

        UBitmap* getProcessedBitmap(UBitmap* source, const char* key) const;
        /** false: something is null, or there is one already. */
        bool addProcessedBitmap(UBitmap* source, const char* key, UBitmap* result);
        /** All that were made of it. */
        void removeProcessedBitmap(UBitmap* source);
        void cleanup();
        void useGarbageCollection(bool state);
        bool hasGarbageCollection() const { return collectsGarbage; }
        int32_t count() const { return items.total(); }

        void updateSkin() override;
        void onTimer(Timer* /*fired*/) override { cleanup(); }

    private:
        struct Item {
            UBitmap* source = nullptr;  // borrowed: it removes itself
            FString key;
            IPtr<UBitmap> result;

            bool operator==(const Item& other) const { return source == other.source && key == other.key; }
        };
        static int32_t hash(const Item& item, int32_t buckets);
        template <class Goes>
        void removeThose(const Goes& goes);
        void startTimer();
        void stopTimer();

        THashTable<Item> items{kBuckets, hash};
        bool collectsGarbage = true;
        Timer* timer = nullptr;  // owned; null: off, or there is no run loop yet
        SkinDependence dependence{this};
    };

    /** With a reference for the caller. */
    static BitmapCache* createLocalCache() { return new BitmapCache; }
    static UBitmap* getProcessedBitmap(UBitmap* source, const char* key);
    static bool addProcessedBitmap(UBitmap* source, const char* key, UBitmap* result);
    static void removeProcessedBitmap(UBitmap* source);
    static void cleanup();
    static void useGarbageCollection(bool state);
    static bool hasGarbageCollection();
};

}  // namespace Tessarine
