#pragma once
#include "graphed/gcommand.h"

namespace Tessarine {

/** Commands that are fired one after the other, and undone as one. Macros may hold macros; one that is met again while it
    runs does nothing. */
class GMacroCommand : public GCommand {
public:
    DECLARE_CLASS(GMacroCommand, GCommand)
    static constexpr char kCategory[] = "Macro";

    explicit GMacroCommand(const ConstString& name = ConstString());
    GMacroCommand(const GMacroCommand&) = delete;

    /** Ends at the first one that is disabled, whose answer it is. */
    int32_t fire(uint32_t key) override;
    /** The first command decides. */
    bool canPerform(FMessage* message) const override;

    /** false, and the user is told: what can't be part of a macro. */
    static bool allowCommand(const ConstString& category, const ConstString& name);
    /** Shares it. false: null, or not allowed. */
    bool addCommand(GCommand* command);
    bool removeCommand(const GCommand* command) { return commands.removeAt(commands.indexAbs(command)); }
    const CmArray& getCommands() const { return commands; }
    void removeAllCommands() { commands.removeAll(); }

private:
    int32_t fireAll();

    CmArray commands{0, -1};
    mutable bool running = false;
};

}  // namespace Tessarine
