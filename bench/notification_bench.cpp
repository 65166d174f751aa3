// Telling others of a change: the update handler beside what a user would take instead. Times are those of one item, and an
// item is one call of a listener unless said otherwise.
#include "bench/peers.h"
#include <benchmark/benchmark.h>
#include <memory>
#include <numeric>
#include <random>

namespace {
using Peers::Action;

constexpr size_t kDependentsEach = 2;

/** Some listeners, tied to one subject or to many. */
template <class Peer, class Then = Peers::Quiet>
class Audience {
public:
    using Subject = typename Peer::Subject;
    using Listener = typename Peer::template Listener<Then>;

    explicit Audience(size_t size) {
        for (size_t i = 0; i < size; ++i)
            listeners.push_back(std::make_unique<Listener>());
    }
    ~Audience() {
        for (Seat& each : seats)
            Peer::remove(*each.subject, *each.listener, each.tie);
    }
    Audience(const Audience&) = delete;

    void attend(Subject& subject) {
        for (const auto& each : listeners)
            seats.push_back({&subject, each.get(), Peer::add(subject, *each)});
    }
    Listener& at(size_t index) { return *listeners[index]; }
    typename Peer::Tie& tieAt(size_t index) { return seats[index].tie; }
    /** Whether each listener heard of as many changes. */
    bool heard(int64_t changes) const {
        return std::ranges::all_of(listeners, [changes](const auto& each) { return each->told == changes; });
    }

private:
    struct Seat {
        Subject* subject;
        Listener* listener;
        typename Peer::Tie tie;
    };
    std::vector<std::unique_ptr<Listener>> listeners;
    std::vector<Seat> seats;
};

/** Many subjects, each with the same few listeners. */
template <class Peer>
class Crowd {
public:
    using Subject = typename Peer::Subject;

    explicit Crowd(size_t size) : audience(kDependentsEach) {
        for (size_t i = 0; i < size; ++i)
            subjects.push_back(std::make_unique<Subject>());
        for (const auto& each : subjects)
            audience.attend(*each);
    }
    Subject& at(size_t index) { return *subjects[index]; }
    Audience<Peer>& listeners() { return audience; }
    /** The subjects in the order of their making, or in another, the same for all peers. */
    std::vector<Subject*> inOrder(bool shuffled) {
        std::vector<Subject*> order;
        for (const auto& each : subjects)
            order.push_back(each.get());
        if (shuffled)
            std::ranges::shuffle(order, std::mt19937(1));
        return order;
    }

private:
    std::vector<std::unique_ptr<Subject>> subjects;  // the audience leaves first
    Audience<Peer> audience;
};

template <class Peer>
void tellMany(benchmark::State& state, bool shuffled) {
    Crowd<Peer> crowd(size_t(state.range(0)));
    const auto order = crowd.inOrder(shuffled);
    for (auto _ : state)
        for (typename Peer::Subject* each : order)
            Peer::notify(*each);
    if (!crowd.listeners().heard(int64_t(state.iterations()) * state.range(0)))
        state.SkipWithError("not all were told");
    state.SetItemsProcessed(int64_t(state.iterations()) * state.range(0) * int64_t(kDependentsEach));
}
}  // namespace

/** One subject with so many listeners. */
template <class Peer>
void Notify(benchmark::State& state) {
    typename Peer::Subject subject;
    Audience<Peer> audience(size_t(state.range(0)));
    audience.attend(subject);
    for (auto _ : state)
        Peer::notify(subject);
    if (!audience.heard(int64_t(state.iterations())))
        state.SkipWithError("not all were told");
    state.SetItemsProcessed(int64_t(state.iterations()) * state.range(0));
}

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

/** One more listener comes and goes again, at one of so many subjects with two listeners each; an item is the two steps. */
template <class Peer>
void AddRemove(benchmark::State& state) {
    Crowd<Peer> crowd(size_t(state.range(0)));
    typename Peer::Subject& subject = crowd.at(size_t(state.range(0)) / 2);
    typename Peer::template Listener<> guest;
    for (auto _ : state) {
        auto tie = Peer::add(subject, guest);
        Peer::remove(subject, guest, tie);
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}

/** Of so many listeners the first removes the last while they are told, and the last comes back afterwards; an item is the
    whole round. */
template <class Peer>
void RemoveInside(benchmark::State& state) {
    const auto size = size_t(state.range(0));
    typename Peer::Subject subject;
    Audience<Peer, Action> audience(size);
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

using Peers::BareLoop;
using Peers::Ours;
BENCHMARK_ALL(Ours);
BENCHMARK_TELLING(BareLoop);
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
