#include "encryption/fencryptionkeycollection.h"
#include "storage/ffilesystem.h"
#include "tests/frame/source/storage/tempfolder.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {
std::string plain(const FEncryptionKey& key) {
    FString text;
    key.getPlainKey(text);
    return text.text8();
}

TEST(FEncryptionKey, HasATextForm) {
    constexpr std::tuple<const char*, int32_t, bool, const char*> kRows[] = {
        {"00fF7a", -1, true,  "00ff7a"},
        {"00ff7a", 5,  true,  "00ff"  },
        {"00ff",   99, true,  "00ff"  },
        {"0 ff",   -1, false, "abcd"  },
        {"+1",     -1, false, "abcd"  },
        {nullptr,  -1, true,  ""      },
    };
    for (const auto& [text, length, good, expected] : kRows) {
        FEncryptionKey key;
        EXPECT_TRUE(key.setPlainKey("abcd"));
        EXPECT_EQ(key.setPlainKey(text, length), good);
        EXPECT_EQ(plain(key), expected);
    }
}

TEST(FEncryptionKey, IsGeneratedAfresh) {
    for (const auto& [digits, bytes] : std::initializer_list<std::pair<int32_t, uint32_t>>{
             {-1,  16},
             {100, 50},
             {1,   0 }
    }) {
        FEncryptionKey key, other;
        EXPECT_TRUE(key.generate(digits) && other.generate(digits));
        EXPECT_EQ(key.getBytes().getFillSize(), bytes);
        EXPECT_EQ(key.isEqual(&other), bytes == 0);
    }
}

TEST(FEncryptionKeyCollection, ScansAFolder) {
    TempFolder folder;
    folder.write("first.key", "0102\n");
    folder.write("second.KEY", "ff");
    folder.write("none.key", "hello");
    folder.write("huge.key", std::string(0x20000, '0'));
    folder.write("first.txt", "03");
    FEncryptionKeyCollection keys;
    FNPath path = folder.self();
    EXPECT_TRUE(keys.scanFolder(&path));
    EXPECT_EQ(keys.total(), 2);
    ASSERT_TRUE(keys.lookupKey(u"first") && keys.lookupKey(u"second"));
    EXPECT_EQ(plain(*keys.lookupKey(u"first")), "0102");
    EXPECT_TRUE(keys.setKey(u"first", *keys.lookupKey(u"second")));
    EXPECT_EQ(plain(*keys.lookupKey(u"first")), "ff");
    EXPECT_EQ(keys.lookupKey(u"none"), nullptr);
}
}  // namespace
}  // namespace Tessarine
