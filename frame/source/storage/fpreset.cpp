#include "storage/fpreset.h"
#include "fpresetitems.h"
#include "storage/farchive.h"
#include "storage/fattributearchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include "storage/fxmlarchive.h"
#include "storage/fxmlobject.h"
#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
constexpr const char* kName = "Name";
constexpr const char* kObject = "Object";
constexpr const char* kID = "ID";
constexpr const char* kItems = "Items";
constexpr const char *kPresets = "Presets", *kSubLists = "SubLists";  // of old, instead of the items
constexpr const char *kIsCopy = "IsCopy", *kObjects = "Objects";

/** Written where the flag is clear. */
struct FlagRow {
    const char* key;
    int32_t flag;
};
constexpr FlagRow kFlags[] = {
    {"No Modify", FPreset::kCanModify},
    {"Unrenamed", FPreset::kRenamed  },
};

bool isStorable(const FPreset& preset, int32_t level) {
    const OPtr<FAttributes> bag(new FAttributes);
    return preset.storeAttributes(*bag) && FXmlArchive::canSave(*bag, level);
}

/** Presets and lists that wait for others of their name, the first of a name first. */
class ItemsByName {
public:
    explicit ItemsByName(const CmArray& items) {
        for (int32_t i = 0; i < items.total(); ++i) {
            auto* item = static_cast<FPresetItem*>(items.at(i));
            if (item->isList() || classCast<FPreset>(item))
                rowOf(*item).items.emplace_back(item);
        }
    }
    /** Null: none waits any more. */
    template <class Item>
    IPtr<Item> take(const Item& like) {
        Row& row = rowOf(like);
        if (row.taken == row.items.size())
            return nullptr;
        begun.push_back(&row);
        return IPtr<Item>(static_cast<Item*>(row.items[row.taken++].get()));
    }
    /** One that will get the name of the other one, which has taken it. */
    void addTaken(FPresetItem& item, const FPresetItem& like) {
        Row& row = rowOf(like);
        row.items.emplace_back(&item);
        row.taken = row.items.size();
        begun.push_back(&row);
    }
    /** All wait again. */
    void restart() {
        std::ranges::for_each(begun, [](Row* row) { row->taken = 0; });
        begun.clear();
    }

private:
    struct Row {
        std::vector<IPtr<FPresetItem>> items;
        size_t taken = 0;
    };
    Row& rowOf(const FPresetItem& item) { return rows[item.isList()][item.getName()]; }

    std::map<std::u16string, Row> rows[2];
    std::vector<Row*> begun;
};

/** The one of that name that waits, or a new one. */
template <class Item, class Add>
IPtr<Item> takeOrAdd(ItemsByName& known, const Item& theirs, const Add& add) {
    IPtr<Item> mine = known.take(theirs);
    if (!mine)
        known.addTaken(*(mine = add()), theirs);
    return mine;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FPresetItem, CmObject)
IMPLEMENT_CLASS(FPreset, FPresetItem)
IMPLEMENT_CLASS(FPresetList, FPresetItem)
IMPLEMENT_CLASS(FPresetListOwnFile, FPresetList)
IMPLEMENT_ABSTRACT_CLASS(FPresetPointer, FPresetItem)
IMPLEMENT_ABSTRACT_CLASS(FPresetPointerList, CmObject)
IMPLEMENT_CLASS(FMultiPreset, CmObject)

// --- items

const FPresetDepth* FPresetDepth::of(CmObject* object) {
    if (const auto* item = classCast<FPresetItem>(object))
        return &item->depth;
    const auto* group = classCast<FMultiPreset>(object);
    return group ? &group->depth : nullptr;
}

bool FPresetDepth::takes(CmObject* below) {
    const FPresetDepth* other = of(below);
    if (other && (!other->complete || other->height >= kMaxHeight))
        return false;
    height = std::max(height, other ? other->height + 1 : 0);
    return true;
}

void FPresetItem::setName(const tchar* text) {
    name = text;
    name.toWideString();
    name.remove(FPresetList::kMaxName);
}

int32_t FPresetItem::compare(const CmObject* other) const {
    const auto* item = classCast<FPresetItem>(other);
    if (!item)
        return CmObject::compare(other);
    const ConstString mine(getName()), theirs(item->getName());
    const int32_t result = mine.compare(theirs, kIgnoreCase);
    return result != 0 ? result : mine.compare(theirs);
}

