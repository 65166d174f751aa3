#pragma once
#include "base/source/tlinkedlist.h"

namespace Tessarine {

/** A link of a TDLinkedList. */
template <class T>
struct TDLink {
    explicit TDLink(const T& value) : value(value) {}

    T value;
    TDLink* next = nullptr;  // owned by the list
    TDLink* previous = nullptr;
};

/** Doubly linked: removing a known element and walking backward are cheap too. */
template <class T>
class TDLinkedList : public TLinkedContainer<T, TDLink<T>> {
public:
    using TLinkedContainer<T, TDLink<T>>::TLinkedContainer;

    TDLinkedList* newInstance() const override { return new TDLinkedList(this->errorObject); }
    /** index is at most total(). */
    bool insertAt(const T& value, int32_t index);
    /** In front of the first element that equals neighbour; false when there is none. */
    bool insertBefore(const T& value, const T& neighbour);
};

/** Pairs with unique keys, in order of arrival, found by a walk. `for (auto& pair : dictionary)` gives the key and value
    of each. The constructor's pair is the default entry, which stands for every missing one. */
template <class K, class V>
class TDictionary : public TDLinkedList<TAssociation<K, V>> {
public:
    using Pair = TAssociation<K, V>;

    explicit TDictionary(const K& defaultKey = K(), const V& defaultValue = V())
        : TDLinkedList<Pair>(Pair(defaultKey, defaultValue)) {}

    TDictionary* newInstance() const override {
        return new TDictionary(this->errorObject.key, this->errorObject.value);
    }
    /** False, and the old value kept: the key is there. */
    bool addKeyAndObject(const K& key, const V& value) { return !linkOfKey(key) && this->append(Pair(key, value)); }
    V& lookupObject(const K& key) const { return this->valueOf(linkOfKey(key)).value; }
    /** The old pair goes and the new one comes last. False, and nothing done: the key isn't there. */
    bool replace(const K& key, const V& value);

private:
    TDLink<Pair>* linkOfKey(const K& key) const;
};

template <class T>
bool TDLinkedList<T>::insertAt(const T& value, int32_t index) {
    if (index == this->_size)
        return this->append(value);
    TDLink<T>* behind = this->linkAt(index);
    return behind && this->insertBehind(behind->previous, value);
}

template <class T>
bool TDLinkedList<T>::insertBefore(const T& value, const T& neighbour) {
    TDLink<T>* behind = this->linkOf(neighbour);
    return behind && this->insertBehind(behind->previous, value);
}

template <class K, class V>
bool TDictionary<K, V>::replace(const K& key, const V& value) {
    TDLink<Pair>* link = linkOfKey(key);
    if (!link)
        return false;
    this->append(Pair(key, value));  // first: key or value may lie in the old one
    return this->removeLink(link);
}

template <class K, class V>
auto TDictionary<K, V>::linkOfKey(const K& key) const -> TDLink<Pair>* {
    TDLink<Pair>* link = this->_first;
    while (link && !(link->value.key == key))
        link = link->next;
    return link;
}

}  // namespace Tessarine
