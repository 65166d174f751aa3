#pragma once
#include "pluginterfaces/base/funknown.h"

/** Reading XML by events, and writing it. Texts belong to the parser: they are gone when the call returns. One thread.

    INewXmlParser  conforming, UTF-8.
    IXmlParser     lenient and byte by byte: what it takes for a tag, text or comment is told at FXmlParser. */

namespace Tessarine {
class IBStream;
class INewXmlHandler;
class IStringResult;

/** The reader. bool results: true for success. Handlers can't begin anew: process(), resume() and reset() are refused while
    they are called. */
class INewXmlParser : public FUnknown {
public:
    /** Shares the handler; null takes it away. */
    virtual void setHandler(INewXmlHandler* handler) = 0;
    /** Reads to the end of the document or to a stop; false: not well formed. What follows the document is left in the
        stream. */
    virtual bool process(IBStream* stream) = 0;
    /** For handlers: ends the reading for good. */
    virtual bool stop() = 0;
    /** For handlers: process() returns true, resume() goes on. Always true. */
    virtual bool suspend() = 0;
    virtual bool resume(IBStream* stream) = 0;
    /** Ready for another document; encoding may be null. */
    virtual bool reset(const char* encoding) = 0;
    /** Refused while a document is being read. */
    virtual bool setEncoding(const char* encoding) = 0;
    /** Message and line of the last error; false, and no text, without one. */
    virtual bool getErrorContext(IStringResult& text) = 0;

    DECLARE_INTERFACE(INewXmlParser)
};

/** Hears what the reader finds, in the order of the document. */
class INewXmlHandler : public FUnknown {
public:
    /** attributes: name, value, name, value, ..., null. */
    virtual void startTag(INewXmlParser* parser, const char* name, const char** attributes) = 0;
    virtual void endTag(INewXmlParser* parser, const char* name) = 0;
    /** Text comes in pieces of length bytes, without a terminator. */
    virtual void charData(INewXmlParser* parser, const char* data, int32_t length) = 0;
    virtual void comment(INewXmlParser* parser, const char* text) = 0;

    DECLARE_INTERFACE(INewXmlHandler)
};

class IXmlParser;

/** What a user of IXmlParser wants to hear; not counted. names and values: count texts of 8 bits each. false ends the
    reading. */
class IXmlParserDef {
public:
    virtual bool startTag(IXmlParser* parser, const char* name, int32_t count, const char** names, const char** values,
                          bool empty, void* userData) = 0;
    virtual bool endTag(IXmlParser* parser, const char* name, void* userData) = 0;
    /** size 0: the text is complete. */
    virtual void gotData(IXmlParser* parser, void* data, uint32_t size, void* userData) = 0;

protected:
    ~IXmlParserDef() = default;
};

/** Results: 0 done; 1 failed, or initialized before; 2 not a stream of this copy of the framework; 5 not initialized. */
class IXmlParser : public FUnknown {
public:
    enum Result : int32_t { kDone = 0, kFailed = 1, kBadStream = 2, kNotInitialized = 5 };
    enum StopMode : int32_t { kStopAsMalformed = 0, kStopAsRefused = 1 };

    /** Once. The definition is borrowed. */
    virtual int32_t initialize(IBStream* stream, IXmlParserDef* definition) = 0;
    /** Reads to the end; from a startTag, to the end of the element that it told. */
    virtual int32_t process(void* userData) = 0;
    /** Ends the reading with an error. */
    virtual int32_t stop(int32_t mode) = 0;
    /** The name of the innermost open tag; empty without one. */
    virtual int32_t getCurrentStartTag(const char** name) = 0;
    /** Blanks and tabs between tags are text. */
    virtual int32_t keepSpaces(bool state) = 0;

    DECLARE_INTERFACE(IXmlParser)
};

class IXmlParser2 : public IXmlParser {
public:
    /** process() ends with the root element, whatever follows. */
    virtual int32_t stopAfterMainTag() = 0;
    /** Puts the stream behind what was read of it. */
    virtual int32_t repositionStream() = 0;

    DECLARE_INTERFACE(IXmlParser2)
};

/** The lines of an XML text. Results: 0 done; 1 not done, or there was nothing to do; 2 not a stream of this copy of the
    framework. */
class IXmlWriter : public FUnknown {
public:
    virtual int32_t initialize(IBStream* stream) = 0;
    virtual int32_t writeStartTag(const char* name, int32_t count, const char** names, const char** values,
                                  bool empty) = 0;
    /** Refused unless it is the innermost open one. */
    virtual int32_t writeEndTag(const char* name) = 0;
    /** Text with a terminator, not escaped, each line on a line of its own; size only says whether there is any. */
    virtual int32_t writeData(void* data, uint32_t size) = 0;

    DECLARE_INTERFACE(IXmlWriter)
};

}  // namespace Tessarine