// --- presets

FPreset::FPreset() {
    depth.setComplete(false);
}

FPreset::FPreset(CmObject* object, const tchar* name, int32_t flags)
    : FPresetItem(name), object(object), presetFlags(flags) {}

FPreset::~FPreset() {
    dropObject(std::move(object));
}

bool FPreset::take(CmObject* loaded) {
    if (loaded && depth.takes(loaded))
        object = OPtr<CmObject>(IPtr<CmObject>(loaded));
    depth.setComplete(true);
    return true;
}

bool FPreset::internalize(FArchive& archive) {
    FString stored;
    if (!stored.internalize(archive) || !stored.toWideString())
        return false;
    setName(stored.text16());
    presetFlags = kCanModify | kRenamed;
    const OPtr<CmObject> loaded(archive.load("CmObject"));
    return take(loaded);
}

bool FPreset::externalize(FArchive& archive) const {
    return name.externalize(archive) && archive.save(object);
}

bool FPreset::storeAttributes(FAttributes& attributes) const {
    for (const FlagRow& row : kFlags) {
        if (!(presetFlags & row.flag))
            attributes.set(row.key, 1);
    }
    return attributes.setString(kName, name) && attributes.setObject(kObject, object);
}

bool FPreset::restoreAttributes(FAttributes& attributes) {
    presetFlags = 0;
    for (const FlagRow& row : kFlags)
        presetFlags |= attributes.getInt(row.key) == 0 ? row.flag : 0;
    String stored;
    attributes.get(kName, stored);
    stored.toWideString();
    setName(stored.text16());
    return take(attributes.getObject(kObject));
}

// --- lists

FPresetList::FPresetList() : items(0, -1) {
    items._ownsObjects = CmContainer::kTakesOver;
    depth.setComplete(false);
}

FPresetList::FPresetList(const tchar* id) : FPresetItem(id), items(0, -1), id(id) {
    items._ownsObjects = CmContainer::kTakesOver;
    this->id.toWideString();
}

FPresetList::~FPresetList() {
    for (CmObject* item : items)
        static_cast<FPresetItem*>(item)->list = nullptr;
}

bool FPresetList::isValidName(const tchar* text) {
    const ConstString name(text);
    return !name.isEmpty() && name.length() <= kMaxName;
}

int32_t FPresetList::countPresets(bool deep) {
    return countItems(true, false, deep);
}

const tchar* FPresetList::getPresetName(int32_t index) {
    const FPreset* preset = getPreset(index);
    return preset ? preset->getName() : nullptr;
}

CmObject* FPresetList::getPresetObject(int32_t index) {
    const FPreset* preset = getPreset(index);
    return preset ? preset->getObject() : nullptr;
}

bool FPresetList::setPresetName(int32_t index, const tchar* text) {
    FPreset* preset = getPreset(index);
    if (!preset || !preset->canModify() || !isValidName(text))
        return false;
    preset->setName(text);
    preset->setRenamed(true);
    preset->changed();
    changed();
    return true;
}

bool FPresetList::canModifiyPreset(int32_t index) {
    const FPreset* preset = getPreset(index);
    return preset && preset->canModify();
}

bool FPresetList::presetRenamed(int32_t index) {
    const FPreset* preset = getPreset(index);
    return preset && preset->isRenamed();
}

void FPresetList::resetRenameState(int32_t index) {
    if (FPreset* preset = getPreset(index))
        preset->setRenamed(false);
}

int32_t FPresetList::addPreset(CmObject* object, const tchar* text, bool canModify, int32_t index) {
    OPtr<FPreset> preset(new FPreset(object, text, canModify ? FPreset::kCanModify : 0));
    if (!isValidName(text))
        return -1;
    const int32_t place = placeOfPreset(index);
    if (!insertAt(preset, place))
        return -1;
    preset.detach();
    return place >= 0 ? index : countPresets(false) - 1;
}

bool FPresetList::removePresetAt(int32_t index) {
    return removePlace(placeOf(index, true, false));
}

void FPresetList::removeNonModifyPresets() {
    for (int32_t i = countPresets(false) - 1; i >= 0; --i) {
        if (!canModifiyPreset(i))
            removePresetAt(i);
    }
    for (int32_t i = 0; i < countSubLists(); ++i)
        getSubList(i)->removeNonModifyPresets();
}

