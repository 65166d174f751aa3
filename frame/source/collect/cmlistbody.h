#pragma once
#include "collect/cmlist.h"
#include <memory>
#include <utility>
#include <vector>

/** The body of CmList; each list's source instantiates it for its link. */

namespace Tessarine {

template <class Link>
CmList<Link>::~CmList() {
    CmList::removeAll();
}

template <class Link>
bool CmList<Link>::add(CmObject* object) {
    if constexpr (kIsIntrusive)
        return append(classCast<Link>(object));
    else
        return append(object);
}

template <class Link>
bool CmList<Link>::remove(const CmIterator& iterator) {
    CmObject* object = take(iterator);
    testDelete(object);
    return object != nullptr;
}

template <class Link>
void CmList<Link>::removeAll() {
    std::vector<CmObject*> gone;  // all of them, before the first one dies: it may come back with another
    gone.reserve(static_cast<size_t>(std::exchange(_size, 0)));
    _last = nullptr;
    for (Link* link = std::exchange(_first, nullptr); link;)
        gone.push_back(unmake(std::exchange(link, link->next)));
    for (CmObject* object : gone)
        testDelete(object);
}

template <class Link>
CmIterator* CmList<Link>::newIterator() const {
    return new CmListIterator<Link>(*this);
}

template <class Link>
bool CmList<Link>::insertAt(Element* object, int32_t index) {
    if (index < 0 || index > _size)
        return false;
    return insertBehind(index == _size ? _last : placeAt(index).previous, object);
}

template <class Link>
bool CmList<Link>::insertBefore(Element* object, const CmObject* neighbour) {
    const Place place = placeOfObject(neighbour);
    return place.link && insertBehind(place.previous, object);
}

template <class Link>
bool CmList<Link>::insertAfter(Element* object, const CmObject* neighbour) {
    const Place place = placeOfObject(neighbour);
    return place.link && insertBehind(place.link, object);
}

template <class Link>
bool CmList<Link>::replaceAt(Element* object, int32_t index) {
    const Place place = placeAt(index);
    if (place.object() != object)
        return place.link && insertBehind(place.link, object) && removeFrom(place);
    testRemember(object);
    testDelete(object);
    return object != nullptr;
}

template <class Link>
typename CmList<Link>::Element* CmList<Link>::removeLast() {
    return static_cast<Element*>(takeFrom(placeOf(_last)));
}

template <class Link>
int32_t CmList<Link>::index(const CmObject* object) const {
    const Place place = placeOfEqual(object);
    return place.link ? place.index : -1;
}

template <class Link>
int32_t CmList<Link>::indexAbs(const CmObject* object) const {
    const Place place = placeWhere([object](const Place& each) { return each.object() == object; });
    return place.link ? place.index : -1;
}

template <class Link>
bool CmList<Link>::addAllFromAbs(const CmContainer* source) {
    if (!source || source == this)
        return false;
    const std::unique_ptr<CmIterator> cursor(source->newIterator());
    bool all = true;
    while (!cursor->done())
        all = add(cursor->next()) && all;
    return all;
}

template <class Link>
bool CmList<Link>::insertSorted(Element* object) {
    const auto isGreater = [object](const Place& place) { return object->compare(place.object()) < 0; };
    return object && insertBehind(placeWhere(isGreater).previous, object);
}

template <class Link>
CmObject* CmList<Link>::take(const CmIterator& iterator) {
    if (!iterator.walksOn(this) || iterator.done())
        return nullptr;
    const auto& mine = static_cast<const CmListIterator<Link>&>(iterator);
    return takeFrom(placeOf(std::exchange(mine.cursor, mine.cursor->next)));
}

template <class Link>
template <class Test>
typename CmList<Link>::Place CmList<Link>::placeWhere(Test test) const {
    Place place{nullptr, _first, 0};
    while (place.link && !test(place))
        place = {place.link, place.link->next, place.index + 1};
    return place;
}

template <class Link>
typename CmList<Link>::Place CmList<Link>::placeAt(int32_t index) const {
    if (index < 0 || index >= _size)
        return {_last, nullptr, _size};
    return placeWhere([index](const Place& place) { return place.index == index; });
}

template <class Link>
typename CmList<Link>::Place CmList<Link>::placeOf(Link* link) const {
    return {link ? Links::previousOf(_first, link) : _last, link, 0};
}

template <class Link>
typename CmList<Link>::Place CmList<Link>::placeOfEqual(const CmObject* object) const {
    return placeWhere([object](const Place& place) { return object && object->isEqual(place.object()); });
}

template <class Link>
typename CmList<Link>::Place CmList<Link>::placeOfObject(const CmObject* object) const {
    if constexpr (kIsIntrusive) {
        auto* link = const_cast<Link*>(classCast<Link>(object));
        return placeOf(link && link->list == this ? link : nullptr);
    } else {
        return placeWhere([object](const Place& place) { return object == place.object(); });
    }
}

/** Null when the object can't be a link of this list. */
template <class Link>
Link* CmList<Link>::makeLink(Element* object) {
    if constexpr (kIsIntrusive)
        return object && !object->list ? (object->list = this, object) : nullptr;
    else
        return object ? pool.make(object) : nullptr;
}

/** The object of a link that has left the chain. */
template <class Link>
CmObject* CmList<Link>::unmake(Link* link) {
    if constexpr (kIsIntrusive) {
        link->list = nullptr;
        link->next = nullptr;
        Links::setPrevious<Link>(link, nullptr);
        return link;
    } else {
        return pool.end(link);
    }
}

template <class Link>
bool CmList<Link>::insertBehind(Link* previous, Element* object) {
    Link* link = makeLink(object);
    if (!link)
        return false;
    Links::hangIn(_first, _last, previous, link);
    ++_size;
    testRemember(object);
    return true;
}

template <class Link>
CmObject* CmList<Link>::takeFrom(const Place& place) {
    if (!place.link)
        return nullptr;
    Links::hangOut(_first, _last, place.previous, place.link);
    --_size;
    return unmake(place.link);
}

template <class Link>
bool CmList<Link>::removeFrom(const Place& place) {
    CmObject* object = takeFrom(place);
    testDelete(object);
    return object != nullptr;
}

}  // namespace Tessarine
