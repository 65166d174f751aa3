#pragma once
#include "base/source/fstring.h"
#include "collect/cmarray.h"
#include "collect/cmbuffer.h"
#include "collect/cmqueue.h"
#include "storage/ffiletype.h"
#include "storage/fxmlwriter.h"

namespace Tessarine {

/** The lenient event parser that skins and object archives are read with. It is no conforming one, and its ways at the edges
    are part of these formats:

    Text      begins at the first byte that is no blank, line end or tag. The first 4096 bytes of it end only at "</" and the
              name of the innermost open tag, so that tags of other names in there are text; without an open tag at any '<'.
              What follows ends at a '<' in front of '!', '/', '?', '_' or a letter. gotData gets it in pieces of up to 4096
              bytes, and a last one of size 0.
    End tags  "</ab>" closes "a": only the open tag's length is compared.
    Ends      a text that stops between tags is complete, whatever is still open: who is strict looks at tagStack. A NUL
              byte counts as the end.
    Limits    names of attributes have up to 47 bytes, their values 2047 before entities are decoded; a longer one ends the
              reading. So do tokens over 4096 bytes, and the 257th process() inside one another. See kLongValues.
    Dropped   CDATA sections, and of comments each '<' and '-'.
    Entities  named ones give a byte of Mac Roman, numbers give their low byte; unknown ones stay as they are. Texts aren't
              converted: `encoding` says what the declaration said, exactly "utf-8" or nothing.

    Owns      a reference on its stream; names, attributes and texts, which a handler borrows for the call.
    Threads   one at a time. */
class FXmlParser {
public:
    enum ErrorCode : int32_t {
        kErrorNone,
        kErrorMalformed,
        kErrorRefused,
        kErrorEndOfFile,
        kErrorAttributes,
        kErrorUnexpectedTag,
    };
    enum Options : int32_t {
        kParseComments = 1,        // tell them
        kBackslashEscape = 2,      // of the delimiter of an attribute's value; the backslash stays
        kSplitNestedComments = 4,  // an inner "<!--" begins another comment
        kKeepSpaces = 8,           // blanks and tabs between tags are text
        kStopAfterMainTag = 16,
        kWidenAttributes = 32,  // values that aren't ASCII become 16-bit text
        kWindowsEntities = 64,  // instead of those of the Mac
        kLongValues = 128,      // attributes have no limit but memory, their names apart
    };

    /** Unbuffered, it reads no byte more than it needs. */
    explicit FXmlParser(FStream* stream = nullptr, bool buffered = true);
    virtual ~FXmlParser();
    FXmlParser(const FXmlParser&) = delete;
    FXmlParser& operator=(const FXmlParser&) = delete;

    /** attributes: FXmlAttribute objects, which are used again after the call unless somebody holds a reference. false ends
        the reading. For a tag that isn't empty process() or skip() may be called here, and return where it closes. */
    virtual bool startTag(const char* name, CmContainer& attributes, bool empty, void* userData) = 0;
    virtual bool endTag(const char* /*name*/, void* /*userData*/) { return true; }
    /** size 0: the text is complete. */
    virtual void gotData(void* /*data*/, uint32_t /*size*/, void* /*userData*/) {}
    /** In pieces of 4094 bytes; the last one tells so, unless there is nothing in it. */
    virtual void gotComment(const char* /*text*/, void* /*userData*/, bool /*last*/) {}

    /** Reads to the end of the stream; inside startTag to the end of that element. An error from before an inner call stays
        when the inner one had none. */
    bool process(void* userData);
    /** Inside startTag, of a tag that isn't empty: reads to its end and tells only start tags. */
    bool skip();
    /** Another text, from where the stream stands. */
    void setStream(FStream* newStream);

    /** Empty without an error. */
    const tchar* errorMessage() const;
    void getErrorContext(FString& text) const;
    /** The innermost open tag's name; an empty text without one. */
    const FString& getCurrentStartTag() const;
    int64_t getStreamPosition() const;

    /** 0: the end, or a NUL byte. */
    char nextChar() { return cursor < buffer.getFillSize() || refill() ? buffer.data()[cursor++] : char(0); }
    char peekChar();
    /** Goes back by one byte, unless it was 0. */
    void ungetChar(char c);

