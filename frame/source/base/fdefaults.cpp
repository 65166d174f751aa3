#include "base/fdefaults.h"
#include "network/hooks.h"
#include "pluginterfaces/base/istringresult.h"
#include "storage/fpath.h"
#include "storage/fxmlarchive.h"
#include "storage/hooks.h"
#include <algorithm>
#include <cstring>
#include <vector>

namespace Tessarine {
namespace {
constexpr const char* kRootTag = "Defaults";
constexpr const char* kEntries = "Entries";
constexpr const char* kAutoSavers = "AutoSavers";
constexpr const char* kGroup = "Group";
constexpr const char* kVersion = "Version";
constexpr const char* kValues = "Values";

bool isName(const char* text) {
    return text && *text;
}

int32_t resultOf(bool good) {
    return good ? kResultOk : kResultFalse;
}

/** Copies a whole text, or nothing. */
template <class Char>
bool copyText(const Char* text, uint32_t length, Char* target, int32_t size) {
    if (!target || size < 0 || length >= uint32_t(size))
        return false;
    std::copy_n(text, length + 1, target);
    return true;
}

template <class Value>
int32_t write(FDefaults* defaults, bool (FDefaults::*set)(const char*, Value), const char* key, Value value) {
    return resultOf(defaults && (defaults->*set)(key, value));
}

template <class Value>
bool read(const FDefaults* defaults, bool (FDefaults::*get)(const char*, Value&) const, const char* key, Value& value) {
    return defaults && (defaults->*get)(key, value);
}

/** Leaves out of an inner bag what can't be saved with so many bags around that. */
void keepStorable(FAttributes& bag, const char* key, int32_t depth) {
    const FAttributes* all = bag.getAttributes(key);
    OPtr<FAttributes> part(new FAttributes);
    for (int32_t i = 0; all && i < all->countAttributes(); ++i) {
        const OPtr<FAttributes> one(new FAttributes);
        one->addAttribute(new FStringIDAttribute(*all->getAttribute(i)));
        if (FXmlArchive::canSave(*one, depth))
            part->addAttribute(new FStringIDAttribute(*all->getAttribute(i)));
    }
    if (all)
        bag.setAttributes(key, part);
}

bool storeDefaultPath(const char* pool, const char* key, const FNPath& path) {
    FDefaults* defaults = gDefaults && isName(key) ? gDefaults->getDefaults(pool, 0, true) : nullptr;
    return defaults && defaults->getValues().setMember(key, path);
}

bool loadDefaultPath(const char* pool, const char* key, FNPath& path) {
    FDefaults* defaults = gDefaults && isName(key) ? gDefaults->findDefaults(pool) : nullptr;
    return defaults && defaults->getValues().getMember(key, path);
}

bool precedes(const OPtr<FDefaults>& a, const OPtr<FDefaults>& b) {
    return a->compare(b) < 0;
}

bool areEqual(const OPtr<FDefaults>& a, const OPtr<FDefaults>& b) {
    return a->compare(b) == 0;
}
}  // namespace

IMPLEMENT_CLASS(FDefaults, CmObject)
IMPLEMENT_CLASS(FDefaultPool, CmObject)

constinit FDefaultPool* gDefaults = nullptr;
constinit bool FDefaultPool::isGuest = false;

FDefaults::FDefaults(const char* group, int32_t version) : group(group), version(version) {}

template <class Number>
bool FDefaults::setNumber(const char* key, Number value) {
    return isName(key) && getValues().set(key, value);
}

bool FDefaults::setLong(const char* key, int32_t value) {
    return setNumber(key, value);
}

bool FDefaults::initLong(const char* key, int32_t& value) {
    return getLong(key, value) || (setLong(key, value) && false);
}

bool FDefaults::setLongLong(const char* key, int64_t value) {
    return setNumber(key, value);
}

bool FDefaults::initLongLong(const char* key, int64_t& value) {
    return getLongLong(key, value) || (setLongLong(key, value) && false);
}

bool FDefaults::setDouble(const char* key, double value) {
    return setNumber(key, value);
}

bool FDefaults::initDouble(const char* key, double& value) {
    return getDouble(key, value) || (setDouble(key, value) && false);
}

bool FDefaults::getString8(const char* key, String& text) const {
    return getString(key, text) && (!text.isWideString() || text.toMultiByte());
}

bool FDefaults::initString8(const char* key, String& text) {
    return getString8(key, text) || (setString(key, text) && false);
}

bool FDefaults::getString16(const char* key, String& text) const {
    return getString(key, text) && text.toWideString();
}

bool FDefaults::initString16(const char* key, String& text) {
    return getString16(key, text) || (setString(key, text) && false);
}

bool FDefaults::getString(const char* key, String& text) const {
    return values && values->get(key, text);
}

bool FDefaults::setString(const char* key, const ConstString& text) {
    return isName(key) && getValues().setString(key, text);
}

bool FDefaults::initString(const char* key, String& text) {
    return getString(key, text) || (setString(key, text) && false);
}

FAttributes& FDefaults::getValues() {
    if (!values)
        values = new FAttributes;
    return *values;
}

bool FDefaults::isEqual(const CmObject* other) const {
    const auto* defaults = classCast<FDefaults>(other);
    return defaults && compare(defaults) == 0;
}

int32_t FDefaults::compare(const CmObject* other) const {
    const auto* defaults = classCast<FDefaults>(other);
    return defaults ? std::strcmp(getGroup(), defaults->getGroup()) : CmObject::compare(other);
}

bool FDefaults::storeAttributes(FAttributes& attributes) const {
    if (!attributes.setString(kGroup, group))
        return false;
    if (version != 0)
        attributes.set(kVersion, version);
    return !values || attributes.setAttributes(kValues, values);
}

bool FDefaults::restoreAttributes(FAttributes& attributes) {
    FAttributes* stored = attributes.getAttributes(kValues);
    String name;
    if (!stored || !attributes.get(kGroup, name) || name.isEmpty() || (name.isWideString() && !name.toMultiByte()))
        return false;
    group = name;
    version = int32_t(attributes.getInt(kVersion));
    values = OPtr<FAttributes>(IPtr<FAttributes>(stored));
    return true;
}

FDefaultPool::FDefaultPool() {
    entries._ownsObjects = CmContainer::kTakesOver;
    autoSavers._ownsObjects = CmContainer::kShares;
}

FDefaultPool::~FDefaultPool() = default;

int32_t FDefaultPool::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IDefaultPool3>(this, iid, obj) || answerInterface<IDefaultPool2>(this, iid, obj) ||
        answerInterface<IDefaultPool>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

// --- by group and key

int32_t FDefaultPool::setLong(const char* group, const char* key, int32_t value) {
    return write(defaultsFor(group), &FDefaults::setLong, key, value);
}

int32_t FDefaultPool::getLong(const char* group, const char* key, int32_t& value) {
    return resultOf(read(findDefaults(group), &FDefaults::getLong, key, value));
}

int32_t FDefaultPool::setDouble(const char* group, const char* key, double value) {
    return write(defaultsFor(group), &FDefaults::setDouble, key, value);
}

int32_t FDefaultPool::getDouble(const char* group, const char* key, double& value) {
    return resultOf(read(findDefaults(group), &FDefaults::getDouble, key, value));
}

int32_t FDefaultPool::setString8(const char* group, const char* key, const char* text) {
    return write(defaultsFor(group), &FDefaults::setString8, key, text);
}

int32_t FDefaultPool::getString8(const char* group, const char* key, char* text, int32_t size) {
    String found;
    return resultOf(read(findDefaults(group), &FDefaults::getString8, key, found) &&
                    copyText(found.text8(), found.length(), text, size));
}

int32_t FDefaultPool::setString16(const char* group, const char* key, const tchar* text) {
    return write(defaultsFor(group), &FDefaults::setString16, key, text);
}

int32_t FDefaultPool::getString16(const char* group, const char* key, tchar* text, int32_t size) {
    String found;
    return resultOf(read(findDefaults(group), &FDefaults::getString16, key, found) &&
                    copyText(found.text16(), found.length(), text, size));
}

int32_t FDefaultPool::setTString(const char* group, const char* key, const tchar* text) {
    return setString16(group, key, text);
}

int32_t FDefaultPool::getTString(const char* group, const char* key, IString* text) {
    String found;
    if (!text || !read(findDefaults(group), &FDefaults::getString16, key, found))
        return kResultFalse;
    text->setText16(found.text16());
    return kResultOk;
}

int32_t FDefaultPool::setObject(const char* group, const char* key, CmObject* object) {
    FDefaults* defaults = isName(key) ? defaultsFor(group) : nullptr;
    return resultOf(defaults && defaults->getValues().setObject(key, object));
}

CmObject* FDefaultPool::getObject(const char* group, const char* key, const char* className) {
    FDefaults* defaults = findDefaults(group);
    return defaults ? defaults->getValues().getObject(key, className) : nullptr;
}

// --- groups

FDefaults* FDefaultPool::findDefaults(const char* group) const {
    if (isTerminated || !isName(group))
        return nullptr;
    const auto found = index.find(group);
    return found != index.end() ? found->second : nullptr;
}

FDefaults* FDefaultPool::getDefaults(const char* group, int32_t version, bool create) {
    const IPtr<FDefaults> defaults(findDefaults(group));
    if (defaults && defaults->getVersion() == version)
        return defaults;
    if (defaults)
        removeEntry(defaults);  // it lives on: the name may be its own
    if (!create || isTerminated || !isName(group))
        return nullptr;
    addEntry(new FDefaults(group, version));
    return findDefaults(group);
}

FDefaults* FDefaultPool::defaultsFor(const char* group) {
    FDefaults* defaults = findDefaults(group);
    return defaults ? defaults : getDefaults(group, 0, true);
}

bool FDefaultPool::removeDefaults(const char* group, int32_t version) {
    FDefaults* defaults = findDefaults(group);
    if (!defaults || defaults->getVersion() != version)
        return false;
    removeEntry(defaults);
    return true;
}

bool FDefaultPool::addEntry(OPtr<FDefaults> defaults) {
    if (!entries.addSorted(defaults))
        return false;
    index.emplace(defaults->getGroup(), defaults);
    return defaults.detach() != nullptr;
}

void FDefaultPool::removeEntry(FDefaults* defaults) {
    index.erase(defaults->getGroup());
    entries.removeAbs(defaults);
}

// --- life

FDefaultPool::Functions& FDefaultPool::preSavers() {
    static Functions functions(0, -1);
    return functions;
}

FDefaultPool::Functions& FDefaultPool::postLoaders() {
    static Functions functions(0, -1);
    return functions;
}

void FDefaultPool::postInit() {
    if (isInitialized || isTerminated)
        return;
    const OPtr<FAttributes> pending(std::move(pendingAutoSavers));
    const CmLinkedList present(autoSavers);  // who is restored may take others away
    for (CmLinkedListIterator each(present); pending && !each.done();) {
        CmObject* saver = each.next();
        FAttributes* stored = pending->getAttributes(persistentNameOf(*saver));
        if (stored && autoSavers.containsAbs(saver))
            saver->restoreAttributes(*stored);
    }
    for (int32_t i = 0; i < postLoaders().total(); ++i)
        postLoaders().at(i)();
    isInitialized = true;
}

bool FDefaultPool::save(bool runPreSavers) {
    if (!isInitialized || isTerminated || isGuest)
        return false;
    for (int32_t i = 0; runPreSavers && i < preSavers().total(); ++i)
        preSavers().at(i)();
    return saveArchive(kArchiveName);
}

bool FDefaultPool::loadArchive(const char* name) {
    const bool loaded = !isTerminated && FXmlArchive::restoreObject(name, kRootTag, this);
    isSpoilt = !loaded && FXmlArchive::objectArchiveExists(name);
    return loaded;
}

bool FDefaultPool::saveArchive(const char* name) {
    if (isTerminated || isGuest || (isSpoilt && !FXmlArchive::backupObjectArchive(name)))
        return false;
    isSpoilt = false;
    if (FXmlArchive::storeObject(name, kRootTag, this))
        return true;
    saveStorable(name);
    return false;
}

void FDefaultPool::saveStorable(const char* name) const {
    const OPtr<FAttributes> bag(new FAttributes);
    storeAttributes(*bag);
    while (FAttributes* entry = bag->unqueueAttributes(kEntries))
        keepStorable(*entry, kValues, 2);
    keepStorable(*bag, kAutoSavers, 1);
    FXmlArchive::storeObject(name, kRootTag, bag);
}

void FDefaultPool::terminate() {
    isTerminated = true;
    pendingAutoSavers = nullptr;
    autoSavers.removeAll();
    index.clear();
    entries.removeAll();
}

bool FDefaultPool::addGlobalAutoSaver(CmObject* saver) {
    return gDefaults && !gDefaults->isTerminated && !gDefaults->autoSavers.containsAbs(saver) &&
           gDefaults->autoSavers.add(saver);
}

bool FDefaultPool::removeGlobalAutoSaver(CmObject* saver) {
    return gDefaults && gDefaults->autoSavers.removeAbs(saver);
}

FDefaultPool* FDefaultPool::use() {
    if (!gDefaults)
        gDefaults = new FDefaultPool;
    gStorageHooks.storeDefault = storeDefaultPath;
    gStorageHooks.loadDefault = loadDefaultPath;
    gNetworkHooks.defaultPool = []() -> IDefaultPool3* { return gDefaults; };
    return gDefaults;
}

void FDefaultPool::unuse() {
    if (!gDefaults)
        return;
    gStorageHooks.storeDefault = nullptr;
    gStorageHooks.loadDefault = nullptr;
    gNetworkHooks.defaultPool = nullptr;
    gDefaults->terminate();
    gDefaults->release();
    gDefaults = nullptr;
}

// --- storage

bool FDefaultPool::storeAttributes(FAttributes& attributes) const {
    bool stored = true;
    for (CmLinkedListIterator each(entries); !each.done();) {
        const auto* defaults = static_cast<FDefaults*>(each.next());
        if (!defaults->isEmpty())
            stored = attributes.queueMember(kEntries, *defaults) && stored;
    }
    if (autoSavers.isEmpty())
        return stored;
    const OPtr<FAttributes> savers(new FAttributes);
    for (CmLinkedListIterator each(autoSavers); !each.done();) {
        const CmObject* saver = each.next();
        savers->setMember(persistentNameOf(*saver), *saver);
    }
    return attributes.setAttributes(kAutoSavers, savers) && stored;
}

bool FDefaultPool::restoreAttributes(FAttributes& attributes) {
    std::vector<OPtr<FDefaults>> groups;
    if (!attributes.resetList(kEntries) && attributes.containsAttribute(kEntries))
        return false;
    while (FAttributes* stored = attributes.unqueueAttributes(kEntries)) {
        groups.emplace_back(new FDefaults);
        if (!groups.back()->restoreAttributes(*stored))
            return false;
    }
    std::ranges::sort(groups, precedes);
    if (isTerminated || int32_t(groups.size()) != attributes.countQueueItems(kEntries) ||
        std::ranges::adjacent_find(groups, areEqual) != groups.end())
        return false;
    std::vector<OPtr<FDefaults>> dropped;  // they die when all is in order again: who dies may come back
    index.clear();
    while (!entries.isEmpty())
        dropped.emplace_back(static_cast<FDefaults*>(entries.removeFirst()));
    for (OPtr<FDefaults>& group : groups) {
        index.emplace(group->getGroup(), group);
        entries.append(group.detach());
    }
    pendingAutoSavers = attributes.getAttributes(kAutoSavers);
    if (pendingAutoSavers)
        pendingAutoSavers->addRef();
    return true;
}

}  // namespace Tessarine
