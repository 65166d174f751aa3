#pragma once
#include "graphed/gcommand.h"

namespace Tessarine {

/** Commands that are fired one after the other, and undone as one. They are looked up by name when they are fired, so
    that some may come later than the macro. Macros may hold macros; one that is met again while it runs, or too deep
    inside of others, does nothing, and there is an end to what one may fire. */
class GMacroCommand : public GCommand {
public:
    DECLARE_CLASS(GMacroCommand, GCommand)
    static constexpr char kCategory[] = "Macro";
    static constexpr int32_t kDeepest = 32;        // macros in macros
    static constexpr int32_t kMostFired = 10'000;  // commands, with those of the macros in it

    explicit GMacroCommand(const ConstString& name = ConstString());
    GMacroCommand(const GMacroCommand&) = delete;

    /** Ends at the first one that is disabled, whose answer it is. */
    int32_t fire(uint32_t key) override;
    /** The first command decides. */
    bool canPerform(FMessage* message) const override;

    /** What can be part of a macro. */
    static bool isAllowed(const ConstString& category, const ConstString& name);
    /** The same; the user is told of what isn't. */
    static bool allowCommand(const ConstString& category, const ConstString& name);
    /** Shares it. false: null, or not allowed. */
    bool addCommand(GCommand* command);
    /** All of this name. */
    void removeCommands(const ConstString& category, const ConstString& name);
    const CmArray& getCommands() const { return commands; }
    void removeAllCommands() { commands.removeAll(); }

private:
    class Running;

    bool canRun() const;
    int32_t fireAll();
    /** The one that the manager knows by this name now, or else the one that was added. Null: it isn't allowed. */
    GCommand* currentCommand(int32_t index) const;

    CmArray commands{0, -1};
    mutable bool running = false;
};

}  // namespace Tessarine
