#include "base/source/updatehandler.h"
#include "base/source/hooks.h"
#include "pluginterfaces/base/smartpointer.h"
#include <algorithm>
#include <alloca.h>
#include <sys/single_threaded.h>
#include <utility>

namespace Tessarine {

using Update::DeferedChange;
using Update::Dependency;
using Update::UpdateData;

namespace {
struct ByObject {
    bool operator()(const Dependency& a, const FUnknown* b) const { return std::less<>()(a.object, b); }
    bool operator()(const FUnknown* a, const Dependency& b) const { return std::less<>()(a, b.object); }
};

/** The address that stands for the object, whatever face was handed in; borrowed, null for null. */
FUnknown* identityOf(FUnknown* face) {
    void* identity = nullptr;
    if (!face || face->queryInterface(FUnknown::iid, &identity) != kResultOk)
        return nullptr;
    FUnknown* object = static_cast<FUnknown*>(identity);
    object->release();
    return object;
}

void tellDone(FUnknown* object, int32_t message) {
    void* face = nullptr;
    if (message == kDestroyed || object->queryInterface(FObject::iid, &face) != kResultOk)
        return;
    FObject* framework = static_cast<FObject*>(face);
    framework->updateDone(message);
    framework->release();
}

IDependent* load(IDependent** entry) {
    return __atomic_load_n(entry, __ATOMIC_RELAXED);
}

void forget(IDependent** entry) {
    __atomic_store_n(entry, nullptr, __ATOMIC_RELAXED);
}

/** Holds the lock to the end of the block, or to end(). Until then nobody else's code runs, so that a process
    with one thread has one to the end, and needs no lock. */
class ShortGuard {
public:
    explicit ShortGuard(FLock& wanted) : held(__libc_single_threaded ? nullptr : &wanted) {
        if (held)
            held->lock();
    }
    ~ShortGuard() { end(); }
    void end() {
        if (held)
            std::exchange(held, nullptr)->unlock();
    }
    ShortGuard(const ShortGuard&) = delete;
    ShortGuard& operator=(const ShortGuard&) = delete;

private:
    FLock* held;  // borrowed; null: nobody to lock out
};
}  // namespace

constinit UpdateHandler* UpdateHandler::current = nullptr;

UpdateHandler::UpdateHandler() {
    if (gUpdateHandler)
        return;
    gUpdateHandler = this;
    current = this;
}

UpdateHandler::~UpdateHandler() {
    if (current != this)
        return;
    gUpdateHandler = nullptr;
    current = nullptr;
}

int32_t UpdateHandler::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IUpdateHandler>(this, iid, obj) || answerInterface<IUpdateManager>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

UpdateHandler::Bucket& UpdateHandler::bucketOf(const FUnknown* object) {
    return map[(reinterpret_cast<uintptr_t>(object) >> 12) & (kNumBuckets - 1)];
}

int32_t UpdateHandler::addDependent(FUnknown* face, IDependent* dependent) {
    FUnknown* object = identityOf(face);
    if (!object || !dependent)
        return kResultFalse;
    const ShortGuard guard(lock);
    Bucket& bucket = bucketOf(object);
    bucket.insert(std::upper_bound(bucket.begin(), bucket.end(), object, ByObject()), {object, dependent});
    ++crowdOf(object);
    return kResultOk;
}

int32_t UpdateHandler::removeDependent(FUnknown* face, IDependent* dependent) {
    if (!face && !dependent)
        return kResultFalse;
    FUnknown* object = identityOf(face);
    if (face && !object)
        return kResultFalse;
    const ShortGuard guard(lock);
    forgetInRunning(object, dependent);
    if (!object)
        removeFromAll(dependent);
    else if (!removeFromObject(object, dependent))
        cancel(object);
    return kResultOk;
}

/** A null object stands for all, a null dependent too. */
void UpdateHandler::forgetInRunning(const FUnknown* object, const IDependent* dependent) {
    for (UpdateData* run = updateData; run; run = run->outer) {
        if (object && run->object != object)
            continue;
        for (int32_t i = 0; i < run->count; ++i)
            if (!dependent || run->dependents[i] == dependent)
                forget(run->dependents + i);
    }
}

/** Whether the object has dependents left. */
bool UpdateHandler::removeFromObject(FUnknown* object, const IDependent* dependent) {
    Bucket& bucket = bucketOf(object);
    const auto [first, last] = std::equal_range(bucket.begin(), bucket.end(), object, ByObject());
    const auto kept = std::remove_if(
        first, last, [dependent](const Dependency& each) { return !dependent || each.dependent == dependent; });
    const bool anyLeft = kept != first;
    crowdOf(object) -= uint32_t(last - kept);
    bucket.erase(kept, last);
    return anyLeft;
}

void UpdateHandler::removeFromAll(const IDependent* dependent) {
    const auto isLeaving = [this, dependent](const Dependency& each) {
        const bool leaves = each.dependent == dependent;
        crowdOf(each.object) -= leaves;
        return leaves;
    };
    for (Bucket& bucket : map)
        std::erase_if(bucket, isLeaving);
}

int32_t UpdateHandler::triggerUpdates(FUnknown* object, int32_t message) {
    return doTriggerUpdates(object, message, false);
}

/** A notification's entry in the list of those that run, for as long as its scope lasts. Made under the lock. */
struct UpdateHandler::Run : UpdateData {
    Run(UpdateHandler& handler, FUnknown* object, IDependent** snapshot, int32_t count)
        : UpdateData{object, snapshot, count, handler.updateData, nullptr}, owner(handler) {
        if (outer)  // NOLINT(clang-analyzer-core.uninitialized.Branch): the base sets it
            outer->inner = this;
        owner.updateData = this;
    }
    ~Run() {
        if (leave())
            wakeUpdates();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /** Whether a flush has put changes off, perhaps because of this very run. */
    bool leave() {
        const ShortGuard guard(owner.lock);
        (inner ? inner->outer : owner.updateData) = outer;
        if (outer)
            outer->inner = inner;
        return std::exchange(owner.putOff, false);
    }

    UpdateHandler& owner;
};

int32_t UpdateHandler::doTriggerUpdates(FUnknown* face, int32_t message, bool suppressDone) {
    FUnknown* object = identityOf(face);
    if (!object)
        return kResultFalse;
    const bool anybody = tellDependents(object, message);
    if (!suppressDone)
        tellDone(object, message);
    return anybody ? kResultOk : kResultFalse;
}

void UpdateHandler::triggerOwnUpdates(FObject* own, int32_t message) {
    FUnknown* object = identityOf(own);
    if (!object)
        return;
    tellDependents(object, message);
    if (object != own)  // it stands for another one
        tellDone(object, message);
    else if (message != kDestroyed)
        own->updateDone(message);
}

bool UpdateHandler::tellDependents(FUnknown* object, int32_t message) {
    ShortGuard guard(lock);
    const std::span<const Dependency> found = dependentsOf(object);
    if (found.empty())
        return false;
    auto** snapshot = static_cast<IDependent**>(alloca(found.size() * sizeof(IDependent*)));
    IDependent** const end = std::ranges::transform(found, snapshot, &Dependency::dependent).out;
    const Run run(*this, object, snapshot, int32_t(found.size()));
    guard.end();
    for (IDependent** each = snapshot; each != end; ++each)
        if (IDependent* dependent = load(each))
            dependent->update(object, message);
    return true;
}

std::span<const Dependency> UpdateHandler::dependentsOf(const FUnknown* object) {
    const Bucket& bucket = bucketOf(object);
    const auto first = std::lower_bound(bucket.begin(), bucket.end(), object, ByObject());
    const auto limit = first + std::min<ptrdiff_t>(bucket.end() - first, kMaxDependents);
    auto last = first;
    while (last != limit && last->object == object)
        ++last;
    return {first, last};
}

bool UpdateHandler::hasDependents(FUnknown* object) {
    const Bucket& bucket = bucketOf(object);
    return std::binary_search(bucket.begin(), bucket.end(), object, ByObject());
}

int32_t UpdateHandler::countDependencies(FUnknown* face) {
    FUnknown* object = identityOf(face);
    const ShortGuard guard(lock);
    const Bucket& bucket = bucketOf(object);
    const auto [first, last] = std::equal_range(bucket.begin(), bucket.end(), object, ByObject());
    return int32_t(last - first);
}

int32_t UpdateHandler::deferUpdates(FUnknown* face, int32_t message) {
    FUnknown* object = identityOf(face);
    if (!object)
        return kResultFalse;
    if (deferKnown(object, message))
        wakeUpdates();
    else
        tellDone(object, message);
    return kResultOk;
}

void UpdateHandler::deferSelfUpdates(FObject* self, int32_t message) {
    if (mayHaveDependents(self) && deferKnown(self, message))
        wakeUpdates();
    else if (message != kDestroyed)
        self->updateDone(message);
}

/** false: nobody would hear of it. */
bool UpdateHandler::deferKnown(FUnknown* object, int32_t message) {
    const ShortGuard guard(lock);
    if (!hasDependents(object))
        return false;
    const auto [first, last] = changesOf.equal_range(object);
    if (std::none_of(first, last, [message](const auto& each) { return each.second->message == message; }))
        changesOf.emplace(object, defered.insert(defered.end(), {object, message, false}));
    return true;
}

int32_t UpdateHandler::cancelUpdates(FUnknown* face) {
    FUnknown* object = identityOf(face);
    if (!object)
        return kResultFalse;
    const ShortGuard guard(lock);
    cancel(object);
    return kResultOk;
}

void UpdateHandler::cancel(const FUnknown* object) {
    const auto [first, last] = changesOf.equal_range(object);
    for (auto each = first; each != last; ++each)
        (each->second->isPostponed ? postponed : defered).erase(each->second);
    changesOf.erase(first, last);
}

void UpdateHandler::forgetChange(Changes::iterator change) {
    const auto [first, last] = changesOf.equal_range(change->object);
    changesOf.erase(std::find_if(first, last, [change](const auto& each) { return each.second == change; }));
    defered.erase(change);
}

/** The first change of the wanted object, null for any, leaves the list; those whose object is being told right now are
    put off on the way. */
bool UpdateHandler::takeDefered(const FUnknown* wanted, DeferedChange& change) {
    const ShortGuard guard(lock);
    for (auto each = defered.begin(); each != defered.end();) {
        const auto here = each++;
        if (wanted && here->object != wanted)
            continue;
        if (isRunning(here->object)) {
            postponed.splice(postponed.end(), defered, here);
            here->isPostponed = putOff = true;
            continue;
        }
        change = *here;
        forgetChange(here);
        return true;
    }
    return false;
}

bool UpdateHandler::isRunning(const FUnknown* object) const {
    for (const UpdateData* run = updateData; run; run = run->outer)
        if (run->object == object)
            return true;
    return false;
}

void UpdateHandler::takePostponedBack() {
    const ShortGuard guard(lock);
    for (DeferedChange& change : postponed)
        change.isPostponed = false;
    defered.splice(defered.end(), postponed);
}

int32_t UpdateHandler::triggerDeferedUpdates(FUnknown* face) {
    FUnknown* wanted = identityOf(face);
    if (face && !wanted)
        return kResultFalse;
    DeferedChange change = {};
    while (takeDefered(wanted, change)) {
        const IPtr<FUnknown> kept(change.object);  // also if a dependent lets it go
        triggerUpdates(change.object, change.message);
    }
    takePostponedBack();
    return kResultOk;
}

}  // namespace Tessarine
