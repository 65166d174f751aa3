#include "storage/ffilesystem.h"
#include "storage/ffstream.h"
#include "storage/furlhandler.h"
#include <sys/stat.h>

namespace Tessarine {
namespace {
constexpr const tchar* kThisMachine = u"localhost";

/** The platform's text of a "file" URL; false: of another protocol or machine, or no path can be so. */
bool makePlatfromString(const FUrl& url, FString& text) {
    const FString& host = url.getHost();
    const bool isHere = host.isEmpty() || host.compare(ConstString(kThisMachine), kIgnoreCase) == 0;
    FString file(url.getFile());
    if (!url.isProtocol(u"file") || !isHere || !FUrl::urlDecode(file))
        return false;
    text = u"/";
    text += file;
    return true;
}

/** What has an end: a device may have none. */
bool isRegular(FStream* stream) {
    const auto* file = classCast<FFileStream>(stream);
    struct stat status;
    return file && ::fstat(file->getFileRef(), &status) == 0 && S_ISREG(status.st_mode);
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FUrlHandler, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FUrlFileHandler, FUrlHandler)
IMPLEMENT_ABSTRACT_CLASS(FObjectConverter, CmObject)
IMPLEMENT_CLASS(UrlPathConverter, FObjectConverter)

void initFUrlFileHandler() {
    FUrl::registerHandler(u"file", 0, [](FUrl& url) -> FUrlHandler* { return new FUrlFileHandler(url); });
}

bool FUrlFileHandler::open() {
    close();
    FString text;
    if (!makePlatfromString(url, text))
        return fail(NError::kBadUrl);
    FNPath path(text.text16(), kFilePath);
    stream = gFileSystem->openFile(&path, kOpenRead);
    if (!isRegular(stream.get()))
        stream = nullptr;
    error = stream ? NError::kNone : NError::kUnreachable;
    return stream.get() != nullptr;
}

int64_t FUrlFileHandler::getLength() {
    return stream ? gFileSystem->getFileSize(stream.get()) : -1;
}

CmObject* UrlPathConverter::convert(const CmObject& object, const char* className) {
    const auto* path = classCast<FNPath>(&object);
    const auto* url = classCast<FUrl>(&object);
    FString text;
    if (path && std::string_view(className) == FUrl::className())
        return path->createURL();
    if (!url || std::string_view(className) != FNPath::className() || !makePlatfromString(*url, text))
        return nullptr;
    return new FNPath(text.text16(), url->getKind());
}

}  // namespace Tessarine
