#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/fvariant.h"

namespace Tessarine {
class FComponentDescription;

/** What kind of program stands on the framework. */
enum UAppType : int32_t { kStandalone = 1, kTool = 2, kPlugin = 3 };

struct AppFeatureTableEntry {
    const char* name;
    FVariant value;
};

/** The root of a running program: it makes the global services and takes them down, in order.

    Life      one at a time, made and deleted on the main thread. What goes wrong sets isFailed, which stops the start at
              its next step. */
class UApplication : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(UApplication, CmObject)

    /** Answer of getFeatureValue for a name that isn't there. */
    static constexpr int32_t kAppFeatureNotDefined = -1;

    UApplication(UAppType type, const char* name);
    ~UApplication() override;

    virtual void run();
    /** Start-up after the procedures: the last of these, and what needs them. */
    virtual void postInit();
    /** Start-up before the procedures, apart from those that others need. */
    virtual void preInit();
    virtual void activate(bool state);
    /** force: nobody is asked. */
    virtual bool canQuit(bool force);
    virtual const FString& getName() const { return appName; }
    virtual void setName(const char* name);
    /** A class of a component became known. */
    virtual void notifyNewComponent(FComponentDescription& /*description*/) {}
    virtual bool hasFeature(const char* name) const;
    /** kResultOk, or kAppFeatureNotDefined. */
    virtual int32_t getFeatureValue(const char* name, FVariant& value) const;
    virtual void registerFeatures(const AppFeatureTableEntry* entries, int32_t count);

    UAppType getType() const { return appType; }
    static const FString& getAppName() { return appName; }
    /** The program's own folder below the user's preferences: the name, unless another was set. */
    static const FString& getUserFolderName();
    static void setUserFolderName(const char* name);

    static bool isFailed;

protected:
    /** Takes down all that the constructor and start-up made. */
    static void destroyGlobals();

    UAppType appType;

private:
    static FString appName, userFolderName;
};

/** The application of this copy of the framework. */
extern UApplication* gApplication;

}  // namespace Tessarine
