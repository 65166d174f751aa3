#pragma once
#include "base/source/fstring.h"
#include "base/source/tarray.h"
#include "collect/cmarray.h"
#include "collect/cmlinkedlist.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fattributearchive.h"
#include "storage/ffiletype.h"
#include "storage/fpath.h"
#include <string>
#include <unordered_map>
#include <vector>

namespace Tessarine {
class FPresetList;

/** How deep what is read holds its like: presets, lists and groups of objects. */
class FPresetDepth {
public:
    /** Half of what an archive takes, so that what was read can be saved, whatever it stands in then. */
    static constexpr int32_t kMaxHeight = FAttributeArchiveBase::kMaxDepth / 2;

    /** Counts what was read below this; all else is none. false: it isn't complete, or too high. */
    bool takes(CmObject* below);
    void setComplete(bool state) { complete = state; }

private:
    static const FPresetDepth* of(CmObject* object);

    bool complete = true;  // false from the factory to the end of reading: it may be what the reader stands in
    int32_t height = 0;
};

/** A preset or a list of them, by name. It stands in one list at most, which owns it. */
class FPresetItem : public CmObject {
public:
    virtual const tchar* getName() const { return name.text16(); }
    virtual void setName(const tchar* text);
    virtual bool isList() const { return false; }
    /** Null for what is no list. */
    virtual FPresetList* toList() { return nullptr; }

    /** By name, first in any case. */
    int32_t compare(const CmObject* other) const override;

    /** The one that it stands in; null: none. */
    FPresetList* getList() const { return list; }

    DECLARE_ABSTRACT_CLASS(FPresetItem, CmObject)

protected:
    FPresetItem() = default;
    explicit FPresetItem(const tchar* text) { FPresetItem::setName(text); }

    FString name;  // wide
    FPresetDepth depth;

private:
    friend class FPresetDepth;
    friend class FPresetList;

    FPresetList* list = nullptr;
};

/** A named object. */
class FPreset : public FPresetItem {
public:
    enum Flag : int32_t { kCanModify = 1, kRenamed = 2 };

    FPreset();
    /** Takes the reference over. */
    FPreset(CmObject* object, const tchar* name, int32_t flags = kCanModify);
    ~FPreset() override;

    /** Borrowed; may be null. The path of a file, as long as that hasn't been read. */
    CmObject* getObject() const { return object; }
    /** Takes the reference over. */
    void setObject(CmObject* newObject) { object = OPtr<CmObject>(newObject); }
    bool canModify() const { return presetFlags & kCanModify; }
    bool isRenamed() const { return presetFlags & kRenamed; }
    void setRenamed(bool state) { presetFlags = state ? presetFlags | kRenamed : presetFlags & ~kRenamed; }
    int32_t getFlags() const { return presetFlags; }
    void setFlags(int32_t flags) { presetFlags = flags; }

    /** The name, then the object. What is read may be modified. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    /** "Name", "Object", and "No Modify" and "Unrenamed" where the flag is clear. */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    DECLARE_CLASS(FPreset, FPresetItem)

private:
    bool take(CmObject* loaded);

    OPtr<CmObject> object;
    int32_t presetFlags = kCanModify | kRenamed;
};

/** Presets, and lists of them, in order.

    Indices   of presets count the presets of this list alone, those of sub-lists the sub-lists alone.
    Deep      with what is in the sub-lists, each behind what stands before it.
    Names     of at most kMaxName characters; longer ones, and ids, are refused.
    Depth     of what is read: FPresetDepth::kMaxHeight; what lies deeper is passed over.
    Results   null, false or -1 for a miss. What is handed out is borrowed.
    Hears     whoever depends on the list, of each change.
    Threads   the main thread. */
class FPresetList : public FPresetItem {
public:
    static constexpr uint32_t kMaxName = 255;
    enum StorageType : int32_t { kWithPool = 0, kOwnFile = 1, kFolder = 2 };

    FPresetList();
    /** The id is the name too. */
    explicit FPresetList(const tchar* id);
    ~FPresetList() override;

    bool isList() const override { return true; }
    FPresetList* toList() override { return this; }

    virtual int32_t countPresets(bool deep);
    virtual const tchar* getPresetName(int32_t index);
    virtual CmObject* getPresetObject(int32_t index);
    /** Marks it as renamed. false also for one that can't be modified. */
    virtual bool setPresetName(int32_t index, const tchar* text);
    virtual bool canModifiyPreset(int32_t index);
    virtual bool presetRenamed(int32_t index);
    virtual void resetRenameState(int32_t index);
    /** Takes the reference over, in any case. index: before this preset, otherwise at the end. The result is the new index. */
    virtual int32_t addPreset(CmObject* object, const tchar* text, bool canModify, int32_t index);
    virtual bool removePresetAt(int32_t index);
    /** In the sub-lists as well. */
    virtual void removeNonModifyPresets();
    /** Adds those of the sub-lists as well. */
    virtual void collectPresetObjects(CmContainer& objects);
    virtual void use() {}
    virtual void unuse() {}
    virtual int32_t countSubLists() { return countItems(false, true, false); }
    virtual FPresetList* getSubList(int32_t index);
    virtual FPresetList* getSubListByName(const tchar* text);
    /** The one that is there, if there is one of this name. */
    virtual FPresetList* addSubList(const tchar* text);
    virtual int32_t getStorageType() const { return kWithPool; }

