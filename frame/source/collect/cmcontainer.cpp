#include "collect/cmcontainer.h"
#include "base/source/fcpu.h"
#include "base/source/fthread.h"
#include "collect/cmlinkedlist.h"
#include "collect/cmobjectfilter.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
constexpr char kOwnershipKey[] = "ownership";
constexpr char kElementKey[] = "obj";

bool isOwnership(int32_t mode) {
    return mode >= CmContainer::kBorrows && mode <= CmContainer::kShares;
}

struct Found {
    CmObject* object = nullptr;
    int32_t index = -1;
};

template <class Test>
Found findWhere(const CmContainer& container, Test test) {
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    for (int32_t index = 0; !cursor->done(); ++index) {
        CmObject* element = cursor->next();
        if (test(element))
            return {element, index};
    }
    return {};
}

Found findEqual(const CmContainer& container, const CmObject* object) {
    return findWhere(container, [object](const CmObject* element) { return object && object->isEqual(element); });
}

Found findObject(const CmContainer& container, const CmObject* object) {
    return findWhere(container, [object](const CmObject* element) { return object == element; });
}

template <class Action>
void visitEach(const CmContainer& container, Action action) {
    findWhere(container, [&action](CmObject* element) {
        action(element);
        return false;
    });
}

/** Holds a container's ownership at kBorrows to the end of the block: what is added then isn't counted. */
class UncountedScope {
public:
    explicit UncountedScope(CmContainer& container)
        : mode(container._ownsObjects), stored(std::exchange(mode, CmContainer::kBorrows)) {}
    ~UncountedScope() { mode = stored; }
    UncountedScope(const UncountedScope&) = delete;

private:
    int16_t& mode;
    const int16_t stored;
};

/** Adds an object with its reference, which ends here when it isn't taken. */
bool addWithReference(CmContainer& container, CmObject* object) {
    if (object && container.add(object))
        return true;
    if (object)
        object->release();
    return false;
}

/** One thread's stretch of a walk. */
class ConcurrencyIteratorThread final : public FThread {
public:
    ConcurrencyIteratorThread(const CmContainer& container, CmObjectFilter& filter, std::atomic<bool>& stop)
        : FThread("ConcurrencyIteratorThread"), cursor(container.newIterator()), filter(filter), stop(stop) {}

    void setStretch(int32_t start, int32_t elements) {
        *cursor += start;
        count = elements;
    }
    void entry() override {
        for (; count > 0 && !cursor->done() && !stop; --count) {
            if (!filter.test(cursor->next()))
                stop = true;
        }
    }

private:
    const std::unique_ptr<CmIterator> cursor;
    CmObjectFilter& filter;
    std::atomic<bool>& stop;  // of all threads
    int32_t count = 0;
};
}  // namespace

bool CmIterator::setCurrent(const CmObject* object) {
    for (first(); !done(); next()) {
        if (current() == object)
            return true;
    }
    return false;
}

CmObject* CmIterator::operator+=(int32_t steps) {
    for (; steps > 0 && !done(); --steps)
        next();
    return current();
}

CmObject* CmIterator::operator-=(int32_t steps) {
    for (; steps > 0 && !done(); --steps)
        previous();
    return current();
}

CmObject* CmIterator::next(const CmObject* match) {
    while (match && !done()) {
        CmObject* element = next();
        if (match->isEqual(element))
            return element;
    }
    return nullptr;
}

CmObject* CmIterator::previous(const CmObject* match) {
    while (match && !done()) {
        CmObject* element = previous();
        if (match->isEqual(element))
            return element;
    }
    return nullptr;
}

IMPLEMENT_ABSTRACT_CLASS(CmContainer, CmObject)

bool CmContainer::internalize(FArchive& archive) {
    removeAll();
    int32_t count = 0;
    if (!readBase(archive.getStream()) || !archive.getStream().readInt32(count) || count < 0)
        return false;
    const UncountedScope uncounted(*this);
    while (count > 0 && addWithReference(*this, archive.load("CmObject")))
        --count;
    return count == 0;
}

bool CmContainer::externalize(FArchive& archive) const {
    if (!writeBase(archive.getStream()) || !archive.getStream().writeInt32(total()))
        return false;
    return !findWhere(*this, [&](const CmObject* element) { return !archive.save(element); }).object;
}

bool CmContainer::storeAttributes(FAttributes& attributes) const {
    if (_ownsObjects != kBorrows && !attributes.set(kOwnershipKey, _ownsObjects))
        return false;
    return !findWhere(*this, [&](CmObject* element) { return !attributes.queueObject(kElementKey, element); }).object;
}

bool CmContainer::restoreAttributes(FAttributes& attributes) {
    removeAll();
    int32_t mode = kBorrows;
    attributes.get(kOwnershipKey, mode);
    if (!isOwnership(mode))
        return false;
    _ownsObjects = static_cast<int16_t>(mode);
    const UncountedScope uncounted(*this);
    attributes.resetList(kElementKey);
    bool all = true;
    for (int32_t left = attributes.countQueueItems(kElementKey); left > 0; --left) {
        CmObject* element = attributes.unqueueObject(kElementKey);
        if (element)
            element->addRef();
        all = addWithReference(*this, element) && all;
    }
    return all;
}

