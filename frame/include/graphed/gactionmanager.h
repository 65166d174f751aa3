#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** Interprets actions that no window has. */
class IActionHandler : public FUnknown {
public:
    /** perform false: whether it could. Above 0: yes; 0: somebody else's. */
    virtual int32_t handleAction(const char* category, const char* name, bool perform) = 0;

    DECLARE_INTERFACE(IActionHandler)
};

/** Actions by name. Indices count from 0; out of range texts are null. Texts that are handed out stay as long as the
    manager. */
class IActionManager : public FUnknown {
public:
    virtual int32_t addAction(const char* category, const char* name) = 0;
    virtual int32_t removeAction(const char* category, const char* name) = 0;
    /** kResultOk: done, or posted to the main thread; kWrongState: disabled. Any thread. */
    virtual int32_t performAction(const char* category, const char* name) = 0;
    virtual int32_t canPerformAction(const char* category, const char* name) = 0;
    /** Borrowed. */
    virtual int32_t addActionHandler(IActionHandler* handler) = 0;
    virtual int32_t removeActionHandler(IActionHandler* handler) = 0;

    DECLARE_INTERFACE(IActionManager)
};

class IActionManager2 : public IActionManager {
public:
    virtual int32_t countCategories() = 0;
    virtual const char* getCategoryName(int32_t category) = 0;
    virtual const tchar* getCategoryTitle(int32_t category) = 0;
    virtual const char* getCategoryTitle8(int32_t category) = 0;
    virtual int32_t countActionsOfCategory(int32_t category) = 0;
    virtual const char* getActionName(int32_t category, int32_t action) = 0;
    virtual const tchar* getActionTitle(int32_t category, int32_t action) = 0;
    virtual const char* getActionTitle8(int32_t category, int32_t action) = 0;
    /** -1: none. */
    virtual int32_t getCategoryIndex(const char* category) = 0;
    virtual int32_t getActionIndex(int32_t category, const char* name) = 0;
    /** kResultFalse: none yet. */
    virtual int32_t getLastPerformedAction(const char** category, const char** name) = 0;

    DECLARE_INTERFACE(IActionManager2)
};

}  // namespace Tessarine
