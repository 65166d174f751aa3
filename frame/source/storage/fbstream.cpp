#include "storage/fbstream.h"

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(FStream, CmObject)

int32_t FStream::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IBStream>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

int32_t FStream::read(void* buffer, int32_t numBytes, int32_t* numBytesRead) {
    const auto passed = int32_t(numBytes > 0 ? readRaw(buffer, numBytes) : 0);
    if (numBytesRead)
        *numBytesRead = passed;
    return passed > 0 || numBytes == 0 ? kResultOk : kResultFalse;
}

int32_t FStream::write(void* buffer, int32_t numBytes, int32_t* numBytesWritten) {
    const auto passed = int32_t(numBytes > 0 ? writeRaw(buffer, numBytes) : 0);
    if (numBytesWritten)
        *numBytesWritten = passed;
    return passed == numBytes ? kResultOk : kResultFalse;
}

int32_t FStream::seek(int64_t pos, int32_t mode, int64_t* result) {
    if (mode < kSeekSet || mode > kSeekEnd)
        return kInvalidArgument;
    const int64_t reached = seek(pos, FSeekMode(mode));
    if (result)
        *result = reached;
    return reached >= 0 ? kResultOk : kResultFalse;
}

int32_t FStream::tell(int64_t* pos) {
    const int64_t here = tell();
    if (pos)
        *pos = here;
    return here >= 0 ? kResultOk : kResultFalse;
}

}  // namespace Tessarine
