#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tessarine {

/** Which references between the objects of an archive may be counted, so that no ring of objects holds itself. Objects
    are numbers from 0 on. Some hold others in any case; the rest of the references is counted unless that would close a
    ring. */
class FHoldingOrder {
public:
    explicit FHoldingOrder(size_t count) : graph(count) {}

    void add(int32_t holder, int32_t held, bool inAnyCase) { graph[holder].push_back({held, inAnyCase}); }
    /** Once, when all is added. Of a ring the references from its root on are counted, so that what roots reach is held
        as far as it can be. */
    void arrange(const std::vector<int32_t>& roots);
    bool mayHold(int32_t holder, int32_t held) const;

private:
    struct Edge {
        int32_t to;
        bool inAnyCase;
    };
    class Ranking;
    using Graph = std::vector<std::vector<Edge>>;

    static std::vector<int32_t> ringsOf(const Graph& graph, bool inAnyCaseOnly);
    Graph condensed() const;

    Graph graph;
    std::vector<int32_t> rings;  // of each object: what is in one can reach each other
    std::vector<int32_t> cores;  // the same of what is held in any case
    std::vector<int32_t> ranks;  // of each core: holders come before what they hold
};

}  // namespace Tessarine
