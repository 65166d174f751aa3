#include "base/fdynlib.h"
#include "base/fservice.h"
#include "gui/os/linux/core/platformcore.h"
#include "storage/farchivemanager.h"
#include "tests/frame/source/storage/tempfolder.h"
#include "tests/support/bundles.h"
#include "tests/support/mapped.h"
#include "tests/support/uncounted.h"
#include <cstddef>
#include <elf.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

FNPath pathOf(const fs::path& path) {
    FNPath result(kFolderPath);
    result.fromPlatformPath(path.c_str());
    return result;
}

class Modules : public testing::Test, protected StandardFolders {
protected:
    Modules() {
        installTessarinePlatformCore();
        gBundleHooks.report = [](const std::string& why) { reported() += why + "\n"; };
        reported().clear();
        FDefaultPool::use();
        FServiceManager::use();
    }
    ~Modules() override {
        end();
        FDefaultPool::unuse();
        gBundleHooks.report = nullptr;
    }
    static std::string& reported() {
        static std::string text;
        return text;
    }
    void end() {
        FServiceManager::unuse();
        FComponentRegistry::unuse();
    }
    /** As the next start of the program. */
    FComponentRegistry& restart() {
        end();
        FServiceManager::use();
        return *gComponentRegistry;
    }
    TestBundle bundle(const std::string& name, const std::string& text) const {
        return TestBundle(application.path / "Components", name, text);
    }
    fs::path cacheFile() const { return user.path / "Module Cache.xml"; }
    std::string cacheText() const {
        std::stringstream text;
        text << std::ifstream(cacheFile()).rdbuf();
        return text.str();
    }

    TemporaryFolder folder;
};

const std::string kOneService = classLine(1, "Service", "First Service");

TEST_F(Modules, AreLoadedAtTheNextStartOnlyWhereTheFlagsSaySo) {
    struct Row {
        const char* name;
        int flags, loads[2];  // at the first and at the next start
        bool stays[2];
    };
    const Row rows[] = {
        {"cached",         16,     {1, 1}, {false, false}},
        {"category check", 0,      {1, 2}, {false, false}},
        {"classes vary",   16 + 1, {1, 2}, {false, false}},
        {"asks each time", 16 + 2, {1, 2}, {false, false}},
        {"keeps loaded",   16 + 8, {1, 1}, {true, false} },
    };
    std::map<std::string, TestBundle> bundles;
    for (int number = 0; const Row& row : rows)
        bundles.emplace(row.name, bundle(row.name, "flags " + std::to_string(row.flags) + "\n" +
                                                       classLine(++number, "Service", row.name)));
    for (const int start : {0, 1}) {
        EXPECT_EQ(restart().countComponentClasses("Service"), 5);
        EXPECT_EQ(gComponentRegistry->findModules(), 0) << "was done";
        for (const Row& row : rows) {
            EXPECT_EQ(bundles.at(row.name).loads(), row.loads[start]) << row.name;
            EXPECT_EQ(gComponentRegistry->getModule(String(row.name).text16())->isLoaded(), row.stays[start])
                << row.name;
        }
    }
    EXPECT_EQ(isMapped("category check.so"), kSanitized);
}

TEST_F(Modules, WhatTheyOfferIsTheSameFromTheCache) {
    for (const int level : {1, 2, 3}) {
        SCOPED_TRACE(level);
        const TestBundle made =
            bundle("Reverb", "flags 16\nlevel " + std::to_string(level) + "\n" + classLine(2, "Private", "beta") +
                                 classLine(1, "Private", "Alpha"));
        fs::remove(cacheFile());
        restart();
        for (const char* from : {"module", "cache"}) {
            SCOPED_TRACE(from);
            ASSERT_EQ(restart().countComponentClasses("Private"), 2);
            auto* first = classCast<FPluginComponent>(gComponentRegistry->getComponentDescription("Private", 0));
            ASSERT_TRUE(first);
            EXPECT_EQ(first->getName(), u"Alpha");
            EXPECT_EQ(first, gComponentRegistry->getComponentDescription("Private", u"aLPHA"));
            EXPECT_EQ(first, gComponentRegistry->getComponentDescription(first->getCID()));
            EXPECT_EQ(gComponentRegistry->getComponentCardinality(first->getCID()), 2);
            EXPECT_EQ(first->getVendor(), "Maker");
            EXPECT_EQ(first->getVersion(), level > 1 ? u"1.2.3" : u"");
            EXPECT_EQ(first->getClassFlags(), level > 1 ? 7u : 0u);
            EXPECT_STREQ(first->getSubCategories(), level > 1 ? "Sub|Other" : "");
        }
        EXPECT_EQ(made.loads(), level) << "each new level once, in one file";
    }
    EXPECT_EQ(gComponentRegistry->getComponentCardinality(FUID(9, 9, 9, 9)), 1);
    EXPECT_FALSE(gComponentRegistry->getComponentDescription("private", u"Alpha"));
}