void FPresetList::collectPresetObjects(CmContainer& objects) {
    for (int32_t i = 0; i < countPresets(false); ++i)
        objects.add(getPresetObject(i));
    for (int32_t i = 0; i < countSubLists(); ++i)
        getSubList(i)->collectPresetObjects(objects);
}

FPresetList* FPresetList::getSubList(int32_t index) {
    FPresetItem* item = getItemAt(index, false, true);
    return item ? item->toList() : nullptr;
}

FPresetList* FPresetList::getSubListByName(const tchar* text) {
    refresh();
    for (CmObject* each : items) {
        auto* item = static_cast<FPresetItem*>(each);
        if (item->isList() && ConstString(item->getName()) == ConstString(text))
            return item->toList();
    }
    return nullptr;
}

FPresetList* FPresetList::addSubList(const tchar* text) {
    if (FPresetList* known = getSubListByName(text))
        return known;
    OPtr<FPresetList> list(new FPresetList(text));
    return isValidName(text) && insertAt(list, -1) ? list.detach() : nullptr;
}

int32_t FPresetList::countItems(bool presets, bool lists, bool deep) {
    refresh();
    int32_t count = (presets ? items.total() - listCount : 0) + (lists ? listCount : 0);
    if (!deep || listCount == 0)
        return count;
    for (CmObject* each : items) {
        if (FPresetList* list = static_cast<FPresetItem*>(each)->toList())
            count += list->countItems(presets, lists, true);
    }
    return count;
}

int32_t FPresetList::placeOf(int32_t index, bool presets, bool lists) {
    refresh();
    if (presets && (lists || listCount == 0))
        return index >= 0 && index < items.total() ? index : -1;
    for (int32_t place = 0; index >= 0 && place < items.total(); ++place) {
        const bool isList = static_cast<FPresetItem*>(items.at(place))->isList();
        if ((isList ? lists : presets) && index-- == 0)
            return place;
    }
    return -1;
}

int32_t FPresetList::placeOfPreset(int32_t index) {
    return placeOf(index, true, false);
}

FPresetItem* FPresetList::getItemAt(int32_t index, bool presets, bool lists) {
    return static_cast<FPresetItem*>(items.at(placeOf(index, presets, lists)));
}

FPreset* FPresetList::getPreset(int32_t index) {
    return classCast<FPreset>(getItemAt(index, true, false));
}

int32_t FPresetList::indexAbs(FPresetItem* item) {
    refresh();
    return items.indexAbs(item);
}

bool FPresetList::insertAt(FPresetItem* item, int32_t index) {
    refresh();
    if (!item || item == this || item->list)
        return false;
    const bool isInside = index >= 0 && index < items.total();
    if (!items.insertAt(item, isInside ? index : items.total()))
        return false;
    item->list = this;
    listCount += item->isList();
    changed();
    return true;
}

bool FPresetList::removePlace(int32_t place) {
    auto* item = static_cast<FPresetItem*>(items.at(place));
    if (!item)
        return false;
    item->list = nullptr;
    listCount -= item->isList();
    items.removeAt(place);
    changed();
    return true;
}

int32_t FPresetList::presetIndexOf(int32_t place) const {
    int32_t index = place < 0 ? -1 : 0;
    for (int32_t i = 0; i < place; ++i)
        index += !static_cast<FPresetItem*>(items.at(i))->isList();
    return index;
}

bool FPresetList::removeItem(FPresetItem* item, bool deep) {
    const int32_t place = indexAbs(item);
    if (place >= 0)
        return item->isList() ? removePlace(place) : removePresetAt(presetIndexOf(place));
    int32_t index = 0;
    while (FPresetList* inner = deep ? getSubList(index++) : nullptr) {
        if (inner->removeItem(item, true))
            return true;
    }
    return false;
}

int32_t FPresetList::indexOf(const FPreset* preset) {
    refresh();
    return presetIndexOf(items.indexAbs(preset));
}

void FPresetList::removeAll(bool presets, bool lists) {
    for (int32_t i = presets ? countPresets(false) - 1 : -1; i >= 0; --i)
        removePresetAt(i);
    for (int32_t i = lists ? countSubLists() - 1 : -1; i >= 0; --i)
        removePlace(placeOf(i, false, true));
}

