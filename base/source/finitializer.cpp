#include "base/source/finitializer.h"
#include "base/source/tarray.h"

namespace Tessarine {
namespace {
constexpr int32_t kSingletonGrowth = 10;
constexpr int32_t kProcedureGrowth = 64;

using Instances = TArray<FObject**>;
constinit Instances* singletonInstances = nullptr;  // made by the first registration
constinit bool singletonsTerminated = false;

struct ProcedureSorter {
    const OneTimeProcedure* procedure = nullptr;  // borrowed: a static object
    uint32_t priority = 0;                        // its own: sorting at static initialisation reads no foreign static

    bool operator==(const ProcedureSorter& other) const { return priority == other.priority; }
    bool operator<(const ProcedureSorter& other) const { return priority < other.priority; }
};
using Procedures = TOrderedArray<ProcedureSorter>;
constinit Procedures* gInitializers = nullptr;
constinit Procedures* gTerminators = nullptr;
constinit bool initPerformed = false;

void drop(Procedures*& procedures) {
    delete procedures;
    procedures = nullptr;
}

struct Deleter {
    ~Deleter();
} deleter;

Deleter::~Deleter() {
    singletonsTerminated = true;
    OneTimeProcedure::cancel();  // of a module that was loaded and never started
    if (!singletonInstances)
        return;
    for (FObject** instance : *singletonInstances) {
        if (*instance)
            (*instance)->release();
        *instance = nullptr;
    }
    delete singletonInstances;
    singletonInstances = nullptr;
}
}  // namespace

void Singleton::registerInstance(FObject** instance) {
    if (singletonsTerminated)
        return;
    if (!singletonInstances)
        singletonInstances = new Instances(0, kSingletonGrowth);
    singletonInstances->add(instance);
}

bool Singleton::isTerminated() {
    return singletonsTerminated;
}

OneTimeProcedure::OneTimeProcedure(bool isInitializer, Procedure step, const char* stepName, uint32_t stepPriority)
    : name(stepName), priority(stepPriority), procedure(step) {
    Procedures*& procedures = isInitializer ? gInitializers : gTerminators;
    if (!procedures)
        procedures = new Procedures(kProcedureGrowth, kProcedureGrowth);
    procedures->add({this, priority});
}

bool OneTimeProcedure::initialize(uint32_t maxPriority) {
    initPerformed = true;
    // Taken off before it runs: a procedure may come back here.
    while (gInitializers && gInitializers->total() > 0) {
        const OneTimeProcedure* next = gInitializers->at(0).procedure;
        if (next->priority > maxPriority)
            return true;
        gInitializers->removeAt(0);
        if (next->run())
            continue;
        drop(gInitializers);
        return false;
    }
    drop(gInitializers);
    return true;
}

bool OneTimeProcedure::terminate() {
    if (initPerformed)
        for (int32_t i = 0; gTerminators && i < gTerminators->total(); ++i)
            gTerminators->at(i).procedure->run();
    drop(gTerminators);
    return true;
}

void OneTimeProcedure::cancel() {
    drop(gInitializers);
    drop(gTerminators);
}

}  // namespace Tessarine
