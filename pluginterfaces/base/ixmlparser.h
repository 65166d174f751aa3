#pragma once
#include "pluginterfaces/base/funknown.h"

/** Reading XML by events. All texts are UTF-8 and belong to the parser: they are gone when the call returns. One
    thread. */

namespace Tessarine {
class IBStream;
class INewXmlHandler;
class IStringResult;

/** The reader. bool results: true for success. */
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

}  // namespace Tessarine