void FPresetList::adjustTo(FPresetList* other) {
    if (other && other != this)
        adjustToAll({IPtr<FPresetList>(other)});
}

void FPresetList::adjustToAll(const Lists& others) {
    refresh();
    ItemsByName known(items);
    Lists inner;
    std::map<FPresetList*, Lists> theirs;  // for each of these
    for (FPresetList* other : others) {
        setName(other->getName());
        other->refresh();
        const std::vector<IPtr<CmObject>> stable(other->items.begin(), other->items.end());
        for (CmObject* each : stable) {
            if (FPresetList* list = static_cast<FPresetItem*>(each)->toList()) {
                inner.push_back(takeOrAdd(known, *list, [&] { return addListLike(*list); }));
                theirs[inner.back()].emplace_back(list);
            } else if (const auto* preset = classCast<FPreset>(each)) {
                adjustPreset(*takeOrAdd(known, *preset, [&] { return addPresetLike(*preset); }), *preset);
            }
        }
        known.restart();
    }
    for (const IPtr<FPresetList>& list : inner) {
        if (const Lists lists = std::exchange(theirs[list], {}); !lists.empty())
            list->adjustToAll(lists);
    }
    changed();
}

IPtr<FPresetList> FPresetList::addListLike(const FPresetList& theirs) {
    IPtr<FPresetList> mine = OPtr<FPresetList>(new FPresetList(theirs.getID()));
    share(mine);
    return mine;
}

IPtr<FPreset> FPresetList::addPresetLike(const FPreset& theirs) {
    IPtr<FPreset> mine = OPtr<FPreset>(new FPreset(nullptr, theirs.getName()));
    share(mine);
    return mine;
}

void FPresetList::adjustPreset(FPreset& mine, const FPreset& theirs) {
    mine.setObject(IPtr<CmObject>(theirs.getObject()).detach());
    mine.setFlags(theirs.getFlags());
    mine.changed();
}

OPtr<FPresetList> FPresetList::storablePart(int32_t level) {
    OPtr<FPresetList> part(new FPresetList(getID()));
    part->setName(getName());
    for (CmObject* each : items) {
        FPresetList* inner = static_cast<FPresetItem*>(each)->toList();
        const auto* preset = classCast<FPreset>(each);
        if (inner && level < FAttributeArchiveBase::kMaxDepth)
            part->insertAt(inner->storablePart(level + 1).detach(), -1);
        else if (preset && isStorable(*preset, level))
            adjustPreset(*part->addPresetLike(*preset), *preset);
    }
    return part;
}

bool FPresetList::share(FPresetItem* item) {
    item->addRef();  // who is told may take it away again
    if (insertAt(item, -1))
        return true;
    item->release();
    return false;
}

/** Only what stands nowhere, or it would stand in two. */
bool FPresetList::takeLoaded(CmObject* loaded) {
    auto* item = classCast<FPresetItem>(loaded);
    return item && !item->list && depth.takes(item) && share(item);
}

void FPresetList::takeQueue(FAttributes& attributes, const char* key) {
    attributes.resetList(key);
    for (int32_t left = attributes.countQueueItems(key); left > 0; --left)
        takeLoaded(attributes.unqueueObject(key, FPresetItem::className()));
}

bool FPresetList::internalize(FArchive& archive) {
    CmArray container(0, -1);
    std::vector<OPtr<CmObject>> loaded;
    if (!id.internalize(archive) || !id.toWideString() || !isValidName(id.text16()) ||
        !readObjects(archive, container, loaded))
        return false;
    setName(id.text16());
    for (const OPtr<CmObject>& item : loaded)
        takeLoaded(item);
    depth.setComplete(true);
    return true;
}

bool FPresetList::externalize(FArchive& archive) const {
    CmArray written(0, -1);
    written._ownsObjects = CmContainer::kShares;
    for (CmObject* item : items) {
        const auto* preset = classCast<FPreset>(item);
        if (preset ? preset->canModify() : item->getClass() == &FPresetList::__fClass)
            written.add(item);
    }
    return id.externalize(archive) && written.externalize(archive);
}

bool FPresetList::storeAttributes(FAttributes& attributes) const {
    bool stored = attributes.setString(kID, id) && attributes.setString(kName, name);
    for (CmObject* item : items)
        stored = attributes.queueObject(kItems, item) && stored;
    return stored;
}

