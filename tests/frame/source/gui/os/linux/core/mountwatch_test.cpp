#include "storage/ffilesystem.h"
#include "tests/frame/source/gui/os/linux/core/loopfixture.h"
#include "tests/support/ownmounts.h"
#include <filesystem>

using namespace Tessarine;

namespace {
class DriveListener : public CmObject {
public:
    int32_t notify(FMessage* message) override {
        FString text;
        if (auto* path = classCast<FNPath>(message->get("path")))
            path->getFullPath(text);
        heard += std::string(message->getMessageID()) + " " + text.text8() + "\n";
        return 1;
    }
    std::string heard;
};
}  // namespace

TEST_F(LoopTest, TellsOfDrivesThatComeAndGo) {
    if (!OwnMounts::areHere())
        return;
    std::string name = (std::filesystem::temp_directory_path() / "drive.XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    DriveListener listener;
    gFileSystem->subscribeToMountEvent(&listener);
    EXPECT_EQ(::mount("/dev/none", name.c_str(), "tmpfs", 0, nullptr), 0);  // by its name it is of a device
    EXPECT_TRUE(runUntil([&] { return listener.heard == "VolMount " + name + "\n"; })) << listener.heard;
    listener.heard.clear();
    EXPECT_EQ(::umount(name.c_str()), 0);
    EXPECT_TRUE(runUntil([&] { return listener.heard == "VolUnmount " + name + "\n"; })) << listener.heard;
    gFileSystem->unsubscribeFromMountEvent(&listener);
    std::filesystem::remove(name);
}