    /** Decodes references in place, once. *highByte becomes true for a byte from 80 up among what was decoded. */
    static void removeEntities(char* text, bool* highByte, bool windows);

protected:
    enum Token : int32_t {
        kTokenEnd = 0,
        kTokenError = 1,
        kTokenStartTag = 2,
        kTokenEndTag = 3,
        kTokenEmptyClose = 4,
        kTokenAttribute = 5,
        kTokenClose = 6,
        kTokenData = 7,
        kTokenNewLine = 8,
        kTokenBlank = 9,
        kTokenPIStart = 10,
        kTokenPIEnd = 11,
        kTokenComment = 12,
        kTokenCData = 14,
        kTokenDocType = 16,
    };
    static constexpr int32_t kTokenSize = 4096;

    /** buffer has room for *size bytes and a terminator; *size becomes the token's length. */
    Token getNextToken(char* buffer, int64_t* size, bool inTag);

    IPtr<FStream> stream;    // counted
    int32_t lineNumber = 0;  // from 0
    bool skipping = false;
    bool stopped = false;  // set by derived classes: ends the reading at once, without an error
    uint32_t cursor = 0;   // in buffer
    char peekedChar = 0;   // follows the buffer; 0: none
    int32_t errorCode = kErrorNone;
    CmBuffer buffer;
    CmStack tagStack;       // of CmString, owned: the open tags
    CmArray attributePool;  // of FXmlAttribute: spare ones, each a reference of the parser's
    int32_t options = 0;
    uint32_t encoding = 0;  // of the declaration: 0 or 65001

private:
    struct Text;
    struct LineEnds;
    class PieceWriter;

    bool refill();
    const char* lookAhead(uint32_t count);
    void stepBack(uint32_t count);
    bool passWhile(uint16_t classes);
    bool takeUntil(Text& text, uint16_t classes);
    void passBytes(int32_t count);
    void passLineEnd(char c);
    Token tokenOf(Text& text, bool inTag);
    Token markupToken(Text& text);
    Token endTagToken(Text& text);
    Token declarationToken();
    Token attributeToken(Text& text);
    void readData(Text& text, bool first);
    bool endsData(bool first);
    bool looksAtEndTag();

    void handleToken(Token token, Text& text, void* userData);
    void handleStartTag(std::string_view name, void* userData);
    void pushTag(std::string_view name);
    bool readAttributes(CmArray& attributes, bool& empty);
    bool takeAttribute(CmArray& attributes);
    bool tokenToAttribute(std::string_view token, CmArray& attributes);
    void addAttribute(CmArray& attributes, std::string_view name, std::string_view value, bool references);
    void returnToPool(CmArray& attributes);
    void handleEndTag(std::string_view token, void* userData);
    void handleData(Text& text, void* userData);
    void handlePI();
    void readComment(void* userData, bool tell);
    void skipCData();
    void skipDocType();
    bool goesOn() const { return errorCode == kErrorNone && !stopped; }

    OPtr<CmArray> spareList;  // of attributes, empty
    CmArray spareNames;       // of CmString, the same
    int32_t nesting = 0;      // process() calls inside one another
};

/** FXmlParser as a component. */
class FPlugXmlParser : public FXmlParser, public IXmlParser2 {
public:
    FPlugXmlParser() = default;

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;
    int32_t initialize(IBStream* source, IXmlParserDef* definition) override;
    int32_t process(void* userData) override;
    int32_t stop(int32_t mode) override;
    int32_t getCurrentStartTag(const char** name) override;
    int32_t keepSpaces(bool state) override;
    int32_t stopAfterMainTag() override;
    int32_t repositionStream() override;

    /** Refuses more than 50 attributes. */
    bool startTag(const char* name, CmContainer& attributes, bool empty, void* userData) override;
    bool endTag(const char* name, void* userData) override;
    void gotData(void* data, uint32_t size, void* userData) override;

private:
    ~FPlugXmlParser() override = default;

    IXmlParserDef* definition = nullptr;  // borrowed
    int32_t refCount = 1;
};

/** Makes raw text of an XML file ready to be shown: no white space in front of its lines, one sort of line end.

    Sizes     the owner says how large a text may get; of a longer one the beginning is taken. */
class FXmlTextFormatter {
public:
    enum Flags : int32_t { kLineBreakToBlank = 1, kDecodeEntities = 2 };

    /** The bytes written, never more than size; no terminator. */
    static int32_t format(const void* data, int32_t size, int32_t flags, char* text);
};

template <int32_t Capacity>
struct FXmlTextFormat : FXmlTextFormatter {
    explicit FXmlTextFormat(int32_t flags) : flags(flags) {}
    int32_t format(const void* data, int32_t size) {
        return FXmlTextFormatter::format(data, size < Capacity ? size : Capacity, flags, text);
    }

    int32_t flags;
    char text[Capacity];
};

extern const FFileType xmlFileType;

}  // namespace Tessarine
