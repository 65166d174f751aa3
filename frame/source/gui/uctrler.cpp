#include "gui/uctrler.h"
#include "base/fmessage.h"
#include "base/source/finitializer.h"
#include "base/source/hooks.h"
#include "base/source/updatehandler.h"
#include "base/utimer.h"
#include "gui/hooks.h"
#include "gui/uapp.h"
#include "gui/values/hooks.h"
#include "pluginterfaces/base/identifiers.h"
#include "storage/ffilesystem.h"
#include "storage/hooks.h"
#include <algorithm>
#include <iterator>
#include <pthread.h>

namespace Tessarine {
namespace {
constexpr int32_t kIdlePeriod = 10;   // an idle step serves for so long
constexpr int32_t kNearlyDue = 6;     // a step that is due sooner than this is taken at once
constexpr int32_t kClockJumped = 11;  // a step can't be farther away than the period
constexpr int32_t kIdleArrayGrowth = 10;
constexpr int32_t kSingleClick = 1, kDoubleClick = 2;

pthread_t mainThreadID;

/** A path that isn't below any folder yet; null when the platform has no such folder. */
FNPath* newPlatformPath(PlatformFolder kind) {
    String text;
    if (!gControllerHooks.folder || !gControllerHooks.folder(kind, text))
        return nullptr;
    auto* path = new FNPath(kFolderPath);
    path->fromString(text.text16(), kFolderPath);
    return path;
}

struct FolderRow {
    StandardFolder number;
    FNPath* (*path)();
};
constexpr FolderRow kStandardFolders[] = {
    {kUserFolder,        UController::getUserPath  },
    {kCommonFolder,      UController::getSharedPath},
    {kApplicationFolder, UController::getAppPath   },
    {kTemporaryFolder,   UController::getTempPath  },
    {kSystemFolder,      UController::getSystemPath},
};

bool standardFolder(int32_t number, FNPath& folder) {
    const auto row = std::ranges::find(kStandardFolders, number, &FolderRow::number);
    const FNPath* path = row != std::end(kStandardFolders) ? row->path() : nullptr;
    if (path)
        folder = *path;
    return path != nullptr;
}
}  // namespace

DEFINE_IID_ROW(IPlatformEventHandler, kIPlatformEventHandlerID);
IMPLEMENT_ABSTRACT_CLASS(UController, CmObject)

constinit UController* gController = nullptr;
constinit ControllerHooks gControllerHooks;
constinit bool UController::createUserFolder = false;
constinit int32_t UController::idealNextIdle = 0;
constinit bool UController::noFlush = false;
TArray<IIdleHandler*> UController::idlePlugObjects(0, kIdleArrayGrowth);
FString UController::appFileName, UController::companyName;
OPtr<FNPath> UController::appPath, UController::sysPath, UController::tempPath, UController::userPath,
    UController::sharedPath;

IPlatformEventHandler* IPlatformEventHandler::instance() {
    return gControllerHooks.eventHandler ? gControllerHooks.eventHandler() : nullptr;
}

UController::UController(int32_t flags) : idleObjects(0, kIdleArrayGrowth) {
    deferredDestruction._ownsObjects = CmContainer::kTakesOver;
    gController = this;
    mainThreadID = pthread_self();
    gStorageHooks.standardFolder = standardFolder;
    gValueHooks.isInUpdatePhase = [] { return gController && gController->inDoUpdates; };
    if (initPlatform(flags))
        return;
    isDoneFlag = true;
    UApplication::isFailed = true;
    OneTimeProcedure::cancel();
}

UController::~UController() {
    if (gMessenger)
        gMessenger->killMessages(this);
    while (hasDeferredDestruction())
        destroyDeferred();
    if (IPlatformEventHandler* handler = IPlatformEventHandler::instance())
        handler->close(true);
    FGuard guard(idleLock);
    idlePlugObjects.removeAll();  // their owners have nobody to take them off from any more
    if (gController == this)
        gController = nullptr;
}

bool UController::initPlatform(int32_t flags) {
    initPaths();
    IPlatformEventHandler* handler = IPlatformEventHandler::instance();
    return !handler || handler->open(flags);
}

void UController::initPaths() {
    String program;
    if (gControllerHooks.programName && gControllerHooks.programName(program))
        appFileName = program;
    appPath = newPlatformPath(PlatformFolder::kApplication);
    sysPath = newPlatformPath(PlatformFolder::kSystem);
    tempPath = newPlatformPath(PlatformFolder::kTemporary);
    userPath = newPlatformPath(PlatformFolder::kPreferences);
    if (userPath && !UApplication::getUserFolderName().isEmpty()) {
        userPath->descend(UApplication::getUserFolderName().text16(), kFolderPath);
        if (createUserFolder && gFileSystem && !gFileSystem->fileExists(userPath))
            gFileSystem->createDir(userPath);
    }
    sharedPath = newPlatformPath(PlatformFolder::kShared);
    if (sharedPath && !companyName.isEmpty())
        sharedPath->descend(companyName.text16(), kFolderPath);
}

int32_t UController::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IPlatform2>(this, iid, obj) || answerInterface<IPlatform>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

int32_t UController::notify(FMessage* message) {
    if (!message)
        return CmObject::notify(message);
    if (message->isType("Quit"))
        return quit(false);
    const bool popup = message->isType("PopupMessage");
    if (!popup && !message->isType("Notification"))
        return CmObject::notify(message);
    int32_t duration = 0;
    if (popup)
        message->getInt("Duration", duration);
    if (const tchar* text = message->getString16("Text"); text && gControllerHooks.showText)
        gControllerHooks.showText(text, duration);
    return 1;
}

// --- IPlatform2

bool UController::doUpdates() {
    inDoUpdates = true;
    updateModifiers();
    if (IPlatformEventHandler* handler = IPlatformEventHandler::instance())
        handler->doUpdates();
    inDoUpdates = false;
    return true;
}

bool UController::waitDoubleClick() {
    if (doubleClickState < 0) {
        IPlatformEventHandler* handler = IPlatformEventHandler::instance();
        doubleClickState = handler && handler->waitMouseDoubleClick() ? kDoubleClick : kSingleClick;
    }
    return doubleClickState == kDoubleClick;
}

bool UController::waitDrag() {
    if (!dragState)
        dragState = gControllerHooks.waitDrag && gControllerHooks.waitDrag();
    return dragState;
}

bool UController::isInMainThread() {
    return pthread_equal(pthread_self(), mainThreadID);
}

bool UController::escapePressed() {
    IPlatformEventHandler* handler = IPlatformEventHandler::instance();
    return handler && handler->checkEventQueueForUserCancel();
}

int32_t UController::addIdleHandler(IIdleHandler* handler) {
    if (!handler)
        return kInvalidArgument;
    {
        FGuard guard(idleLock);
        idlePlugObjects.add(handler);
    }
    wakeIdle();
    return kResultOk;
}

int32_t UController::removeIdleHandler(IIdleHandler* handler) {
    FGuard guard(idleLock);
    return idlePlugObjects.remove(handler) ? kResultOk : kInvalidArgument;
}

int32_t UController::beginPlugModal(const tchar* /*text*/) {
    return kResultFalse;  // there is nothing to show it with
}

int32_t UController::beginPlugModal2(IWindow* /*window*/) {
    return kResultFalse;
}

int32_t UController::endPlugModal() {
    return kWrongState;
}

// --- life

void UController::run(UApplication* application) {
    IPlatformEventHandler* handler = IPlatformEventHandler::instance();
    if (isDoneFlag || !handler)
        return;
    handler->startupFinished(application);
    if (isDoneFlag)
        return;
    handler->runPlatformEventLoop();
    while (hasDeferredDestruction())
        destroyDeferred();
}

bool UController::quit(bool force) {
    if (isDoneFlag)
        return true;
    if (gApplication && !gApplication->canQuit(force))
        return isDoneFlag;
    if (gControllerHooks.closeAllWindows && !gControllerHooks.closeAllWindows())
        return isDoneFlag;
    isDoneFlag = true;
    if (IPlatformEventHandler* handler = IPlatformEventHandler::instance())
        handler->quitPlatformEventLoop();
    return isDoneFlag;
}

void UController::postQuitMessage() {
    gMessenger->postMessage(this, new FMessage("Quit"), false, 0);
}

// --- idle work

bool UController::onIdle(bool throttled) {
    if (updatesSuspended)
        return false;
    if (!idleSuspended) {
        idleSuspended = true;
        const bool due = isIdleDue(throttled);
        if (due)
            serveIdle();
        idleSuspended = false;
        if (!due)
            return true;
    }
    destroyDeferred();
    updateDependencies();
    return true;
}

/** The throttle. A clock that has jumped back, as one of 31 bits does now and then, is forgiven after one call: 0 is never
    ahead of it. */
bool UController::isIdleDue(bool throttled) {
    const int32_t now = UTicks::now();
    const int32_t left = idealNextIdle - now;
    if (throttled && left >= kNearlyDue) {
        if (left >= kClockJumped)
            idealNextIdle = 0;
        return false;
    }
    idealNextIdle = UTicks::future(kIdlePeriod);
    lastIdleTime = now;
    return true;
}

/** What is added during the step is served in it. */
void UController::serveIdle() {
    FGuard guard(idleLock);
    inIdleObjects = true;
    if (!idleObjects.isEmpty()) {
        const OPtr<FMessage> message(new FMessage("Idle"));
        for (int32_t i = 0; i < idleObjects.total(); ++i)
            idleObjects.at(i)->notify(message);
    }
    for (int32_t i = 0; i < idlePlugObjects.total(); ++i)
        idlePlugObjects.at(i)->onIdle();
    inIdleObjects = false;
}

bool UController::hasDeferredDestruction() {
    FGuard guard(deferLock);
    return !deferredDestruction.isEmpty();
}

void UController::destroyDeferred() {
    FGuard guard(deferLock);
    deferredDestruction.removeAll();
}

void UController::updateDependencies() {
    if (updatesSuspended)
        return;
    UpdateHandler* handler = UpdateHandler::instance();
    if (handler)
        handler->triggerDeferedUpdates(nullptr);
    if (gMessenger)
        gMessenger->deliverMessages();
    if (handler)
        handler->triggerDeferedUpdates(nullptr);
}

void UController::addIdle(CmObject* object) {
    if (!object)
        return;
    {
        FGuard guard(idleLock);
        idleObjects.add(object);
    }
    wakeIdle();
}

void UController::removeIdle(CmObject* object) {
    FGuard guard(idleLock);
    idleObjects.removeAt(idleObjects.indexAbs(object));
}

void UController::deferDestruction(CmObject* object) {
    if (!object)
        return;
    {
        FGuard guard(deferLock);
        deferredDestruction.append(object);
    }
    wakeIdle();
}

bool UController::wantsIdle() {
    {
        FGuard guard(idleLock);
        if (!idleObjects.isEmpty() || !idlePlugObjects.isEmpty())
            return true;
    }
    return hasDeferredDestruction();
}

// --- events

bool UController::tryNextEvent() {
    if (eventPending()) {
        doNextEvent();
        return !isDoneFlag;
    }
    deliverAndUpdate();
    return true;
}

void UController::flushEvent() {
    if (noFlush)
        return;
    while (eventPending())
        doNextEvent();
    deliverAndUpdate();
}

void UController::deliverAndUpdate() {
    if (gMessenger)
        gMessenger->deliverMessages();
    if (UpdateHandler* handler = UpdateHandler::instance())
        handler->triggerDeferedUpdates(nullptr);
}

void UController::doNextEvent() {
    if (IPlatformEventHandler* handler = IPlatformEventHandler::instance())
        handler->doNextEvent();
}

bool UController::eventPending() {
    IPlatformEventHandler* handler = IPlatformEventHandler::instance();
    return handler && handler->eventPending();
}

void UController::waitKeyReleased(const UKeyCode& key) {
    if (IPlatformEventHandler* handler = IPlatformEventHandler::instance())
        handler->waitKeyReleased(key);
}

bool UController::suspendFlush(bool state) {
    return std::exchange(noFlush, state);
}

bool UController::suspendUpdates(bool state) {
    if (!state)
        wakeUpdates();  // what has piled up meanwhile
    return std::exchange(updatesSuspended, state);
}

// --- mouse and modifiers

void UController::setMouseDownData(const UPoint& location, uint16_t buttons) {
    mouseDownLocation = location;
    mouseDownButtons = buttons;
    doubleClickState = -1;
    dragState = false;
}

int32_t UController::getMouseButtons() {
    IPlatformEventHandler* handler = IPlatformEventHandler::instance();
    return handler ? handler->getCurrentMouseButtons() : 0;
}

void UController::updateModifiers() {
    if (IPlatformEventHandler* handler = IPlatformEventHandler::instance())
        modifiers = handler->getCurrentModifiers();
}

// --- time

uint32_t UController::getTicks() {
    return SystemTime::getTicks();
}

void UController::wait(int32_t milliseconds) {
    FThreadSleep(milliseconds);
}

void UController::waitUntil(int32_t ticks) {
    const int32_t left = int32_t(uint32_t(ticks) - getTicks());
    if (left > 0)
        wait(left);
}

// --- folders

const FString& UController::getAppName() {
    return UApplication::getAppName();
}

void UController::setCompanyName(const tchar* name) {
    companyName.assign(name);
}

FNPath* UController::getSpecialPath(USpecialPath kind, const char* subFolder) {
    const FNPath* source = kind == kAppPath    ? getAppPath()
                           : kind == kSysPath  ? getSystemPath()
                           : kind == kTempPath ? getTempPath()
                           : kind == kUserPath ? getUserPath()
                                               : nullptr;
    if (!source)
        return nullptr;
    auto* path = new FNPath(*source);
    if (subFolder && *subFolder) {
        String name;
        name.fromUTF8(subFolder);
        path->descend(name.text16(), kFolderPath);
    }
    return path;
}

// --- deferred texts

void UController::deferAlert(const tchar* text) {
    postText("Notification", text, 0);
}

void UController::deferPopupMessage(const tchar* text, int32_t durationMs) {
    postText("PopupMessage", text, durationMs);
}

void UController::postText(const char* id, const tchar* text, int32_t durationMs) {
    auto* message = new FMessage(id);
    message->addString16("Text", text);
    if (durationMs)
        message->addInt("Duration", durationMs);
    gMessenger->postMessage(this, message, false, 0);
}

}  // namespace Tessarine
