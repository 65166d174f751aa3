#pragma once
#include "base/source/fobject.h"

namespace Tessarine {

/** Objects that are made at first use and released, in order of registration, when the program or module goes. */
namespace Singleton {
/** The address of the static pointer; ignored once the singletons were ended. */
void registerInstance(FObject** instance);
bool isTerminated();
}  // namespace Singleton

/** A step of start-up or shutdown, as a static object. Steps run by rising priority, ties in order of construction.
    Main thread; construction in static initialisation only registers. */
class OneTimeProcedure {
public:
    using Procedure = bool (*)();

    OneTimeProcedure(bool isInitializer, Procedure procedure, const char* name, uint32_t priority);

    /** Runs the start-up steps up to maxPriority that haven't run. false: one failed, and none of the others will ever run. */
    static bool initialize(uint32_t maxPriority);
    /** Runs the shutdown steps, if start-up has ever begun. */
    static bool terminate();
    /** Forgets all steps. */
    static void cancel();

    const char* getName() const { return name; }
    bool run() const { return procedure(); }

private:
    const char* name;
    uint32_t priority;
    Procedure procedure;
};

}  // namespace Tessarine
