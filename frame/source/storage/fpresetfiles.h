#pragma once
#include "storage/fpreset.h"
#include "storage/fxmlarchive.h"

/** What the files of presets have in common. */

namespace Tessarine {

constexpr uint32_t kPresetSuffix = 16;  // bytes of a file's name that are kept for a number and the extension

/** A name for a file or a folder: what it can't hold is replaced, and it is cut so that so many bytes are left. false: it
    can't be made one. */
bool presetFileName(const tchar* text, uint32_t reserved, FString& name);
FNPath presetPath(const FNPath& folder, const ConstString& name, const FFileType& type);
/** Whole, or the old file stays. */
bool savePresetFile(const FNPath& path, const char* root, CmObject& object);
/** The object hears only of a file that is whole. */
bool loadPresetFile(FPath& path, const char* root, CmObject& object);

}  // namespace Tessarine
