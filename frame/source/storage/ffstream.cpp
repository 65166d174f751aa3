#include "storage/ffstream.h"
#include "base/uprogresshook.h"
#include "platformname.h"
#include "storage/ffilesystem.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessarine {
namespace {
constexpr mode_t kNewFileRights = 0666;  // less what the user's mask takes away

int openFlags(int32_t mode) {
    const bool reads = mode & kOpenRead;
    const bool writes = mode & (kOpenWrite | kOpenCreate);
    const int access = !writes ? O_RDONLY : reads ? O_RDWR : O_WRONLY;
    return access | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | (mode & kOpenCreate ? O_CREAT | O_TRUNC : 0);
}

int whenceOf(FSeekMode mode) {
    constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    return kWhence[mode];
}

/** Why this is no file to read and write, else 0. It was opened without waiting, for the other end of a pipe may never
    come; from here on it waits. */
int32_t acceptFile(int file) {
    struct stat status;
    if (::fstat(file, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode))
        return S_ISDIR(status.st_mode) ? EISDIR : EOPNOTSUPP;
    return ::fcntl(file, F_SETFL, ::fcntl(file, F_GETFL) & ~O_NONBLOCK) == 0 ? 0 : errno;
}
}  // namespace

IMPLEMENT_CLASS(FFileStream, FStream)

FFileStream::FFileStream(int32_t mode) : mode(mode) {}

FFileStream::~FFileStream() {
    close();
}

bool FFileStream::open() {
    close();
    file = int32_t(TEMP_FAILURE_RETRY(::open(PlatformName(&path), openFlags(mode), kNewFileRights)));
    if (!check(file >= 0))
        return false;
    const int32_t refusal = acceptFile(file);
    if (refusal == 0)
        return true;
    setFirstError(refusal);
    return close();
}

bool FFileStream::close() {
    if (file >= 0)
        check(::close(file) == 0 || errno == EINTR);  // interrupted, it is closed all the same
    file = -1;
    return !error();
}

int32_t FFileStream::queryInterface(const char* iid, void** obj) {
    if (answerInterface<ISizeableStream>(this, iid, obj))
        return kResultOk;
    return FStream::queryInterface(iid, obj);
}

int64_t FFileStream::readRaw(void* buffer, int64_t count) {
    char* bytes = static_cast<char*>(buffer);
    return passAll(count, [&](int64_t passed, size_t size) { return ::read(file, bytes + passed, size); });
}

int64_t FFileStream::writeRaw(const void* buffer, int64_t count) {
    const char* bytes = static_cast<const char*>(buffer);
    return passAll(count, [&](int64_t passed, size_t size) { return ::write(file, bytes + passed, size); });
}

int64_t FFileStream::readAt(int64_t place, void* buffer, int64_t count) {
    char* bytes = static_cast<char*>(buffer);
    int64_t passed = 0;
    while (passed < count) {
        const int64_t step = TEMP_FAILURE_RETRY(::pread(file, bytes + passed, size_t(count - passed), place + passed));
        if (!check(step >= 0) || step == 0)
            break;
        passed += step;
    }
    return passed;
}

int64_t FFileStream::seek(int64_t pos, FSeekMode mode) {
    atEnd = false;
    const int64_t reached = ::lseek(file, pos, whenceOf(mode));
    check(reached >= 0);
    return reached;
}

int64_t FFileStream::tell() {
    const int64_t here = ::lseek(file, 0, SEEK_CUR);
    check(here >= 0);
    return here;
}

bool FFileStream::flush() {
    const bool flushed = TEMP_FAILURE_RETRY(::fsync(file)) == 0;
    check(flushed || errno == EINVAL);  // a device has no medium to reach
    return !error();
}

void FFileStream::setReadWriteHook(UProgressHook* hook, int32_t blockSize) {
    progress = blockSize > 0 ? hook : nullptr;
    progressBytes = blockSize;
}

int32_t FFileStream::getStreamSize(int64_t& size) {
    const int64_t end = getEof();
    if (end < 0)
        return kResultFalse;
    size = end;
    return kResultOk;
}

int32_t FFileStream::setStreamSize(int64_t size) {
    return setEof(size) ? kResultOk : kResultFalse;
}

int64_t FFileStream::getEof() {
    struct stat status;
    return check(::fstat(file, &status) == 0) ? int64_t(status.st_size) : -1;
}

bool FFileStream::setEof(int64_t size) {
    return check(TEMP_FAILURE_RETRY(::ftruncate(file, size)) == 0);
}

int32_t FFileStream::getFirstError(bool clear) {
    const int32_t code = firstError;
    if (clear)
        clearError();
    return code;
}

void FFileStream::setFirstError(int32_t code) {
    int32_t none = 0;
    firstError.compare_exchange_strong(none, code);
}

void FFileStream::getErrorMessage(FString& text) const {
    FNFileSystem::getErrorMessage(firstError, text);
}

/** Keeps the system's code unless the call was done. */
bool FFileStream::check(bool done) {
    if (!done)
        setFirstError(errno);
    return done;
}

/** Repeats a call that passes what it can, until all is passed; the call is told how much was passed before, and how much it
    may pass. */
template <class Call>
int64_t FFileStream::passAll(int64_t count, Call call) {
    const int64_t block = progress ? progressBytes : count;
    int64_t passed = 0;
    atEnd = false;
    while (passed < count) {
        const int64_t step = TEMP_FAILURE_RETRY(call(passed, size_t(std::min(block, count - passed))));
        atEnd = step == 0;
        if (!check(step >= 0) || atEnd)
            break;
        passed += step;
        if (passed < count && !tellProgress(progress, passed, count))
            break;
    }
    return passed;
}

}  // namespace Tessarine
