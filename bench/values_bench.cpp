// Changing a value that others watch, beside a property with a notify signal. Times are those of one change, whoever hears
// of it; Memory tells bytes.
#include "base/source/updatehandler.h"
#include "gui/values/uintvalue.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <memory>
#include <vector>
#ifdef BENCH_QT
#include "bench/qtvalue.h"
#include <QCoreApplication>
#endif

/** Ways to watch a value, each as its users write it:

    Value     a number with a setter.
    View      counts the changes that it hears of.
    Way       how they come: at once, or at the next turn of the main loop.
    flush     that turn. */
namespace {
enum class Way { kDirect, kDeferred };

struct Ours {
    struct Value {
        explicit Value(Way way) { value->setStraightUpdate(way == Way::kDirect); }
        void set(int number) { value->setValue(number); }
        Tessarine::OPtr<Tessarine::UIntValue> value{new Tessarine::UIntValue};
    };
    struct View : Tessarine::FObject {
        void update(Tessarine::FUnknown*, int32_t) override { ++told; }
        int64_t told = 0;
    };

    static Tessarine::UpdateHandler& updates() {
        static Tessarine::UpdateHandler handler;
        return handler;
    }
    static void start() { updates(); }
    static void watch(Value& value, View& view, Way) { value.value->addDependent(&view); }
    static void unwatch(Value& value, View& view) { value.value->removeDependent(&view); }
    static void flush() { updates().triggerDeferedUpdates(nullptr); }
};

#ifdef BENCH_QT
struct Qt5 {
    struct Value {
        explicit Value(Way) {}
        void set(int number) { value->setValue(number); }
        std::unique_ptr<QtValue> value = std::make_unique<QtValue>();
    };
    struct View : QObject {
        void hear() { ++told; }
        int64_t told = 0;
    };

    static void start() {
        static int count = 1;
        static char name[] = "values_bench", *arguments[] = {name, nullptr};
        static QCoreApplication application(count, arguments);
    }
    static void watch(Value& value, View& view, Way way) {
        QObject::connect(value.value.get(), &QtValue::valueChanged, &view, &View::hear,
                         way == Way::kDirect ? Qt::DirectConnection : Qt::QueuedConnection);
    }
    static void unwatch(Value& value, View& view) { QObject::disconnect(value.value.get(), nullptr, &view, nullptr); }
    static void flush() { QCoreApplication::sendPostedEvents(); }
};
#endif

/** So many values, and views that watch each of them. */
template <class Peer>
class House {
public:
    House(size_t valueCount, size_t viewCount, Way way) {
        Peer::start();
        views.reserve(viewCount);
        for (size_t i = 0; i < viewCount; ++i)
            views.push_back(std::make_unique<typename Peer::View>());
        values.reserve(valueCount);
        for (size_t i = 0; i < valueCount; ++i)
            add(way);
    }
    ~House() {
        for (auto& value : values)
            for (auto& view : views)
                Peer::unwatch(value, *view);
    }
    House(const House&) = delete;

    typename Peer::Value& first() { return values.front(); }
    void setAll(int number) {
        for (auto& value : values)
            value.set(number);
    }
    bool allHeard(int64_t changes) const {
        return std::ranges::all_of(views, [changes](const auto& view) { return view->told == changes; });
    }

private:
    void add(Way way) {
        values.emplace_back(way);
        for (auto& view : views)
            Peer::watch(values.back(), *view, way);
    }

    std::vector<typename Peer::Value> values;
    std::vector<std::unique_ptr<typename Peer::View>> views;
};

constexpr size_t kMemoryValues = 10000;
}  // namespace

/** One value with so many views, which hear at once. */
template <class Peer>
void ChangeDirect(benchmark::State& state) {
    House<Peer> house(1, size_t(state.range(0)), Way::kDirect);
    int number = 0;
    for (auto _ : state)
        house.first().set(++number);
    if (!house.allHeard(number))
        state.SkipWithError("not all have heard");
    state.SetItemsProcessed(int64_t(state.iterations()));
}

/** The same with a turn of the loop behind each change. */
template <class Peer>
void ChangeDeferred(benchmark::State& state) {
    House<Peer> house(1, size_t(state.range(0)), Way::kDeferred);
    int number = 0;
    for (auto _ : state) {
        house.first().set(++number);
        Peer::flush();
    }
    if (!house.allHeard(number))
        state.SkipWithError("not all have heard");
    state.SetItemsProcessed(int64_t(state.iterations()));
}

/** So many values with one view each change once, then comes the turn of the loop. */
template <class Peer>
void ChangeManyDeferred(benchmark::State& state) {
    House<Peer> house(size_t(state.range(0)), 1, Way::kDeferred);
    int number = 0;
    for (auto _ : state) {
        house.setAll(++number);
        Peer::flush();
    }
    if (!house.allHeard(number * state.range(0)))
        state.SkipWithError("not all have heard");
    state.SetItemsProcessed(int64_t(state.iterations()) * state.range(0));
}

/** What a value takes that so many views watch, with its share of the tables: bytes, in the place of nanoseconds. */
template <class Peer>
double bytesOfValue(size_t views) {
    const size_t before = mallinfo2().uordblks;
    const House<Peer> house(kMemoryValues, views, Way::kDeferred);
    const size_t taken = mallinfo2().uordblks - before - kMemoryValues * sizeof(typename Peer::Value);
    return double(taken) / kMemoryValues;
}

template <class Peer>
void Memory(benchmark::State& state) {
    Peer::start();
    static const double bytes[] = {bytesOfValue<Peer>(0), bytesOfValue<Peer>(1)};  // before tables have grown
    for (auto _ : state)
        state.SetIterationTime(bytes[state.range(0)] * 1e-9);
}

#define BENCHMARK_ALL(Peer)                                                           \
    BENCHMARK_TEMPLATE(Memory, Peer)->Arg(0)->Arg(1)->UseManualTime()->Iterations(1); \
    BENCHMARK_TEMPLATE(ChangeDirect, Peer)->Arg(0)->Arg(1)->Arg(8);                   \
    BENCHMARK_TEMPLATE(ChangeDeferred, Peer)->Arg(0)->Arg(1)->Arg(8);                 \
    BENCHMARK_TEMPLATE(ChangeManyDeferred, Peer)->Arg(1000)->Arg(100000)

BENCHMARK_ALL(Ours);
#ifdef BENCH_QT
BENCHMARK_ALL(Qt5);
#endif
