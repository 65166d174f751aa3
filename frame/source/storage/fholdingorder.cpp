#include "fholdingorder.h"
#include <algorithm>
#include <iterator>

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

/** From the starts on, which come in their order, as soon as all that holds them in any case was there. */
std::vector<int32_t> FHoldingOrder::ranksOf(const Graph& graph, const std::vector<int32_t>& starts) {
    std::vector<int32_t> holders(graph.size()), rank(graph.size(), -1), ready;
    for (const std::vector<Edge>& edges : graph)
        for (const Edge& edge : edges)
            holders[edge.to] += edge.inAnyCase ? 1 : 0;
    int32_t time = 0;
    const auto pass = [&](int32_t at) {
        rank[at] = time++;
        for (const Edge& edge : graph[at])
            holders[edge.to] -= edge.inAnyCase ? 1 : 0;
        for (auto edge = graph[at].rbegin(); edge != graph[at].rend(); ++edge)
            if (holders[edge->to] == 0)
                ready.push_back(edge->to);
    };
    for (const int32_t start : starts) {
        if (holders[start] == 0)
            ready.push_back(start);
        while (!ready.empty()) {
            const int32_t at = ready.back();
            ready.pop_back();
            if (rank[at] < 0)
                pass(at);
        }
    }
    return rank;
}

void FHoldingOrder::arrange(const std::vector<int32_t>& roots) {
    rings = ringsOf(graph, false);
    cores = ringsOf(graph, true);
    std::vector<int32_t> starts;
    std::ranges::transform(roots, std::back_inserter(starts), [this](int32_t root) { return cores[root]; });
    starts.insert(starts.end(), cores.begin(), cores.end());
    ranks = ranksOf(condensed(), starts);
}

bool FHoldingOrder::mayHold(int32_t holder, int32_t held) const {
    return rings[holder] != rings[held] || ranks[cores[holder]] < ranks[cores[held]];
}

}  // namespace Tessarine
