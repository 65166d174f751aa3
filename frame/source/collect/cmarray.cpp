#include "collect/cmarray.h"
#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kDoubling = -1;
constexpr int32_t kFirstDoubling = 10;

int64_t grownSize(int64_t size, int32_t delta) {
    if (delta != kDoubling)
        return size + delta;
    return size > 0 ? 2 * size : kFirstDoubling;
}

template <class Test>
int32_t indexWhere(const CmArray& array, Test test) {
    for (int32_t i = 0; i < array.total(); ++i) {
        if (test(array.at(i)))
            return i;
    }
    return -1;
}
}  // namespace

IMPLEMENT_CLASS(CmArray, CmContainer)

CmArray::CmArray(int32_t size, int32_t delta) : delta(delta) {
    resize(std::max(size, 0));
}

CmArray::CmArray(const CmArray& source) : CmContainer(source), delta(source.delta) {
    resize(source._size);
    CmArray::addAllFrom(&source);
}

CmArray::~CmArray() {
    CmArray::removeAll();
}

bool CmArray::remove(const CmIterator& iterator) {
    return iterator.walksOn(this) && removeAt(static_cast<const CmArrayIterator&>(iterator).position());
}

bool CmArray::removeAt(int32_t index) {
    if (index < 0 || index >= _total)
        return false;
    CmObject* object = data[index];
    std::copy(&data[index] + 1, data.get() + _total, &data[index]);
    data[--_total] = nullptr;
    testDelete(object);
    return true;
}

void CmArray::removeAll() {
    const int32_t before = std::exchange(_total, 0);
    for (int32_t i = 0; i < before; ++i)
        testDelete(std::exchange(data[i], nullptr));
}

CmIterator* CmArray::newIterator() const {
    return new CmArrayIterator(*this);
}

bool CmArray::insertAt(CmObject* object, int32_t index) {
    if (!object || index < 0 || index > _total || (_total == _size && !grow()))
        return false;
    CmObject** end = data.get() + _total;
    std::copy_backward(data.get() + index, end, end + 1);
    data[index] = object;
    ++_total;
    testRemember(object);
    return true;
}

bool CmArray::replaceAt(CmObject* object, int32_t index) {
    if (!object || index < 0 || index >= _total)
        return false;
    testRemember(object);
    testDelete(std::exchange(data[index], object));
    return true;
}

int32_t CmArray::index(const CmObject* object) const {
    return object ? indexWhere(*this, [object](const CmObject* element) { return object->isEqual(element); }) : -1;
}

int32_t CmArray::indexAbs(const CmObject* object) const {
    return indexWhere(*this, [object](const CmObject* element) { return object == element; });
}

bool CmArray::swap(int32_t index, int32_t other) {
    if (!at(index) || !at(other))
        return false;
    std::swap(data[index], data[other]);
    return true;
}

bool CmArray::resize(int32_t size) {
    if (size < 0)
        return false;
    std::unique_ptr<CmObject*[]> places(size > 0 ? new (std::nothrow) CmObject*[size]() : nullptr);
    if (size > 0 && !places)
        return false;
    const int32_t before = std::exchange(_total, std::min(size, _total));
    std::copy_n(data.get(), _total, places.get());
    data.swap(places);
    _size = size;
    for (int32_t i = _total; i < before; ++i)
        testDelete(places[i]);
    return true;
}

bool CmArray::grow() {
    const int64_t size = grownSize(_size, delta);
    return size > _size && size <= std::numeric_limits<int32_t>::max() && resize(static_cast<int32_t>(size));
}

CmObject* CmArrayIterator::next() {
    CmObject* object = current();
    if (object)
        ++index;
    return object;
}

CmObject* CmArrayIterator::previous() {
    CmObject* object = current();
    if (object)
        --index;
    return object;
}

CmObject* CmArrayIterator::operator+=(int32_t steps) {
    if (steps > 0 && !done())
        index += std::min(steps, array->total() - index);
    return current();
}

CmObject* CmArrayIterator::operator-=(int32_t steps) {
    if (steps > 0 && !done())
        index -= std::min(steps, index + 1);
    return current();
}

}  // namespace Tessarine
