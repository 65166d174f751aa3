#pragma once
#include "base/source/fstring.h"
#include "base/source/tlinkedlist.h"
#include "collect/cmarray.h"
#include "gui/values/ukeycode.h"

namespace Tessarine {
class FMessage;
class GAction;

/** A user action with a name, which menus and keys can fire. Its names stay while a manager has it. Main thread. */
class GCommand : public CmObject {
public:
    DECLARE_CLASS(GCommand, CmObject)
    DECLARE_NEWCOPY(GCommand)
    enum Flag : int32_t {
        kEnabled = 1,
        kMayBeDisabled = 2,
        kKeysWereStored = 4,  // before it came: default keys that it gets now aren't assigned
    };
    /** Answers of fire, beside those of who interprets it. */
    enum Answer : int32_t { kDisabled = -1, kNotDone = 0, kDone = 1 };

    explicit GCommand(const ConstString& category = ConstString(), const ConstString& name = ConstString(),
                      const tchar* title = nullptr);
    GCommand(const GCommand& source);
    GCommand& operator=(const GCommand&) = delete;
    using CmObject::update;
    /** Fires when a value of it was switched on. The value springs back, so that a press is one shot, whether its
        control switches or pushes. */
    void update(CmObject* source, int32_t message) override;

    /** key: the code of the one that was pressed, or 0. Above 0: done; -1: disabled, or nobody dispatches. */
    virtual int32_t fire(uint32_t key);
    /** "MenuItem" of the message, which may be null, is handed on. */
    virtual bool canPerform(FMessage* message) const;
    /** Some standard commands are always there. */
    virtual bool canDisable();

    bool isNamed(const ConstString& ofCategory, const ConstString& ofName) const;
    /** The title or, without one, the name. */
    const FString& shownTitle() const { return title.isEmpty() ? name : title; }
    bool isEnabled() const { return commandFlags & kEnabled; }
    /** Disabling is refused for those that stay enabled. */
    void enable(bool state);

    FString category;
    FString name;
    FString title;
    FString subCategory;
    TLinkedList<UKeyCode> defaultKeys;
    int32_t commandFlags = kEnabled | kMayBeDisabled;

private:
    /** The caller's. */
    GAction* newAction() const;
};

/** A key that fires a command, which may not be there (yet). Sorted by the key. */
class GKeyCommand : public CmObject {
public:
    DECLARE_CLASS(GKeyCommand, CmObject)
    GKeyCommand() = default;
    GKeyCommand(const UKeyCode& key, const ConstString& category, const ConstString& name);
    explicit GKeyCommand(uint32_t keyValue) : keyValue(keyValue) {}

    bool isOf(const ConstString& ofCategory, const ConstString& ofName) const;
    bool isEqual(const CmObject* other) const override { return compare(other) == 0; }
    int32_t compare(const CmObject* other) const override;

    UKeyCode keyCode;
    uint32_t keyValue = 0;  // the normalized key
    FString category, name;
};

/** Commands under one name. */
class GCommandCategory : public CmObject {
public:
    DECLARE_CLASS(GCommandCategory, CmObject)
    explicit GCommandCategory(const ConstString& name = ConstString()) : name(name) {
        commands._ownsObjects = CmContainer::kShares;
    }

    int32_t countCommands() const { return commands.total(); }
    /** Null out of range. */
    GCommand* commandAt(int32_t index) const { return static_cast<GCommand*>(commands.at(index)); }
    /** -1: none. */
    int32_t indexOf(const ConstString& commandName) const;
    /** The one of this category and name, here perhaps a copy. */
    bool removeCommand(const GCommand& command);

    FString name;
    CmArray commands{0, -1};
};

}  // namespace Tessarine
