#pragma once
#include "bench/peers.h"
#include <benchmark/benchmark.h>
#include <memory>
#include <random>

/** What the benchmarks of notification share: who listens to whom, and the rows that are measured in several programs. */
namespace Peers {

inline constexpr size_t kDependentsEach = 2;

/** Some listeners, tied to one subject or to many. */
template <class Peer, class Then = Quiet>
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

}  // namespace Peers

/** One subject with so many listeners. */
template <class Peer>
void Notify(benchmark::State& state) {
    typename Peer::Subject subject;
    Peers::Audience<Peer> audience(size_t(state.range(0)));
    audience.attend(subject);
    for (auto _ : state)
        Peer::notify(subject);
    if (!audience.heard(int64_t(state.iterations())))
        state.SkipWithError("not all were told");
    state.SetItemsProcessed(int64_t(state.iterations()) * state.range(0));
}

/** One more listener comes and goes again, at one of so many subjects with two listeners each; an item is the two steps. */
template <class Peer>
void AddRemove(benchmark::State& state) {
    Peers::Crowd<Peer> crowd(size_t(state.range(0)));
    typename Peer::Subject& subject = crowd.at(size_t(state.range(0)) / 2);
    typename Peer::template Listener<> guest;
    for (auto _ : state) {
        auto tie = Peer::add(subject, guest);
        Peer::remove(subject, guest, tie);
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}
