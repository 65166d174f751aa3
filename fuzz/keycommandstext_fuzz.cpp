// Key commands as lines of text: a file is taken wholly or not at all, and what was taken is written and read the same way,
// but for keys whose text has quotes or line ends.
#include "keycommandsubject.h"

using namespace KeyCommandFuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    check(
        data, size,
        [](FMemoryStream& stream, GCommandManager& manager) {
            return GKeyCommandsFile::importFrom(stream, manager) == GKeyCommandsFile::kRead;
        },
        [](FMemoryStream& stream, const GCommandManager& manager) {
            return GKeyCommandsFile::exportTo(stream, manager);
        });
    return 0;
}
