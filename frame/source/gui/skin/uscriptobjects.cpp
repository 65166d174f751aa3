#include "gui/skin/uscriptobjects.h"
#include "base/fmessage.h"
#include "base/utimer.h"
#include "graphed/gcommandmanager.h"
#include "gui/skin/uiscripts.h"
#include "gui/uapp.h"
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <vector>

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(USTimer, FScriptObject)
IMPLEMENT_ABSTRACT_CLASS(USRect, FScriptObject)
IMPLEMENT_ABSTRACT_CLASS(USConsole, FScriptObject)
IMPLEMENT_ABSTRACT_CLASS(USApplication, FScriptObject)

namespace {
bool isNumber(const FVariant* value) {
    return value && (value->getType() & (FVariant::kInteger | FVariant::kFloat));
}

/** Truncated, and at the bounds of the type. */
int32_t wholeOf(const FVariant& value) {
    return int32_t(std::clamp<int64_t>(value.getInteger(), INT32_MIN, INT32_MAX));
}
}  // namespace

// --- timers

namespace {
enum TimerProperty : char { kPeriod, kOnTimer };
enum TimerMethod : int32_t { kStart, kKill };
constexpr const char* kNotAssigned = "Timer::onTimer not assigned!\n";
std::vector<USTimer*> runningTimers;

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kLongestTick(1000), kWithoutRest(50);
Clock::time_point restUntil;  // once more as much time has passed as functions took

/** In milliseconds. Short functions may take some time one after the other. */
uint32_t remainingRest() {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(restUntil - kWithoutRest - Clock::now());
    return uint32_t(std::max<int64_t>(rest.count(), 0));
}

/** A function may have waited for somebody, which isn't all counted. */
void addRest(Clock::time_point began) {
    const auto took = std::min<Clock::duration>(Clock::now() - began, kLongestTick);
    restUntil = std::max(restUntil, began) + 2 * took;
}

/** Members of an object are called, not itself; and objects that keep each other would never go. */
bool mayBeCalled(const FVariant& value) {
    return value.isEmpty() || (value.getType() == FVariant::kObject && !FUnknownPtr<IScriptObject>(value.getObject()));
}
}  // namespace

constinit const char* const USTimer::__properties[] = {"period", "onTimer"};
constinit const SMethod USTimer::__methods[] = {
    {kStart, "start", 0},
    {kKill,  "kill",  0},
};
constinit const SClassInfo USTimer::__classInfo = {"Timer",      __constructor,        std::size(__properties),
                                                   __properties, std::size(__methods), __methods};

IScriptObject* USTimer::__constructor(SArgs& args) {
    const OPtr<USTimer> made(new USTimer(0));
    if (args.count != 1 || !made->setPeriod(args.variants[0]))
        return nullptr;
    return IPtr<USTimer>(made).detach();
}

bool USTimer::setPeriod(const FVariant& value) {
    const int32_t milliseconds = isNumber(&value) ? wholeOf(value) : 0;
    if (milliseconds <= 0)
        return false;
    period = uint32_t(milliseconds);
    if (timer && !timer->restart(period))
        kill();
    return true;
}

int32_t USTimer::getProperty(char index, SVariant& value, IScriptContext* scriptContext) {
    if (index != kPeriod)
        return FScriptObject::getProperty(index, value, scriptContext);
    value.setInteger(period);
    return kResultOk;
}

int32_t USTimer::setProperty(char index, FVariant& value, IScriptContext* scriptContext) {
    if (index == kPeriod)
        return setPeriod(value) ? kResultOk : kInvalidArgument;
    if (index != kOnTimer || !mayBeCalled(value))
        return kInvalidArgument;
    context = scriptContext;
    return FScriptObject::setProperty(index, value, scriptContext);
}

int32_t USTimer::invoke(char index, SArgs& /*args*/, SVariant& result) {
    if (index == kStart)
        result.setInteger(start());
    else if (index == kKill)
        kill();
    else
        return kInvalidArgument;
    return kResultOk;
}

bool USTimer::start() {
    if (timer)
        return true;
    if (!getObjectProperty(kOnTimer)) {
        IScriptContext* where = !context && gUIScriptContext ? gUIScriptContext->getEngineContext() : context.get();
        if (where)
            where->writeConsole(kNotAssigned);
        return false;
    }
    if (int32_t(runningTimers.size()) >= kMaxRunning)
        return false;
    timer = new UTimer(this, 0, period);
    addRef();
    runningTimers.push_back(this);
    if (!timer->isAlive())
        kill();
    return timer;
}

void USTimer::kill() {
    if (!timer)
        return;
    timer->kill();
    timer = nullptr;
    std::erase(runningTimers, this);
    release();
}

void USTimer::killAllOf(const IScriptContext* context) {
    const std::vector<IPtr<USTimer>> all(runningTimers.begin(), runningTimers.end());
    for (USTimer* each : all)
        if (each->context == context)
            each->kill();
}

