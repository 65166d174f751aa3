// Telling others of a change in a process that has a second thread, as every process with an open port has: locks and counts
// that a process with one thread may skip are paid here. The thread sleeps, so that nobody waits for a lock.
#include "bench/audience.h"
#include "bench/sleeper.h"

namespace {
const SleepingThread sleeper;
}

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

using namespace Peers;
BENCHMARK_ALL(Ours);
BENCHMARK_ALL(BareLoop);
BENCH_WITH_LIBRARIES(BENCHMARK_ALL)
