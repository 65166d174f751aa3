#include "collect/cmbtree.h"
#include "collect/cmarray.h"
#include "collect/cmhashtable.h"
#include "tests/frame/source/collect/probe.h"
#include <map>
#include <random>

namespace Tessarine {
namespace {

using CmBTreeTest = CollectTest;

const CmBTreeNode* rootOf(const CmBTree& tree) {
    const std::unique_ptr<CmIterator> cursor(tree.newIterator());
    const CmBTreeNode* node = tree.lookupNode(cursor->current()).node;
    while (node && node->parent)
        node = node->parent;
    return node;
}

/** Checks links, fill and depth of a node and all below; gives the number of keys. */
int32_t checkNode(const CmBTreeNode& node, int32_t order, int32_t levels) {
    const int32_t least = order / 2 - (order % 2 == 0 ? 1 : 0);
    EXPECT_LT(node.count, order);
    EXPECT_GE(node.count, node.parent ? least : 1);
    EXPECT_EQ(node.isLeaf(), levels == 1) << "leaves on different levels";
    int32_t keys = node.count;
    for (int32_t i = 0; i <= node.count && !node.isLeaf(); ++i) {
        EXPECT_EQ(node.children[i]->parent, &node);
        keys += checkNode(*node.children[i], order, levels - 1);
    }
    return keys;
}

void checkTree(const CmBTree& tree, int32_t order) {
    const CmBTreeNode* root = rootOf(tree);
    EXPECT_EQ(root ? checkNode(*root, order, tree.height()) : tree.height(), tree.total());
}

using Model = std::multimap<int32_t, CmObject*>;

void expectSame(const CmContainer& container, const Model& model) {
    ASSERT_EQ(container.total(), static_cast<int32_t>(model.size()));
    ASSERT_EQ(Ranked::living, container.total());
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    for (const auto& [rank, object] : model)
        ASSERT_EQ(cursor->next(), object) << "of rank " << rank;
    ASSERT_TRUE(cursor->done());
    cursor->last();
    for (auto at = model.rbegin(); at != model.rend(); ++at)
        ASSERT_EQ(cursor->previous(), at->second);
    ASSERT_TRUE(cursor->done());
}

void addBoth(CmContainer& container, Model& model, int32_t rank) {
    auto* object = new Probe(rank);
    ASSERT_TRUE(container.add(object));
    model.emplace(rank, object);
}

/** By value, by index or at a cursor: what is removed is known before, and is what the model loses. */
void removeBoth(CmContainer& container, Model& model, std::mt19937& random) {
    const int32_t place = static_cast<int32_t>(random() % model.size());
    auto at = std::next(model.begin(), place);
    CmObject* searched = at->second;
    ASSERT_TRUE(container.containsAbs(searched));
    if (random() % 3 == 0) {
        const CmObject* gone = container.lookup(searched);
        for (at = model.lower_bound(at->first); at->second != gone;)
            ASSERT_EQ((++at)->first, rankOf(searched));
        ASSERT_TRUE(container.remove(searched));
    } else if (random() % 2) {
        ASSERT_TRUE(container.removeAt(place));
    } else {
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        ASSERT_TRUE(cursor->setCurrent(searched));
        ASSERT_TRUE(container.remove(*cursor));
        ASSERT_EQ(cursor->current(), std::next(at) == model.end() ? nullptr : std::next(at)->second);
    }
    model.erase(at);
}

template <class Check>
void grindAgainstModel(CmContainer& container, int32_t ranks, Check check) {
    SCOPED_TRACE(container.isA() + std::string(", ranks ") + std::to_string(ranks));
    std::mt19937 random(static_cast<uint32_t>(1000 + ranks));
    container._ownsObjects = CmContainer::kTakesOver;
    Model model;
    for (int32_t step = 0; step < 1200 && !testing::Test::HasFailure(); ++step) {
        SCOPED_TRACE(step);
        const bool grows = random() % 100 < (step % 400 < 200 ? 80u : 20u);  // fills, then drains, three times
        if (grows || model.empty())
            addBoth(container, model, static_cast<int32_t>(random() % ranks));
        else
            removeBoth(container, model, random);
        check();
        expectSame(container, model);
    }
    container.removeAll();
}

TEST_F(CmBTreeTest, BehavesLikeAMultimapAndKeepsItsShape) {
    for (const int32_t order : {3, 4, 5, 6, 7, 16}) {
        for (const int32_t ranks : {5, 1000}) {
            SCOPED_TRACE(order);
            CmBTree tree(order);
            grindAgainstModel(tree, ranks, [&] { checkTree(tree, order); });
        }
    }
}

/** With as many buckets as ranks, hashing by rank sorts. */
TEST_F(CmBTreeTest, OrderedArrayAndHashTableBehaveLikeItToo) {
    for (const int32_t ranks : {5, 1000}) {
        CmOrderedArray array;
        grindAgainstModel(array, ranks, [] {});
        CmHashTable table(ranks);
        grindAgainstModel(table, ranks, [] {});
    }
}

}  // namespace
}  // namespace Tessarine
