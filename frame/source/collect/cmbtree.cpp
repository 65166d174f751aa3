#include "collect/cmbtree.h"
#include <algorithm>
#include <cassert>
#include <new>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kLeastOrder = 3;
constexpr size_t kFewBytes = 512, kMostBytes = 1 << 16;  // of a pool's first block, which double up to these

/** Behind the keys that aren't greater. Here for add, which goes through many small nodes. */
inline int32_t placeFor(const CmObject* object, CmObject* const* keys, int32_t count) {
    constexpr int32_t kFewKeys = 3;  // that are looked through one by one
    int32_t from = 0;
    while (count - from > kFewKeys) {
        const int32_t middle = from + (count - from) / 2;
        if (object->compare(keys[middle]) >= 0)
            from = middle + 1;
        else
            count = middle;
    }
    while (from < count && object->compare(keys[from]) >= 0)
        ++from;
    return from;
}

template <class T>
void openGap(T* items, int32_t index, int32_t count) {
    std::copy_backward(items + index, items + count, items + count + 1);
}

template <class T>
void closeGap(T* items, int32_t index, int32_t count) {
    std::copy(items + index + 1, items + count, items + index);
}

CmBTreePlace leftmost(CmBTreeNode* node) {
    while (node && !node->isLeaf())
        node = node->children[0];
    return {node, 0};
}

CmBTreePlace rightmost(CmBTreeNode* node) {
    while (node && !node->isLeaf())
        node = node->children[node->count];
    return {node, node ? node->count - 1 : 0};
}
}  // namespace

int32_t CmBTreeNode::shouldGo(const CmObject* object) const {
    return placeFor(object, keys, count);
}

int32_t CmBTreeNode::firstNotLess(const CmObject* object) const {
    const auto isLess = [object](const CmObject* key) { return object->compare(key) > 0; };
    return static_cast<int32_t>(std::partition_point(keys, keys + count, isLess) - keys);
}

int32_t CmBTreeNode::indexInParent() const {
    CmBTreeNode** siblings = parent->children;
    return static_cast<int32_t>(std::find(siblings, siblings + parent->count, this) - siblings);
}

void CmBTreeNode::hang(int32_t childIndex, CmBTreeNode* child) {
    if (!child)
        return;
    assert(children);  // a leaf hangs nothing
    children[childIndex] = child;
    child->parent = this;
}

void CmBTreeNode::insert(int32_t keyIndex, CmObject* key, int32_t childIndex, CmBTreeNode* child) {
    openGap(keys, keyIndex, count);
    if (children)
        openGap(children, childIndex, count + 1);
    ++count;
    keys[keyIndex] = key;
    hang(childIndex, child);
}

void CmBTreeNode::erase(int32_t keyIndex, int32_t childIndex) {
    closeGap(keys, keyIndex, count);
    if (children)
        closeGap(children, childIndex, count + 1);
    --count;
}

void CmBTreeNode::appendFrom(const CmBTreeNode& other, int32_t keyIndex) {
    for (int32_t i = keyIndex; i < other.count; ++i) {
        keys[count++] = other.keys[i];
        hang(count, other.childAt(i + 1));
    }
}

CmBTreeNode* CmBTreePool::make(bool leaf) {
    CmBTreeNode*& ended = leaf ? memory.endedLeaves : memory.endedInner;
    const size_t places = size_t(order), links = leaf ? 0 : places + 1;
    void* node = ended ? static_cast<void*>(std::exchange(ended, ended->parent))
                       : takeFresh(sizeof(CmBTreeNode) + places * sizeof(CmObject*) + links * sizeof(CmBTreeNode*));
    auto* keys = reinterpret_cast<CmObject**>(static_cast<CmBTreeNode*>(node) + 1);
    return ::new (node) CmBTreeNode(keys, leaf ? nullptr : reinterpret_cast<CmBTreeNode**>(keys + order));
}

void CmBTreePool::end(CmBTreeNode* node) {
    node->parent = std::exchange(node->isLeaf() ? memory.endedLeaves : memory.endedInner, node);
}

