#pragma once
#include "base/source/fbuffer.h"
#include "pluginterfaces/base/funknown.h"
#include <array>
#include <cstddef>

namespace Tessarine {

/** A named character of XML text. */
struct XmlEntity8 {
    uint8_t code;
    const char* name;
    bool onOutput;  // written by name; all are read by name
};
struct XmlEntity16 {
    tchar code;
    const tchar* name;
    bool onOutput;
};

/** The entities of XML itself. */
extern const std::array<XmlEntity8, 5> gUTF8EntityTable8;
extern const std::array<XmlEntity16, 5> gEntityTable16;

/** The entities of 8-bit text, in the same order for both alphabets. A code of FF in the Mac table stands for "not in
    this alphabet". A lookup takes the first match, and files rely on that: the doubles stay. */
constexpr int32_t kNumEntities8 = 130;
extern const std::array<XmlEntity8, kNumEntities8> gEntityTable8Win;
extern const std::array<XmlEntity8, kNumEntities8> gEntityTable8Mac;

/** By byte: the row of gEntityTable8Mac to write instead, or null. */
extern const std::array<const XmlEntity8*, 256> gAsciiEncodeTable;

/** Appends text in UTF-8, without a terminator. false: not convertible; nothing is appended. */
bool appendUtf8(Buffer& target, const tchar* text, size_t length);

/** The escaping of text and attribute values that all of the system's XML goes through. */
class FXmlWriter {
public:
    /** Appends text with entities in UTF-8, without a terminator. false: null, or not convertible; nothing is
        appended. */
    static bool encodeString(Buffer& target, const tchar* text);
    /** Appends 8-bit text with entities. With utf8 only markup is escaped. Otherwise all of gAsciiEncodeTable is, by
        names that other XML readers don't know, and what else isn't ASCII goes by number. false: null. */
    static bool encodeString(Buffer& target, const char* text, bool utf8);
};

}  // namespace Tessarine