TEST_F(Modules, AreLookedAtAgainWhenTheyHaveChanged) {
    const TestBundle made = bundle("Delay", "flags 16\n" + kOneService);
    const auto date = fs::last_write_time(made.object);
    const auto setDates = [&made](fs::file_time_type time) {
        for (const fs::path& file : {made.object, made.path / "Contents/Info.plist"})
            fs::last_write_time(file, time);
    };
    const auto noDate = std::chrono::file_clock::from_sys(std::chrono::sys_seconds{});
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"another version, the same date", [&] { made.setVersion("2.0"); }                                        },
        {"a newer shared object",          [&] { fs::last_write_time(made.object, date + std::chrono::hours(1)); }},
        {"an older one",                   [&] { fs::last_write_time(made.object, date - std::chrono::hours(1)); }},
        {"files without a date",           [&] { setDates(noDate); }                                              },
        {"another version of them",        [&] { made.setVersion("3.0"); }                                        },
        {"the cache is gone",              [&] { fs::remove(cacheFile()); }                                       },
        {"the cache is cut off",           [&] { fs::resize_file(cacheFile(), fs::file_size(cacheFile()) / 2); }  },
    };
    gComponentRegistry->findModules();
    fs::last_write_time(made.path / "Contents/Info.plist", date - std::chrono::hours(2));
    restart().findModules();
    for (const auto& [name, change] : steps) {
        SCOPED_TRACE(name);
        const int loads = made.loads();
        restart().findModules();
        ASSERT_EQ(made.loads(), loads) << "nothing has changed";
        change();
        EXPECT_EQ(restart().countComponentClasses("Service"), 1);
        EXPECT_EQ(made.loads(), loads + 1);
    }
}

TEST_F(Modules, AClassThatMissesAKeyInTheCacheMakesTheModuleLoad) {
    const TestBundle made = bundle("Gate", "flags 16\n" + kOneService);
    gComponentRegistry->findModules();
    const std::string whole = cacheText();
    for (const char* spoilt : {"Class 00 - CID", "Class 00 - Cardinality", "Class 00 - Category", "Class 00 - Name",
                               "A0B1C2D3", "NumClasses", "Flags"}) {
        SCOPED_TRACE(spoilt);
        std::string text = whole;
        ASSERT_NE(text.find(spoilt), std::string::npos);
        text.insert(text.find(spoilt), 1, 'x');
        std::ofstream(cacheFile()) << text;
        const int loads = made.loads();
        EXPECT_EQ(restart().countComponentClasses("Service"), 1);
        EXPECT_EQ(made.loads(), loads + 1);
    }
}

/** Writes over some bytes of a file. */
void patch(const fs::path& file, size_t offset, const std::string& bytes) {
    std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).seekp(std::streamoff(offset)) << bytes;
}

