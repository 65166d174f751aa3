#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstreamer.h"
#include "pluginterfaces/base/ibstream.h"
#include "storage/ffiletype.h"

namespace Tessarine {

/** A stream of bytes as an object: typed reading and writing, and the component face for other modules.
    Little-endian, unless somebody sets byteOrder.

    Threads   one at a time; there are no locks. */
class FStream : public CmObject, public FStreamer, public virtual IBStream {
public:
    int32_t queryInterface(const char* iid, void** obj) override;

    /** Back to the first byte. */
    virtual void rewind() { seek(0, kFromStart); }
    /** Bytes passed; fewer than count at the end or after a failure. */
    int64_t readRaw(void* buffer, int64_t count) override = 0;
    int64_t writeRaw(const void* buffer, int64_t count) override = 0;
    /** All that was written is where it belongs and safe; false: something wasn't written, now or before. */
    virtual bool flush() { return true; }

    /** kResultFalse: not a single byte. */
    int32_t read(void* buffer, int32_t numBytes, int32_t* numBytesRead) override;
    /** kResultFalse: not all bytes. */
    int32_t write(void* buffer, int32_t numBytes, int32_t* numBytesWritten) override;
    int32_t seek(int64_t pos, int32_t mode, int64_t* result) override;
    int32_t tell(int64_t* pos) override;
    using FStreamer::seek;
    using FStreamer::tell;

    const FFileType& getFileType() const { return fileType; }
    void setFileType(const FFileType& type) { fileType = type; }

    DECLARE_ABSTRACT_CLASS(FStream, CmObject)
    FORWARD_REFCOUNT(CmObject)

private:
    FFileType fileType;
};

}  // namespace Tessarine