int32_t USTimer::notify(FMessage* message) {
    if (!timer || !message || !message->isType("Timer"))
        return FScriptObject::notify(message);
    const IPtr<USTimer> kept(this);
    const uint32_t restMs = remainingRest();
    if (!(restMs > 0 ? timer->restart(restMs) : tick()))
        kill();
    return 1;
}

bool USTimer::tick() {
    const Clock::time_point began = Clock::now();
    const IPtr<FUnknown> function(getObjectProperty(kOnTimer));
    SArgs none = {0, nullptr};
    SVariant value;
    value.init();
    const bool called = function && context && context->invoke(function, nullptr, none, value) == kResultOk;
    const bool stops = value.getType() == FVariant::kInteger && value.value.integer == 0;
    value.sempty();
    addRest(began);
    const bool hasPeriod = !timer || timer->getPeriod() == period || timer->restart(period);
    return called && !stops && hasPeriod;
}

// --- rectangles

namespace {
enum RectProperty : char { kLeft, kTop, kRight, kBottom, kWidth, kHeight };
}  // namespace

constinit const char* const USRect::__properties[] = {"left", "top", "right", "bottom", "width", "height"};
constinit const SMethod USRect::__methods[] = {
    {0, "set", 4},
};
constinit const SClassInfo USRect::__classInfo = {"Rect",       __constructor,        std::size(__properties),
                                                  __properties, std::size(__methods), __methods};

IScriptObject* USRect::__constructor(SArgs& args) {
    const OPtr<USRect> made(new USRect);
    if (args.count != 0 && !made->set(args))
        return nullptr;
    return IPtr<USRect>(made).detach();
}

bool USRect::set(const SArgs& args) {
    if (args.count != int32_t(std::size(edges)) ||
        !std::all_of(args.variants, args.variants + args.count, [](const FVariant& each) { return isNumber(&each); }))
        return false;
    std::transform(args.variants, args.variants + args.count, edges, wholeOf);
    return true;
}

int32_t USRect::getProperty(char index, SVariant& value, IScriptContext* /*context*/) {
    if (index < kLeft || index > kHeight)
        return kInvalidArgument;
    if (index < kWidth)
        value.setInteger(edges[int32_t(index)]);
    else
        value.setInteger(int64_t(edges[index - kWidth + kRight]) - edges[index - kWidth]);
    return kResultOk;
}

int32_t USRect::setProperty(char index, FVariant& value, IScriptContext* /*context*/) {
    if (index < kLeft || index > kHeight || !isNumber(&value))
        return kInvalidArgument;
    if (index < kWidth) {
        edges[int32_t(index)] = wholeOf(value);
        return kResultOk;
    }
    const FVariant edge(int64_t(edges[index - kWidth]) + wholeOf(value));
    edges[index - kWidth + kRight] = wholeOf(edge);
    return kResultOk;
}

int32_t USRect::invoke(char /*index*/, SArgs& args, SVariant& /*result*/) {
    return set(args) ? kResultOk : kInvalidArgument;
}

// --- console

constinit const SMethod USConsole::__methods[] = {
    {0, "print", 1},
};
constinit const SClassInfo USConsole::__classInfo = {"console", nullptr, 0, nullptr, std::size(__methods), __methods};

int32_t USConsole::invoke(char /*index*/, SArgs& args, SVariant& /*result*/) {
    String text;
    if (args.count != 1 || !CmVariant(args.variants[0]).getString(text))
        return kInvalidArgument;
    if (context)
        context->print(text);
    return kResultOk;
}

// --- application

namespace {
enum ApplicationProperty : char { kName, kVersion };

void setText(SVariant& value, const ConstString& text) {
    String wide(text);
    value.setString16(wide.text16());
}
}  // namespace

constinit const char* const USApplication::__properties[] = {"name", "version"};
constinit const SMethod USApplication::__methods[] = {
    {0, "command", 3},
};
constinit const SClassInfo USApplication::__classInfo = {
    "theApp", nullptr, std::size(__properties), __properties, std::size(__methods), __methods};

int32_t USApplication::getProperty(char index, SVariant& value, IScriptContext* /*context*/) {
    FVariant version;
    if (!gApplication)
        return kResultFalse;
    if (index == kName)
        setText(value, gApplication->getName());
    else if (index == kVersion && gApplication->getFeatureValue(kVersionFeature, version) == kResultOk)
        setText(value, ConstString(version));
    else
        return kResultFalse;
    return kResultOk;
}

int32_t USApplication::invoke(char /*index*/, SArgs& args, SVariant& result) {
    String category(textOf(args.at(0))), name(textOf(args.at(1)));
    if (category.isEmpty() || name.isEmpty())
        return kInvalidArgument;
    const FVariant* flag = args.at(2);
    const bool onlyChecks = flag && flag->getType() == FVariant::kInteger && flag->getInteger() == 0;
    const auto act = onlyChecks ? &GCommandManager::canPerformAction : &GCommandManager::performAction;
    result.setInteger(gCommandManager && (gCommandManager->*act)(category.text8(), name.text8()) == kResultOk);
    return kResultOk;
}

}  // namespace Tessarine
