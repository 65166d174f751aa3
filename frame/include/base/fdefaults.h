#pragma once
#include "base/source/fstring.h"
#include "collect/cmlinkedlist.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/idefaultpool.h"
#include "storage/fpersistent.h"
#include <string_view>
#include <unordered_map>

namespace Tessarine {

/** One group of settings.

    get     false, and the target as it was: there is no such key, or its value is of another kind. Numbers and texts turn into
            each other.
    set     false: the key is empty.
    init    get; a missing key is set to what the target holds, and the result is false.
    Threads the main thread. */
class FDefaults : public CmObject {
public:
    explicit FDefaults(const char* group = "", int32_t version = 0);

    bool getLong(const char* key, int32_t& value) const { return getNumber(key, value); }
    bool setLong(const char* key, int32_t value);
    bool initLong(const char* key, int32_t& value);
    bool getLongLong(const char* key, int64_t& value) const { return getNumber(key, value); }
    bool setLongLong(const char* key, int64_t value);
    bool initLongLong(const char* key, int64_t& value);
    bool getDouble(const char* key, double& value) const { return getNumber(key, value); }
    bool setDouble(const char* key, double value);
    bool initDouble(const char* key, double& value);
    /** In 8 bits, by code page 0. */
    bool getString8(const char* key, String& text) const;
    bool setString8(const char* key, const char* text) { return setString(key, ConstString(text)); }
    bool initString8(const char* key, String& text);
    /** In 16 bits. */
    bool getString16(const char* key, String& text) const;
    bool setString16(const char* key, const tchar* text) { return setString(key, ConstString(text)); }
    bool initString16(const char* key, String& text);
    /** In the width in which it was set. */
    bool getString(const char* key, String& text) const;
    bool setString(const char* key, const ConstString& text);
    bool initString(const char* key, String& text);

    bool containsEntry(const char* key) const { return values && values->containsAttribute(key); }
    bool removeEntry(const char* key) { return values && values->removeAttribute(key); }

    const char* getGroup() const { return group.text8(); }
    int32_t getVersion() const { return version; }
    bool isEmpty() const { return !values || values->isEmpty(); }
    /** All of them, to read and write what else a bag holds; made on first use. */
    FAttributes& getValues();

    /** By the group's name. */
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    /** "Group", "Version" unless it is 0, and "Values". */
    bool storeAttributes(FAttributes& attributes) const override;
    /** false, and nothing has changed: no name, or no values. Never of a group in a pool, which knows it by its name. */
    bool restoreAttributes(FAttributes& attributes) override;

    DECLARE_CLASS(FDefaults, CmObject)

private:
    template <class Number>
    bool getNumber(const char* key, Number& value) const {
        return values && values->get(key, value);
    }
    template <class Number>
    bool setNumber(const char* key, Number value);

    FString group;  // narrow
    OPtr<FAttributes> values;
    int32_t version;
};

/** Settings by group and key, and the file that keeps them: a program's own in gDefaults, others in pools of their own.

    Start     use(), load(), then, when all who keep something here have registered, postInit(); save() at the end.
    Owns      its groups, and shares the auto savers. Groups are handed out borrowed, until they are removed or dropped.
    Files     are read whole or not at all: of one that can't be taken in, nothing is, and a copy of it stays ("xml.backup")
              when it is replaced. They are written whole or not at all, but for objects that can't be stored: these are left
              out alone.
    Threads   the main thread. */
class FDefaultPool : public CmObject, public IDefaultPool3 {
public:
    using Function = void (*)();

    FDefaultPool();
    ~FDefaultPool() override;

    // by group and key, of whatever version the group is; a new group gets version 0
    int32_t setLong(const char* group, const char* key, int32_t value) override;
    int32_t getLong(const char* group, const char* key, int32_t& value) override;
    int32_t setDouble(const char* group, const char* key, double value) override;
    int32_t getDouble(const char* group, const char* key, double& value) override;
    int32_t setString8(const char* group, const char* key, const char* text) override;
    int32_t getString8(const char* group, const char* key, char* text, int32_t size) override;
    int32_t setString16(const char* group, const char* key, const tchar* text) override;
    int32_t getString16(const char* group, const char* key, tchar* text, int32_t size) override;
    int32_t setTString(const char* group, const char* key, const tchar* text) override;
    int32_t getTString(const char* group, const char* key, IString* text) override;
    /** Shares the object, which is stored with the pool; null removes the key. */
    virtual int32_t setObject(const char* group, const char* key, CmObject* object);
    /** Borrowed; null for a miss, and when it isn't of the class. A null className means any. */
    virtual CmObject* getObject(const char* group, const char* key, const char* className);

    /** Of this version. One of another version is dropped, whatever create says, since nobody could read it any more. Null: an
        empty name, none without create, or the pool has ended. */
    FDefaults* getDefaults(const char* group, int32_t version, bool create);
    /** Of whatever version; null: there is none. */
    FDefaults* findDefaults(const char* group) const;
    /** false: there is none of this version. */
    bool removeDefaults(const char* group, int32_t version);
    int32_t countDefaults() const { return entries.total(); }

    /** The archive "Defaults". */
    bool load() { return loadArchive(kArchiveName); }
    /** Gives each auto saver what it stored, by its class, then runs the post-load functions. Once. */
    void postInit();
    /** false: before postInit, or not all could be written. */
    bool save(bool runPreSavers);
    /** Any archive of a pool, by the name of a user file. */
    bool loadArchive(const char* name);
    bool saveArchive(const char* name);
    /** Refuses all from now on, and lets go of what it has. Modules may still hold it. */
    void terminate();

    /** The program's pool stores and restores it as well. false: there is no such pool, or it is there. */
    static bool addGlobalAutoSaver(CmObject* saver);
    static bool removeGlobalAutoSaver(CmObject* saver);
    /** Run in the order of adding; at static initialisation too. */
    static void addPreSaveFunc(Function function) { preSavers().add(function); }
    static void addPostLoadFunc(Function function) { postLoaders().add(function); }
    /** Makes gDefaults, if there is none; from now on paths are kept there as well (FNPath::storeAsDefault). */
    static FDefaultPool* use();
    /** Ends gDefaults. */
    static void unuse();

    /** This copy of the framework serves a module in another program, whose user folder it must leave alone: nothing of pools,
        presets and keys is ever written. Off at first. */
    static bool isGuest;

    int32_t queryInterface(const char* iid, void** obj) override;
    bool storeAttributes(FAttributes& attributes) const override;
    /** All groups instead of the present ones. false, and nothing has changed: a group is no such, or is there twice. */
    bool restoreAttributes(FAttributes& attributes) override;

    DECLARE_CLASS(FDefaultPool, CmObject)
    FORWARD_REFCOUNT(CmObject)

private:
    using Functions = TArray<Function>;
    static constexpr const char* kArchiveName = "Defaults";

    static Functions& preSavers();
    static Functions& postLoaders();
    FDefaults* defaultsFor(const char* group);
    bool addEntry(OPtr<FDefaults> defaults);
    void removeEntry(FDefaults* defaults);
    void saveStorable(const char* name) const;

    CmLinkedList entries;                                    // of FDefaults, sorted
    std::unordered_map<std::string_view, FDefaults*> index;  // the same, by the groups' own names
    CmLinkedList autoSavers;
    OPtr<FAttributes> pendingAutoSavers;  // between load and postInit
    bool isInitialized = false, isTerminated = false;
    bool isSpoilt = false;  // the file is there, and couldn't be read
};

/** The program's; null before use(). */
extern FDefaultPool* gDefaults;

}  // namespace Tessarine
