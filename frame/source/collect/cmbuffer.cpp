#include "collect/cmbuffer.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/farchive.h"
#include "storage/fmstream.h"
#include <algorithm>

namespace Tessarine {

IMPLEMENT_CLASS(CmBuffer, CmObject)
IMPLEMENT_CLASS(CmBufferPool, CmArray)

bool CmBuffer::internalize(FArchive& archive) {
    FMemoryStream content;
    if (!content.internalize(archive))
        return false;
    const auto size = static_cast<uint32_t>(content.getSize());
    setFillSize(0);
    return size == 0 || (setSize(size) && put(content.getData(), size));
}

bool CmBuffer::externalize(FArchive& archive) const {
    const auto size = static_cast<int32_t>(getFillSize());
    return size >= 0 && archive.getStream().writeInt32(size) && archive.getStream().writeRaw(data(), size) == size;
}

CmBufferPool::~CmBufferPool() {
    reduceBuffers(0);
}

CmBuffer* CmBufferPool::allocateBuffer(uint32_t size) {
    CmBuffer* buffer = size > 0 ? takeLargeEnough(size) : nullptr;
    return buffer ? buffer : new CmBuffer(size);
}

void CmBufferPool::deleteBuffer(CmBuffer* buffer) {
    if (!buffer)
        return;
    if (buffer->getSize() > 0) {
        FGuard guard(bufferLock);
        if (add(buffer))
            return;
    }
    buffer->release();
}

void CmBufferPool::freeBuffer(Buffer& buffer) {
    auto* kept = new CmBuffer;
    kept->take(buffer);
    deleteBuffer(kept);
}

bool CmBufferPool::configBuffer(Buffer& buffer, uint32_t size) {
    const OPtr<CmBuffer> pooled(buffer.getSize() == 0 && size > 0 ? takeLargeEnough(size) : nullptr);
    if (!pooled)
        return buffer.setSize(size);
    buffer.take(*pooled);
    return true;
}

void CmBufferPool::reduceBuffers(int32_t count) {
    FGuard guard(bufferLock);
    _ownsObjects = kTakesOver;
    while (total() > std::max(count, 0))
        removeAt(total() - 1);
    _ownsObjects = kBorrows;
}

/** Out of the pool and with nothing in use; null when there is none. */
CmBuffer* CmBufferPool::takeLargeEnough(uint32_t size) {
    FGuard guard(bufferLock);
    for (int32_t i = 0; i < total(); ++i) {
        auto* buffer = static_cast<CmBuffer*>(at(i));
        if (buffer->getSize() < size)
            continue;
        removeAt(i);
        buffer->setFillSize(0);
        return buffer;
    }
    return nullptr;
}

}  // namespace Tessarine
