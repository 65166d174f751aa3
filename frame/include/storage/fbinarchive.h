#pragma once
#include "storage/fattributearchive.h"
#include "storage/ffiletype.h"

namespace Tessarine {

/** Attributes as binary data, without header or version, in the stream's byte order.

      file        int32 count of object roots; for each its key, int64 id, and the object where its id hasn't come before;
                  int32 count of bags; for each its key and the attributes
      object      class name (int32 length and text with its terminator), uint64 id, attributes
      attributes  int32 count; for each the key, uint16 type and the value
      type 1      int64
      type 4      double
      type 8      text
      type 2      an object; 256: a component that is an object of ours. With a uint16 form before it:
                  2 int32 count, int64 each         3 int32 count, double each
                  4 int32 count, text each          5 int32 count, attributes each
                  6 attributes                      7 int32 size, bytes
                  20 object                         21 uint64 id
                  201 int32 count; for each uint16 20 and an object, or 21 and an id
      others      have no value, and aren't kept

    Keys and texts are in the form of FString: longer ones than its load accepts are written, and can't be read. Ids are the
    addresses in the process that wrote. Form 41 is read as 4; what still older writers made (1, 8, 101, 108) is refused. */
class FBinArchive : public FAttributeArchiveBase {
public:
    /** The older archive, for forms that need one, isn't asked: they are refused. */
    FBinArchive(FStream* stream, bool writing, FArchive* olderArchive = nullptr);

    /** All roots. */
    bool save();
    bool load();
    /** One bag alone. What was in a loaded bag goes, unless loading fails. */
    bool saveAttributes(const FAttributes& attributes);
    bool loadAttributes(FAttributes& attributes);

    static const FFileType fileType;
};

}  // namespace Tessarine
