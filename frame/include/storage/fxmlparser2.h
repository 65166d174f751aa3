#pragma once
#include "base/source/cmobject.h"
#include "collect/cmarray.h"
#include "pluginterfaces/base/ixmlparser.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fxmlwriter.h"
#include <vector>

struct XML_ParserStruct;

namespace Tessarine {
class IBStream;

/** The event reader, on expat. Reads a whole document from a stream; a fault ends it, and what was told before it
    stays told.

    Owns      a reference on its handler.
    Threads   one at a time. */
class FXmlParser2 : public CmObject, public INewXmlParser {
public:
    /** Both may be null; without an encoding the document says its own. */
    explicit FXmlParser2(INewXmlHandler* handler = nullptr, const char* encoding = nullptr);
    ~FXmlParser2() override;
    FXmlParser2(const FXmlParser2&) = delete;
    FXmlParser2& operator=(const FXmlParser2&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    void setHandler(INewXmlHandler* handler) override;
    bool process(IBStream* stream) override;
    bool stop() override;
    bool suspend() override;
    bool resume(IBStream* stream) override;
    bool reset(const char* encoding) override;
    bool setEncoding(const char* encoding) override;
    bool getErrorContext(IStringResult& text) override;

    DECLARE_CLASS(FXmlParser2, CmObject)
    FORWARD_REFCOUNT(CmObject)

private:
    void installHandlers();
    template <class Read>
    bool whileReading(Read read);
    bool readAll(IBStream* stream);
    bool leaveRestIn(IBStream* stream);
    static INewXmlHandler* handlerOf(void* userData);
    static void gStartElementHandler(void* userData, const char* name, const char** attributes);
    static void gEndElementHandler(void* userData, const char* name);
    static void gCharacterDataHandler(void* userData, const char* data, int length);
    static void gCommentHandler(void* userData, const char* text);

    XML_ParserStruct* parser;                          // owned; null when there was no memory for it
    IPtr<INewXmlHandler> handler;                      // counted
    std::vector<IPtr<INewXmlHandler>> formerHandlers;  // one of them may be in the middle of a call
    bool reading = false;                              // handlers are called
};

/** The base for handlers: hears everything and does nothing, and keeps a stack of what the open tags stand for. */
class XmlHandler : public CmObject, public INewXmlHandler {
public:
    XmlHandler() { data._ownsObjects = CmContainer::kTakesOver; }
    XmlHandler(const XmlHandler&) = delete;
    XmlHandler& operator=(const XmlHandler&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    void startTag(INewXmlParser* /*parser*/, const char* /*name*/, const char** /*attributes*/) override {}
    void endTag(INewXmlParser* /*parser*/, const char* /*name*/) override {}
    void charData(INewXmlParser* /*parser*/, const char* /*data*/, int32_t /*length*/) override {}
    void comment(INewXmlParser* /*parser*/, const char* /*text*/) override {}

    DECLARE_CLASS(XmlHandler, CmObject)
    FORWARD_REFCOUNT(CmObject)

protected:
    /** Takes the reference over. */
    bool pushData(CmObject* object) { return data.insertAt(object, 0); }
    /** Releases it. */
    bool popData() { return data.removeAt(0); }
    /** Null when empty. */
    CmObject* peekData() const { return data.at(0); }

private:
    CmArray data;  // owned, the latest first
};

/** Looks into the attributes of a startTag. */
struct XmlAttributeAccessor {
    explicit XmlAttributeAccessor(const char** attributes);
    /** The first of that name; null on a miss. Belongs to the parser. */
    const char* lookupValue(const char* name) const;

    const char** attributes;  // borrowed: name, value, ..., null
    int32_t count = 0;        // pairs
};

enum XmlStartTagType : int32_t { kXmlStartTagOpen, kXmlStartTagEmpty };

/** Writes XML line by line: a tag a line, tabs for the depth, CR LF at the end. A line collects and goes out with one
    call of the stream.

    Owns      a reference on the stream.
    Results   true: converted, and taken by the stream. */
class XmlWriter2 {
public:
    explicit XmlWriter2(IBStream* stream);
    XmlWriter2(const XmlWriter2&) = delete;
    XmlWriter2& operator=(const XmlWriter2&) = delete;

    /** The declaration; with utf8 a byte order mark before it and the encoding in it. */
    bool writeIntro(bool utf8);

    bool writeStartTag(const char* name, XmlStartTagType type);
    /** The same in steps: begin, attributes, finish. Names aren't escaped. */
    bool beginStartTag(const char* name);
    /** 8-bit text, escaped with the entities of FXmlWriter::encodeString(..., false). Null is written as empty. */
    bool appendAttribute8(const char* name, const char* value);
    bool appendAttribute16(const char* name, const tchar* value);
    bool appendIntAttribute(const char* name, int64_t value);
    bool appendUIntAttribute(const char* name, uint64_t value);
    /** Up to 50 digits, so that the very same number is read again. */
    bool appendFloatAttribute(const char* name, double value);
    bool finishStartTag(XmlStartTagType type);
    /** With endLine line breaks begin again behind this tag. */
    bool writeEndTag(const char* name, bool endLine);

    /** Text between tags: written at once, without indentation and line end. */
    bool writeString8(const char* text);
    bool writeString16(const tchar* text);
    bool writeInt(int64_t value);
    bool writeFloat(double value);

    /** A comment line of its own, not indented and not escaped. */
    bool writeComment8(const char* text);
    bool writeComment16(const tchar* text);

    /** Adds to the line under construction. */
    bool appendString16(const tchar* text, bool escape);
    /** Ends the line under construction, if there is anything in it. */
    bool writeLine(int32_t indent);
    bool newLine();

    void setNoLineBreaks(bool state) { noLineBreaks = state; }
    void setUseBlanks(bool state) { useBlanks = state; }

private:
    void append(const char* text) { line.append(text ? text : ""); }
    bool writeText();
    bool finishAttribute(bool converted);
    bool appendPlainAttribute(const char* name, const char* value);
    void indentLine(int32_t indent);

    IPtr<IBStream> stream;      // counted; may be null, then nothing can be written
    int32_t depth = 0;          // open tags
    XmlLine line;               // under construction
    bool noLineBreaks = false;  // everything on one line
    bool useBlanks = false;     // three of them instead of a tab
};

}  // namespace Tessarine
