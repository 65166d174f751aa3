#include "graphed/gcommand.h"
#include "graphed/gaction.h"
#include "graphed/gcommandmanager.h"
#include "graphed/hooks.h"
#include "gui/values/uvalue.h"
#include "gui/values/uvaluehooks.h"
#include <utility>

namespace Tessarine {
IMPLEMENT_CLASS(GCommand, CmObject)
IMPLEMENT_CLASS(GKeyCommand, CmObject)
IMPLEMENT_CLASS(GCommandCategory, CmObject)

namespace {
constexpr std::pair<const char*, const char*> kAlwaysEnabled[] = {
    {"File", "PageSetup"   },
    {"File", "Print"       },
    {"File", "Close"       },
    {"File", "New"         },
    {"File", "Open"        },
    {"File", "Save"        },
    {"File", "Save As"     },
    {"File", "Revert"      },
    {"File", "Preferences" },
    {"File", "Key Commands"},
    {"File", "Quit"        },
    {"Edit", "Undo"        },
    {"Edit", "Redo"        },
    {"Edit", "Cut"         },
    {"Edit", "Copy"        },
    {"Edit", "Paste"       },
};

bool isSame(const ConstString& a, const ConstString& b) {
    return a.compare(b) == 0;
}
}  // namespace

GCommand::GCommand(const ConstString& category, const ConstString& name, const tchar* title)
    : category(category), name(name), title(title) {}

GCommand::GCommand(const GCommand& source)
    : CmObject(source), category(source.category), name(source.name), title(source.title),
      subCategory(source.subCategory), commandFlags(source.commandFlags) {
    defaultKeys.copy(source.defaultKeys);
}

bool GCommand::isNamed(const ConstString& ofCategory, const ConstString& ofName) const {
    return isSame(name, ofName) && isSame(category, ofCategory);
}

void GCommand::update(CmObject* source, int32_t message) {
    auto* value = classCast<UValue>(source);
    if (message != kChanged || !value || value->getValue() == value->getMin())
        return;
    const IPtr<GCommand> kept(this);
    value->setValue(value->getMin());
    fire(0);
}

GAction* GCommand::newAction() const {
    FString category8(category), name8(name);  // 16-bit text would be narrowed for good
    return new GAction(category8.text8(), name8.text8());
}

int32_t GCommand::fire(uint32_t key) {
    if (gCommandManager && !isNamed(ConstString("File"), ConstString("Key Commands")))
        gCommandManager->setLastCommand(*this);
    if (!isEnabled())
        return kDisabled;
    const OPtr<GAction> action(newAction());
    action->setTitle(FString(shownTitle()).text16());
    UValueHooks::tellCommandFired(action->getCategory(), action->getName(), action->getTitle().text16());
    if (key)
        action->setKey(key);
    if (!gCommandManager || !gActionHooks.defersActions || !gActionHooks.defersActions())
        return action->dispatch(true);
    auto* message = new FMessage("PerformAction");
    message->add("Action", IPtr<GAction>(action).detach(), true);
    gMessenger->postMessage(gCommandManager, message);
    return kDone;
}

bool GCommand::canPerform(FMessage* message) const {
    const OPtr<GAction> action(newAction());
    if (message)
        action->add("CommandMenuItem", message->get("MenuItem"), false);
    return action->dispatch(false) > 0;
}

bool GCommand::canDisable() {
    if (!(commandFlags & kMayBeDisabled))
        return false;
    for (const auto& [ofCategory, ofName] : kAlwaysEnabled)
        if (isNamed(ConstString(ofCategory), ConstString(ofName)))
            return false;
    return true;
}

void GCommand::enable(bool state) {
    if (state)
        commandFlags |= kEnabled;
    else if (canDisable())
        commandFlags &= ~kEnabled;
}

GKeyCommand::GKeyCommand(const UKeyCode& key, const ConstString& category, const ConstString& name)
    : keyCode(key), keyValue(key.toLong()), category(category), name(name) {
    keyCode.normalize();
}

bool GKeyCommand::isOf(const ConstString& ofCategory, const ConstString& ofName) const {
    return isSame(name, ofName) && isSame(category, ofCategory);
}

int32_t GKeyCommand::compare(const CmObject* other) const {
    const auto* key = classCast<GKeyCommand>(other);
    if (!key)
        return CmObject::compare(other);
    return keyValue < key->keyValue ? -1 : keyValue > key->keyValue;
}

int32_t GCommandCategory::indexOf(const ConstString& commandName) const {
    for (int32_t i = 0; i < commands.total(); ++i)
        if (isSame(commandAt(i)->name, commandName))
            return i;
    return -1;
}

bool GCommandCategory::removeCommand(const GCommand& command) {
    for (int32_t i = 0; i < commands.total(); ++i)
        if (commandAt(i)->isNamed(command.category, command.name))
            return commands.removeAt(i);
    return false;
}

}  // namespace Tessarine
