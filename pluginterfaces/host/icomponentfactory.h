#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IPluginFactory;

/** The classes of all components that a host knows, by type and name. Main thread. */
class IComponentFactory : public FUnknown {
public:
    virtual int32_t countClasses(const char* type) = 0;
    /** The index-th of the type; it lives as long as the class is known. Null: there is none. */
    virtual const tchar* getClassName(const char* type, int32_t index) = 0;
    /** A new object with one reference for the caller; null on a miss. The type "UID" takes the 32 digits of an identifier
        for a name. */
    virtual FUnknown* createClassInstance(const char* type, const char* name) = 0;
    /** Gives back what createClassInstance gave. */
    virtual void releaseClassInstance(FUnknown* object) = 0;
    /** Makes the classes of a factory known, which is shared: a module whose code it is must stay loaded by its factory's
        flags. The objects are initialized with the context by whoever makes them; null: with the program's own. The result
        counts the classes that are new. */
    virtual int32_t addComponentClasses(IPluginFactory* factory, FUnknown* context) = 0;

    DECLARE_INTERFACE(IComponentFactory)
};

}  // namespace Tessarine
