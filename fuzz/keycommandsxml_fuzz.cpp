// Key commands and macros as XML: taken wholly or not at all, and what was taken is written and read the same way.
#include "keycommandsubject.h"
#include "storage/fpersistent.h"
#include "storage/fxmlarchive.h"

using namespace KeyCommandFuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    check(
        data, size,
        [](FMemoryStream& stream, GCommandManager& manager) {
            FXmlArchive archive(&stream, false);
            FAttributes bag;
            return archive.loadAttributes("KeyCommands", bag) && archive.isWhole() && manager.restoreAttributes(bag);
        },
        [](FMemoryStream& stream, const GCommandManager& manager) {
            FAttributes bag;
            return manager.storeAttributes(bag) && FXmlArchive(&stream, true).saveAttributes("KeyCommands", bag);
        });
    return 0;
}
