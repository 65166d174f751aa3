#pragma once
#include "storage/ffiletype.h"

namespace Tessarine {
class FStream;
class GCommandManager;

/** Files that users exchange. The key commands of a manager are lines of text, in UTF-8 without a mark:

      # Key Commands File
      # Version: 1.1
      "Category" "Name" "Ctrl+Q"

    Further lines that begin with # are passed over. Main thread. */
namespace GKeyCommandsFile {
enum Result : int32_t { kRead, kNotAKeyCommandsFile, kWrongVersion, kMalformed };

/** The keys of the file instead of those that are set, if any command of it is known. A result that isn't kRead is
    shown to the user, and nothing has changed. */
Result importFrom(FStream& stream, GCommandManager& manager);
/** Commands or keys whose text has quotes or line ends, or makes too long a line, are left out. false: the stream
    didn't take the rest, or it would be more than an import reads, 4 MiB. */
bool exportTo(FStream& stream, const GCommandManager& manager);

/** The macros alone, as XML in the root tag "MacroCommands"; they replace those of the same names. false: not written,
    or not read wholly, or macros are off, and nothing has changed. */
bool exportMacros(FStream& stream, const GCommandManager& manager);
bool importMacros(FStream& stream, GCommandManager& manager);

extern const FFileType keyCommandFileType;
extern const FFileType macroCommandFileType;
}  // namespace GKeyCommandsFile

}  // namespace Tessarine