bool CmContainer::remove(CmObject* object) {
    return object && removeAt(getIndex(object));
}

bool CmContainer::remove(const CmIterator& iterator) {
    return iterator.walksOn(this) && removeAt(findObject(*this, iterator.current()).index);
}

CmObject* CmContainer::at(int32_t index) const {
    if (index < 0)
        return nullptr;
    return findWhere(*this, [&index](const CmObject*) { return index-- == 0; }).object;
}

CmObject* CmContainer::lookup(const CmObject* object) const {
    return findEqual(*this, object).object;
}

bool CmContainer::contains(const CmObject* object) const {
    return findEqual(*this, object).object != nullptr;
}

bool CmContainer::containsAbs(const CmObject* object) const {
    return findObject(*this, object).object != nullptr;
}

int32_t CmContainer::occurrences(const CmObject* object) const {
    int32_t count = 0;
    visitEach(*this, [&](const CmObject* element) { count += object && object->isEqual(element) ? 1 : 0; });
    return count;
}

int32_t CmContainer::getIndex(const CmObject* object) const {
    return object ? findEqual(*this, object).index : 0;
}

bool CmContainer::copy(const CmContainer& source) {
    if (&source == this)
        return true;
    removeAll();
    _ownsObjects = source._ownsObjects;
    return addAllFrom(&source);
}

bool CmContainer::addAllFrom(const CmContainer* source) {
    if (!source || source == this)
        return false;
    bool all = true;
    visitEach(*source, [&](CmObject* element) {
        CmObject* own = _ownsObjects == kTakesOver ? element->newCopy() : element;
        if (add(own))
            return;
        all = false;
        if (own && own != element)
            own->release();
    });
    return all;
}

bool CmContainer::takeAllFrom(const CmContainer* source, bool alreadyOwned) {
    if (!source || source == this)
        return false;
    bool all = true;
    const bool drops = alreadyOwned == (_ownsObjects != kShares);
    visitEach(*source, [&](CmObject* element) {
        if (!add(element))
            all = false;
        else if (drops)
            element->release();
    });
    return all;
}

bool CmContainer::removeAllFrom(const CmContainer* source) {
    if (!source)
        return false;
    bool all = true;
    if (source == this)
        removeAll();
    else
        visitEach(*source, [&](CmObject* element) { all = remove(element) && all; });
    return all;
}

CmLinkedList* CmContainer::lookupAll(const CmObject* object) const {
    auto* equal = new CmLinkedList;
    visitEach(*this, [&](CmObject* element) {
        if (object && object->isEqual(element))
            equal->append(element);
    });
    return equal;
}

bool CmContainer::query(CmObjectFilter& filter, CmContainer& found) const {
    bool all = true;
    visitEach(*this, [&](CmObject* element) { all = (!filter.test(element) || found.add(element)) && all; });
    return all;
}

CmObject* CmContainer::firstThat(CmObjectFilter& filter) const {
    return findWhere(*this, [&](CmObject* element) { return filter.test(element); }).object;
}

CmObject* CmContainer::lastThat(CmObjectFilter& filter) const {
    CmObject* passed = nullptr;
    visitEach(*this, [&](CmObject* element) { passed = filter.test(element) ? element : passed; });
    return passed;
}

void CmContainer::forEach(CmObjectFilter& filter) const {
    visitEach(*this, [&](CmObject* element) { filter.test(element); });
}

bool CmContainer::concurrentIteration(CmObjectFilter& filter, int32_t threads, int32_t minPerThread) const {
    const int32_t count = total();
    const int32_t wanted = threads > 0 ? threads : FCpuInfo().availableCpus;
    threads = std::min(wanted, minPerThread > 0 ? count / minPerThread : std::max(count, 2));
    if (threads < 2)
        return !findWhere(*this, [&](CmObject* element) { return !filter.test(element); }).object;
    std::atomic<bool> stop{false};
    std::vector<std::unique_ptr<ConcurrencyIteratorThread>> stretches;
    for (int32_t i = 0; i < threads; ++i) {
        stretches.push_back(std::make_unique<ConcurrencyIteratorThread>(*this, filter, stop));
        const bool last = i == threads - 1;
        stretches[i]->setStretch(count / threads * i, last ? count : count / threads);
        if (last || !stretches[i]->run())
            stretches[i]->entry();
    }
    for (const auto& stretch : stretches)
        stretch->waitDead(-1);
    return stop;
}

bool CmContainer::readBase(FStream& stream) {
    int16_t mode = 0;
    if (!stream.readInt16(mode) || !isOwnership(mode))
        return false;
    _ownsObjects = mode;
    return true;
}

bool CmContainer::writeBase(FStream& stream) const {
    return stream.writeInt16(_ownsObjects);
}

}  // namespace Tessarine
