#include "storage/ffilesystem.h"
#include "base/uprogresshook.h"
#include "fnerrors.h"
#include "ftreewalk.h"
#include "storage/fbstream.h"
#include "storage/ffstream.h"
#include "storage/fmstream.h"
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <sys/stat.h>

namespace Tessarine {
namespace {
constexpr int32_t kCopyBlock = 0x10000;
constexpr std::u16string_view kForbidden = u"/*?";
constexpr tchar kStandIn = u'_';
constexpr const char* kSizeUnits[] = {"Bytes", "KB", "MB", "GB", "TB", "PB"};
constexpr double kUnitFactor = 1024;

bool copyContent(FStream& source, FStream& target, int64_t total, UProgressHook* hook) {
    const auto block = std::make_unique<char[]>(kCopyBlock);
    for (int64_t done = 0;;) {
        const int64_t size = source.readRaw(block.get(), kCopyBlock);
        if (size <= 0)
            return size == 0 && source.verify();
        done += size;
        if (target.writeRaw(block.get(), size) != size || !tellProgress(hook, done, total))
            return false;
    }
}

/** Two systems may lead to one file of the disk, which to create as the target would empty the source. */
bool leadsTo(FFileSystem* system, FPath* path, FStream* stream) {
    const QuietErrors quiet;
    auto* const file = classCast<FFileStream>(stream);
    FStream* const opened = file && system->fileExists(path) ? system->openFile(path, kOpenRead) : nullptr;
    if (!opened)
        return false;
    auto* const other = classCast<FFileStream>(opened);
    struct stat own, its;
    const bool same = other && ::fstat(file->getFileRef(), &own) == 0 && ::fstat(other->getFileRef(), &its) == 0 &&
                      own.st_dev == its.st_dev && own.st_ino == its.st_ino;
    system->closeFile(opened);
    return same;
}

void tellCode(int32_t* error, int32_t code) {
    if (error)
        *error = code;
}

/** An archive opens no member without bytes. */
FStream* openSource(FFileSystem* system, FPath* path, int32_t* error) {
    int32_t code = EINVAL;
    FStream* const opened = system->openFile(path, kOpenRead, &code);
    if (!opened && code == ENODATA && system->getFileSize(path) == 0)
        return new FMemoryStream;
    tellCode(error, code);
    return opened;
}

/** A cut there would leave half a pair, which no disk can express. */
bool endsInPair(const FString& text, uint32_t length) {
    return (text.getChar16(length - 1) & 0xFC00) == 0xD800 && (text.getChar16(length) & 0xFC00) == 0xDC00;
}

/** Of two streams of which one has failed; without an error in either somebody stopped it. */
int32_t errorOf(FStream* input, FStream* output) {
    for (FStream* stream : {input, output})
        if (auto* file = classCast<FFileStream>(stream); file && file->error())
            return file->getFirstError(false);
    return ECANCELED;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FFileIterator, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FFileSystem, CmObject)

bool FFileSystem::moveFile(FPath* /*from*/, FPath* /*to*/, bool /*overwrite*/) {
    return false;
}

bool FFileSystem::copyFile(FPath* from, FPath* to, UProgressHook* hook, int32_t* error) {
    return copyFile(this, from, this, to, hook, error);
}

bool FFileSystem::createDir(FPath* /*path*/) {
    return false;
}

bool FFileSystem::changeDir(FPath* /*path*/) {
    return false;
}

bool FFileSystem::getDirName(FPath* path, FString& name) {
    if (!path)
        return false;
    FPath folder(*path);
    if (!folder.isFolder() && !folder.ascend())
        return false;
    name = folder.getName();
    return true;
}

bool FFileSystem::removeDir(FPath* /*path*/, bool /*withContent*/) {
    return false;
}

bool FFileSystem::makeValidName(FString& name, tchar replacement, bool trim) {
    FString valid(name.text16());
    if (trim)
        valid.trim();
    if (valid.length() > kMaxNameLength)
        valid.remove(endsInPair(valid, kMaxNameLength) ? kMaxNameLength - 1 : kMaxNameLength);
    for (uint32_t i = 0; i < valid.length(); ++i)
        if (kForbidden.find(valid.getChar16(i)) != std::u16string_view::npos)
            valid.setChar16(i, replacement ? replacement : kStandIn);
    const bool changed = !(valid == name);
    name = valid;
    return changed;
}

int32_t FFileSystem::countFiles(const FPath* folder, bool deep, bool withHidden, int64_t* size) {
    if (!folder)
        return -1;
    FTreeWalk walk(this, *folder, withHidden);
    int32_t count = 0;
    int64_t sum = 0;
    for (FPath* entry = walk.current(); entry; entry = walk.next()) {
        if (!deep)
            walk.skipFolder();
        if (entry->isFolder())
            continue;
        ++count;
        sum += std::max<int64_t>(0, size ? getFileSize(entry) : 0);
    }
    if (size)
        *size = sum;
    return walk.hasFailed() ? -1 : count;
}

bool FFileSystem::copyFile(FFileSystem* source, FPath* from, FFileSystem* target, FPath* to, UProgressHook* hook,
                           int32_t* error) {
    tellCode(error, EINVAL);
    if (!source || !target || !from || !to || (source == target && *from == *to))
        return false;
    FStream* input = openSource(source, from, error);
    if (!input)
        return false;
    if (leadsTo(target, to, input)) {
        tellCode(error, EINVAL);
        source->closeFile(input);
        return false;
    }
    FStream* output = target->createFile(to, kOpenWrite, error);
    const bool copied = output && copyContent(*input, *output, source->getFileSize(from), hook);
    const int32_t code = copied ? EIO : errorOf(input, output);
    const bool whole = target->closeFile(output) && copied;
    source->closeFile(input);
    if (output && !whole) {
        tellCode(error, code);
        target->removeFile(to);
    }
    return whole;
}

void FFileSystem::makeFileSizeString(double bytes, FString& text) {
    size_t unit = 0;
    for (; bytes >= kUnitFactor && unit + 1 < std::size(kSizeUnits); ++unit)
        bytes /= kUnitFactor;
    text.printf("%.3f %s", bytes, kSizeUnits[unit]);
}

}  // namespace Tessarine
