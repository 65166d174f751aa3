#include "fobjectgraph.h"
#include "fuserfile.h"
#include "storage/fxmlarchive.h"

namespace Tessarine {

bool FXmlArchive::saveAttributes(const char* name, const char* rootTag, FAttributes& attributes) {
    return writeUserFile(createUserFile(name, fileTypeNormal, false), [&](FStream& stream) {
        return FXmlArchive(&stream, true).saveAttributes(rootTag, attributes);
    });
}

bool FXmlArchive::loadAttributes(const char* name, const char* rootTag, FAttributes& attributes) {
    return readUserFile(name, fileTypeNormal, [&](FStream& stream) {
        return FXmlArchive(&stream, false).loadAttributes(rootTag, attributes);
    });
}

bool FXmlArchive::storeObject(const char* name, const char* rootTag, const CmObject* object, bool ask) {
    const OPtr<FAttributes> attributes(new FAttributes);
    if (!object || !storeObjectIn(*attributes, *object))
        return false;
    return writeUserFile(createUserFile(name, fileTypeNormal, ask), [&](FStream& stream) {
        return FXmlArchive(&stream, true).saveAttributes(rootTag, *attributes);
    });
}

bool FXmlArchive::restoreObject(const char* name, const char* rootTag, CmObject* object) {
    return readUserFile(name, fileTypeNormal, [&](FStream& stream) { return restoreObject(&stream, rootTag, object); });
}

bool FXmlArchive::restoreObject(FStream* stream, const char* rootTag, CmObject* object) {
    const OPtr<FAttributes> attributes(new FAttributes);
    FXmlArchive archive(stream, false);
    return stream && object && archive.loadAttributes(rootTag, *attributes) && archive.isWhole() &&
           object->restoreAttributes(*attributes);
}

bool FXmlArchive::objectArchiveExists(const char* name) {
    return userFileExists(name, fileTypeNormal);
}

bool FXmlArchive::removeObjectArchive(const char* name) {
    return removeUserFile(name, fileTypeNormal);
}

bool FXmlArchive::renameObjectArchive(const char* name, const char* newName) {
    return renameUserFile(name, newName, fileTypeNormal);
}

bool FXmlArchive::backupObjectArchive(const char* name) {
    return copyUserFile(name, fileTypeNormal, fileTypeBackup);
}

bool FXmlArchive::unbackupObjectArchive(const char* name) {
    return copyUserFile(name, fileTypeBackup, fileTypeNormal);
}

FStream* FXmlArchive::openUserFile(const char* name) {
    return Tessarine::openUserFile(name, fileTypeNormal);
}

}  // namespace Tessarine
