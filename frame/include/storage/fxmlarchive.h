#pragma once
#include "collect/cmbuffer.h"
#include "storage/fattributearchive.h"
#include "storage/ffiletype.h"
#include "storage/fpath.h"

namespace Tessarine {

/** Attributes as XML, for root tag T; lines end with a carriage return alone, each level is three blanks:

      <?xml version="1.0" encoding="utf-8"?>
      <T>
         <rootObjects>
            <root name="N" ID="140230"/>            an object
            <root name="N"> attributes </root>      a bag
         </rootObjects>
                                                    (an empty line)
         <obj class="C" ID="140230"> attributes </obj>
      </T>

      integer   <int name="K" value="1"/>
      float     <float name="K" value="0.5"/>       with up to 50 digits, so that it comes back exactly
      text      <string name="K" value="..."/>      with wide="true" where it isn't ASCII or was 16-bit text
      bag       <member name="K"> attributes </member>
      object    <obj class="C" name="K" ID="1"> attributes </obj>, and where it has been written already <obj name="K" ID="1"/>
      bytes     <bin name="K"> 64 digits a line, a tab for each level </bin>
      lists     <list name="K" type="int"> <item value="1"/> </list>; float and string alike; of type obj with objects, or
                <item value="1"/> with the id of one; of type list with <item> attributes </item>

    Order     of the objects of the roots only those follow that haven't been written in place, where they were met first.
    Limits    those of FXmlParser, but keys and texts may be of any length. Text that was cut off between two tags is read as far as
              it goes: see isWhole.
    Unknown   elements are passed over, with what stands in them. */
class FXmlArchive : public FAttributeArchiveBase {
public:
    FXmlArchive(FStream* stream, bool writing);

    /** All roots. */
    bool save(const char* rootTag);
    /** className: what all object roots have to be; null: anything. withoutObjects: the reading ends where the objects begin, so
        that only bags come of it. False also without the root tag. */
    bool load(const char* rootTag, const char* className = nullptr, bool withoutObjects = false);
    /** One bag alone, in the root tag. What was in a loaded bag goes, unless loading fails. */
    bool saveAttributes(const char* rootTag, const FAttributes& attributes);
    bool loadAttributes(const char* rootTag, FAttributes& attributes);
    /** Tries how it would be with so many bags around this one, and writes nothing. */
    static bool canSave(const FAttributes& attributes, int32_t depth);
    /** The last loading came to the end tag of the root. */
    bool isWhole() const { return whole; }

    // User files: in the user's folder, by name and fileTypeNormal; whole or not at all. What is read may also lie in the folder
    // that all users share. Names are mere names, without "/". Main thread.
    static bool saveAttributes(const char* name, const char* rootTag, FAttributes& attributes);
    static bool loadAttributes(const char* name, const char* rootTag, FAttributes& attributes);
    /** What the object stores of itself. ask: the user is asked before a file is replaced, and the old one is kept as
        "name_old". */
    static bool storeObject(const char* name, const char* rootTag, const CmObject* object, bool ask = false);
    /** The object hears only of an archive that is whole. */
    static bool restoreObject(const char* name, const char* rootTag, CmObject* object);
    static bool restoreObject(FStream* stream, const char* rootTag, CmObject* object);
    /** These look in the user's folder only. */
    static bool objectArchiveExists(const char* name);
    static bool removeObjectArchive(const char* name);
    static bool renameObjectArchive(const char* name, const char* newName);
    /** Copies the file to fileTypeBackup, and back. */
    static bool backupObjectArchive(const char* name);
    static bool unbackupObjectArchive(const char* name);
    /** For reading; to be closed by gFileSystem. Null: there is none. */
    static FStream* openUserFile(const char* name);

    static const FFileType fileTypeNormal, fileTypeBackup;

private:
    bool whole = false;
};

/** Buffers for the elements that are being written. */
extern CmBufferPool gXmlArchiveBuffers;

}  // namespace Tessarine
