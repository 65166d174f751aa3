#include "fnerrors.h"
#include "base/utranslatedstring.h"
#include "storage/ffilesystem.h"
#include "storage/hooks.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace Tessarine {
namespace {
struct CodeRow {
    int32_t system;
    FSystemError code;
};
constexpr CodeRow kCodes[] = {
    {ENOENT,       kFileNotFoundError},
    {ENOTDIR,      kFileNotFoundError},
    {EROFS,        kReadOnlyError    },
    {ENOSPC,       kDiskFullError    },
    {EDQUOT,       kDiskFullError    },
    {EIO,          kDiskDefectError  },
    {EPERM,        kNotPermittedError},
    {EACCES,       kNotPermittedError},
    {ENAMETOOLONG, kNameError        },
};

struct MessageRow {
    int32_t code;
    UTranslatedString text;
};
constexpr MessageRow kMessages[] = {
    {0,                  UTranslatedString("No error occurred.")                                                 },
    {kFileNotFoundError, UTranslatedString("The file/folder could not be found at this location.")               },
    {kReadOnlyError,     UTranslatedString("This disk is read only.")                                            },
    {kDiskFullError,     UTranslatedString("This disk is full.")                                                 },
    {kDiskDefectError,   UTranslatedString("A reading/writing error occurred. This disk is not working normaly.")},
    {kNotPermittedError, UTranslatedString("This operation is not allowed.")                                     },
    {kNameError,         UTranslatedString("This name is too long.")                                             },
};
constexpr UTranslatedString kUnexpected("An unexpected error occurred. The system's description is: ");

constinit std::atomic<bool> showsErrors{false};
}  // namespace

thread_local int32_t QuietErrors::depth = 0;

bool told(bool done) {
    if (done || QuietErrors::stand() || !showsErrors || !gStorageHooks.showError)
        return done;
    const int32_t code = errno;
    FString text;
    FNFileSystem::getErrorMessage(code, text);
    gStorageHooks.showError(text);
    errno = code;
    return false;
}

void FNFileSystem::getErrorMessage(int32_t code, FString& text) {
    const auto row = std::ranges::find(kMessages, fromPlatformErrorCode(code), &MessageRow::code);
    if (row != std::end(kMessages)) {
        text = row->text.text();
        return;
    }
    char buffer[256];
    FString description;
    description.fromUTF8(::strerror_r(code, buffer, sizeof buffer));
    text = kUnexpected.text();
    text += description;
}

int32_t FNFileSystem::fromPlatformErrorCode(int32_t code) {
    const auto row = std::ranges::find(kCodes, code, &CodeRow::system);
    return row != std::end(kCodes) ? row->code : code;
}

bool FNFileSystem::showPlatformErrors(bool state) {
    return showsErrors.exchange(state);
}

}  // namespace Tessarine
