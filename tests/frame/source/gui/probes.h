#pragma once
#include "base/fmessage.h"
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Tessarine {

/** What happened, in order. */
using Log = std::vector<std::string>;

/** Does what the test says with each message. */
class Listener : public CmObject {
public:
    explicit Listener(std::function<void(FMessage*)> action) : action(std::move(action)) {}
    ~Listener() override { gMessenger->killMessages(this); }
    int32_t notify(FMessage* message) override { return action(message), 1; }

private:
    std::function<void(FMessage*)> action;
};

/** Does what the test says with each change. */
class Dependent : public CmObject {
public:
    explicit Dependent(std::function<void()> action) : action(std::move(action)) {}
    using CmObject::update;
    void update(FUnknown*, int32_t) override { action(); }

private:
    std::function<void()> action;
};

/** Does something at its end. */
class Farewell : public CmObject {
public:
    explicit Farewell(std::function<void()> action) : action(std::move(action)) {}
    ~Farewell() override { action(); }

private:
    std::function<void()> action;
};

}  // namespace Tessarine