    const tchar* getID() const { return id.text16(); }
    int32_t countItems(bool presets, bool lists, bool deep);
    FPresetItem* getItemAt(int32_t index, bool presets, bool lists);
    FPreset* getPreset(int32_t index);
    /** Among all items; of this very one. */
    int32_t indexAbs(FPresetItem* item);
    /** Among the presets; of this very one. */
    int32_t indexOf(const FPreset* preset);
    /** Takes the reference over; index is one of all items, others mean the end. false, and it stays the caller's: null, or it
        stands in a list. */
    bool insertAt(FPresetItem* item, int32_t index);
    /** This very one; deep: wherever it is. A preset's file goes as well, the folder of a list stays. */
    bool removeItem(FPresetItem* item, bool deep);
    void removeAll(bool presets, bool lists);
    /** Takes in another list, which stays as it is and has nothing to do with this one: items of the same name replace
        those that are here, the others come to the end. */
    void adjustTo(FPresetList* other);
    /** The same for each, one after the other. */
    using Lists = std::vector<IPtr<FPresetList>>;
    void adjustToAll(const Lists& others);
    /** A copy that shares the objects, without those that can't be saved: with this list as the bag of that depth. */
    OPtr<FPresetList> storablePart(int32_t level);

    /** The id, then the items: presets that may be modified, and plain lists. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    /** "ID", "Name" and "Items"; reads "Presets" and "SubLists" too, where there are no "Items". */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    DECLARE_CLASS(FPresetList, FPresetItem)

    static bool isValidName(const tchar* text);

protected:
    /** Before each look at the items. */
    virtual void refresh() {}
    /** Of a preset among all items; -1: the end. */
    int32_t placeOfPreset(int32_t index);
    bool removePlace(int32_t place);

    CmArray items;  // of FPresetItem

private:
    int32_t placeOf(int32_t index, bool presets, bool lists);
    int32_t presetIndexOf(int32_t place) const;
    IPtr<FPresetList> addListLike(const FPresetList& theirs);
    IPtr<FPreset> addPresetLike(const FPreset& theirs);
    static void adjustPreset(FPreset& mine, const FPreset& theirs);
    /** At the end. */
    bool share(FPresetItem* item);
    bool takeLoaded(CmObject* loaded);
    void takeQueue(FAttributes& attributes, const char* key);

    FString id;             // wide
    int32_t listCount = 0;  // among the items
};

/** A list of memory that has a file of its own. */
class FPresetListOwnFile : public FPresetList {
public:
    FPresetListOwnFile() = default;
    explicit FPresetListOwnFile(const tchar* id) : FPresetList(id) {}
    int32_t getStorageType() const override { return kOwnFile; }

    DECLARE_CLASS(FPresetListOwnFile, FPresetList)
};

/** A list that is a folder: a file for each preset, a folder for each sub-list. It is looked through once, at the first use.

    Names     are those of the files, without the extension: what a file can't be called is replaced, and a name that is taken
              gets a number. A guest (FDefaultPool::isGuest) changes nothing in the user's folder.
    Order     by name; what is added comes where it is put, until the next run. */
class FFilePresetList : public FPresetList {
public:
    FFilePresetList(const tchar* id, const FNPath& folder, bool writable = true);

    CmObject* getPresetObject(int32_t index) override;
    bool setPresetName(int32_t index, const tchar* text) override;
    /** -1 also when the file can't be written. */
    int32_t addPreset(CmObject* object, const tchar* text, bool canModify, int32_t index) override;
    bool removePresetAt(int32_t index) override;
    void use() override { ++useCount; }
    void unuse() override { useCount -= useCount > 0; }
    FPresetList* addSubList(const tchar* text) override;
    int32_t getStorageType() const override { return kFolder; }

    const FNPath& getFolder() const { return *folder; }
    int32_t countUsers() const { return useCount; }

    DECLARE_ABSTRACT_CLASS(FFilePresetList, FPresetList)

protected:
    void refresh() override;

private:
    void scan();
    void addFound(FPath& found);
    FNPath pathOf(const FPreset& preset) const;

    OPtr<FNPath> folder;
    bool scanned = false;
    bool writable;
    int32_t useCount = 0;
};

/** A reference to a preset, mostly of a list. */
class FPresetPointer : public FPresetItem {
public:
    /** Shares the preset. The dependent is borrowed, hears of the preset's changes, and may be null. */
    explicit FPresetPointer(FPreset* preset, IDependent* dependent = nullptr);
    ~FPresetPointer() override;

    FPreset* getPreset() const { return preset; }
    /** As that of the preset's list, which may read it first. */
    CmObject* getObject() const;
    const tchar* getName() const override { return preset->getName(); }
    /** As setPresetName of the preset's list. */
    void setName(const tchar* text) override;
    void update(CmObject* changedObject, int32_t message) override;
    using FPresetItem::update;

