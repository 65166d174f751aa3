#pragma once
#include "base/source/fobject.h"
#include "base/source/fthread.h"
#include <array>
#include <atomic>
#include <list>
#include <span>
#include <unordered_map>
#include <vector>

namespace Tessarine {

namespace Update {
/** Who depends on what; both borrowed. */
struct Dependency {
    FUnknown* object;
    IDependent* dependent;
};

struct DeferedChange {
    FUnknown* object;
    int32_t message;
    bool isPostponed;  // stands in that list
};

/** A notification that is running: the snapshot of its dependents on the stack of the thread that runs it. Entries are set
    to null under the lock and read without it. */
struct UpdateData {
    FUnknown* object;
    IDependent** dependents;
    int32_t count;
    UpdateData* outer;  // linked while it runs
    UpdateData* inner;
};
}  // namespace Update

/** Keeps who depends on whom, outside the objects.

    Owns      nothing: objects and dependents are plain pointers, an object by the address of its FUnknown. Whoever registers
              removes; an object that dies says kDestroyed first.
    Threads   any. No lock is held while a dependent is called, so it may add, remove and trigger freely. A dependent that
              was removed isn't called again, not even by a notification that is running.
    Limits    kMaxDependents of one object are told, further ones are left out.
    Cost      a notification takes the lock twice and allocates nothing. */
class UpdateHandler : public FObject, public IUpdateHandler, public IUpdateManager {
public:
    static constexpr int32_t kMaxDependents = 10240;

    /** The first handler that is built becomes FObject::gUpdateHandler. */
    UpdateHandler();
    ~UpdateHandler() override;
    /** The handler behind FObject::gUpdateHandler; null when there is none. Borrowed. */
    static UpdateHandler* instance() { return current; }

    int32_t queryInterface(const char* iid, void** obj) override;
    FORWARD_REFCOUNT(FObject)

    int32_t addDependent(FUnknown* object, IDependent* dependent) override;
    int32_t removeDependent(FUnknown* object, IDependent* dependent) override;
    int32_t triggerUpdates(FUnknown* object, int32_t message) override;
    int32_t deferUpdates(FUnknown* object, int32_t message) override;
    int32_t cancelUpdates(FUnknown* object) override;
    int32_t triggerDeferedUpdates(FUnknown* object) override;

    /** suppressDone: updateDone isn't called. */
    int32_t doTriggerUpdates(FUnknown* object, int32_t message, bool suppressDone);
    /** triggerUpdates for an object that is known to be of this copy, and so needn't be asked for its FObject. */
    void triggerOwnUpdates(FObject* own, int32_t message);
    /** triggerUpdates and deferUpdates for an object that is known to answer FUnknown with itself. */
    void triggerSelfUpdates(FObject* self, int32_t message) {
        if (mayHaveDependents(self))
            tellDependents(self, message);
        if (message != kDestroyed)
            self->updateDone(message);
    }
    void deferSelfUpdates(FObject* self, int32_t message);
    /** How many depend on the object; for tests. */
    int32_t countDependencies(FUnknown* object);

private:
    using Bucket = std::vector<Update::Dependency>;  // by address of the object, then in order of registration
    using Changes = std::list<Update::DeferedChange>;
    struct Run;
    static constexpr size_t kNumBuckets = 256;
    static constexpr size_t kNumCrowds = 1024;

    Bucket& bucketOf(const FUnknown* object);
    std::atomic<uint32_t>& crowdOf(const FUnknown* object) {
        const auto address = reinterpret_cast<uintptr_t>(object);
        return crowds[((address >> 4) ^ (address >> 14)) & (kNumCrowds - 1)];
    }
    /** Without the lock; false: surely not. */
    bool mayHaveDependents(const FUnknown* object) { return crowdOf(object).load(std::memory_order_relaxed) != 0; }
    bool deferKnown(FUnknown* object, int32_t message);
    bool hasDependents(FUnknown* object);
    /** false: there are none. */
    bool tellDependents(FUnknown* object, int32_t message);
    std::span<const Update::Dependency> dependentsOf(const FUnknown* object);
    void forgetInRunning(const FUnknown* object, const IDependent* dependent);
    bool removeFromObject(FUnknown* object, const IDependent* dependent);
    void removeFromAll(const IDependent* dependent);
    void cancel(const FUnknown* object);
    bool takeDefered(const FUnknown* wanted, Update::DeferedChange& change);
    void forgetChange(Changes::iterator change);
    void takePostponedBack();
    bool isRunning(const FUnknown* object) const;

    static UpdateHandler* current;

    FLock lock;  // guards all that follows
    std::array<Bucket, kNumBuckets> map;
    // How many entries of the map are of the objects that share a slot; read by anyone.
    std::array<std::atomic<uint32_t>, kNumCrowds> crowds = {};
    Changes defered;      // in order
    Changes postponed;    // their object was just being told: they go back when a flush ends
    bool putOff = false;  // some were put off since a run last ended, which wakes the loop for them
    std::unordered_multimap<const FUnknown*, Changes::iterator> changesOf;  // both, for the look-up
    Update::UpdateData* updateData = nullptr;                               // the innermost that runs
};

}  // namespace Tessarine
