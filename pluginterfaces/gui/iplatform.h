#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IWindow;

/** Gets a call at each idle step of the main thread. */
class IIdleHandler : public FUnknown {
public:
    virtual void onIdle() = 0;

    DECLARE_INTERFACE(IIdleHandler)
};

/** The main thread's services. Main thread, except isInMainThread, getTickCount and sleep. */
class IPlatform : public FUnknown {
public:
    /** The application is the active one. */
    virtual bool isActive() = 0;
    /** The program is quitting. */
    virtual bool isDone() = 0;
    virtual bool doUpdates() = 0;
    virtual void setWaitCursor(bool state) = 0;
    virtual bool isWaitCursorSet() = 0;
    /** The press that is held becomes a double click; asked of the user once a press. */
    virtual bool waitDoubleClick() = 0;
    virtual bool waitDrag() = 0;
    virtual void showCursor(bool state) = 0;
    virtual bool isInMainThread() = 0;
    virtual int32_t getModifiers() = 0;
    virtual bool escapePressed() = 0;
    virtual void sleep(int32_t milliseconds) = 0;
    /** Milliseconds of a clock that never steps back; it wraps. */
    virtual uint32_t getTickCount() = 0;
    virtual bool isInModalMode() = 0;
    virtual int32_t addIdleHandler(IIdleHandler* handler) = 0;
    /** kInvalidArgument: it wasn't there. */
    virtual int32_t removeIdleHandler(IIdleHandler* handler) = 0;

    DECLARE_INTERFACE(IPlatform)
};

class IPlatform2 : public IPlatform {
public:
    virtual int32_t beginPlugModal(const tchar* text) = 0;
    virtual int32_t beginPlugModal2(IWindow* window) = 0;
    virtual int32_t endPlugModal() = 0;

    DECLARE_INTERFACE(IPlatform2)
};

}  // namespace Tessarine
