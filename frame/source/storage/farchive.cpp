#include "storage/farchive.h"
#include "base/source/classfactory.h"
#include "storage/fbstream.h"

namespace Tessarine {
namespace {
using PreSaveFunction = void (*)();

TArray<PreSaveFunction>& preSaveFunctions() {
    static TArray<PreSaveFunction> functions(0, 10);
    return functions;
}
}  // namespace

FArchive::FArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook)
    : stream(stream), writing(writing), errorHook(errorHook), errors(0, 10), forgotten(0, 10) {}

FArchive::~FArchive() {
    for (CmObject* object : forgotten)
        object->release();
}

int32_t FArchive::getClassVersion(const char* className) const {
    const MetaClass* metaClass = ClassFactory::instance(true)->getMetaClassByName(className);
    if (writing)
        return metaClass ? metaClass->version : 0;
    const char* name = metaClass ? metaClass->persistentName : className;
    const auto read = classVersions.find(name ? name : "");
    return read == classVersions.end() ? 0 : read->second;
}

bool FArchive::hasLeft(int64_t bytes) const {
    return enclosingEnd < 0 || stream->tell() + bytes <= enclosingEnd;
}

void FArchive::forgetLater(CmObject* object) {
    if (object)
        forgotten.add(object);
}

int32_t FArchive::getLastError() {
    if (lastError == 0 && !stream->verify())
        reportError(kStreamError);
    return lastError;
}

void FArchive::reportError(int32_t code, const char* className) {
    if (lastError == 0 || code == kStreamError)
        lastError = code;
    if (!errors.contains(code))
        errors.add(code);
    if (errorHook)
        errorHook->archiveError(code, className);
}

void FArchive::registerPreSaveFunction(void (*function)()) {
    if (function && !preSaveFunctions().contains(function))
        preSaveFunctions().add(function);
}

void FArchive::beforeSave() {
    for (const PreSaveFunction function : preSaveFunctions())
        function();
}

}  // namespace Tessarine
