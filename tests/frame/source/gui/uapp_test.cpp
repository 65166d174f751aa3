#include "gui/uapp.h"
#include "base/fcompreg.h"
#include "base/source/finitializer.h"
#include "tests/frame/source/gui/controllerfixture.h"
#include "tests/frame/source/storage/tempfolder.h"
#include <memory>

using namespace Tessarine;

namespace {
Log steps;
bool stepsSucceed[101];

template <uint32_t Priority>
bool step() {
    steps.push_back(std::to_string(Priority));
    return stepsSucceed[Priority];
}

bool shutdownStep() {
    steps.push_back(gController && gMessenger->areMessagesPosted(gController) ? "shutdown in order" : "shutdown");
    return true;
}

/** Shows where the procedures stand between the steps of start-up. */
class RecordingApplication : public UPluginApplication {
public:
    RecordingApplication() : UPluginApplication("recorder") {}
    void preInit() override {
        UPluginApplication::preInit();
        steps.push_back("preInit");
    }
    void postInit() override {
        UPluginApplication::postInit();
        steps.push_back("postInit");
    }
    void notifyNewComponent(FComponentDescription& description) override { steps.push_back(description.getType()); }
};

class Application : public ControllerTest {
protected:
    Application() {
        OneTimeProcedure::cancel();
        steps.clear();
        std::ranges::fill(stepsSucceed, true);
        folder = nullptr;
    }
    ~Application() override {
        OneTimeProcedure::cancel();
        EXPECT_EQ(gApplication, nullptr);
        EXPECT_EQ(gController, nullptr);
        UController::createUserFolder = false;
    }
    void registerSteps() {
        procedures.emplace_back(std::make_unique<OneTimeProcedure>(true, step<100>, "last", 100));
        procedures.emplace_back(std::make_unique<OneTimeProcedure>(true, step<0>, "first", 0));
        procedures.emplace_back(std::make_unique<OneTimeProcedure>(true, step<50>, "middle", 50));
        procedures.emplace_back(std::make_unique<OneTimeProcedure>(false, shutdownStep, "end", 0));
    }
    static bool findFolder(PlatformFolder kind, String& path) {
        return kind == PlatformFolder::kPreferences && folder && path.fromUTF8((*folder / "not/there/yet").c_str());
    }

    std::vector<std::unique_ptr<OneTimeProcedure>> procedures;
    inline static const TempFolder* folder;
};

struct FailureRow {
    const char* name;
    bool opens;
    int32_t failingStep;  // -1: none
    bool starts;
    Log steps;
};
const FailureRow kFailures[] = {
    {"nothing fails",             true,  -1,  true,  {"0", "preInit", "50", "100", "postInit", "shutdown in order"}},
    {"the platform doesn't open", false, -1,  false, {"preInit"}                                                   },
    {"a first step",              true,  0,   false, {"0", "preInit"}                                              },
    {"a step",                    true,  50,  false, {"0", "preInit", "50", "shutdown in order"}                   },
    {"a last step",               true,  100, true,  {"0", "preInit", "50", "100", "postInit", "shutdown in order"}},
};
}  // namespace

TEST_F(Application, StartsStepByStepAndStopsAtTheFirstFailure) {
    for (const FailureRow& row : kFailures) {
        SCOPED_TRACE(row.name);
        steps.clear();
        std::ranges::fill(stepsSucceed, true);
        if (row.failingStep >= 0)
            stepsSucceed[row.failingStep] = false;
        handler.opens = row.opens;
        registerSteps();
        auto* application = new RecordingApplication;
        EXPECT_EQ(gController->isDone(), !row.opens);
        EXPECT_EQ(application->initPlugin(), row.starts);
        gMessenger->postMessage(gController, new FMessage("late"));
        application->release();
        EXPECT_EQ(steps, row.steps);
        OneTimeProcedure::cancel();
    }
}

TEST_F(Application, HearsOfNewComponents) {
    const OPtr<RecordingApplication> application(new RecordingApplication);
    ASSERT_TRUE(application->initPlugin());
    steps.clear();
    const FUID cid(1, 2, 3, 4);
    EXPECT_TRUE(FComponentRegistry::use()->addComponentClass("Sort", u"Name", cid, nullptr));
    EXPECT_EQ(steps, Log{"Sort"});
}

TEST_F(Application, LeavesNothingBehindAndCanBeMadeAgain) {
    for (int32_t round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        auto* application = new UPluginApplication("again");
        ASSERT_TRUE(application->initPlugin());
        ASSERT_NE(UpdateHandler::instance(), nullptr);
        Listener receiver([](FMessage*) { ADD_FAILURE() << "the messages were cleared"; });
        EXPECT_TRUE(gMessenger->registerName("receiver", &receiver)) << "names were cleared too";
        gMessenger->postMessage(&receiver, new FMessage("late"));
        application->release();
        gMessenger->deliverMessages();
        EXPECT_EQ(UpdateHandler::instance(), nullptr);
        EXPECT_EQ(handler.closed, round + 1);
    }
    const OPtr<UpdateHandler> mine(new UpdateHandler);
    (new UPluginApplication("guest"))->release();
    EXPECT_EQ(UpdateHandler::instance(), mine.get()) << "it isn't the application's own";
}

TEST_F(Application, HasItsUserFolderBelowThePreferences) {
    const TempFolder here;
    folder = &here;
    gControllerHooks.folder = findFolder;
    UApplication::setUserFolderName("Mine");
    const std::string expected = here / "not/there/yet/Mine";
    for (const bool create : {false, true}) {
        UController::createUserFolder = create;
        UApplication::setUserFolderName("Mine");
        const OPtr<UApplication> application(new UPluginApplication("other"));
        FString text;
        EXPECT_EQ(std::filesystem::is_directory(expected), create);
        const OPtr<FNPath> special(UController::getSpecialPath(kUserPath, "Sub"));
        ASSERT_TRUE(special);
        special->getFullPath(text);
        EXPECT_EQ(text.compare((expected + "/Sub").c_str()), 0) << text.text8();
        EXPECT_EQ(UController::getSpecialPath(kNoPath, "Sub"), nullptr);
        EXPECT_EQ(UController::getSpecialPath(kAppPath, nullptr), nullptr);
    }
}
