#include "storage/ffilesystem.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fxmlarchive.h"
#include "storednode.h"
#include "tempfolder.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {
bool answer = true;
std::string asked;

bool askUser(const FNPath& file, const UTranslatedString& /*question*/) {
    String name(file.getName());
    asked = name.text8();
    return answer;
}

class UserFiles : public testing::Test, protected StandardFolders {
protected:
    UserFiles() {
        gStorageHooks.askUser = askUser;
        asked.clear();
        answer = true;
    }

    bool store(int32_t number, bool ask = false) {
        const OPtr<StoredNode> node(new StoredNode(number));
        return FXmlArchive::storeObject("Setup", "Node", node.get(), ask);
    }
    int32_t stored() {
        const OPtr<StoredNode> node(new StoredNode(-1));
        return FXmlArchive::restoreObject("Setup", "Node", node.get()) ? node->number : -1;
    }
};
using Names = std::set<std::string>;

TEST_F(UserFiles, AppearWholeOrNotAtAll) {
    EXPECT_EQ(stored(), -1);
    EXPECT_TRUE(store(5));
    EXPECT_EQ(stored(), 5);
    EXPECT_FALSE(store(-7)) << "stores nothing";
    std::filesystem::create_directory(user / "Dir.xml");
    const OPtr<StoredNode> node(new StoredNode(1));
    EXPECT_FALSE(FXmlArchive::storeObject("Dir", "Node", node.get()));
    EXPECT_EQ(user.names(), (Names{"Setup.xml", "Dir.xml"})) << "nothing is left beside them";
    EXPECT_EQ(stored(), 5);
}

TEST_F(UserFiles, AreReplacedWhenTheUserAgrees) {
    EXPECT_TRUE(store(1, true));
    EXPECT_EQ(asked, "") << "nothing to replace";
    answer = false;
    EXPECT_FALSE(store(2, true));
    EXPECT_EQ(asked, "Setup.xml");
    EXPECT_EQ(stored(), 1);
    answer = true;
    EXPECT_TRUE(store(3, true));
    EXPECT_EQ(stored(), 3);
    EXPECT_EQ(user.names(), (Names{"Setup.xml", "Setup_old.xml"}));
}

TEST_F(UserFiles, AreManagedByName) {
    EXPECT_TRUE(store(1));
    EXPECT_TRUE(FXmlArchive::backupObjectArchive("Setup"));
    EXPECT_TRUE(store(2));
    EXPECT_TRUE(FXmlArchive::unbackupObjectArchive("Setup"));
    EXPECT_EQ(stored(), 1);
    EXPECT_EQ(user.names(), (Names{"Setup.xml", "Setup.xml.backup"}));
    std::filesystem::remove(user / "Setup.xml.backup");
    std::filesystem::create_symlink("/proc/self/mem", user / "Setup.xml.backup");
    EXPECT_FALSE(FXmlArchive::unbackupObjectArchive("Setup")) << "what can't be read replaces nothing";
    EXPECT_EQ(stored(), 1);
    EXPECT_TRUE(FXmlArchive::renameObjectArchive("Setup", "Other") && FXmlArchive::objectArchiveExists("Other"));
    EXPECT_FALSE(FXmlArchive::objectArchiveExists("Setup") || FXmlArchive::unbackupObjectArchive("Other"));
    std::filesystem::rename(user / "Other.xml", common / "Setup.xml");
    gStorageHooks.showError = [](const FString&) { ADD_FAILURE() << "that there is none of the user's is no failure"; };
    gFileSystem->showPlatformErrors(true);
    EXPECT_EQ(stored(), 1) << "of all users";
    gFileSystem->showPlatformErrors(false);
    EXPECT_FALSE(FXmlArchive::objectArchiveExists("Setup") || FXmlArchive::removeObjectArchive("Setup"));
    EXPECT_TRUE(store(4));
    EXPECT_EQ(stored(), 4) << "the user's own";
    EXPECT_TRUE(FXmlArchive::removeObjectArchive("Setup"));
    FAttributes bag;
    bag.set("a", 1);
    EXPECT_TRUE(FXmlArchive::saveAttributes("Bag", "T", bag));
    bag.set("a", 2);
    EXPECT_TRUE(FXmlArchive::loadAttributes("Bag", "T", bag) && bag.getInt("a") == 1);
    for (const char* name : {"", ".", "..", "../x", "/tmp/x", "a/b"}) {
        EXPECT_FALSE(FXmlArchive::saveAttributes(name, "T", bag)) << name;
        EXPECT_FALSE(FXmlArchive::renameObjectArchive("Bag", name)) << name;
    }
    EXPECT_FALSE(FXmlArchive::saveAttributes(nullptr, "T", bag));
}

TEST_F(UserFiles, OfObjectArchives) {
    const OPtr<FAttributes> bag(new FAttributes), back(new FAttributes);
    bag->set("a", 7);
    EXPECT_TRUE(FNewArchive::storeObject("Bag", bag.get()));
    EXPECT_TRUE(FNewArchive::objectArchiveExists("Bag") && FNewArchive::renameObjectArchive("Bag", "Bag 2"));
    EXPECT_EQ(user.names(), Names{"Bag 2.bin"});
    EXPECT_FALSE(FNewArchive::restoreObject("Bag", back.get()));
    EXPECT_TRUE(FNewArchive::restoreObject("Bag 2", back.get()) && back->getInt("a") == 7);
    EXPECT_TRUE(FNewArchive::removeObjectArchive("Bag 2"));
}
}  // namespace
}  // namespace Tessarine
