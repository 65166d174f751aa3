// Telling others of a change in a process that has a second thread, as every process with an open port has: locks and counts
// that a process with one thread may skip are paid here. The thread sleeps, so that nobody waits for a lock.
#include "bench/audience.h"
#include <semaphore>
#include <thread>

namespace {
/** From before the first row to the end of the program. */
class SleepingThread {
public:
    ~SleepingThread() {
        end.release();
        thread.join();
    }

private:
    std::binary_semaphore end{0};
    std::thread thread{[this] { end.acquire(); }};
} sleeper;
}  // namespace

template <class Peer>
void NotifyBesideThread(benchmark::State& state) {
    Notify<Peer>(state);
}

template <class Peer>
void AddRemoveBesideThread(benchmark::State& state) {
    AddRemove<Peer>(state);
}

#define BENCHMARK_ALL(Peer)                                                 \
    BENCHMARK_TEMPLATE(NotifyBesideThread, Peer)->Arg(1)->Arg(8)->Arg(100); \
    BENCHMARK_TEMPLATE(AddRemoveBesideThread, Peer)->Arg(1)

using Peers::Ours;
BENCHMARK_ALL(Ours);
using Peers::BareLoop;
BENCHMARK_ALL(BareLoop);
#ifdef BENCH_SIGCPP
using Peers::SigCpp;
BENCHMARK_ALL(SigCpp);
#endif
#ifdef BENCH_BOOST
using Peers::BoostSignals2;
BENCHMARK_ALL(BoostSignals2);
#endif
#ifdef BENCH_QT
using Peers::Qt5;
BENCHMARK_ALL(Qt5);
#endif
