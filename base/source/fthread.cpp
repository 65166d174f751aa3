#include "base/source/fthread.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <iterator>
#include <memory>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Tessarine {
namespace {
constexpr size_t kMaxNameLength = 15;  // the kernel takes no more

struct Scheduling {
    int policy;
    int priority;

    bool operator==(const Scheduling&) const = default;
};

// by FThreadPriority; only real-time policies have numbers here
constexpr Scheduling kSchedulings[] = {
    {SCHED_OTHER, 0 },
    {SCHED_OTHER, 0 },
    {SCHED_OTHER, 0 },
    {SCHED_RR,    35},
    {SCHED_RR,    39},
    {SCHED_RR,    48},
};
static_assert(std::size(kSchedulings) == kThreadPriorityHighest + 1, "each priority has its row");

Scheduling schedulingOf(int32_t priority) {
    const bool isKnown = priority >= 0 && priority <= kThreadPriorityHighest;
    return kSchedulings[isKnown ? priority : kThreadPriorityLow];
}

timespec deadlineIn(int32_t ms) {
    constexpr int64_t kNsPerSecond = 1'000'000'000;
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const int64_t ns = now.tv_nsec + int64_t{std::max(ms, 0)} * 1'000'000;
    return {now.tv_sec + static_cast<time_t>(ns / kNsPerSecond), static_cast<long>(ns % kNsPerSecond)};
}

void initMonotonic(pthread_cond_t& condition) {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

class MutexGuard {
public:
    explicit MutexGuard(pthread_mutex_t& held) : held(held) { pthread_mutex_lock(&held); }
    ~MutexGuard() { pthread_mutex_unlock(&held); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

private:
    pthread_mutex_t& held;
};

void releaseData(void* data) {
    static_cast<FUnknown*>(data)->release();
}

cpu_set_t maskOfProcess() {
    cpu_set_t mask;
    CPU_ZERO(&mask);
    sched_getaffinity(getpid(), sizeof(mask), &mask);
    return mask;
}

int processorAt(const cpu_set_t& mask, int32_t index) {
    for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(processor, &mask) && index-- == 0)
            return processor;
    }
    return -1;
}

void bindCaller(int32_t index) {
    static const cpu_set_t whole = maskOfProcess();  // as it was before anything was bound
    cpu_set_t mask = whole;
    if (index >= 0) {
        const int processor = processorAt(whole, index);
        if (processor < 0)
            return;
        CPU_ZERO(&mask);
        CPU_SET(processor, &mask);
    }
    pthread_setaffinity_np(pthread_self(), sizeof(mask), &mask);
}
}  // namespace

/** One who waits, from arrival to passage, whichever way the wait ends. Under the mutex. */
struct FCondition::Waiting {
    explicit Waiting(FCondition& condition) : condition(condition) { ++condition.waiters; }
    ~Waiting() {
        const bool isLast = --condition.waiters == 0;
        condition.state = isLast ? 0 : condition.state - 1;
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

    FCondition& condition;
};

FCondition::FCondition() {
    initMonotonic(condition);
}

FCondition::~FCondition() {
    pthread_cond_destroy(&condition);
    pthread_mutex_destroy(&mutex);
}

void FCondition::wait() {
    const MutexGuard guard(mutex);
    const Waiting waiting(*this);
    while (state == 0)
        pthread_cond_wait(&condition, &mutex);
}

bool FCondition::waitTimeout(int32_t ms) {
    if (ms == -1) {
        wait();
        return true;
    }
    const timespec deadline = deadlineIn(ms);
    const MutexGuard guard(mutex);
    const Waiting waiting(*this);
    while (state == 0) {
        if (pthread_cond_timedwait(&condition, &mutex, &deadline) == ETIMEDOUT)
            return false;
    }
    return true;
}

void FCondition::signal() {
    const MutexGuard guard(mutex);
    state = 1;
    pthread_cond_signal(&condition);
}

void FCondition::signalAll() {
    const MutexGuard guard(mutex);
    state = waiters + 1;
    pthread_cond_broadcast(&condition);
}

void FRwLock::waitToRead() {
    while (!enterToRead()) {
        readCondition.wait();
        --waitingReaders;
    }
}

void FRwLock::doneReading() {
    const FGuard guarded(guard);
    --readers;
    verify();
    if (waitingWriters > 0)
        writeCondition.signalAll();
}

void FRwLock::waitToWrite() {
    while (!enterToWrite()) {
        writeCondition.wait();
        --waitingWriters;
    }
}

void FRwLock::doneWriting() {
    const FGuard guarded(guard);
    --writers;
    verify();
    if (waitingWriters > 0)
        writeCondition.signalAll();
    if (waitingReaders > 0)
        readCondition.signalAll();
}

bool FRwLock::enterToRead() {
    const FGuard guarded(guard);
    const bool isFree = isFreeFor(pthread_self());
    ++(isFree ? readers : waitingReaders);
    verify();
    if (isFree && writers == 0 && waitingReaders > 0)
        readCondition.signalAll();  // for those who come to their wait only after the first one has used up the latch
    return isFree;
}

bool FRwLock::enterToWrite() {
    const FGuard guarded(guard);
    const bool isFree = readers == 0 && isFreeFor(pthread_self());
    if (isFree)
        writerThread = pthread_self();
    ++(isFree ? writers : waitingWriters);
    verify();
    return isFree;
}

OSXSemaphore::OSXSemaphore(int32_t initial) : count(std::max(initial, 0)) {
    initMonotonic(condition);
}

OSXSemaphore::~OSXSemaphore() {
    pthread_cond_destroy(&condition);
    pthread_mutex_destroy(&mutex);
}

void OSXSemaphore::wait() {
    take([this] { return pthread_cond_wait(&condition, &mutex); });
}

void OSXSemaphore::waitSignal(OSXSemaphore& other) {
    other.signal();
    wait();
}

bool OSXSemaphore::timedWait(int32_t ms) {
    const timespec deadline = deadlineIn(ms);
    return take([&] { return pthread_cond_timedwait(&condition, &mutex, &deadline); });
}

void OSXSemaphore::signal() {
    const MutexGuard guard(mutex);
    ++count;
    pthread_cond_signal(&condition);
}

void OSXSemaphore::signalAll() {
    const MutexGuard guard(mutex);
    ++generation;
    pthread_cond_broadcast(&condition);
}

template <class WaitOnce>
bool OSXSemaphore::take(WaitOnce waitOnce) {
    const MutexGuard guard(mutex);
    const uint32_t arrival = generation;
    while (count == 0 && generation == arrival) {
        if (waitOnce() == ETIMEDOUT)
            break;
    }
    if (generation != arrival)
        return true;
    if (count == 0)
        return false;
    --count;
    return true;
}

bool FSemaphore::acquire(int32_t ms) {
    if (ms >= 0)
        return semaphore.timedWait(ms);
    semaphore.wait();
    return true;
}

void FSemaphore::release(int32_t count) {
    if (count < 1)
        semaphore.signalAll();
    for (; count > 0; --count)
        semaphore.signal();
}

FLocalThreadStorage* FLocalThreadStorage::create() {
    auto storage = std::make_unique<FLocalThreadStorage>();
    return storage->init() ? storage.release() : nullptr;
}

FLocalThreadStorage::~FLocalThreadStorage() {
    setData(nullptr);
    if (hasKey)
        pthread_key_delete(key);  // or an ending thread would call into a module that is gone
}

bool FLocalThreadStorage::init() {
    if (!hasKey)
        hasKey = pthread_key_create(&key, releaseData) == 0;
    return hasKey;
}

FUnknown* FLocalThreadStorage::getData() const {
    return hasKey ? static_cast<FUnknown*>(pthread_getspecific(key)) : nullptr;
}

void FLocalThreadStorage::setData(FUnknown* data) {
    if (!hasKey)
        return;
    FUnknown* old = getData();
    if (data)
        data->addRef();
    pthread_setspecific(key, data);
    if (old)
        old->release();
}

/** What creator and thread share until both have passed the gate; the object itself may die before either of them. */
struct FThread::Start {
    explicit Start(FThread* thread) : thread(thread) {}

