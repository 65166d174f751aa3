// Telling others of a change: the update handler beside what a user would take instead. Times are those of one item, and an
// item is one call of a listener unless said otherwise.
#include "bench/audience.h"

namespace {
template <class Peer>
void tellMany(benchmark::State& state, bool shuffled) {
    Peers::Crowd<Peer> crowd(size_t(state.range(0)));
    const auto order = crowd.inOrder(shuffled);
    for (auto _ : state)
        for (typename Peer::Subject* each : order)
            Peer::notify(*each);
    if (!crowd.listeners().heard(int64_t(state.iterations()) * state.range(0)))
        state.SkipWithError("not all were told");
    state.SetItemsProcessed(int64_t(state.iterations()) * state.range(0) * int64_t(Peers::kDependentsEach));
}
}  // namespace

/** So many subjects with two listeners each, told of one after the other. */
template <class Peer>
void NotifyMany(benchmark::State& state) {
    tellMany<Peer>(state, false);
}

/** The same, in an order that no cache foresees. */
template <class Peer>
void NotifyManyShuffled(benchmark::State& state) {
    tellMany<Peer>(state, true);
}

/** Of so many listeners the first removes the last while they are told, and the last comes back afterwards; an item is the
    whole round. */
template <class Peer>
void RemoveInside(benchmark::State& state) {
    const auto size = size_t(state.range(0));
    typename Peer::Subject subject;
    Peers::Audience<Peer, Peers::Action> audience(size);
    audience.attend(subject);
    auto& last = audience.at(size - 1);
    auto& tie = audience.tieAt(size - 1);
    audience.at(0).then = [&] { Peer::remove(subject, last, tie); };
    for (size_t i = 1; i < size; ++i)
        audience.at(i).then = [] {};
    for (auto _ : state) {
        Peer::notify(subject);
        tie = Peer::add(subject, last);
    }
    if (last.told != 0 || audience.at(size - 2).told != int64_t(state.iterations()))
        state.SkipWithError("the wrong ones were told");
    state.SetItemsProcessed(int64_t(state.iterations()));
}

#define BENCHMARK_TELLING(Peer)                                            \
    BENCHMARK_TEMPLATE(Notify, Peer)->Arg(1)->Arg(8)->Arg(100);            \
    BENCHMARK_TEMPLATE(NotifyMany, Peer)->Arg(10000)->Arg(100000);         \
    BENCHMARK_TEMPLATE(NotifyManyShuffled, Peer)->Arg(10000)->Arg(100000); \
    BENCHMARK_TEMPLATE(AddRemove, Peer)->Arg(1)->Arg(10000)
#define BENCHMARK_ALL(Peer)  \
    BENCHMARK_TELLING(Peer); \
    BENCHMARK_TEMPLATE(RemoveInside, Peer)->Arg(8)

using namespace Peers;
BENCHMARK_ALL(Ours);
BENCHMARK_TELLING(BareLoop);
BENCH_WITH_LIBRARIES(BENCHMARK_ALL)
