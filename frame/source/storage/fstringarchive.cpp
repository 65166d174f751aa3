#include "base/source/fstring.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"

namespace Tessarine {

bool FString::internalize(FArchive& archive) {
    return load(archive.getStream());
}

bool FString::externalize(FArchive& archive) const {
    return store(archive.getStream());
}

}  // namespace Tessarine