std::byte* CmBTreePool::takeFresh(size_t bytes) {
    if (memory.freshBytes < bytes) {
        memory.blockBytes = std::max(bytes, std::clamp(2 * memory.blockBytes, kFewBytes, kMostBytes));
        memory.freshBytes = memory.blockBytes;
        memory.fresh = memory.blocks.emplace_back(new std::byte[memory.blockBytes]).get();
    }
    memory.freshBytes -= bytes;
    return std::exchange(memory.fresh, memory.fresh + bytes);
}

void CmBTreePlace::toNext() {
    if (!node->isLeaf()) {
        *this = leftmost(node->children[index + 1]);
        return;
    }
    for (++index; node && index == node->count; node = node->parent)
        index = node->parent ? node->indexInParent() : 0;
}

void CmBTreePlace::toPrevious() {
    if (!node->isLeaf()) {
        *this = rightmost(node->children[index]);
        return;
    }
    for (; node && index == 0; node = node->parent)
        index = node->parent ? node->indexInParent() : 0;
    --index;
}

IMPLEMENT_CLASS(CmBTree, CmContainer)

CmBTree::CmBTree(int32_t order) : order(std::max(order, kLeastOrder)), pool(this->order) {}

CmBTree::CmBTree(const CmBTree& source) : CmBTree(source, WithoutElements()) {
    addAllFrom(&source);
}

CmBTree::CmBTree(const CmBTree& source, WithoutElements) : CmContainer(source), order(source.order), pool(order) {}

CmBTree::~CmBTree() {
    CmBTree::removeAll();
}

bool CmBTree::add(CmObject* object) {
    if (!object)
        return false;
    if (!root)
        root = pool.make(true);
    CmBTreeNode* node = root;
    int32_t index = 0;
    while (index = placeFor(object, node->keys, node->count), !node->isLeaf())
        node = node->children[index];
    node->insert(index, object, index + 1, nullptr);
    testRemember(object);
    ++_size;
    for (; node && node->count >= order; node = node->parent)
        split(node);
    return true;
}

bool CmBTree::remove(CmObject* object) {
    return drop(takeEqual(object));
}

bool CmBTree::remove(const CmIterator& iterator) {
    return drop(take(iterator));
}

bool CmBTree::removeAt(int32_t index) {
    return drop(takeAt(index));
}

void CmBTree::removeAll() {
    const CmBTreePool oldPool(std::move(pool));  // all is empty before the first element dies
    const CmBTreeNode* nodes = std::exchange(root, nullptr);
    _size = 0;
    if (_ownsObjects != kBorrows)
        removeNodes(nodes);
}

CmIterator* CmBTree::newIterator() const {
    return new CmBTreeIterator(*this);
}

int32_t CmBTree::height() const {
    int32_t levels = 0;
    for (const CmBTreeNode* node = root; node; node = node->childAt(0))
        ++levels;
    return levels;
}

CmBTreePlace CmBTree::lookupNode(const CmObject* object) const {
    int32_t index = 0;
    for (CmBTreeNode* node = object ? root : nullptr; node; node = node->childAt(index)) {
        if (nodeSearch(node, object, index))
            return {node, index};
    }
    return {};
}

CmObject* CmBTree::takeFrom(CmBTreePlace place) {
    if (!place.node)
        return nullptr;
    CmObject* object = place.object();
    if (!place.node->isLeaf()) {
        const CmBTreePlace successor = leftmost(place.node->children[place.index + 1]);
        place.node->keys[place.index] = successor.object();
        place = successor;
    }
    place.node->erase(place.index, place.index + 1);
    --_size;
    fill(place.node);
    return object;
}

CmObject* CmBTree::take(const CmIterator& iterator) {
    if (!iterator.walksOn(this) || iterator.done())
        return nullptr;
    CmBTreePlace& place = static_cast<const CmBTreeIterator&>(iterator).place;
    const CmBTreePlace gone = place;
    place.toNext();
    const CmObject* following = place.object();
    CmObject* object = takeFrom(gone);
    place = placeOfObject(following);
    return object;
}

CmBTreePlace CmBTree::placeAt(int32_t index) const {
    if (index < 0 || index >= _size)
        return {};
    CmBTreePlace place = firstPlace();
    for (; index > 0; --index)
        place.toNext();
    return place;
}

