#include "storage/ffilesystemadapter.h"
#include "base/fcompiledinclass.h"
#include "base/hooks.h"
#include "collect/cmdate.h"
#include "network/hooks.h"
#include "pathsteps.h"
#include "storage/fpersistent.h"
#include "storage/fstreamproxy.h"
#include <cerrno>
#include <cstring>

namespace Tessarine {
namespace {
/** As components take it. */
FString innerTextOf(const FPath& path) {
    const FString text = fullTextOf(path);
    FString inner(u"");
    appendSteps(inner, resolvedSteps(units16(text)));
    return inner;
}

bool isAble(const FAttributes& description, const char* what) {
    return description.getInt(what) != 0;
}

bool knowsExtension(FAttributes& description, const FString& extension) {
    FString each;
    description.resetList(IVirtualFileSystem::kFileTypes);
    while (description.unqueueString(IVirtualFileSystem::kFileTypes, each))
        if (each.compare(extension, kIgnoreCase) == 0)
            return true;
    return false;
}

/** Null: the component can't, or doesn't take the file. */
FFileSystemAdapter* mountBy(FUnknown* owner, FPath* path, const FString& extension) {
    const FUnknownPtr<IVirtualFileSystem> component(owner);
    const OPtr<FAttributes> description(new FAttributes);
    if (!component || component->describe(description) != kResultOk || !knowsExtension(*description, extension))
        return nullptr;
    const bool writes = isAble(*description, IVirtualFileSystem::kCanWrite) && gFileSystem->canWrite(path);
    const OPtr<FStream> stream(gFileSystem->openFile(path, writes ? kOpenRead | kOpenWrite : kOpenRead));
    if (!stream || component->mount(stream) != kResultOk)
        return nullptr;
    return new FFileSystemAdapter(component, stream, owner);
}

bool createOfProgram(const char* category, int32_t index, FUnknown** component) {
    for (const FCompiledInClass* each = FCompiledInClass::first(); each; each = each->next) {
        if (std::strcmp(each->type, category) != 0 || index-- > 0)
            continue;
        *component = each->create();
        return true;
    }
    return false;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FRemovableFileSystem, FFileSystem)
IMPLEMENT_ABSTRACT_CLASS(FFileSystemAdapter, FRemovableFileSystem)
IMPLEMENT_ABSTRACT_CLASS(FFileSysIteratorAdapter, FFileIterator)
IMPLEMENT_ABSTRACT_CLASS(FPluginStreamProxy, FStream)

FFileSystemAdapter* FFileSystemAdapter::mount(FPath* path) {
    FString extension;
    if (!path || !path->getExtension(extension))
        return nullptr;
    const bool withModules = isMainThread() && gComponentHooks.createOfCategory;
    const auto create = withModules ? gComponentHooks.createOfCategory : createOfProgram;
    FUnknown* made = nullptr;
    for (int32_t i = 0; create(IVirtualFileSystem::kCategory, i, &made); ++i) {
        const OPtr<FUnknown> owner(made);
        if (FFileSystemAdapter* mounted = mountBy(owner, path, extension))
            return mounted;
    }
    return nullptr;
}

FFileSystemAdapter::FFileSystemAdapter(IVirtualFileSystem* component, IBStream* stream, FUnknown* owner)
    : component(component), stream(stream), owner(owner) {
    const OPtr<FAttributes> description(new FAttributes);
    if (!component || component->describe(description) != kResultOk)
        return;
    canRead = isAble(*description, IVirtualFileSystem::kCanRead);
    canWrite = isAble(*description, IVirtualFileSystem::kCanWrite);
    canIterate = isAble(*description, IVirtualFileSystem::kCanIterate);
}

FFileSystemAdapter::~FFileSystemAdapter() {
    unmount();
}

bool FFileSystemAdapter::unmount() {
    const FGuard guard(lock);
    if (getUseCount() > 0)
        return false;
    if (component)
        component->unmount();
    component = nullptr;
    stream = nullptr;
    owner = nullptr;
    return true;
}

FStream* FFileSystemAdapter::createFile(FPath* path, int32_t mode, int32_t* error) {
    return openFile(path, mode | kOpenWrite | kOpenCreate, error);
}

FStream* FFileSystemAdapter::openFile(FPath* path, int32_t mode, int32_t* error) {
    const bool writes = mode & (kOpenWrite | kOpenCreate), reads = (mode & kOpenRead) || !writes;
    const bool able = (canRead || !reads) && (canWrite || !writes);
    FStream* opened = nullptr;
    ask(path, able, [&](const tchar* inner) {
        IBStream* given = nullptr;
        const bool done = component->openFile(inner, mode & ~kOpenShared, &given) == kResultOk;
        const OPtr<IBStream> bytes(given);
        opened = done && bytes ? new FPluginStreamProxy(this, bytes) : nullptr;
        return opened != nullptr;
    });
    if (error)
        *error = opened ? 0 : able ? ENOENT : EACCES;
    return opened;
}

bool FFileSystemAdapter::closeFile(FStream* opened) {
    const OPtr<FStream> released(opened);
    return opened && opened->verify();
}

bool FFileSystemAdapter::removeFile(FPath* path) {
    return ask(path, canWrite, [&](const tchar* inner) { return component->removeFile(inner) == kResultOk; });
}

bool FFileSystemAdapter::fileExists(FPath* path) {
    VirtualFileInfo info;
    return infoOf(path, info) && info.isFolder == 0;
}

bool FFileSystemAdapter::renameFile(FPath* path, const tchar* newName) {
    const FString name(newName);
    return isPlainStep(units16(name)) && ask(path, canWrite, [&](const tchar* inner) {
               return component->renameFile(inner, name.text16()) == kResultOk;
           });
}

bool FFileSystemAdapter::getFileTimes(FPath* path, CmTime& created, CmTime& modified) {
    VirtualFileInfo info;
    if (!infoOf(path, info) || info.modified == 0)
        return false;
    created = modified = CmTime::fromUnixTime(info.modified);
    return true;
}

int64_t FFileSystemAdapter::getFileSize(FPath* path) {
    VirtualFileInfo info;
    return infoOf(path, info) && info.isFolder == 0 && info.size >= 0 ? info.size : -1;
}

int64_t FFileSystemAdapter::getFileSize(FStream* opened) {
    return streamSize(opened);
}

FFileIterator* FFileSystemAdapter::newIterator(const FPath* folder, bool withHidden) {
    if (!folder)
        return nullptr;
    OPtr<FFileSysIteratorAdapter> iterator(new FFileSysIteratorAdapter(this, *folder, withHidden));
    return iterator->restart() ? iterator.detach() : nullptr;
}

/** Asks the component, if it is able and still there, about a path. */
template <class Ask>
bool FFileSystemAdapter::ask(const FPath* path, bool able, Ask ask) {
    if (!path || !able)
        return false;
    const FString inner = innerTextOf(*path);
    const FGuard guard(lock);
    return component && ask(inner.text16());
}

bool FFileSystemAdapter::infoOf(const FPath* path, VirtualFileInfo& info) {
    info = {};
    return ask(path, true, [&](const tchar* inner) { return component->getFileInfo(inner, &info) == kResultOk; });
}

FFileSysIteratorAdapter::FFileSysIteratorAdapter(FFileSystemAdapter* fileSystem, const FPath& walked, bool withHidden)
    : fileSystem(fileSystem), withHidden(withHidden) {
    folder.fromString(innerTextOf(walked).text16(), kFolderPath);
    shown.setPathName(fullTextOf(folder).text16());
    fileSystem->incUseCount();
}

FFileSysIteratorAdapter::~FFileSysIteratorAdapter() {
    {
        const FGuard guard(fileSystem->lock);
        inner = nullptr;
    }
    fileSystem->notifyStreamDestruction();
}

bool FFileSysIteratorAdapter::restart() {
    present = false;
    return fileSystem->ask(&folder, fileSystem->canIterate, [&](const tchar* text) {
        IVirtualFileIterator* made = nullptr;
        const int32_t result = fileSystem->component->newIterator(text, &made);
        inner = result == kResultOk ? made : nullptr;
        return inner != nullptr;
    });
}

FPath* FFileSysIteratorAdapter::next() {
    FString name;
    VirtualFileInfo info = {};
    bool hidden = false;
    do {
        present = fetch(name, info);
        hidden = name.testChar16(0, u'.');
    } while (present && (!isPlainStep(units16(name)) || (hidden && !withHidden)));
    if (!present)
        return nullptr;
    shown.setName(name.text16());
    shown.setKind((info.isFolder ? kFolderPath : kFilePath) | (hidden ? kHiddenPath : 0));
    return &shown;
}

bool FFileSysIteratorAdapter::fetch(FString& name, VirtualFileInfo& info) {
    const FGuard guard(fileSystem->lock);
    const tchar* text = nullptr;
    if (!inner || inner->getNext(&text, &info) != kResultOk)
        return false;
    name = FString(text ? text : u"");
    return true;
}

FPluginStreamProxy::FPluginStreamProxy(FFileSystemAdapter* fileSystem, IBStream* stream)
    : fileSystem(fileSystem), stream(stream), bytes(stream) {
    fileSystem->incUseCount();
}

FPluginStreamProxy::~FPluginStreamProxy() {
    stream = nullptr;
    fileSystem->notifyStreamDestruction();
}

int32_t FPluginStreamProxy::queryInterface(const char* iid, void** obj) {
    if (answerInterface<ISizeableStream>(this, iid, obj))
        return kResultOk;
    return FStream::queryInterface(iid, obj);
}

int64_t FPluginStreamProxy::writeRaw(const void* buffer, int64_t count) {
    const int64_t passed = bytes.writeRaw(buffer, count);
    failed |= passed != count;
    return passed;
}

int32_t FPluginStreamProxy::getStreamSize(int64_t& size) {
    const FUnknownPtr<ISizeableStream> sizeable(stream.get());
    return sizeable ? sizeable->getStreamSize(size) : int32_t(kResultFalse);
}

int32_t FPluginStreamProxy::setStreamSize(int64_t size) {
    const FUnknownPtr<ISizeableStream> sizeable(stream.get());
    return sizeable ? sizeable->setStreamSize(size) : int32_t(kResultFalse);
}

}  // namespace Tessarine
