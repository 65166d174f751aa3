#pragma once
#include "base/uprogresshook.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include "tempfolder.h"
#include "tests/support/utf8.h"
#include <gtest/gtest.h>

/** What the tests of file systems share. */
namespace Tessarine {

inline std::string utf8(const FPath& path) {
    FString text;
    path.getFullPath(text);
    return utf8(text);
}

/** Stops after so many steps. */
class StopAfter : public UProgressHook {
public:
    explicit StopAfter(int32_t steps) : left(steps) {}
    bool setProgress(int32_t percent) override {
        EXPECT_GE(percent, reached);
        reached = percent;
        return left-- > 0;
    }
    void setText(const ConstString& text) override { told = utf8(text); }
    int32_t left, reached = 0;
    std::string told;
};

/** All that can be read; "(none)": it can't be opened. */
inline std::string contentOf(FFileSystem& system, FPath* path, int32_t* error = nullptr) {
    FStream* stream = system.openFile(path, kOpenRead, error);
    std::string content;
    char block[1000];
    for (int64_t size; stream && (size = stream->readRaw(block, sizeof block)) > 0;)
        content.append(block, size_t(size));
    return system.closeFile(stream) ? content : "(none)";
}

/** Writes behind what an opened file holds, or makes a new one. */
inline bool append(FFileSystem& system, FPath* path, const std::string& text, int32_t mode = kOpenWrite) {
    FStream* stream = system.openFile(path, mode);
    const bool written = stream && stream->seek(0, kFromEnd) >= 0 &&
                         stream->writeRaw(text.data(), int64_t(text.size())) == int64_t(text.size());
    return system.closeFile(stream) && written;
}

}  // namespace Tessarine
