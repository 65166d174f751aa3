#include "tools/srfpack/commands.h"
#include "base/source/finitializer.h"
#include "storage/fasidefile.h"
#include "storage/hooks.h"
#include "tools/srfpack/check.h"
#include "tools/srfpack/folder.h"
#include "tools/srfpack/heldsignals.h"
#include "tools/srfpack/names.h"
#include "tools/srfpack/progress.h"
#include "tools/words/answer.h"
#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <functional>
#include <new>
#include <nlohmann/json.hpp>
#include <unistd.h>
#include <utility>

namespace SrfPack {
namespace fs = std::filesystem;
using namespace Tessarine;

namespace {
constexpr uint32_t kStartUpSteps = 100;  // types, readers and the compression engine
constexpr int64_t kNoBound = INT64_MAX;
constexpr int64_t kMaxPlainBytes = INT32_MAX - FResourceArchive::kHeaderSize;
constexpr int64_t kEntryCountFromEnd = 12, kLeastEntry = 13;  // bytes of the file
constexpr int64_t kEntryBytes = 160;                          // of memory, about
constexpr const tchar* kAsideName = u"srfpack";  // short: there is room for a mark, however long the file's own is

std::string gReason;  // what the archive says to the user

/** An archive that is open and without a fault, or why there is none. */
struct Opened {
    FNPath path;
    OPtr<FResourceArchive> archive;
    std::string fault;
};

std::string notUtf8(const std::string& name) {
    return printable(name) + ": the name isn't UTF-8";
}

/** The number of entries stands at one place in each version. Who takes more memory than there is is ended by the system. */
bool isTooMuchForMemory(FStream& file) {
    int32_t entries = 0;
    file.byteOrder = 0;
    const int64_t place = file.seek(-kEntryCountFromEnd, kFromEnd);
    return place >= 0 && file.readInt32(entries) && entries <= place / kLeastEntry &&
           entries > ::sysconf(_SC_PHYS_PAGES) / 2 * ::sysconf(_SC_PAGESIZE) / kEntryBytes;
}

Opened openArchive(const std::string& name) {
    Opened opened;
    std::error_code ignored;
    const fs::path target = fs::canonical(name, ignored);  // what is replaced is the file, not a link to it
    if (!pathOf(target.empty() ? fs::path(name) : target, kFilePath, opened.path)) {
        opened.fault = notUtf8(name);
        return opened;
    }
    int32_t error = 0;
    const OPtr<FStream> file(gFileSystem->openFile(&opened.path, kOpenRead, &error));
    if (!file) {
        opened.fault = systemError(name, error);
        return opened;
    }
    if (isTooMuchForMemory(*file)) {
        opened.fault = systemError(name, ENOMEM);
        return opened;
    }
    opened.archive = OPtr<FResourceArchive>(new FResourceArchive(&opened.path));
    if (!opened.archive->open())
        opened.fault = printable(name) + ": " + (gReason.empty() ? "is no resource file, or damaged" : gReason);
    else if (const std::string fault = findFault(*opened.archive); !fault.empty())
        opened.fault = printable(name) + ": " + fault;
    return opened;
}

std::string readAll(const std::string& name, FResourceArchive& archive) {
    const OPtr<TerminalProgress> progress(new TerminalProgress);
    const std::string fault = findUnreadable(archive, progress);
    return fault.empty() ? "" : printable(name) + ": " + fault;
}

bool liesIn(const fs::path& file, const fs::path& folder) {
    std::error_code ignored;
    const fs::path inner = fs::weakly_canonical(fs::absolute(file, ignored), ignored);
    const fs::path outer = fs::weakly_canonical(fs::absolute(folder, ignored), ignored);
    return std::ranges::mismatch(outer, inner).in1 == outer.end();
}

/** What keeps a file from being made of a folder. */
std::string targetObstacle(const std::string& fileName, const std::string& folderName) {
    if (liesIn(fileName, folderName))
        return printable(fileName) + ": lies in the folder that is packed";
    std::error_code ignored;
    const fs::file_status status = fs::status(fileName, ignored);
    if (fs::is_directory(status) || fileName.ends_with('/'))
        return systemError(fileName, EISDIR);
    const bool replaceable = !fs::exists(status) || fs::is_regular_file(status);
    return replaceable ? "" : printable(fileName) + ": isn't a file that can be replaced";
}

std::string create(const Options& options) {
    const std::string &folderName = options.operands[0], &fileName = options.operands[1];
    FNPath folder, file;
    if (!pathOf(folderName, kFolderPath, folder))
        return notUtf8(folderName);
    if (!pathOf(fileName, kFilePath, file))
        return notUtf8(fileName);
    const int64_t maxBytes = options.compress ? kNoBound : kMaxPlainBytes;
    std::string obstacle = findObstacle(folderName, maxBytes);
    if (obstacle.empty())
        obstacle = targetObstacle(fileName, folderName);
    if (!obstacle.empty())
        return obstacle;
    const HeldSignals held;
    errno = 0;
    FAsideFile aside(gFileSystem, file);
    if (!aside.getStream())
        return systemError(fileName, errno);
    const int16_t flags = FResourceArchive::kSubFolders | (options.compress ? FResourceArchive::kCompress : 0);
    const OPtr<FResourceArchive> archive(new FResourceArchive(aside.getStream()));
    const OPtr<TerminalProgress> progress(new TerminalProgress);
    errno = 0;  // to look for a terminal has set it
    const bool packed = archive->create(&folder, flags, progress, nullptr) && archive->close() && aside.commit();
    return packed ? "" : systemError(fileName, errno);
}

using Json = nlohmann::ordered_json;

void printEntry(const FFileArchiveNode& node) {
    const char* folderMark = node.isFolder() ? "/" : "";
    std::printf("%12" PRId64 " %12" PRId64 "  %s%s\n", node.getUncompressedSize(), node.getDataSize(),
                printable(memberName(node)).c_str(), folderMark);
}

Json jsonOf(const FFileArchiveNode& node) {
    return {
        {"path",       memberName(node)                                       },
        {"folder",     node.isFolder()                                        },
        {"offset",     node.getDataOffset()                                   },
        {"stored",     node.getDataSize()                                     },
        {"size",       node.getUncompressedSize()                             },
        {"compressed", static_cast<const FResourceEntry&>(node).isCompressed()},
    };
}

/** One at a time: a table can have more entries than there is memory for their texts. */
void printJson(const FFileArchiveNode& node, const char* before) {
    std::printf("%s%s", before, jsonOf(node).dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
}

std::string list(const Options& options) {
    const Opened opened = openArchive(options.operands[0]);
    if (!opened.fault.empty())
        return opened.fault;
    const FFileArchiveNode* root = opened.archive->getTree();
    const char* before = "[";
    for (const FFileArchiveNode* node = root->getFirstChild(); node; node = node->getNextBelow(root)) {
        if (options.json)
            printJson(*node, std::exchange(before, ","));
        else
            printEntry(*node);
    }
    return printAnswer(!options.json ? "" : root->getFirstChild() ? "]\n" : "[]\n");
}

std::string extract(const Options& options) {
    const std::string &fileName = options.operands[0], &folderName = options.operands[1];
    const Opened opened = openArchive(fileName);
    std::string fault = opened.fault.empty() ? readAll(fileName, *opened.archive) : opened.fault;
    if (!fault.empty())
        return fault;
    FNPath folder;
    if (!pathOf(folderName, kFolderPath, folder))
        return notUtf8(folderName);
    const HeldSignals held;
    const OPtr<TerminalProgress> progress(new TerminalProgress);
    errno = 0;
    if (opened.archive->extractAll(&folder, progress))
        return {};
    const std::string member = utf8Of(progress->getCurrent());
    const std::string place = member.empty() ? folderName : (fs::path(folderName) / member).native();
    fault = writeError(place);
    std::error_code ignored;
    return member.empty() || !fs::is_symlink(place, ignored) ? fault : printable(place) + ": a link lies in the way";
}

/** What write makes aside takes the place of the file, all at once. false: errno may say why. */
bool rewrite(FPath& file, const std::function<bool(FPath& aside, UProgressHook* hook)>& write) {
    const HeldSignals held;
    const OPtr<TerminalProgress> progress(new TerminalProgress);
    errno = 0;
    FPath aside(file);
    aside.setName(kAsideName);
    if (!aside.makeUnique())
        return false;
    const bool done = write(aside, progress) && !HeldSignals::hasCome() && gFileSystem->moveFile(&aside, &file, true);
    const int code = errno;
    if (!done)
        gFileSystem->removeFile(&aside);
    errno = code;
    return done;
}

/** What keeps a file from becoming a member; maxBytes: what there is room for. */
std::string contentObstacle(const std::string& name, FNPath& content, int64_t maxBytes) {
    int32_t error = 0;
    if (!OPtr<FStream>(gFileSystem->openFile(&content, kOpenRead, &error)))
        return systemError(name, error);
    std::error_code ignored;
    if (!fs::is_regular_file(name, ignored))
        return printable(name) + ": isn't a file";  // a device can have no end
    return gFileSystem->getFileSize(&content) > maxBytes ? tooMuch(name) : "";
}

std::string replace(const Options& options) {
    const std::string &fileName = options.operands[0], &innerName = options.operands[1], &name = options.operands[2];
    Opened opened = openArchive(fileName);
    if (!opened.fault.empty())
        return opened.fault;
    FNPath inner, content;
    FString innerText;
    if (!innerText.fromUTF8(innerName.c_str()))
        return notUtf8(innerName);
    if (!pathOf(name, kFilePath, content))
        return notUtf8(name);
    inner.fromString(innerText.text16(), kFilePath);
    const FFileArchiveNode* node = opened.archive->lookupNode(&inner);
    if (!node || node->isFolder())
        return printable(fileName) + ": " + printable(innerName) + (node ? " is a folder" : " isn't in it");
    const int64_t others = opened.archive->getTableOffset() - node->getDataSize();
    const int64_t maxBytes = opened.archive->getEngine() ? kNoBound : INT32_MAX - others;
    std::string obstacle = contentObstacle(name, content, maxBytes);
    if (!obstacle.empty())
        return obstacle;
    opened.archive->close();
    const auto write = [&](FPath& aside, UProgressHook* hook) {
        return gFileSystem->copyFile(&opened.path, &aside, hook) &&
               FResourceArchive::replaceFileInArchive(&aside, &inner, &content);
    };
    return rewrite(opened.path, write) ? "" : writeError(fileName);
}

std::string compact(const Options& options) {
    const std::string& name = options.operands[0];
    Opened opened = openArchive(name);
    std::string fault = opened.fault.empty() ? readAll(name, *opened.archive) : opened.fault;
    if (!fault.empty())
        return fault;
    uint64_t bytes = 0;
    opened.archive->getTree()->countFiles(true, true, &bytes);
    if (!opened.archive->getEngine() && bytes > uint64_t(kMaxPlainBytes))
        return tooMuch(name);
    const int32_t flags = opened.archive->getEngine() ? FResourceArchive::kCompress : 0;
    const auto write = [&](FPath& aside, UProgressHook* hook) {
        if (!opened.archive->compact(flags, &aside, hook))
            return false;
        std::error_code ignored;  // some disks know no rights
        fs::permissions(utf8Of(aside), fs::status(name, ignored).permissions(), ignored);
        return true;
    };
    return rewrite(opened.path, write) ? "" : writeError(name);
}

std::string verify(const Options& options) {
    const Opened opened = openArchive(options.operands[0]);
    return opened.fault.empty() ? readAll(options.operands[0], *opened.archive) : opened.fault;
}

struct Row {
    const char* name;
    std::string (*run)(const Options&);
};
constexpr Row kCommands[] = {
    {"create",  create },
    {"list",    list   },
    {"extract", extract},
    {"replace", replace},
    {"compact", compact},
    {"verify",  verify },
};
}  // namespace

std::string run(const Options& options) {
    OneTimeProcedure::initialize(kStartUpSteps);
    FFileArchive::displayWarnings(true);
    gStorageHooks.showError = [](const FString& text) { gReason = utf8Of(text); };
    try {
        return std::ranges::find(kCommands, options.command, &Row::name)->run(options);
    } catch (const std::bad_alloc&) {  // a file can have more entries than this machine can hold
        return options.command + ": there isn't enough memory";
    }
}
}  // namespace SrfPack
