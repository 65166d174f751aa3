#pragma once
#include "collect/cmhashdictionary.h"
#include "encryption/fencryptionkey.h"

namespace Tessarine {
class FNPath;

/** Keys by name. A key file is a text of digits with the ending "key"; its name without that is the key's. */
class FEncryptionKeyCollection : public CmObject {
public:
    FEncryptionKeyCollection();
    FEncryptionKeyCollection(const FEncryptionKeyCollection&) = delete;
    FEncryptionKeyCollection& operator=(const FEncryptionKeyCollection&) = delete;

    /** Borrowed until the key is set anew; null: there is none. */
    const FEncryptionKey* lookupKey(const tchar* name) const;
    bool setKey(const tchar* name, const FEncryptionKey& key);
    /** Adds all keys of a folder, in place of those of the same name; files that hold no key are passed over. False: no such
        folder. */
    bool scanFolder(FNPath* folder);
    /** The folder "Keys" of all users, and that of the user. Main thread. */
    void scanSystemPreferences();
    int32_t total() const { return keys.total(); }

    DECLARE_CLASS(FEncryptionKeyCollection, CmObject)

private:
    CmHashDictionary keys;  // CmString to FEncryptionKey, owned
};

}  // namespace Tessarine
