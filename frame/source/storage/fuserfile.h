#pragma once
#include "storage/fasidefile.h"
#include "storage/ffilesystem.h"

/** Named archives in the user's folder, whatever their format. Main thread. */

namespace Tessarine {

/** The path of a named archive; empty when the folder isn't known, or the name isn't one of a file in it. */
FNPath userFilePath(const char* name, const FFileType& type, int32_t folder, bool create);
/** The same in the user's folder, to be written. ask: where there is a file the user is asked, and it is kept as "name_old";
    the path is empty when the user refuses, or it can't be kept. */
FNPath createUserFile(const char* name, const FFileType& type, bool ask);
/** For reading, in the user's folder and then in the one that all users share. Null: there is none. Its file system ends it. */
FStream* openUserFile(const char* name, const FFileType& type);
bool userFileExists(const char* name, const FFileType& type);
bool removeUserFile(const char* name, const FFileType& type);
/** False when there is one of the new name. */
bool renameUserFile(const char* name, const char* newName, const FFileType& type);
/** From one type to the other, whole or not at all. */
bool copyUserFile(const char* name, const FFileType& from, const FFileType& to);

/** success: all is in the file aside, which takes the place of the old one. Otherwise that stays. */
inline bool finishXmlArchiveWrite(bool success, FAsideFile& file) {
    return success && file.commit();
}

/** Writes a user file by a function that gets the stream: whole, or the old one stays. */
template <class Write>
bool writeUserFile(const FNPath& path, Write write) {
    if (path.isEmpty())
        return false;
    FAsideFile file(gFileSystem, path);
    return file.getStream() && finishXmlArchiveWrite(write(*file.getStream()), file);
}

/** Reads one by a function; false when there is none. */
template <class Read>
bool readUserFile(const char* name, const FFileType& type, Read read) {
    FStream* stream = openUserFile(name, type);
    if (!stream)
        return false;
    const bool good = read(*stream);
    gFileSystem->closeFile(stream);
    return good;
}

}  // namespace Tessarine