    FThread* thread;
    FSemaphore gate{0, "FThread"};
};

constinit std::atomic<IThreadSpy*> FThread::gSpy{nullptr};

FThread::FThread(const char* name) : name(name) {
    if (IThreadSpy* spy = gSpy)
        spy->threadConstructed(this);
}

FThread::~FThread() {
    if (IThreadSpy* spy = gSpy)
        spy->threadDestructed(this);
    if (!handle)
        return;
    if (isInThreadContext())
        pthread_cancel(handle);
    pthread_detach(handle);
}

void FThread::setPriority(int32_t wanted) {
    priority = wanted;
    if (!handle)
        return;
    const Scheduling scheduling = schedulingOf(wanted);
    int policy = 0;
    sched_param parameters{};
    pthread_getschedparam(handle, &policy, &parameters);
    if (scheduling == Scheduling{policy, parameters.sched_priority})
        return;
    parameters.sched_priority = scheduling.priority;
    pthread_setschedparam(handle, scheduling.policy, &parameters);
}

bool FThread::run() {
    if (handle)
        return false;
    started = true;
    const auto start = std::make_shared<Start>(this);
    auto reference = std::make_unique<std::shared_ptr<Start>>(start);
    pthread_t created{};
    if (pthread_create(&created, nullptr, threadMain, reference.get()) != 0) {
        started = false;
        return false;
    }
    static_cast<void>(reference.release());  // the thread's now
    handle = created;
    setPriority(priority);
    start->gate.release(1);  // from here on the object may be gone
    return true;
}

void FThread::terminate() {
    if (handle)
        pthread_cancel(handle);
}

bool FThread::waitDead(int32_t /*ms*/) {
    if (!started || !handle)
        return true;
    if (isInThreadContext() || pthread_join(handle, nullptr) != 0)
        return false;
    handle = 0;
    return true;
}

void FThread::setCpuAffinity(int32_t n) {
    cpuAffinity = n;
    bindCaller(n);
}

bool FThread::isInThreadContext() const {
    const pthread_t own = handle;
    return own && pthread_equal(pthread_self(), own);
}

void FThread::setTaskPriorityToForegroundApplication() {
    if (getpriority(PRIO_PROCESS, 0) > 0)
        setpriority(PRIO_PROCESS, 0, 0);
}

void* FThread::threadMain(void* argument) {
    FThread* thread = passGate(argument);
    thread->nameCaller();
    thread->entry();
    return nullptr;
}

FThread* FThread::passGate(void* argument) {
    const std::unique_ptr<std::shared_ptr<Start>> start(static_cast<std::shared_ptr<Start>*>(argument));
    (*start)->gate.acquire(-1);
    return (*start)->thread;
}

void FThread::nameCaller() const {
    if (name.isEmpty())
        return;
    char shortened[kMaxNameLength + 1] = {};
    std::strncpy(shortened, name.text8(), kMaxNameLength);
    pthread_setname_np(pthread_self(), shortened);
}

void FThreadSleep(int32_t ms) {
    while (ms < 0)  // NOLINT(bugprone-infinite-loop): for ever is what is asked
        pause();
    const timespec deadline = deadlineIn(ms);
    int result = EINTR;
    while (result == EINTR)
        result = clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr);
}

}  // namespace Tessarine
