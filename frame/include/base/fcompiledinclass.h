#pragma once
#include "base/source/fobject.h"

namespace Tessarine {

/** A component that is part of the program, as the lower floors know it: a static record of the class and how to make one.
    What keeps the components of modules takes these in as well.

    Order     by type, and by name without regard to case.
    Threads   start-up and main thread. */
struct FCompiledInClass {
    const char* type;  // its category
    const char* name;
    FUID classID;
    FObject* (*create)();              // a new one, with a reference for the caller
    FCompiledInClass* next = nullptr;  // the next in order, once it is registered

    /** The record must stay; a second time changes nothing. */
    static void registerClass(FCompiledInClass& record);
    /** Null: there is none. */
    static const FCompiledInClass* first();
    /** The first of the category that makes an object of the class; null: there is none. */
    static const FCompiledInClass* find(const char* type, const char* className);
};

}  // namespace Tessarine