TEST_F(Modules, ThatAreOfNoUseAreRefusedWithoutHarm) {
    const fs::path components = application.path / "Components";
    const std::string text = "flags 16\n" + kOneService;
    const std::tuple<const char*, size_t, std::string> patches[] = {
        {"other machine", offsetof(Elf64_Ehdr, e_machine), std::string("\x16\0", 2)     },
        {"no segments",   offsetof(Elf64_Ehdr, e_phnum),   std::string(2,        '\0')  },
        {"far segments",  offsetof(Elf64_Ehdr, e_phoff),   std::string(8,        '\xFF')},
    };
    for (const auto& [name, offset, bytes] : patches)
        patch(bundle(name, text).object, offset, bytes);
    const TestBundle whole = bundle("whole", text);
    const auto size = fs::file_size(whole.object);
    for (const auto length :
         {uintmax_t(0), uintmax_t(3), uintmax_t(63), uintmax_t(64), uintmax_t(200), uintmax_t(4096)})
        fs::resize_file(bundle("cut at " + std::to_string(length), text).object, std::min(length, size - 1));
    TestBundle(components, "no entry", text, "emptymodule");
    bundle("no classes", "flags 16\n");
    bundle("unknown category", "flags 0\n" + classLine(7, "Strange", "Strange"));
    for (const bool isCode : {true, false}) {
        const TestBundle waits = bundle(isCode ? "waiting code" : "waiting list", "flags 16\n");
        const fs::path pipe = isCode ? waits.object : waits.path / "Contents/Info.plist";
        fs::remove(pipe);
        ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    }
    fs::remove(bundle("no object", text).object);
    std::ofstream(components / "text.bundle") << "not a bundle";
    fs::create_directory(components / "folder.bundle");
    fs::remove_all(whole.path);
    for (int start = 0; start < 2; ++start) {
        SCOPED_TRACE(start);
        EXPECT_EQ(restart().findModules(), 0);
        EXPECT_EQ(gComponentRegistry->countComponentClasses("Service"), 0);
        EXPECT_EQ(cacheText().find("Components/"), std::string::npos) << "looked at afresh the next time";
    }
    EXPECT_NE(reported().find("no entry"), std::string::npos);
    EXPECT_EQ(reported().find("other"), std::string::npos) << "the loader never saw it";
    const TestBundle spoilt = bundle("spoilt later", text);
    EXPECT_EQ(restart().findModules(), 1);
    patch(spoilt.object, 0, "no code");
    EXPECT_EQ(restart().findModules(), 0);
    EXPECT_EQ(cacheText().find("Components/"), std::string::npos);
}

TEST_F(Modules, OfOddNamesAreKnownAgain) {
    const std::pair<const char*, const char*> rows[] = {
        {"quote \" & <tag> 'x'",   "Plain"             },
        {" blanks  at both ends ", " two  blanks "     },
        {"back\\slash:colon",      "a\\b:c"            },
        {"h\u00e4nde \U0001F3B9",  "Plain"             },
        {"h%u00E4nde \U0001F3B9",  "100%u00E4"         },
        {"line\nbreak\ttab",       "bell\a \x1b escape"},
        {"bell\a \x1b escape",     "Plain"             },
        {"two.dots",               "Plain"             },
    };
    std::vector<TestBundle> bundles;
    for (int number = 0; const auto& [name, className] : rows)
        bundles.push_back(bundle(name, "flags 16\n" + classLine(++number, "Service", className)));
    for (int start = 0; start < 2; ++start) {
        EXPECT_EQ(restart().findModules(), int32_t(std::size(rows)));
        for (const TestBundle& made : bundles)
            EXPECT_EQ(made.loads(), 1) << start << ": " << made.path;
    }
}

TEST_F(Modules, OneThatIsNamedIsItsBundle) {
    const TestBundle made = TestBundle(folder.path / "elsewhere", "Chorus", "flags 16\n" + kOneService);
    for (const fs::path& name : {made.path, made.object}) {
        const FNPath path = pathOf(name);
        EXPECT_TRUE(gComponentRegistry->addModule(&path)) << name;
        EXPECT_EQ(gComponentRegistry->countModules(), 1);
    }
    EXPECT_NE(cacheText().find("Components/Chorus.bundle"), std::string::npos);
    const FNPath nothing = pathOf(folder.path / "elsewhere");
    EXPECT_FALSE(gComponentRegistry->addModule(&nothing));
}

TEST_F(Modules, ScanningMakesNoFolderAndGoesDownIntoSharedOnes) {
    EXPECT_EQ(gComponentRegistry->findModules(), 0);
    EXPECT_FALSE(fs::exists(application.path / "Components"));
    TestBundle(common.path / "Tessarine/Components/deep", "Echo", "flags 16\n" + kOneService);
    EXPECT_EQ(gComponentRegistry->findSharedModules(), 1);
    EXPECT_NE(cacheText().find("Components/deep/Echo.bundle"), std::string::npos);
    fs::path far = common.path / "Tessarine/Components";
    for (int i = 0; i < 11; ++i)
        far /= std::string(200, 'f');
    TestBundle(far, "Far", "flags 16\n" + classLine(2, "Service", "Far"));
    EXPECT_EQ(gComponentRegistry->findSharedModules(), 1) << "its path is longer than what the cache can hold";
}

