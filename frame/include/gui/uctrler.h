#pragma once
#include "base/source/fthread.h"
#include "base/source/tarray.h"
#include "collect/cmarray.h"
#include "collect/cmlinkedlist.h"
#include "gui/drawing/upoint.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/gui/iplatform.h"
#include "storage/fpath.h"
#include <utility>

namespace Tessarine {
class UApplication;
class UKeyCode;

/** The platform's event loop, as the controller meets it. Main thread. */
class IPlatformEventHandler : public FUnknown {
public:
    /** The platform's one handler, borrowed; null when no platform is installed. */
    static IPlatformEventHandler* instance();

    /** Starts the platform side. */
    virtual bool open(int32_t flags) = 0;
    virtual bool close(bool force) = 0;
    /** The application is built; called before the loop runs. */
    virtual void startupFinished(UApplication* application) = 0;
    /** Runs until quitPlatformEventLoop. */
    virtual void runPlatformEventLoop() = 0;
    virtual void quitPlatformEventLoop() = 0;
    /** Lets the window system bring out what is pending, without running the program's events. */
    virtual void doUpdates() = 0;
    /** Takes one event and dispatches it. */
    virtual void doNextEvent() = 0;
    virtual bool eventPending() = 0;
    virtual void waitKeyReleased(const UKeyCode& key) = 0;
    /** A second press comes within the system's double-click time. */
    virtual bool waitMouseDoubleClick() = 0;
    virtual tchar mapScanCodeToCharacter(uint32_t scanCode) = 0;
    virtual void getMouseLocation(UPoint& location) = 0;
    virtual void setMouseLocation(const UPoint& location) = 0;
    /** The state now, not that of the last event. */
    virtual int32_t getCurrentMouseButtons() = 0;
    virtual int32_t getCurrentModifiers() = 0;
    virtual bool checkEventQueueForUserCancel() = 0;
    virtual void enableScreenSaver(bool state) = 0;
    virtual void cancelMenuLoop() = 0;
    virtual void onLocalEventLoop(bool starts) = 0;

    DECLARE_INTERFACE(IPlatformEventHandler)
};

/** Folders by number, for getSpecialPath. */
enum USpecialPath : int32_t { kNoPath = 0, kAppPath = 1, kSysPath = 2, kTempPath = 3, kUserPath = 4 };

/** The main thread's services: idle objects, deferred updates and posted messages, the state of mouse and modifiers, the
    standard folders; the face is the host-side IPlatform2.

    Owns      what is handed to deferDestruction. Idle objects, handlers and the event handler are borrowed.
    Threads   main, except addIdle, removeIdle, addIdleHandler, removeIdleHandler, deferDestruction, postQuitMessage,
              deferAlert, deferPopupMessage, isInMainThread, getTicks, wait.
    Units     milliseconds; ticks wrap at 32 bits. */
class UController : public CmObject, public IPlatform2 {
public:
    DECLARE_ABSTRACT_CLASS(UController, CmObject)
    FORWARD_REFCOUNT(CmObject)

    explicit UController(int32_t flags);
    ~UController() override;
    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t notify(FMessage* message) override;

    // IPlatform2
    bool isActive() override { return isActiveFlag; }
    bool isDone() override { return isDoneFlag; }
    bool doUpdates() override;
    void setWaitCursor(bool state) override { waitCursor = state; }
    bool isWaitCursorSet() override { return waitCursor; }
    bool waitDoubleClick() override;
    bool waitDrag() override;
    void showCursor(bool state) override { cursorShown = state; }
    bool isInMainThread() override;
    int32_t getModifiers() override { return modifiers; }
    bool escapePressed() override;
    void sleep(int32_t milliseconds) override { wait(milliseconds); }
    uint32_t getTickCount() override { return getTicks(); }
    bool isInModalMode() override { return false; }
    int32_t addIdleHandler(IIdleHandler* handler) override;
    int32_t removeIdleHandler(IIdleHandler* handler) override;
    int32_t beginPlugModal(const tchar* text) override;
    int32_t beginPlugModal2(IWindow* window) override;
    int32_t endPlugModal() override;

    // life
    /** Runs the program until it is quit. */
    void run(UApplication* application);
    /** Quits when the application and the windows agree; whether the program is done. */
    bool quit(bool force);
    void postQuitMessage();
    void setActiveFlag(bool state) { isActiveFlag = state; }

