#pragma once
#include "collect/cmcontainer.h"
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace Tessarine {

/** A node of a CmBTree, side by side in memory with its keys and children: keys in order, and on inner nodes one child
    more than keys. Its tree moves it about. */
class CmBTreeNode {
public:
    CmBTreeNode(CmObject** keys, CmBTreeNode** children) : keys(keys), children(children) {}

    bool isLeaf() const { return !children; }
    CmBTreeNode* childAt(int32_t index) const { return children ? children[index] : nullptr; }
    /** The place behind all keys that aren't greater than object. */
    int32_t shouldGo(const CmObject* object) const;
    /** The first place whose key isn't less than object. */
    int32_t firstNotLess(const CmObject* object) const;
    /** Where this node hangs among its parent's children. */
    int32_t indexInParent() const;
    /** Hangs a child (null on a leaf) at a free place. */
    void hang(int32_t childIndex, CmBTreeNode* child);
    /** Puts a key and a child (null on a leaf) at their places, the others make room. */
    void insert(int32_t keyIndex, CmObject* key, int32_t childIndex, CmBTreeNode* child);
    void erase(int32_t keyIndex, int32_t childIndex);
    /** Hangs all keys and children of other from keyIndex on behind the own ones. */
    void appendFrom(const CmBTreeNode& other, int32_t keyIndex);

    int32_t count = 0;
    CmBTreeNode* parent = nullptr;  // borrowed
    CmObject** keys;                // room for order, as the tree's ownership says
    CmBTreeNode** children;         // room for order + 1; null on a leaf
};

/** The memory of a tree's nodes, from which all of them go with it. */
class CmBTreePool {
public:
    explicit CmBTreePool(int32_t order) : order(order) {}
    /** The other one is empty then. */
    CmBTreePool(CmBTreePool&& other) noexcept : order(other.order), memory(std::exchange(other.memory, {})) {}

    CmBTreeNode* make(bool leaf);
    /** Its memory is used for the next one. */
    void end(CmBTreeNode* node);
    /** No node is in use any longer. */
    void clear() { memory = {}; }

private:
    struct Memory {
        std::vector<std::unique_ptr<std::byte[]>> blocks;
        std::byte* fresh = nullptr;  // from here on the latest block wasn't used yet
        size_t freshBytes = 0, blockBytes = 0;
        CmBTreeNode *endedLeaves = nullptr, *endedInner = nullptr;  // to use again, chained by their parent
    };

    std::byte* takeFresh(size_t bytes);

    const int32_t order;
    Memory memory;
};

/** A key of a tree; node is null when there is none. */
struct CmBTreePlace {
    CmBTreeNode* node = nullptr;
    int32_t index = 0;

    CmObject* object() const { return node ? node->keys[index] : nullptr; }
    void toNext();
    void toPrevious();
};

/** Objects sorted by compare of the one that comes or is searched; equal ones stay in the order in which they came. */
class CmBTree : public CmContainer {
public:
    DECLARE_CLASS(CmBTree, CmContainer)
    DECLARE_NEWCOPY(CmBTree)
    /** order: the most children of a node, at least 3. */
    explicit CmBTree(int32_t order = 3);
    /** As copy(); the order is taken as well. */
    CmBTree(const CmBTree& source);
    ~CmBTree() override;

    int32_t size() const override { return _size; }
    int32_t total() const final { return _size; }
    bool isEmpty() const final { return _size == 0; }
    bool add(CmObject* object) override;
    bool remove(CmObject* object) override;
    bool remove(const CmIterator& iterator) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    CmObject* lookup(const CmObject* object) const override { return lookupNode(object).object(); }
    bool contains(const CmObject* object) const override { return lookupNode(object).node != nullptr; }
    bool containsAbs(const CmObject* object) const override { return lookupAbs(object) != nullptr; }
    CmIterator* newIterator() const override;

    /** Levels of nodes; 0 when empty. */
    int32_t height() const;
    /** The object itself if it is here. */
    CmObject* lookupAbs(const CmObject* object) const { return placeOfObject(object).object(); }
    /** The equal key that is met first on the way down. */
    CmBTreePlace lookupNode(const CmObject* object) const;

protected:
    /** Takes the order and ownership, for derived classes that add the elements in their own way. */
    struct WithoutElements {};
    CmBTree(const CmBTree& source, WithoutElements);

    /** Takes a key out and leaves its reference to the caller; null when there is none. */
    CmObject* takeEqual(const CmObject* object) { return takeFrom(lookupNode(object)); }
    CmObject* takeAt(int32_t index) { return takeFrom(placeAt(index)); }
    /** The same at a cursor, which moves on. */
    CmObject* take(const CmIterator& iterator);

private:
    friend class CmBTreeIterator;
    /** The place of an equal key in one node, else that of the child to search. */
    static bool nodeSearch(const CmBTreeNode* node, const CmObject* object, int32_t& index);
    CmBTreePlace placeAt(int32_t index) const;
    CmObject* takeFrom(CmBTreePlace place);
    CmBTreePlace placeOfObject(const CmObject* object) const;
    bool drop(CmObject* taken);
    CmBTreePlace firstPlace() const;
    CmBTreePlace lastPlace() const;
    void split(CmBTreeNode* node);
    void fill(CmBTreeNode* node);
    bool borrowKey(CmBTreeNode* parent, int32_t separator, bool fromRight);
    void merge(CmBTreeNode* parent, int32_t separator);
    void dropEmptyRoot();
    void removeNodes(const CmBTreeNode* node);
    int32_t minimum() const { return order / 2 - (order % 2 == 0 ? 1 : 0); }

    int32_t order;
    CmBTreeNode* root = nullptr;  // the pool's, as all nodes
    CmBTreePool pool;
};

/** Walks in the order of the keys. */
class CmBTreeIterator : public CmIterator {
public:
    explicit CmBTreeIterator(const CmBTree& tree) : CmIterator(tree), place(tree.firstPlace()) {}

    bool done() const final { return !place.node; }
    CmObject* next() final;
    CmObject* previous() final;
    using CmIterator::next;
    using CmIterator::previous;
    CmObject* current() const final { return place.object(); }
    void first() final { place = tree().firstPlace(); }
    void last() final { place = tree().lastPlace(); }

private:
    friend class CmBTree;
    const CmBTree& tree() const { return *static_cast<const CmBTree*>(container); }

    mutable CmBTreePlace place;  // moved on by remove(iterator)
};

}  // namespace Tessarine
