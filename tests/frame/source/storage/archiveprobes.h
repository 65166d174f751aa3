#pragma once
#include "pluginterfaces/base/smartpointer.h"
#include "storage/farchive.h"
#include "storage/fmstream.h"
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

/** What the tests of streams, archives and XML share. */
namespace Tessarine {

/** A file that older versions wrote: what is there must be read for good, and written again byte for byte. */
inline std::string goldenFile(const std::string& name) {
    const char* root = std::getenv("TALV_SOURCE_DIR");
    std::ifstream file((root ? std::string(root) + "/" : "") + "tests/frame/source/storage/golden/" + name,
                       std::ios::binary);
    EXPECT_TRUE(file) << name << " isn't there";
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string textOf(FMemoryStream& stream) {
    return {stream.getData() ? stream.getData() : "", static_cast<size_t>(stream.getSize())};
}

/** A stream of these bytes, which stands before the first one. */
inline OPtr<FMemoryStream> streamOf(const std::string& bytes) {
    OPtr<FMemoryStream> stream(new FMemoryStream);
    stream->writeRaw(bytes.data(), static_cast<int64_t>(bytes.size()));
    stream->rewind();
    return stream;
}

/** An archive for plain values alone. */
class ValueArchive : public FArchive {
public:
    explicit ValueArchive(FStream& stream) : FArchive(&stream, true) {}
    bool save(const CmObject*, bool) override { return false; }
    CmObject* load(const char*, bool) override { return nullptr; }
};

/** Writes down the errors: code and class. */
class Errors : public IArchiveErrorHook {
public:
    virtual ~Errors() = default;
    void archiveError(int32_t code, const char* className) override {
        heard += std::to_string(code) + (className ? className : "") + " ";
    }
    std::string heard;
};

}  // namespace Tessarine
