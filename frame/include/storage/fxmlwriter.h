#pragma once
#include "base/source/fbuffer.h"
#include "collect/cmqueue.h"
#include "collect/cmstring.h"
#include "pluginterfaces/base/ixmlparser.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

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

/** Appends text in UTF-8; its terminator stands behind the fill size. false: no memory; nothing is appended. */
bool appendUtf8(Buffer& target, const tchar* text, size_t length);

/** A line under construction: a buffer that most appending to needs no call for. */
class XmlLine : public Buffer {
public:
    void append(std::string_view text) {
        const auto count = uint32_t(text.size());
        if (count == 0 || (count > getFree() && !grow(fillSize + count)))
            return;
        std::memcpy(buffer + fillSize, text.data(), count);
        fillSize += count;
    }
    /** ` name="`. */
    void beginAttribute(const char* name) {
        append(" ");
        append(name ? name : "");
        append("=\"");
    }
};

/** A text that keeps its block for the next one: FString or CmString with an assignment that mostly allocates nothing. */
template <class Text>
class XmlPooledText : public Text {
public:
    using Text::operator=;
    void setBytes(const char* bytes, uint32_t count);
};
extern template class XmlPooledText<FString>;
extern template class XmlPooledText<CmString>;

/** An attribute as FXmlParser tells and FXmlWriter takes it. */
class FXmlAttribute : public CmObject {
public:
    DECLARE_CLASS(FXmlAttribute, CmObject)
    FXmlAttribute() = default;
    FXmlAttribute(const char* attributeName, const char* attributeValue) {
        name = attributeName;
        value = attributeValue;
    }
    /** Somebody keeps it beside its maker. */
    bool isShared() const { return refCount > 1; }

    XmlPooledText<FString> name, value;
};

/** Writes XML line by line: a tag a line, tabs for the depth, CR LF at the end. And owner of the escaping that text and
    attribute values of all of the system's XML go through.

    Owns      a reference on the stream; may be without one, then nothing can be written.
    Results   of IXmlWriter's operations and their like: kResultOk; kResultFalse when nothing was written or the stream
              didn't take it all. */
class FXmlWriter : public CmObject, public IXmlWriter {
public:
    enum Flags : int32_t { kOmitEmptyAttributes = 1, kEncodeAttributes = 2 };

    explicit FXmlWriter(FStream* target = nullptr, int32_t flags = kEncodeAttributes);
    FXmlWriter(const FXmlWriter&) = delete;
    FXmlWriter& operator=(const FXmlWriter&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    /** A stream that is no FStream of this copy of the framework leaves the writer without one. */
    int32_t initialize(IBStream* target) override;
    int32_t writeStartTag(const char* name, int32_t count, const char** names, const char** values,
                          bool empty) override;
    /** kResultFalse, and nothing is written, for another name than that of the innermost open tag. */
    int32_t writeEndTag(const char* name) override;
    /** Text up to its terminator, as it is; each line goes on a line of its own, empty ones are left out. */
    int32_t writeData(void* data, uint32_t size) override;

    /** attributes: FXmlAttribute objects. */
    int32_t writeStartTag(const char* name, CmContainer& attributes, bool empty);
    /** Trimmed, and not escaped; nothing for what is blank. */
    int32_t writeComment(const char* text);
    /** Nothing for an empty text. */
    bool outputLine(const char* text, int32_t depth);
    bool newLine();

    /** Appends text with entities in UTF-8; its terminator stands behind the fill size. false: null, or no memory;
        nothing is appended. */
    static bool encodeString(Buffer& target, const tchar* text);
    /** Appends 8-bit text with entities. With utf8 only markup is escaped. Otherwise all of gAsciiEncodeTable is, by
        names that other XML readers don't know: a file with `&dollar;` in it ends there for FXmlParser2. What else isn't
        ASCII goes by number, byte for byte. false: null. */
    static bool encodeString(Buffer& target, const char* text, bool utf8);

    DECLARE_CLASS(FXmlWriter, CmObject)
    FORWARD_REFCOUNT(CmObject)

private:
    void beginLine(int32_t depth);
    bool endLine();
    bool outputText(std::string_view text, int32_t depth);
    void appendAttribute(const char* name, const char* value);
    int32_t finishStartTag(const char* name, bool empty);

    IPtr<FStream> stream;  // counted
    CmStack tagStack;      // of CmString, owned: the open tags
    int32_t flags;
    XmlLine line;  // under construction
};

}  // namespace Tessarine
