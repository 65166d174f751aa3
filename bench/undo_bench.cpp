// Histories of actions that each change a number and have a title: pushing, undoing and redoing all of them, and forgetting
// them. An item is a step; 1,000 and 100,000 of them, so that a step that grows with the history shows. Ours executes an
// action through perform as the peer does through push; nobody listens to either. Each step has a text of its own, as
// translated titles are.
#include "graphed/gactionprocessor.h"
#include <benchmark/benchmark.h>
#ifdef BENCH_QTWIDGETS
#include <QUndoStack>
#endif

using namespace Tessarine;

namespace {
constexpr int64_t kFew = 1000, kMany = 100000;

/** What the actions work on. */
int64_t level = 0;

class RaiseLevel final : public GActionTarget {
public:
    explicit RaiseLevel(int32_t amount) : amount(amount) {}
    bool execute() override { return redo(); }
    bool undo() override { return level -= amount, true; }
    bool redo() override { return level += amount, true; }

private:
    int32_t amount;
};

struct Ours {
    void push(int32_t amount) {
        const OPtr<GAction> action(new GAction("Edit", "Raise"));
        action->addTarget(new RaiseLevel(amount), false);
        history.perform(action, u"Raise Level");
    }
    void undo() { history.undo(); }
    void redo() { history.redo(); }
    void clear() { history.removeAll(); }

    GActionProcessor history;
};

#ifdef BENCH_QTWIDGETS
class QtRaiseLevel final : public QUndoCommand {
public:
    explicit QtRaiseLevel(int32_t amount) : QUndoCommand(QString::fromUtf8("Raise Level")), amount(amount) {}
    void undo() override { level -= amount; }
    void redo() override { level += amount; }

private:
    int32_t amount;
};

struct Qt5 {
    void push(int32_t amount) { history.push(new QtRaiseLevel(amount)); }
    void undo() { history.undo(); }
    void redo() { history.redo(); }
    void clear() { history.clear(); }

    QUndoStack history;
};
#endif

template <class Peer>
void pushAll(Peer& peer, int64_t count) {
    for (int32_t i = 1; i <= count; ++i)
        peer.push(i);
}

template <class Peer>
void Push(benchmark::State& state) {
    Peer peer;
    for (auto _ : state) {
        pushAll(peer, state.range(0));
        state.PauseTiming();
        peer.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/** One way is timed, the other one brings the history back. */
template <class Peer>
void walk(benchmark::State& state, void (Peer::*there)(), void (Peer::*back)()) {
    const int64_t count = state.range(0);
    Peer peer;
    level = 0;
    pushAll(peer, count);
    const auto goAll = [&](void (Peer::*step)()) {
        for (int64_t i = 0; i < count; ++i)
            (peer.*step)();
    };
    if (there == &Peer::redo)
        goAll(&Peer::undo);
    const int64_t start = level;
    for (auto _ : state) {
        goAll(there);
        state.PauseTiming();
        goAll(back);
        if (level != start)
            state.SkipWithError("steps were left out");
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
}

template <class Peer>
void Undo(benchmark::State& state) {
    walk<Peer>(state, &Peer::undo, &Peer::redo);
}

template <class Peer>
void Redo(benchmark::State& state) {
    walk<Peer>(state, &Peer::redo, &Peer::undo);
}

template <class Peer>
void Clear(benchmark::State& state) {
    Peer peer;
    for (auto _ : state) {
        state.PauseTiming();
        pushAll(peer, state.range(0));
        state.ResumeTiming();
        peer.clear();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define ROWS(Peer)                                \
    BENCHMARK(Push<Peer>)->Arg(kFew)->Arg(kMany); \
    BENCHMARK(Undo<Peer>)->Arg(kFew)->Arg(kMany); \
    BENCHMARK(Redo<Peer>)->Arg(kFew)->Arg(kMany); \
    BENCHMARK(Clear<Peer>)->Arg(kFew)->Arg(kMany)
ROWS(Ours);
#ifdef BENCH_QTWIDGETS
ROWS(Qt5);
#endif
}  // namespace