    // idle work
    /** One idle step; throttled: nothing within the last 10 ms. false: updates are suspended. */
    bool onIdle(bool throttled);
    /** Delivers deferred updates, posted messages, and the updates that these caused. */
    void updateDependencies();
    /** The object gets the message "Idle" at each step. */
    void addIdle(CmObject* object);
    void removeIdle(CmObject* object);
    /** Takes the reference over and gives it back at the next idle step. */
    void deferDestruction(CmObject* object);
    /** Someone waits for an idle step. */
    bool wantsIdle();

    // events
    /** Takes an event, or else serves messages and updates; false: the program is done. */
    bool tryNextEvent();
    void flushEvent();
    void doNextEvent();
    bool eventPending();
    void waitKeyReleased(const UKeyCode& key);

    // suspension; each returns the former state
    static bool suspendFlush(bool state);
    bool suspendMouse(bool state) { return std::exchange(mouseSuspended, state); }
    bool suspendIdle(bool state) { return std::exchange(idleSuspended, state); }
    bool suspendUpdates(bool state);
    bool isMouseSuspended() const { return mouseSuspended; }

    // mouse and modifiers
    void getMouseDownLocation(UPoint& location) const { location = mouseDownLocation; }
    /** A new press begins. */
    void setMouseDownData(const UPoint& location, uint16_t buttons);
    uint16_t getMouseDownButtons() const { return mouseDownButtons; }
    int32_t getMouseButtons();
    void setModifiers(int32_t state) { modifiers = state; }
    void setModifier(int32_t mask, bool state) { modifiers = state ? modifiers | mask : modifiers & ~mask; }
    void updateModifiers();
    int32_t getDragDelay() const { return dragDelay; }
    void setDragDelay(int32_t milliseconds) { dragDelay = milliseconds; }

    // time
    static uint32_t getTicks();
    static void wait(int32_t milliseconds);
    /** Returns at that tick count, or at once when it has passed. */
    static void waitUntil(int32_t ticks);

    // folders
    static const FString& getAppFileName() { return appFileName; }
    static const FString& getAppName();
    static const FString& getCompanyName() { return companyName; }
    /** Before the controller is made. */
    static void setCompanyName(const tchar* name);
    /** Null before a controller was made. Borrowed. */
    static FNPath* getAppPath() { return appPath.get(); }
    static FNPath* getTempPath() { return tempPath.get(); }
    static FNPath* getSystemPath() { return sysPath.get(); }
    static FNPath* getUserPath() { return userPath.get(); }
    static FNPath* getSharedPath() { return sharedPath.get(); }
    /** A new path, or null. */
    static FNPath* getSpecialPath(USpecialPath kind, const char* subFolder);
    /** Whether the user folder is made when a controller starts. */
    static bool createUserFolder;

    /** Posts a text that is shown to the user. */
    void deferAlert(const tchar* text);
    void deferPopupMessage(const tchar* text, int32_t durationMs);

private:
    bool initPlatform(int32_t flags);
    void initPaths();
    bool isIdleDue(bool throttled);
    void serveIdle();
    bool hasDeferredDestruction();
    void destroyDeferred();
    static void deliverAndUpdate();
    void postText(const char* id, const tchar* text, int32_t durationMs);

    bool isDoneFlag = false;
    bool isActiveFlag = true;
    bool mouseSuspended = false, idleSuspended = false, updatesSuspended = false;
    bool inIdleObjects = false;
    bool inDoUpdates = false;
    int32_t modifiers = 0;
    int32_t dragDelay = 200;
    FLock idleLock;   // guards the idle objects and handlers; held while they are served
    FLock deferLock;  // guards deferredDestruction
    CmArray idleObjects;
    int32_t lastIdleTime = 0;  // ticks of 31 bits, as idealNextIdle
    UPoint mouseDownLocation;
    uint16_t mouseDownButtons = 0;
    int32_t doubleClickState = -1;  // of this press: not asked yet, 1 single, 2 double
    bool dragState = false;
    CmLinkedList deferredDestruction;  // owned
    bool waitCursor = false;
    bool cursorShown = true;

    static int32_t idealNextIdle;
    static TArray<IIdleHandler*> idlePlugObjects;
    static bool noFlush;
    static FString appFileName, companyName;
    static OPtr<FNPath> appPath, sysPath, tempPath, userPath, sharedPath;
};

/** The controller of this copy of the framework, null before and after its time. */
extern UController* gController;

}  // namespace Tessarine
