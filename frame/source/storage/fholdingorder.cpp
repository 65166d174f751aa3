#include "fholdingorder.h"
#include <algorithm>
#include <utility>

namespace Tessarine {

/** By depth first search: the first object of a ring that is met reaches all of it, and none that was met earlier. */
std::vector<int32_t> FHoldingOrder::ringsOf(const Graph& graph, bool inAnyCaseOnly) {
    const size_t count = graph.size();
    std::vector<int32_t> met(count, -1), earliest(count), ring(count, -1), path, waiting;
    std::vector<size_t> passed(count);
    int32_t time = 0, found = 0;
    const auto enter = [&](int32_t at) {
        met[at] = earliest[at] = time++;
        path.push_back(at);
        waiting.push_back(at);
    };
    const auto leave = [&](int32_t at) {
        path.pop_back();
        if (!path.empty())
            earliest[path.back()] = std::min(earliest[path.back()], earliest[at]);
        if (earliest[at] != met[at])
            return;
        const auto first = std::ranges::find(waiting.rbegin(), waiting.rend(), at).base() - 1;
        std::for_each(first, waiting.end(), [&](int32_t member) { ring[member] = found; });
        waiting.erase(first, waiting.end());
        ++found;
    };
    for (size_t start = 0; start < count; ++start) {
        if (met[start] < 0)
            enter(static_cast<int32_t>(start));
        while (!path.empty()) {
            const int32_t at = path.back();
            if (passed[at] == graph[at].size()) {
                leave(at);
                continue;
            }
            const Edge& edge = graph[at][passed[at]++];
            if (!edge.inAnyCase && inAnyCaseOnly)
                continue;
            if (met[edge.to] < 0)
                enter(edge.to);
            else if (ring[edge.to] < 0)
                earliest[at] = std::min(earliest[at], met[edge.to]);
        }
    }
    return ring;
}

/** Of the cores. */
FHoldingOrder::Graph FHoldingOrder::condensed() const {
    Graph between(graph.size());
    for (size_t from = 0; from < graph.size(); ++from) {
        for (const Edge& edge : graph[from]) {
            if (cores[edge.to] != cores[from])
                between[cores[from]].push_back({cores[edge.to], edge.inAnyCase});
        }
    }
    return between;
}

/** Passes what it can, in depth first order; what is held in any case comes behind all that holds it. */
class FHoldingOrder::Ranking {
public:
    explicit Ranking(const Graph& graph) : graph(graph), ranks(graph.size(), -1), holders(graph.size()) {
        for (size_t from = 0; from < graph.size(); ++from)
            for (const Edge& edge : graph[from])
                if (edge.inAnyCase)
                    holders[edge.to].push_back(static_cast<int32_t>(from));
    }

    /** What isn't free yet waits. */
    void passFrom(int32_t start) {
        std::vector<int32_t> ready{start};
        while (!ready.empty()) {
            const int32_t at = ready.back();
            ready.pop_back();
            if (ranks[at] >= 0)
                continue;
            if (isFree(at))
                pass(at, ready);
            else
                waiting.push_back(at);
        }
    }
    /** What waits, and all that holds it. */
    void passWaiting() {
        while (!waiting.empty()) {
            const int32_t at = waiting.back();
            if (ranks[at] < 0 && !isFree(at)) {
                waiting.push_back(holders[at].back());
                continue;
            }
            waiting.pop_back();
            passFrom(at);
        }
    }
    std::vector<int32_t> take() { return std::move(ranks); }

private:
    bool isFree(int32_t at) {
        std::vector<int32_t>& left = holders[at];
        while (!left.empty() && ranks[left.back()] >= 0)
            left.pop_back();
        return left.empty();
    }
    void pass(int32_t at, std::vector<int32_t>& ready) {
        ranks[at] = time++;
        std::for_each(graph[at].rbegin(), graph[at].rend(), [&](const Edge& edge) { ready.push_back(edge.to); });
    }

    const Graph& graph;
    std::vector<int32_t> ranks;
    std::vector<std::vector<int32_t>> holders;  // in any case, of which some aren't passed
    std::vector<int32_t> waiting;
    int32_t time = 0;
};

void FHoldingOrder::arrange(const std::vector<int32_t>& roots) {
    rings = ringsOf(graph, false);
    cores = ringsOf(graph, true);
    const Graph between = condensed();
    Ranking ranking(between);
    std::ranges::for_each(roots, [&](int32_t root) { ranking.passFrom(cores[root]); });
    ranking.passWaiting();
    std::ranges::for_each(cores, [&](int32_t core) { ranking.passFrom(core); });
    ranking.passWaiting();
    ranks = ranking.take();
}

bool FHoldingOrder::mayHold(int32_t holder, int32_t held) const {
    return rings[holder] != rings[held] || ranks[cores[holder]] < ranks[cores[held]];
}

}  // namespace Tessarine
