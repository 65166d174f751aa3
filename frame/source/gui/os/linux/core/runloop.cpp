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

/** The time until then, rounded up so that the loop doesn't turn for nothing; -1: never. */
gint timeoutFor(int64_t dueUs, int64_t nowUs) {
    if (dueUs == RunLoop::kNever)
        return -1;
    return gint(std::clamp<int64_t>((dueUs - nowUs + kUsPerMs - 1) / kUsPerMs, 0, G_MAXINT));
}

/** What a source is asked and told. It says when it is due each time, instead of setting its ready time: GLib answers each
    change of that with one more turn. */
template <auto Due, auto Serve>
struct Calls {
    static gboolean check(GSource* source) {
        const int64_t dueUs = (RunLoop::instance().*Due)();
        return dueUs != RunLoop::kNever && dueUs <= g_source_get_time(source);
    }
    static gboolean prepare(GSource* source, gint* timeout) {
        *timeout = timeoutFor((RunLoop::instance().*Due)(), g_source_get_time(source));
        return *timeout == 0;
    }
    static gboolean dispatch(GSource*, GSourceFunc, gpointer) {
        (RunLoop::instance().*Serve)();
        return G_SOURCE_CONTINUE;
    }
};

/** A source that was ready when another one's callback closed and unloaded this copy is let go of, and its functions are
    looked at, only later in that turn: they go with the source, not with the copy. */
struct OwnedSource {
    GSource base;
    GSourceFuncs functions;
};

template <auto Due, auto Serve>
GSource* attachSource(const char* name) {
    using Call = Calls<Due, Serve>;
    GSourceFuncs functions = {Call::prepare, Call::check, Call::dispatch, nullptr, nullptr, nullptr};
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
    timerSource = attachSource<&RunLoop::timersDue, &RunLoop::fireEarliest>("timers");
    updateSource = attachSource<&RunLoop::updatesDue, &RunLoop::serveUpdates>("updates");
    idleSource = attachSource<&RunLoop::idleDue, &RunLoop::serveIdle>("idle");
    updatesWoken = true;  // what was queued before
    idleDueUs = kNow;
    return true;
}

void RunLoop::close() {
    for (GSource** source : {&timerSource, &updateSource, &idleSource})
        destroy(*source);
    for (LinuxTimer* timer : std::exchange(armed, {}))
        timer->release();
    restWaits = false;
}

void RunLoop::destroy(GSource*& source) {
    if (!source)
        return;
    g_source_destroy(source);
    g_source_unref(source);
    source = nullptr;
}

void RunLoop::wakeUpdates() {
    if (!updatesWoken.exchange(true))
        g_main_context_wakeup(nullptr);
}

int64_t RunLoop::updatesDue() const {
    return updatesWoken || restWaits ? kNow : kNever;
}

void RunLoop::serveUpdates() {
    updatesWoken = false;  // before the work: what is posted during it wakes the loop again
    restWaits = true;
    if (gController)
        gController->updateDependencies();
    restWaits = false;
}

void RunLoop::wakeIdle() {
    idleDueUs = kNow;
    g_main_context_wakeup(nullptr);
}

void RunLoop::serveIdle() {
    idleDueUs = kNever;
    planIdle();  // a modal loop may run within the step
    if (gController)
        gController->onIdle(true);
    planIdle();
}

/** Never takes a wake-up back: one that comes from another thread right now must not be lost. */
void RunLoop::planIdle() {
    if (gController && gController->wantsIdle())
        idleDueUs = g_get_monotonic_time() + kIdlePeriodUs;
}

bool RunLoop::Earlier::operator()(const LinuxTimer* a, const LinuxTimer* b) const {
    return std::tie(a->dueUs, a->startNumber) < std::tie(b->dueUs, b->startNumber);
}

void RunLoop::arm(LinuxTimer* timer) {
    if (!isOpen())
        return;
    timer->addRef();
    armed.insert(timer);
}

void RunLoop::disarm(LinuxTimer* timer) {
    const auto found = armed.find(timer);
    if (found == armed.end())
        return;
    armed.erase(found);
    timer->release();
}

int64_t RunLoop::timersDue() const {
    return armed.empty() ? kNever : (*armed.begin())->dueUs;
}

/** One timer a turn: what it does may stop, restart or delay any other. */
void RunLoop::fireEarliest() {
    const int64_t nowUs = g_get_monotonic_time();
    if (armed.empty() || (*armed.begin())->dueUs > nowUs)
        return;
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