    DECLARE_ABSTRACT_CLASS(FPresetPointer, FPresetItem)

private:
    const IPtr<FPreset> preset;
    IDependent* dependent;
};

/** Presets of several lists. */
class FPresetPointerList : public CmObject {
public:
    /** As FPresetPointer, for all of them. */
    explicit FPresetPointerList(IDependent* dependent = nullptr);

    /** false: null, or it is here. */
    bool addPreset(FPreset* preset);
    bool removePreset(FPreset* preset);
    void removeAll() { pointers.removeAll(); }
    int32_t countPresets() const { return pointers.total(); }
    FPreset* getPreset(int32_t index) const;

    DECLARE_ABSTRACT_CLASS(FPresetPointerList, CmObject)

private:
    int32_t indexOf(const FPreset* preset) const;

    CmArray pointers;  // of FPresetPointer
    IDependent* dependent;
};

/** Several objects as one preset: copies of them, or the objects themselves. */
class FMultiPreset : public CmObject {
public:
    explicit FMultiPreset(bool isCopy = false);
    ~FMultiPreset() override;

    /** Shared, or with isCopy copied, where the class has copies. */
    bool addObject(CmObject* object);
    int32_t countObjects() const { return objects.total(); }
    /** Borrowed; null out of range. */
    CmObject* getObject(int32_t index) const { return objects.at(index); }
    bool holdsCopies() const { return isCopy; }

    /** What was here lives on until all dependents have heard. */
    void updateDone(int32_t message) override;
    /** "IsCopy" and "Objects": without copies, what a reference among them leads to. */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    DECLARE_CLASS(FMultiPreset, CmObject)

private:
    friend class FPresetDepth;

    CmLinkedList objects, pendingObjects;
    bool isCopy;
    FPresetDepth depth;
};

/** All preset lists of the program: those in memory are kept in files below a folder, those on disk are folders there.

    Life      comes with the defaults (PostDefLoadFPresetPool) and goes before them (unuse).
    Files     "RAMPresets.xml" holds the lists of memory, a ".pxml" each list with a file of its own. They are read whole or
              not at all, and written whole or not at all, but for presets whose objects can't be stored: these are left
              out alone. A copy (".backup") is kept of files that couldn't be read.
    Threads   the main thread. */
class FPresetPool : public CmObject {
public:
    using Function = void (*)();

    FPresetPool();

    /** Takes in what is there: lists whose ids are here are merged. false: nothing could be. */
    bool load(const FNPath& folder);
    /** Without lists in memory nothing is written. false: not all could be. */
    bool store(const FNPath& folder);
    /** Made when it is missing; null: no name. */
    FPresetList* getRAMList(const tchar* id, bool ownFile);
    /** A StorageType. A folder is used by it (FPresetList::use), lies in "Presets" below the given one, null: the user's, and is
        made by the first preset. Null also for a name that no folder has. */
    FPresetList* getPresetList(const tchar* id, int32_t storageType, const FNPath* folder);
    bool hasRAMList(const tchar* id) const;
    bool hasPresetList(const tchar* id, int32_t storageType) const;
    /** Forgets it; the files stay. */
    bool removeFilePreset(FFilePresetList* list);
    int32_t countRAMLists() const { return ramLists.total(); }
    FPresetList* getRAMListAt(int32_t index) const { return static_cast<FPresetList*>(ramLists.at(index)); }

    /** Run in the order of adding, after the lists were loaded; at static initialisation too. */
    static void addPostLoadFunc(Function function) { postLoaders().add(function); }
    static void runPostLoaders();
    /** Ends gPresetPool. */
    static void unuse();

    /** A container of lists, which are merged. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    /** "Lists": those without a file of their own. */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    DECLARE_ABSTRACT_CLASS(FPresetPool, CmObject)

private:
    static TArray<Function>& postLoaders();
    FPresetList* findRAMList(const tchar* id) const;
    FPresetList* findFileList(const tchar* id) const;
    void addRAMList(FPresetList* list);
    void merge(FPresetList* list);
    void mergeAll(const std::vector<FPresetList*>& lists);
    bool loadFile(FNPath& path, const char* root, CmObject& object);
    bool loadOwnFile(FNPath& path);
    OPtr<FPresetPool> storablePart() const;
    bool keepSpoilt(const FNPath& folder);

    CmLinkedList ramLists;                                 // of FPresetList; none ever leaves
    CmLinkedList fileLists;                                // of FFilePresetList
    std::vector<FNPath> spoilt;                            // files that are there, and couldn't be read
    std::unordered_map<std::u16string, FPresetList*> ids;  // of ramLists, the first of an id
};

/** Makes gPresetPool and loads it: from the user's "Presets", which begin as a copy of the application's. */
void PostDefLoadFPresetPool();
void PreDefSaveFPresetPool();

/** The program's; null before the defaults are up. */
extern FPresetPool* gPresetPool;

extern const FFileType presetFileType, ramPresetListFileType;

}  // namespace Tessarine