bool FPresetList::restoreAttributes(FAttributes& attributes) {
    if (!attributes.get(kID, id) || !id.toWideString() || !isValidName(id.text16()))
        return false;
    String shown(id);
    attributes.get(kName, shown);
    if (!shown.toWideString())
        return false;
    setName(shown.text16());
    takeQueue(attributes, kItems);
    if (items.isEmpty()) {
        takeQueue(attributes, kPresets);
        takeQueue(attributes, kSubLists);
    }
    depth.setComplete(true);
    return true;
}

// --- references

FPresetPointer::FPresetPointer(FPreset* preset, IDependent* dependent) : preset(preset), dependent(dependent) {
    preset->addDependent(this);
}

FPresetPointer::~FPresetPointer() {
    preset->removeDependent(this);
}

CmObject* FPresetPointer::getObject() const {
    FPresetList* list = preset->getList();
    return list ? list->getPresetObject(list->indexOf(preset)) : preset->getObject();
}

void FPresetPointer::setName(const tchar* text) {
    if (FPresetList* list = preset->getList())
        list->setPresetName(list->indexOf(preset), text);
    else
        preset->setName(text);
}

void FPresetPointer::update(CmObject* changedObject, int32_t message) {
    if (dependent && changedObject == preset.get())
        dependent->update(static_cast<CmObject*>(preset.get()), message);
}

FPresetPointerList::FPresetPointerList(IDependent* dependent) : pointers(0, -1), dependent(dependent) {
    pointers._ownsObjects = CmContainer::kTakesOver;
}

int32_t FPresetPointerList::indexOf(const FPreset* preset) const {
    for (int32_t i = 0; i < pointers.total(); ++i) {
        if (getPreset(i) == preset)
            return i;
    }
    return -1;
}

bool FPresetPointerList::addPreset(FPreset* preset) {
    if (!preset || indexOf(preset) >= 0)
        return false;
    OPtr<FPresetPointer> pointer(new FPresetPointer(preset, dependent));
    return pointers.add(pointer) && pointer.detach();
}

bool FPresetPointerList::removePreset(FPreset* preset) {
    return pointers.removeAt(indexOf(preset));
}

FPreset* FPresetPointerList::getPreset(int32_t index) const {
    const auto* pointer = static_cast<FPresetPointer*>(pointers.at(index));
    return pointer ? pointer->getPreset() : nullptr;
}

// --- several objects

FMultiPreset::FMultiPreset(bool isCopy) : isCopy(isCopy) {
    depth.setComplete(false);
    objects._ownsObjects = pendingObjects._ownsObjects = CmContainer::kShares;
}

FMultiPreset::~FMultiPreset() {
    std::vector<OPtr<CmObject>> held;
    for (CmLinkedListIterator each(objects); !each.done();)
        held.emplace_back(IPtr<CmObject>(each.next()));
    objects.removeAll();
    std::ranges::for_each(held, [](OPtr<CmObject>& object) { dropObject(std::move(object)); });
}

bool FMultiPreset::addObject(CmObject* object) {
    const OPtr<CmObject> copy(isCopy && object ? object->newCopy() : nullptr);
    return objects.add(copy ? copy.get() : object);
}

void FMultiPreset::updateDone(int32_t /*message*/) {
    pendingObjects.removeAll();
}

bool FMultiPreset::storeAttributes(FAttributes& attributes) const {
    bool stored = attributes.set(kIsCopy, isCopy);
    for (CmLinkedListIterator each(objects); !each.done();) {
        CmObject* object = each.next();
        const auto* pointer = isCopy ? nullptr : classCast<FPresetPointer>(object);
        CmObject* target = pointer ? pointer->getObject() : object;
        stored = (!target || attributes.queueObject(kObjects, target)) && stored;
    }
    return stored;
}

bool FMultiPreset::restoreAttributes(FAttributes& attributes) {
    pendingObjects.addAllFrom(&objects);
    objects.removeAll();
    attributes.get(kIsCopy, isCopy);
    attributes.resetList(kObjects);
    for (int32_t left = attributes.countQueueItems(kObjects); left > 0; --left) {
        if (CmObject* loaded = attributes.unqueueObject(kObjects); depth.takes(loaded))
            objects.add(loaded);
    }
    depth.setComplete(true);
    if (!pendingObjects.isEmpty())
        deferUpdate();
    return true;
}

}  // namespace Tessarine
