#include "storage/fbufferedstream.h"
#include "base/uprogresshook.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffilesystem.h"
#include "storage/ffstream.h"
#include "storage/fmstream.h"
#include "tempfolder.h"
#include <cerrno>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace Tessarine {
namespace {
OPtr<FFileStream> opened(const FPath& path, int32_t mode) {
    auto* file = new FFileStream(mode);
    file->setPath(path);
    EXPECT_TRUE(file->open());
    return file;
}

/** The same random work on both must leave the same behind, at every step. */
void workAlike(FStream& cached, FStream& plain, uint32_t actions) {
    std::mt19937 random(7);
    for (int32_t step = 0; step < 4000; ++step) {
        std::string bytes(random() % 4 ? random() % 20 : random() % 300, char('a' + step % 26)), other(bytes);
        const int64_t size = int64_t(bytes.size());
        switch (random() % actions) {
        case 0:
        case 1:
            ASSERT_EQ(cached.writeRaw(bytes.data(), size), plain.writeRaw(bytes.data(), size));
            break;
        case 2: {
            const FSeekMode mode = FSeekMode(random() % 3);
            const int64_t pos = int64_t(random() % 600) - (mode == kFromStart ? 0 : 300);
            ASSERT_EQ(cached.seek(pos, mode), plain.seek(pos, mode));
            break;
        }
        default:
            ASSERT_EQ(cached.readRaw(bytes.data(), size), plain.readRaw(other.data(), size)) << step;
            ASSERT_EQ(bytes, other);
        }
        ASSERT_EQ(cached.tell(), plain.tell()) << step;
    }
    EXPECT_TRUE(cached.flush());
}

TEST(FBufferedStream, IsTheStreamItselfOnlyFaster) {
    for (const uint32_t bufferSize : {1u, 7u, 64u, 4096u, 0u}) {
        SCOPED_TRACE(bufferSize);
        FMemoryStream plain, below;
        CmBufferPool pool;
        {
            FBufferedStream cached(&below, bufferSize, false, &pool);
            workAlike(cached, plain, 5);
            EXPECT_FALSE(cached.hasCurrentBlockBeenWrittenTo());
            cached.writeInt32(1);
            plain.writeInt32(1);
        }
        EXPECT_EQ(pool.total(), 1);
        EXPECT_TRUE(below.isStreamEqual(plain));
        FBlockStreamReader reader(&below, bufferSize);
        EXPECT_TRUE(reader.isStreamEqual(plain));
        EXPECT_FALSE(reader.writeInt32(1));
    }
}

TEST(FBufferedStream, NeverReadsAFileThatIsOnlyWritten) {
    const TempFolder temp;
    FFileStream* below = opened(temp.at("file"), kOpenCreate).detach();
    const OPtr<FStream> cached(createWritableBufferedStream(below));
    FMemoryStream plain;
    workAlike(*cached, plain, 3);
    EXPECT_TRUE(cached->verify() && !below->error());
    EXPECT_TRUE(opened(temp.at("file"), kOpenRead)->isStreamEqual(plain));
}

TEST(FBufferedStream, KeepsWhatAFullDiskDidNotTake) {
    const OPtr<FFileStream> full = opened(FNPath(u"/dev/full", kFilePath), kOpenWrite);
    FMemoryStream roomy;
    {
        FBufferedStream cached(full, 64);
        const std::string bytes(1000, 'x');
        EXPECT_EQ(cached.writeRaw(bytes.data(), 1000), 64);
        EXPECT_EQ(cached.writeRaw(bytes.data(), 1000), 0);
        EXPECT_EQ(cached.seek(0, kFromStart), -1);
        EXPECT_FALSE(cached.flush() || cached.verify());
        EXPECT_EQ(full->getFirstError(true), ENOSPC);
        EXPECT_TRUE(cached.hasCurrentBlockBeenWrittenTo());
        cached.setStream(&roomy);
        EXPECT_TRUE(cached.writeInt32(1) && cached.flush() && cached.verify());
    }
    EXPECT_EQ(roomy.getSize(), 4);
    FBufferedStream none(nullptr, 0);
    EXPECT_FALSE(none.writeInt32(1) || none.flush() || none.verify() || none.seek(0, kFromEnd) >= 0);
}

TEST(FFileStream, AHookCutsLargePiecesShort) {
    class : public UProgressHook {
        bool setProgress(int32_t percent) override { return percent < 50; }
    } hook;
    const TempFolder temp;
    const OPtr<FFileStream> stream = opened(temp.at("file"), kOpenRead | kOpenCreate);
    FBufferedStream cached(stream, 100000);
    cached.setReadWriteHook(&hook, 1000);
    const std::string bytes(10000, 'x');
    EXPECT_EQ(stream->writeRaw(bytes.data(), 10000), 5000);
    EXPECT_EQ(stream->writeRaw(bytes.data(), 1000), 1000);  // one block: nothing to tell
    stream->setReadWriteHook(nullptr, 0);
    EXPECT_EQ(stream->writeRaw(bytes.data(), 4000), 4000);
    EXPECT_EQ(stream->getEof(), 10000);
    EXPECT_TRUE(stream->verify() && stream->close() && !stream->verify());
}
}  // namespace
}  // namespace Tessarine
