#include "runloop.h"
#include "gui/uctrler.h"
#include <algorithm>
#include <glib.h>
#include <new>
#include <tuple>
#include <utility>

namespace Tessarine {
namespace {
constexpr int64_t kUsPerMs = 1000;
constexpr int64_t kIdlePeriodUs = 10 * kUsPerMs;

template <void (RunLoop::*Serve)()>
gboolean dispatch(GSource*, GSourceFunc, gpointer) {
    (RunLoop::instance().*Serve)();
    return G_SOURCE_CONTINUE;
}

/** A source that was ready when another one's callback closed and unloaded this copy is let go of, and its functions are
    looked at, only later in that turn: they go with the source, not with the copy. */
struct OwnedSource {
    GSource base;
    GSourceFuncs functions;
};

template <void (RunLoop::*Serve)()>
GSource* attachSource(const char* name) {
    GSourceFuncs functions = {nullptr, nullptr, dispatch<Serve>, nullptr, nullptr, nullptr};
    GSource* source = g_source_new(&functions, sizeof(OwnedSource));
    auto* owned = reinterpret_cast<OwnedSource*>(source);
    owned->functions = functions;
    g_source_set_funcs(source, &owned->functions);
    g_source_set_name(source, name);         // copied
    g_source_set_can_recurse(source, TRUE);  // a modal loop may run within any callback
    g_source_attach(source, nullptr);
    return source;
}

/** The last moment at which this copy's code is still there to be called. */
struct CloseAtEnd {
    ~CloseAtEnd() { RunLoop::instance().close(); }
} closeAtEnd;
}  // namespace

RunLoop& RunLoop::instance() {
    // never destroyed, only closed: an object of another file's may stop its timer even later
    alignas(RunLoop) static char room[sizeof(RunLoop)];
    static RunLoop* loop = new (room) RunLoop;
    return *loop;
}

bool RunLoop::open() {
    if (isOpen())
        return true;
    FGuard guard(wakeLock);
    timerSource = attachSource<&RunLoop::fireEarliest>("timers");
    updateSource = attachSource<&RunLoop::serveUpdates>("updates");
    idleSource = attachSource<&RunLoop::serveIdle>("idle");
    updatesWoken = true;  // what was queued before
    g_source_set_ready_time(updateSource, 0);
    g_source_set_ready_time(idleSource, 0);
    return true;
}

void RunLoop::close() {
    {
        FGuard guard(wakeLock);
        destroy(timerSource);
        destroy(updateSource);
        destroy(idleSource);
        updatesWoken = false;
    }
    for (LinuxTimer* timer : std::exchange(armed, {}))
        timer->release();
}

void RunLoop::destroy(GSource*& source) {
    if (!source)
        return;
    g_source_destroy(source);
    g_source_unref(source);
    source = nullptr;
}

void RunLoop::wakeUpdates() {
    if (updatesWoken.exchange(true))
        return;
    FGuard guard(wakeLock);
    if (updateSource)
        g_source_set_ready_time(updateSource, 0);
    else
        updatesWoken = false;
}

/** The source stays ready during the work, so that a modal loop within it serves what still waits. */
void RunLoop::serveUpdates() {
    updatesWoken = false;  // before the work: what is posted during it wakes the loop again
    if (gController)
        gController->updateDependencies();
    FGuard guard(wakeLock);
    if (updateSource && !updatesWoken)
        g_source_set_ready_time(updateSource, -1);
}

void RunLoop::wakeIdle() {
    FGuard guard(wakeLock);
    if (idleSource)
        g_source_set_ready_time(idleSource, 0);
}

void RunLoop::serveIdle() {
    g_source_set_ready_time(idleSource, -1);
    planIdle();  // a modal loop may run within the step
    if (gController)
        gController->onIdle(true);
    planIdle();
}

/** Never takes a wake-up back: one that comes from another thread right now must not be lost. */
void RunLoop::planIdle() {
    if (idleSource && gController && gController->wantsIdle())
        g_source_set_ready_time(idleSource, g_get_monotonic_time() + kIdlePeriodUs);
}

bool RunLoop::Earlier::operator()(const LinuxTimer* a, const LinuxTimer* b) const {
    return std::tie(a->dueUs, a->startNumber) < std::tie(b->dueUs, b->startNumber);
}

void RunLoop::arm(LinuxTimer* timer) {
    if (!isOpen())
        return;
    timer->addRef();
    armed.insert(timer);
    setNextDue();
}

void RunLoop::disarm(LinuxTimer* timer) {
    const auto found = armed.find(timer);
    if (found == armed.end())
        return;
    armed.erase(found);
    setNextDue();
    timer->release();
}

void RunLoop::setNextDue() {
    if (timerSource)
        g_source_set_ready_time(timerSource, armed.empty() ? -1 : (*armed.begin())->dueUs);
}

/** One timer a turn: what it does may stop, restart or delay any other. */
void RunLoop::fireEarliest() {
    const int64_t nowUs = g_get_monotonic_time();
    if (armed.empty() || (*armed.begin())->dueUs > nowUs)
        return setNextDue();
    LinuxTimer* timer = *armed.begin();  // the reference is this function's now
    armed.erase(armed.begin());
    timer->skipTo(nowUs);
    arm(timer);
    timer->fire();
    timer->release();
}

LinuxTimer::LinuxTimer(ITimerCallback* target, uint32_t periodMs, uint64_t start)
    : callback(target), periodUs(std::max(1u, periodMs) * kUsPerMs), dueUs(g_get_monotonic_time() + periodUs),
      startNumber(start) {}

Timer* LinuxTimer::create(ITimerCallback* callback, uint32_t periodMs) {
    RunLoop& loop = RunLoop::instance();
    if (!loop.isOpen())
        return nullptr;
    auto* timer = new LinuxTimer(callback, periodMs, loop.starts++);
    loop.arm(timer);
    return timer;
}

void LinuxTimer::stop() {
    callback = nullptr;
    RunLoop::instance().disarm(this);
}

void LinuxTimer::skipTo(int64_t nowUs) {
    dueUs += ((nowUs - dueUs) / periodUs + 1) * periodUs;
}

void LinuxTimer::fire() {
    if (inCallback || !callback || !DisableDispatchingTimers::timersEnabled)
        return;
    inCallback = true;
    callback->onTimer(this);
    inCallback = false;
}

}  // namespace Tessarine
