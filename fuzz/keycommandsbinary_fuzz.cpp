// Key commands in their binary form: taken wholly or not at all, and what was taken is written and read the same way.
#include "keycommandsubject.h"
#include "storage/fnewarchive.h"

using namespace KeyCommandFuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    check(
        data, size,
        [](FMemoryStream& stream, GCommandManager& manager) {
            FNewArchive archive(&stream, false);
            return manager.internalize(archive);
        },
        [](FMemoryStream& stream, const GCommandManager& manager) {
            FNewArchive archive(&stream, true);
            return manager.externalize(archive);
        });
    return 0;
}