bool CmBTree::nodeSearch(const CmBTreeNode* node, const CmObject* object, int32_t& index) {
    index = 0;
    for (int32_t high = node->count; index < high;) {
        const int32_t middle = (index + high) / 2;
        const int32_t difference = object->compare(node->keys[middle]);
        if (difference > 0) {
            index = middle + 1;
            continue;
        }
        high = middle;
        if (difference < 0)
            continue;
        index = middle;
        return true;
    }
    return false;
}

CmBTreePlace CmBTree::placeOfObject(const CmObject* object) const {
    CmBTreePlace equal;
    int32_t index = 0;
    for (CmBTreeNode* node = object ? root : nullptr; node; node = node->childAt(index)) {
        index = node->firstNotLess(object);
        if (index < node->count && object->compare(node->keys[index]) == 0)
            equal = {node, index};
    }
    while (equal.node && equal.object() != object && object->compare(equal.object()) == 0)
        equal.toNext();
    return equal.object() == object ? equal : CmBTreePlace();
}

bool CmBTree::drop(CmObject* taken) {
    testDelete(taken);
    return taken != nullptr;
}

CmBTreePlace CmBTree::firstPlace() const {
    return leftmost(root);
}

CmBTreePlace CmBTree::lastPlace() const {
    return rightmost(root);
}

void CmBTree::split(CmBTreeNode* node) {
    const int32_t middle = node->count / 2;
    CmBTreeNode* right = pool.make(node->isLeaf());
    right->hang(0, node->childAt(middle + 1));
    right->appendFrom(*node, middle + 1);
    node->count = middle;
    if (!node->parent) {
        root = pool.make(false);
        root->hang(0, node);
    }
    const int32_t index = node->indexInParent();
    node->parent->insert(index, node->keys[middle], index + 1, right);
}

void CmBTree::fill(CmBTreeNode* node) {
    while (node->parent && node->count < minimum()) {
        CmBTreeNode* parent = node->parent;
        const int32_t own = node->indexInParent();
        const bool fromRight = own < parent->count;
        const int32_t separator = fromRight ? own : own - 1;
        if (borrowKey(parent, separator, fromRight))
            return;
        merge(parent, separator);
        node = parent;
    }
    dropEmptyRoot();
}

bool CmBTree::borrowKey(CmBTreeNode* parent, int32_t separator, bool fromRight) {
    CmBTreeNode* left = parent->children[separator];
    CmBTreeNode* right = parent->children[separator + 1];
    if ((fromRight ? right : left)->count <= minimum())
        return false;
    CmObject*& key = parent->keys[separator];
    if (fromRight) {
        left->insert(left->count, key, left->count + 1, right->childAt(0));
        key = right->keys[0];
        right->erase(0, 0);
    } else {
        right->insert(0, key, 0, left->childAt(left->count));
        key = left->keys[left->count - 1];
        left->erase(left->count - 1, left->count);
    }
    return true;
}

void CmBTree::merge(CmBTreeNode* parent, int32_t separator) {
    CmBTreeNode* left = parent->children[separator];
    CmBTreeNode* right = parent->children[separator + 1];
    left->insert(left->count, parent->keys[separator], left->count + 1, right->childAt(0));
    left->appendFrom(*right, 0);
    parent->erase(separator, separator + 1);
    pool.end(right);
}

void CmBTree::dropEmptyRoot() {
    if (root->count > 0)
        return;
    CmBTreeNode* gone = std::exchange(root, root->childAt(0));
    if (!root)
        return pool.clear();
    root->parent = nullptr;
    pool.end(gone);
}

void CmBTree::removeNodes(const CmBTreeNode* node) {
    if (!node)
        return;
    for (int32_t i = 0; i < node->count; ++i) {
        removeNodes(node->childAt(i));
        testDelete(node->keys[i]);
    }
    removeNodes(node->childAt(node->count));
}

CmObject* CmBTreeIterator::next() {
    CmObject* object = current();
    if (object)
        place.toNext();
    return object;
}

CmObject* CmBTreeIterator::previous() {
    CmObject* object = current();
    if (object)
        place.toPrevious();
    return object;
}

}  // namespace Tessarine
