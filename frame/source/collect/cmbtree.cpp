#include "collect/cmbtree.h"
#include <algorithm>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kLeastOrder = 3;

template <class T>
void openGap(T* items, int32_t index, int32_t count) {
    std::copy_backward(items + index, items + count, items + count + 1);
}

template <class T>
void closeGap(T* items, int32_t index, int32_t count) {
    std::copy(items + index + 1, items + count, items + index);
    items[count - 1] = nullptr;
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

CmBTreeNode::CmBTreeNode(int32_t order)
    : keys(std::make_unique<CmObject*[]>(order)), children(std::make_unique<CmBTreeNode*[]>(order + 1)) {}

int32_t CmBTreeNode::shouldGo(const CmObject* object) const {
    CmObject** begin = keys.get();
    const auto isBehind = [object](const CmObject* key) { return object->compare(key) >= 0; };
    return static_cast<int32_t>(std::partition_point(begin, begin + count, isBehind) - begin);
}

int32_t CmBTreeNode::firstNotLess(const CmObject* object) const {
    CmObject** begin = keys.get();
    const auto isLess = [object](const CmObject* key) { return object->compare(key) > 0; };
    return static_cast<int32_t>(std::partition_point(begin, begin + count, isLess) - begin);
}

int32_t CmBTreeNode::indexInParent() const {
    CmBTreeNode** begin = parent->children.get();
    return static_cast<int32_t>(std::find(begin, begin + parent->count, this) - begin);
}

void CmBTreeNode::hang(int32_t childIndex, CmBTreeNode* child) {
    children[childIndex] = child;
    if (child)
        child->parent = this;
}

void CmBTreeNode::insert(int32_t keyIndex, CmObject* key, int32_t childIndex, CmBTreeNode* child) {
    openGap(keys.get(), keyIndex, count);
    openGap(children.get(), childIndex, count + 1);
    ++count;
    keys[keyIndex] = key;
    hang(childIndex, child);
}

void CmBTreeNode::erase(int32_t keyIndex, int32_t childIndex) {
    closeGap(keys.get(), keyIndex, count);
    closeGap(children.get(), childIndex, count + 1);
    --count;
}

void CmBTreeNode::appendFrom(const CmBTreeNode& other, int32_t keyIndex) {
    for (int32_t i = keyIndex; i < other.count; ++i)
        insert(count, other.keys[i], count + 1, other.children[i + 1]);
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

CmBTree::CmBTree(int32_t order) : order(std::max(order, kLeastOrder)) {}

CmBTree::CmBTree(const CmBTree& source) : CmBTree(source, WithoutElements()) {
    addAllFrom(&source);
}

CmBTree::CmBTree(const CmBTree& source, WithoutElements) : CmContainer(source), order(source.order) {}

CmBTree::~CmBTree() {
    CmBTree::removeAll();
}

bool CmBTree::add(CmObject* object) {
    if (!object)
        return false;
    if (!root)
        root = new CmBTreeNode(order);
    CmBTreeNode* node = root;
    int32_t index = node->shouldGo(object);
    while (!node->isLeaf()) {
        node = node->children[index];
        index = node->shouldGo(object);
    }
    node->insert(index, object, index + 1, nullptr);
    testRemember(object);
    ++_size;
    for (; node && node->count >= order; node = node->parent)
        split(node);
    return true;
}

bool CmBTree::remove(CmObject* object) {
    return drop(take(lookupNode(object)));
}

bool CmBTree::remove(const CmIterator& iterator) {
    return drop(take(iterator));
}

bool CmBTree::removeAt(int32_t index) {
    return drop(take(placeAt(index)));
}

void CmBTree::removeAll() {
    CmBTreeNode* nodes = std::exchange(root, nullptr);
    _size = 0;
    removeNodes(nodes);
}

CmIterator* CmBTree::newIterator() const {
    return new CmBTreeIterator(*this);
}

int32_t CmBTree::height() const {
    int32_t levels = 0;
    for (const CmBTreeNode* node = root; node; node = node->children[0])
        ++levels;
    return levels;
}

CmBTreePlace CmBTree::lookupNode(const CmObject* object) const {
    int32_t index = 0;
    for (CmBTreeNode* node = object ? root : nullptr; node; node = node->children[index]) {
        if (nodeSearch(node, object, index))
            return {node, index};
    }
    return {};
}

CmObject* CmBTree::take(CmBTreePlace place) {
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
    CmObject* object = take(gone);
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

bool CmBTree::nodeSearch(const CmBTreeNode* node, const CmObject* object, int32_t& index) const {
    index = node->firstNotLess(object);
    return index < node->count && object->compare(node->keys[index]) == 0;
}

CmBTreePlace CmBTree::placeOfObject(const CmObject* object) const {
    CmBTreePlace equal;
    int32_t index = 0;
    for (CmBTreeNode* node = object ? root : nullptr; node; node = node->children[index]) {
        if (nodeSearch(node, object, index))
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
    auto* right = new CmBTreeNode(order);
    right->hang(0, node->children[middle + 1]);
    right->appendFrom(*node, middle + 1);
    node->count = middle;
    if (!node->parent) {
        root = new CmBTreeNode(order);
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
        left->insert(left->count, key, left->count + 1, right->children[0]);
        key = right->keys[0];
        right->erase(0, 0);
    } else {
        right->insert(0, key, 0, left->children[left->count]);
        key = left->keys[left->count - 1];
        left->erase(left->count - 1, left->count);
    }
    return true;
}

void CmBTree::merge(CmBTreeNode* parent, int32_t separator) {
    CmBTreeNode* left = parent->children[separator];
    const std::unique_ptr<CmBTreeNode> right(parent->children[separator + 1]);
    left->insert(left->count, parent->keys[separator], left->count + 1, right->children[0]);
    left->appendFrom(*right, 0);
    parent->erase(separator, separator + 1);
}

void CmBTree::dropEmptyRoot() {
    if (root->count > 0)
        return;
    const std::unique_ptr<CmBTreeNode> gone(root);
    root = gone->children[0];
    if (root)
        root->parent = nullptr;
}

void CmBTree::removeNodes(CmBTreeNode* node) {
    if (!node)
        return;
    const std::unique_ptr<CmBTreeNode> gone(node);
    for (int32_t i = 0; i < node->count; ++i) {
        removeNodes(node->children[i]);
        testDelete(node->keys[i]);
    }
    removeNodes(node->children[node->count]);
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
