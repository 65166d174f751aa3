#pragma once
#include "base/fscripts.h"

/** What scripts of skins see that neither draws nor is a view. Members stand in tables in the source. */

namespace Tessarine {
class UTimer;

/** "Timer": calls the function "onTimer" at each period, in milliseconds, until it answers 0 or fails. While it runs it keeps
    itself, but not beyond its context. A function that refers to its own timer keeps it for as long: set it to nothing when it is
    done. Where functions take so long that all timers together would need more than half of the thread, they rest longer than
    their periods. */
class USTimer : public FScriptObject {
public:
    DECLARE_ABSTRACT_CLASS(USTimer, FScriptObject)
    DECLARE_SCRIPT_CLASS(USTimer)
    static constexpr int32_t kMaxRunning = 256;  // scripts that start more get 0

    explicit USTimer(uint32_t periodMs) : period(periodMs) {}
    int32_t getProperty(char index, SVariant& value, IScriptContext* context) override;
    int32_t setProperty(char index, FVariant& value, IScriptContext* context) override;
    int32_t invoke(char index, SArgs& args, SVariant& result) override;
    int32_t notify(FMessage* message) override;

    bool isRunning() const { return timer != nullptr; }
    /** Kills those whose functions are of this context. */
    static void killAllOf(const IScriptContext* context);

private:
    bool setPeriod(const FVariant& value);
    bool start();
    void kill();
    bool tick();

    uint32_t period;  // milliseconds
    UTimer* timer = nullptr;
    IPtr<IScriptContext> context;  // of the function
};

/** "Rect": left and top belong to it, right and bottom don't; a new width or height moves these. */
class USRect : public FScriptObject {
public:
    DECLARE_ABSTRACT_CLASS(USRect, FScriptObject)
    DECLARE_SCRIPT_CLASS(USRect)

    USRect() = default;
    int32_t getProperty(char index, SVariant& value, IScriptContext* context) override;
    int32_t setProperty(char index, FVariant& value, IScriptContext* context) override;
    int32_t invoke(char index, SArgs& args, SVariant& result) override;

private:
    bool set(const SArgs& args);

    int32_t edges[4] = {};  // left, top, right, bottom
};

/** "console": writes where the context does. */
class USConsole : public FScriptObject {
public:
    DECLARE_ABSTRACT_CLASS(USConsole, FScriptObject)
    static const SClassInfo __classInfo;
    static const SMethod __methods[];
    const SClassInfo* getTypeInfo() override { return &__classInfo; }

    explicit USConsole(FScriptContext* context) : context(context) {}
    int32_t invoke(char index, SArgs& args, SVariant& result) override;
    /** The context goes. */
    void detach() { context = nullptr; }

private:
    FScriptContext* context;  // borrowed
};

/** "theApp": name and version, and the commands. The version is the application's feature "Version". */
class USApplication : public FScriptObject {
public:
    DECLARE_ABSTRACT_CLASS(USApplication, FScriptObject)
    static const SClassInfo __classInfo;
    static const char* const __properties[];
    static const SMethod __methods[];
    const SClassInfo* getTypeInfo() override { return &__classInfo; }
    static constexpr char kVersionFeature[] = "Version";

    int32_t getProperty(char index, SVariant& value, IScriptContext* context) override;
    int32_t setProperty(char /*index*/, FVariant& /*value*/, IScriptContext* /*context*/) override {
        return kInvalidArgument;
    }
    int32_t invoke(char index, SArgs& args, SVariant& result) override;
};

}  // namespace Tessarine
