// What is looked at of a bundle before it is loaded: the headers of its code, and its property list. The first two bytes say
// how long the code is.
#include "demand.h"
#include "gui/os/linux/core/modulebundle.h"
#include "pluginterfaces/base/smartpointer.h"
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

/** One bundle for all inputs; it goes at the end. */
struct Place {
    Place() : folder(fs::temp_directory_path() / ("bundle_fuzz." + std::to_string(::getpid())) / "B.bundle") {
        code = folder / "Contents" / (std::string(ModuleBundle::runningArchitecture()) + "-linux") / "B.so";
        list = folder / "Contents/Info.plist";
        fs::create_directories(code.parent_path());
    }
    ~Place() { fs::remove_all(folder.parent_path()); }

    fs::path folder, code, list;
};

void write(const fs::path& file, const uint8_t* data, size_t size) {
    std::ofstream(file, std::ios::binary).write(reinterpret_cast<const char*>(data), std::streamsize(size));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Place place;
    uint16_t length = 0;
    if (size < sizeof(length))
        return 0;
    std::memcpy(&length, data, sizeof(length));
    data += sizeof(length);
    size -= sizeof(length);
    const size_t codeSize = std::min<size_t>(length, size);
    write(place.code, data, codeSize);
    write(place.list, data + codeSize, size - codeSize);
    FBundleFacts facts;
    demand(ModuleBundle::examine(place.folder.string(), facts) && facts.modified > 0);
    demand(facts.version.size() <= size - codeSize && facts.architectures.size() <= 1);
    std::string error;
    const OPtr<ModuleBundle> opened(ModuleBundle::open(place.folder.string(), error));
    demand((opened != nullptr) == (facts.architectures.size() == 1) && (opened || !error.empty()));
    return 0;
}
