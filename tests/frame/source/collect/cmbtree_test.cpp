#include "collect/cmbtree.h"
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
        if (!node.children[i]) {
            ADD_FAILURE() << "child " << i << " is missing";
            continue;
        }
        EXPECT_EQ(node.children[i]->parent, &node);
        keys += checkNode(*node.children[i], order, levels - 1);
    }
    return keys;
}

void checkTree(const CmBTree& tree, int32_t order) {
    const CmBTreeNode* root = rootOf(tree);
    if (!root) {
        EXPECT_EQ(tree.total(), 0);
        EXPECT_EQ(tree.height(), 0);
        return;
    }
    EXPECT_EQ(checkNode(*root, order, tree.height()), tree.total());
}

using Model = std::multimap<int32_t, CmObject*>;

void expectSame(const CmBTree& tree, const Model& model) {
    ASSERT_EQ(tree.total(), static_cast<int32_t>(model.size()));
    ASSERT_EQ(Probe::living, tree.total());
    CmBTreeIterator cursor(tree);
    for (const auto& [rank, object] : model)
        ASSERT_EQ(cursor.next(), object) << "of rank " << rank;
    ASSERT_TRUE(cursor.done());
    cursor.last();
    for (auto at = model.rbegin(); at != model.rend(); ++at)
        ASSERT_EQ(cursor.previous(), at->second);
    ASSERT_TRUE(cursor.done());
}

void addBoth(CmBTree& tree, Model& model, int32_t rank) {
    auto* object = new Probe(rank);
    ASSERT_TRUE(tree.add(object));
    model.emplace(rank, object);
}

/** By value, by index or at a cursor: what is removed is known before, and is what the model loses. */
void removeBoth(CmBTree& tree, Model& model, std::mt19937& random) {
    const int32_t place = static_cast<int32_t>(random() % model.size());
    auto at = std::next(model.begin(), place);
    CmObject* searched = at->second;
    ASSERT_EQ(tree.lookupAbs(searched), searched);
    if (random() % 3 == 0) {
        const CmObject* gone = tree.lookup(searched);
        for (at = model.lower_bound(at->first); at->second != gone;)
            ASSERT_EQ((++at)->first, rankOf(searched));
        ASSERT_TRUE(tree.remove(searched));
    } else if (random() % 2) {
        ASSERT_TRUE(tree.removeAt(place));
    } else {
        CmBTreeIterator cursor(tree);
        ASSERT_TRUE(cursor.setCurrent(searched));
        ASSERT_TRUE(tree.remove(cursor));
        ASSERT_EQ(cursor.current(), std::next(at) == model.end() ? nullptr : std::next(at)->second);
    }
    model.erase(at);
}

void grindAgainstModel(int32_t order, int32_t ranks) {
    SCOPED_TRACE("order " + std::to_string(order) + ", ranks " + std::to_string(ranks));
    std::mt19937 random(order * 1000 + ranks);
    CmBTree tree(order);
    tree._ownsObjects = CmContainer::kTakesOver;
    Model model;
    for (int32_t step = 0; step < 1200 && !testing::Test::HasFatalFailure(); ++step) {
        SCOPED_TRACE(step);
        const bool grows = random() % 100 < (step % 400 < 200 ? 80u : 20u);  // fills, then drains, three times
        if (grows || model.empty())
            addBoth(tree, model, static_cast<int32_t>(random() % ranks));
        else
            removeBoth(tree, model, random);
        checkTree(tree, order);
        expectSame(tree, model);
        if (testing::Test::HasFailure())
            return;
    }
}

TEST_F(CmBTreeTest, BehavesLikeAMultimapAndKeepsItsShape) {
    for (const int32_t order : {3, 4, 5, 6, 7, 16}) {
        for (const int32_t ranks : {5, 1000})
            grindAgainstModel(order, ranks);
    }
}

TEST_F(CmBTreeTest, DrainsInEachDirection) {
    constexpr int32_t kCount = 200;
    for (const int32_t order : {3, 4, 5}) {
        for (const bool fromFront : {true, false}) {
            SCOPED_TRACE(std::to_string(order) + (fromFront ? " from the front" : " from the back"));
            CmBTree tree(order);
            tree._ownsObjects = CmContainer::kTakesOver;
            for (int32_t i = 0; i < kCount; ++i)
                tree.add(new Probe(i));
            while (!tree.isEmpty()) {
                ASSERT_TRUE(tree.removeAt(fromFront ? 0 : tree.total() - 1));
                checkTree(tree, order);
            }
            EXPECT_EQ(Probe::living, 0);
        }
    }
}

TEST_F(CmBTreeTest, HeightFollowsTheKeys) {
    CmBTree tree(2);
    EXPECT_EQ(tree.height(), 0);
    tree._ownsObjects = CmContainer::kTakesOver;
    for (const int32_t height : {1, 1, 2, 2, 2, 2, 3}) {  // a third key splits: the order is 3
        tree.add(new Probe(tree.total()));
        EXPECT_EQ(tree.height(), height) << tree.total();
    }
    while (!tree.isEmpty())
        tree.removeAt(0);
    EXPECT_EQ(tree.height(), 0);
    tree.add(new Probe);
    EXPECT_EQ(tree.height(), 1);
}

TEST_F(CmBTreeTest, CopyHasItsOwnKeysAndTheOrder) {
    CmBTree tree(4);
    fill(tree, {5, 3, 9, 1, 7, 2, 8});
    const CmBTree copy(tree);
    EXPECT_EQ(ranksOf(copy), Ranks({1, 2, 3, 5, 7, 8, 9}));
    EXPECT_EQ(copy.lookupAbs(tree.at(0)), nullptr);
    checkTree(copy, 4);
    EXPECT_EQ(Probe::living, 14);
}

TEST_F(CmBTreeTest, OrdersByAddressWithoutAnyOther) {
    CmObject objects[50];
    CmBTree tree;
    for (int32_t i = 0; i < 50; ++i)
        tree.add(&objects[i * 7 % 50]);
    for (int32_t i = 0; i < 50; ++i)
        EXPECT_EQ(tree.at(i), &objects[i]);
}

}  // namespace
}  // namespace Tessarine
