#include "collect/cmlinkedlist.h"
#include <memory>
#include <utility>

namespace Tessarine {

IMPLEMENT_CLASS(CmLinkedList, CmContainer)

CmLinkedList::CmLinkedList(const CmLinkedList& source) : CmContainer(source) {
    CmLinkedList::addAllFrom(&source);
}

CmLinkedList::~CmLinkedList() {
    CmLinkedList::removeAll();
}

bool CmLinkedList::remove(CmObject* object) {
    return removeFrom(placeOfEqual(object));
}

bool CmLinkedList::remove(const CmIterator& iterator) {
    if (!iterator.walksOn(this) || iterator.done())
        return false;
    const auto& mine = static_cast<const CmLinkedListIterator&>(iterator);
    return removeFrom(placeOf(std::exchange(mine.cursor, mine.cursor->next)));
}

bool CmLinkedList::removeAt(int32_t index) {
    return removeFrom(placeAt(index));
}

void CmLinkedList::removeAll() {
    CmLink* link = std::exchange(_first, nullptr);
    _last = nullptr;
    _size = 0;
    while (link) {
        const std::unique_ptr<CmLink> gone(std::exchange(link, link->next));
        testDelete(gone->object);
    }
}

CmObject* CmLinkedList::at(int32_t index) const {
    const CmLink* link = placeAt(index).link;
    return link ? link->object : nullptr;
}

CmObject* CmLinkedList::lookup(const CmObject* object) const {
    const CmLink* link = placeOfEqual(object).link;
    return link ? link->object : nullptr;
}

CmIterator* CmLinkedList::newIterator() const {
    return new CmLinkedListIterator(*this);
}

bool CmLinkedList::append(CmObject* object) {
    return insertBehind(_last, object);
}

bool CmLinkedList::prepend(CmObject* object) {
    return insertBehind(nullptr, object);
}

bool CmLinkedList::insertAt(CmObject* object, int32_t index) {
    if (index < 0 || index > _size)
        return false;
    return insertBehind(index == _size ? _last : placeAt(index).previous, object);
}

bool CmLinkedList::insertBefore(CmObject* object, const CmObject* neighbour) {
    const Place place = placeOfObject(neighbour);
    return place.link && insertBehind(place.previous, object);
}

bool CmLinkedList::insertAfter(CmObject* object, const CmObject* neighbour) {
    const Place place = placeOfObject(neighbour);
    return place.link && insertBehind(place.link, object);
}

bool CmLinkedList::replaceAt(CmObject* object, int32_t index) {
    CmLink* link = placeAt(index).link;
    if (!link || !object)
        return false;
    testRemember(object);
    testDelete(std::exchange(link->object, object));
    return true;
}

CmObject* CmLinkedList::removeFirst() {
    return takeFrom({nullptr, _first, 0});
}

CmObject* CmLinkedList::removeLast() {
    return takeFrom(placeOf(_last));
}

bool CmLinkedList::removeAbs(CmObject* object) {
    return removeFrom(placeOfObject(object));
}

int32_t CmLinkedList::index(const CmObject* object) const {
    const Place place = placeOfEqual(object);
    return place.link ? place.index : -1;
}

int32_t CmLinkedList::indexAbs(const CmObject* object) const {
    const Place place = placeOfObject(object);
    return place.link ? place.index : -1;
}

bool CmLinkedList::addAllFromAbs(const CmContainer* source) {
    if (!source || source == this)
        return false;
    const std::unique_ptr<CmIterator> cursor(source->newIterator());
    while (!cursor->done())
        add(cursor->next());
    return true;
}

template <class Test>
CmLinkedList::Place CmLinkedList::placeWhere(Test test) const {
    Place place{nullptr, _first, 0};
    while (place.link && !test(place))
        place = {place.link, place.link->next, place.index + 1};
    return place;
}

CmLinkedList::Place CmLinkedList::placeAt(int32_t index) const {
    if (index < 0 || index >= _size)
        return {_last, nullptr, _size};
    return placeWhere([index](const Place& place) { return place.index == index; });
}

CmLinkedList::Place CmLinkedList::placeOf(const CmLink* link) const {
    return placeWhere([link](const Place& place) { return place.link == link; });
}

CmLinkedList::Place CmLinkedList::placeOfEqual(const CmObject* object) const {
    return placeWhere([object](const Place& place) { return object && object->isEqual(place.link->object); });
}

CmLinkedList::Place CmLinkedList::placeOfObject(const CmObject* object) const {
    return placeWhere([object](const Place& place) { return object == place.link->object; });
}

bool CmLinkedList::insertBehind(CmLink* previous, CmObject* object) {
    if (!object)
        return false;
    CmLink*& incoming = previous ? previous->next : _first;
    incoming = new CmLink{object, incoming};
    if (previous == _last)
        _last = incoming;
    ++_size;
    testRemember(object);
    return true;
}

CmObject* CmLinkedList::takeFrom(const Place& place) {
    if (!place.link)
        return nullptr;
    const std::unique_ptr<CmLink> gone(place.link);
    (place.previous ? place.previous->next : _first) = gone->next;
    if (_last == gone.get())
        _last = place.previous;
    --_size;
    return gone->object;
}

bool CmLinkedList::removeFrom(const Place& place) {
    CmObject* object = takeFrom(place);
    testDelete(object);
    return object != nullptr;
}

CmObject* CmLinkedListIterator::next() {
    CmObject* object = current();
    if (cursor)
        cursor = cursor->next;
    return object;
}

CmObject* CmLinkedListIterator::previous() {
    CmObject* object = current();
    if (cursor)
        cursor = list->placeOf(cursor).previous;
    return object;
}

}  // namespace Tessarine
