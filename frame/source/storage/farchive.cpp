#include "storage/farchive.h"
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
    : stream(stream), writing(writing), errorHook(errorHook), errors(0, 10) {}

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