TEST_F(Modules, LiveAsLongAsTheirInstances) {
    const TestBundle made = bundle("Comp", "flags 16\n" + kOneService);
    gComponentRegistry->findModules();
    FModuleBase* module = gComponentRegistry->getModule(0);
    FComponentDescription* description = gComponentRegistry->getComponentDescription("Service", 0);
    OPtr<CmObject> first(description->create(nullptr)), second(description->create(nullptr));
    first = nullptr;
    EXPECT_TRUE(FUnknownPtr<IPluginBase>(second.get()));
    second = nullptr;
    EXPECT_FALSE(module->isLoaded());
    char digits[33];
    description->getCID().toString(digits);
    FUnknown* byDigits = gComponentRegistry->createClassInstance("UID", digits);
    ASSERT_TRUE(byDigits);
    gComponentRegistry->releaseClassInstance(byDigits);
    EXPECT_FALSE(module->isLoaded());
    made.setText("factory 0");
    EXPECT_FALSE(description->create(nullptr));
    made.setText("flags 16\n" + kOneService);
    const OPtr<CmObject> third(description->create(nullptr));
    EXPECT_TRUE(module->isLoaded()) << "a failure before doesn't count";
    const OPtr<FUnknown> bare(gComponentRegistry->createUnknownComponent(description->getCID(), false));
    end();  // with the registry gone, its code is still there
    EXPECT_TRUE(FUnknownPtr<IPluginBase>(bare.get()));
}

TEST_F(Modules, StayWhileTheyAreEnteredAndLeft) {
    for (const char* uses : {"1", "2"}) {
        SCOPED_TRACE(uses);
        const TestBundle made = bundle("Busy", "flags 16\nuses " + std::string(uses) + "\n" + kOneService);
        fs::remove(cacheFile());
        const FNPath path = pathOf(made.path);
        const int loads = made.loads();
        const IPtr<FModuleBase> module(restart().addModule(&path));
        ASSERT_TRUE(module);
        EXPECT_EQ(made.loads(), loads + 1) << "it has its own folder scanned when it is entered";
        EXPECT_EQ(gComponentRegistry->countModules(), 1);
        EXPECT_TRUE(module->load());
        EXPECT_TRUE(module->getProcAddress("bundleExit"));
        module->unload();
        EXPECT_FALSE(module->isLoaded());
    }
}

TEST_F(Modules, GoBehindTheClassesOfTheirOwnFactories) {
    bundle("Adder", "flags 24\nadds 1\n" + kOneService);
    ASSERT_EQ(restart().countComponentClasses("Service"), 1);
    EXPECT_TRUE(OPtr<CmObject>(gComponentRegistry->createComponent("Service", 0)));
    gComponentRegistry->removeAll();
    EXPECT_EQ(isMapped("Adder.so"), kSanitized);
    EXPECT_FALSE(gComponentRegistry->getComponentDescription("Service", 0)) << "its factory was in there";
}

TEST_F(Modules, MayBeUsedWhileTheyAreScannedAndAfterTheRegistry) {
    bundle("Early", "flags 16\n" + kOneService);
    static OPtr<CmObject> early;
    gComponentEventHooks.newComponent = [](FComponentDescription& description) { early = description.create(nullptr); };
    gComponentRegistry->findModules();
    gComponentEventHooks.newComponent = nullptr;
    EXPECT_TRUE(gComponentRegistry->getModule(0)->isLoaded());
    EXPECT_TRUE(FUnknownPtr<IPluginBase>(early.get()));
    early = nullptr;
    EXPECT_FALSE(gComponentRegistry->getModule(0)->isLoaded());
    const IPtr<FComponentDescription> kept(gComponentRegistry->getComponentDescription("Service", 0));
    const IPtr<IComponentFactory> factory(gComponentRegistry);
    end();
    EXPECT_EQ(factory->countClasses("Service"), 0) << "nothing is looked for any more";
    EXPECT_TRUE(FUnknownPtr<IPluginBase>(OPtr<CmObject>(kept->create(nullptr)).get()));
}

