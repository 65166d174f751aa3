#pragma once
#include "collect/cmobjectfilter.h"
#include "graphed/gactionprocessor.h"
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Tessarine {

/** Adds a number when it is executed or redone, and takes it away when undone; it fails at the operation told. */
class AddTarget final : public GActionTarget {
public:
    static constexpr int32_t kNever = -1;
    AddTarget(std::vector<std::string>& log, std::string name, int32_t failsAt = kNever)
        : name(std::move(name)), failsAt(failsAt), log(log) {
        ++living;
    }
    ~AddTarget() override { --living; }

    bool execute() override {
        if (finishes)
            setState(kFinished);
        return act("do", kExecute);
    }
    bool undo() override { return act("undo", kUndo); }
    bool redo() override { return act("redo", kRedo); }
    bool getDescription(FString& text) override { return text.assign(name.c_str()), true; }
    bool uniteWith(IActionTarget*) override { return unites && (log.push_back("unite " + name), true); }
    void revokeUnification(IActionTarget*) override { log.push_back("revoke " + name); }

    std::string name;
    int32_t failsAt;
    bool finishes = false, unites = false;
    inline static int32_t living = 0;

private:
    bool act(const char* verb, int32_t operation) {
        log.push_back(std::string(verb) + " " + name);
        return operation != failsAt;
    }
    std::vector<std::string>& log;
};

/** Does what the test says with each action. */
class ActionFilter final : public CmObjectFilter {
public:
    explicit ActionFilter(std::function<bool(GAction&)> passes) : passes(std::move(passes)) {}
    bool test(CmObject* object) override {
        auto* action = classCast<GAction>(object);
        return action && passes(*action);
    }

private:
    std::function<bool(GAction&)> passes;
};

inline bool isNamed(const GAction* action, const char* name) {
    return action && std::strcmp(action->getName(), name) == 0;
}

inline std::string nameOf(const GAction* action) {
    return action ? action->getName() : "-";
}

}  // namespace Tessarine
