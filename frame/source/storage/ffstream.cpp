#include "storage/ffstream.h"
#include "platformname.h"
#include "storage/ffilesystem.h"
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
    return access | O_CLOEXEC | (mode & kOpenCreate ? O_CREAT | O_TRUNC : 0);
}

int whenceOf(FSeekMode mode) {
    constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    return kWhence[mode];
}

bool isFolder(int file) {
    struct stat status;
    return ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
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
    if (!isFolder(file))
        return true;
    setFirstError(EISDIR);
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
    return passAll(count, [&](int64_t passed) { return ::read(file, bytes + passed, size_t(count - passed)); });
}

int64_t FFileStream::writeRaw(const void* buffer, int64_t count) {
    const char* bytes = static_cast<const char*>(buffer);
    return passAll(count, [&](int64_t passed) { return ::write(file, bytes + passed, size_t(count - passed)); });
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
    if (firstError == 0)
        firstError = code;
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

/** Repeats a call that passes what it can, until all is passed; the call is told how much was passed before. */
template <class Call>
int64_t FFileStream::passAll(int64_t count, Call call) {
    int64_t passed = 0;
    atEnd = false;
    while (passed < count) {
        const int64_t step = TEMP_FAILURE_RETRY(call(passed));
        atEnd = step == 0;
        if (!check(step >= 0) || atEnd)
            break;
        passed += step;
    }
    return passed;
}

}  // namespace Tessarine