TEST_F(Modules, ServicesStartOnceAndEndWhenTheyWant) {
    bundle("a good one", "flags 16\n" + classLine(1, "Service", "good"));
    bundle("a bad one", "flags 16\ninitialize 1\n" + classLine(2, "Service", "bad"));
    bundle("a stubborn one", "flags 16\nterminate 1\n" + classLine(3, "Service", "stubborn"));
    bundle("no service", "flags 16\n" + classLine(4, "Private", "other"));
    gServiceManager->registerServiceCategory("Service", nullptr);
    EXPECT_EQ(gServiceManager->start(), 2);
    const auto idOf = [](const tchar* name, const char* type = "Service") {
        return gComponentRegistry->getComponentDescription(type, name)->getCID();
    };
    const FUID good = idOf(u"good"), stubborn = idOf(u"stubborn");
    EXPECT_FALSE(gComponentRegistry->isAvailable(idOf(u"bad")));
    EXPECT_FALSE(gServiceManager->startService(good)) << "it runs";
    EXPECT_FALSE(gServiceManager->startService(idOf(u"other", "Private")));
    EXPECT_TRUE(gServiceManager->terminateService(good));
    EXPECT_FALSE(gServiceManager->getServiceInstance(good));
    EXPECT_EQ(gServiceManager->start(), 1) << "the good one again, and the bad one is switched off";
    EXPECT_FALSE(gServiceManager->terminateService(stubborn));
    IPluginBase* service = gServiceManager->getServiceInstance(stubborn);
    end();
    EXPECT_EQ(service->terminate(), 1) << "it runs on, and its code is there";
}

TEST_F(Modules, SwitchedOffClassesAreRemembered) {
    bundle("Tuner", "flags 16\n" + kOneService);
    for (const bool state : {true, false}) {
        restart().findModules();
        FComponentDescription* description = gComponentRegistry->getComponentDescription("Service", 0);
        EXPECT_TRUE(description->isAvailable());
        description->setAvailable(state);
        gComponentRegistry->storeAvailableFlags();
    }
    restart().findModules();
    EXPECT_FALSE(gComponentRegistry->getComponentDescription("Service", 0)->isAvailable());
    int32_t flag = 7;
    gDefaults->getLong("Components\\Category Service\\Available", "First Service", flag);
    EXPECT_EQ(flag, 0);
}

TEST_F(Modules, CompiledInClassesAreTakenInOnce) {
    static FCompiledInClass record = {"Compiled", "made in", FUID(1, 1, 2, 3),
                                      [] { return static_cast<FObject*>(new FModuleBase); }};
    EXPECT_EQ(gComponentRegistry->countComponentClasses("Compiled"), 0);
    FCompiledInClass::registerClass(record);
    EXPECT_EQ(gComponentRegistry->countComponentClasses("Compiled"), 1);
    const OPtr<CmObject> made(gComponentRegistry->createComponent("Compiled", u"MADE IN"));
    EXPECT_TRUE(made && made->isA("FModuleBase"));
    EXPECT_TRUE(gComponentRegistry->removeComponentClass(FUID(1, 1, 2, 3)));
    EXPECT_EQ(gComponentRegistry->countComponentClasses("Compiled"), 0);
}

TEST_F(Modules, AreAskedWhatIsInAFile) {
    static std::string asked;
    asked.clear();
    const TestBundle made = bundle("boxes", "flags 16\n" + classLine(1, "VirtualFileSystem", "Boxes"));
    FComponentRegistry& registry = restart();
    registry.addPluginInitHook([](FUnknown* /*component*/, FComponentDescription& description) {
        asked += String(description.getName()).text8();
    });
    std::ofstream(folder.path / "some.box") << "content";
    const FNPath file = pathOf(folder.path / "some.box");
    for (const char* when : {"at first", "switched off, not again"}) {
        EXPECT_EQ(FArchiveManager::createVirtualFileSystem(&file), nullptr) << "it is no file system";
        EXPECT_EQ(asked, "Boxes") << when;
        EXPECT_FALSE(registry.getModule(u"boxes")->isLoaded());
        registry.getComponentDescription("VirtualFileSystem", 0)->setAvailable(false);
    }
}

TEST_F(Modules, LibrariesAreFoundByName) {
    const TestBundle made = TestBundle(folder.path / "libraries", "Tools", "");
    fs::copy_file(TestBundle::built("emptymodule"), folder.path / "libraries/Plain.so");
    fs::copy_file(TestBundle::built("emptymodule"), application.path / "Tools.so");
    FDynLibrary::addFolder(pathOf(folder.path / "libraries"));
    const std::tuple<const tchar*, bool, bool> rows[] = {
        {u"Tools",   true,  true },
        {u"Plain",   true,  false},
        {u"Missing", false, false},
        {u"",        false, false}
    };
    for (const auto& [name, loads, hasEntry] : rows) {
        const OPtr<FDynLibrary> library(new FDynLibrary(name));
        EXPECT_EQ(library->isLoaded(), loads);
        EXPECT_EQ(library->getProcAddress("bundleEntry") != nullptr, hasEntry);
    }
}
}  // namespace
}  // namespace Tessarine
