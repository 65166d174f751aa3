#include "storage/fxmlparser2.h"
#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/base/istringresult.h"
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <expat.h>
#include <string>

namespace Tessarine {
namespace {
constexpr int32_t kReadSize = 32768;
static_assert(XML_MAJOR_VERSION > 2 || XML_MINOR_VERSION >= 4,
              "older ones let small files with entities grow without end");
constexpr XML_Error kLastErrorWithContext = XML_ERROR_RESERVED_NAMESPACE_URI;

/** By the face that the identifier stands for. */
FUnknown* createNewXmlParser() {
    INewXmlParser* face = new FXmlParser2;
    return face;
}

MetaClass newXmlParserClass(nullptr, createNewXmlParser, INewXmlParser::iid, nullptr);

int32_t readSome(IBStream* stream, void* buffer) {
    int32_t count = 0;
    const bool failed = !stream || stream->read(buffer, kReadSize, &count) != kResultOk;
    return failed ? 0 : std::clamp(count, 0, kReadSize);
}

/** The last piece is through, after which no other may come. */
bool isFinished(XML_Parser parser) {
    XML_ParsingStatus status;
    XML_GetParsingStatus(parser, &status);
    return status.parsing == XML_FINISHED;
}
}  // namespace

IMPLEMENT_CLASS(FXmlParser2, CmObject)
IMPLEMENT_CLASS(XmlHandler, CmObject)

FXmlParser2::FXmlParser2(INewXmlHandler* handler, const char* encoding)
    : parser(XML_ParserCreate(encoding)), handler(handler) {
    installHandlers();
}

FXmlParser2::~FXmlParser2() {
    XML_ParserFree(parser);
}

int32_t FXmlParser2::queryInterface(const char* iid, void** obj) {
    if (answerInterface<INewXmlParser>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

void FXmlParser2::setHandler(INewXmlHandler* newHandler) {
    if (reading)
        formerHandlers.push_back(handler);
    handler = newHandler;
}

bool FXmlParser2::process(IBStream* stream) {
    return whileReading([&] { return readAll(stream); });
}

template <class Read>
bool FXmlParser2::whileReading(Read read) {
    if (reading)
        return false;
    const IPtr<FXmlParser2> alive(this);  // a handler may let go of it
    reading = true;
    const bool succeeded = read();
    reading = false;
    formerHandlers.clear();
    return succeeded;
}

bool FXmlParser2::readAll(IBStream* stream) {
    for (;;) {
        void* buffer = XML_GetBuffer(parser, kReadSize);
        if (!buffer)
            return false;
        const int32_t count = readSome(stream, buffer);
        const XML_Status status = XML_ParseBuffer(parser, count, count == 0);
        if (status == XML_STATUS_ERROR)
            return leaveRestIn(stream);
        if (status == XML_STATUS_SUSPENDED || count == 0)
            return true;
    }
}

bool FXmlParser2::stop() {
    return XML_StopParser(parser, XML_FALSE) == XML_STATUS_OK;
}

bool FXmlParser2::suspend() {
    XML_StopParser(parser, XML_TRUE);
    return true;
}

bool FXmlParser2::resume(IBStream* stream) {
    return whileReading([&] {
        const XML_Status status = XML_ResumeParser(parser);
        return status == XML_STATUS_SUSPENDED || (status == XML_STATUS_OK && (isFinished(parser) || readAll(stream)));
    });
}

bool FXmlParser2::reset(const char* encoding) {
    if (reading)
        return false;
    const bool done = XML_ParserReset(parser, encoding) == XML_TRUE;
    installHandlers();
    return done;
}

bool FXmlParser2::setEncoding(const char* encoding) {
    return XML_SetEncoding(parser, encoding) == XML_STATUS_OK;
}

bool FXmlParser2::getErrorContext(IStringResult& text) {
    const XML_Error error = XML_GetErrorCode(parser);
    if (error <= XML_ERROR_NONE || error > kLastErrorWithContext)
        return false;
    const auto line = static_cast<long long>(XML_GetCurrentLineNumber(parser)) - (error == XML_ERROR_ABORTED);
    char message[256];
    std::snprintf(message, sizeof message, "Xml Error: %s \r\nLine: %lld", XML_ErrorString(error), line);
    text.setText(message);
    return true;
}

void FXmlParser2::installHandlers() {
    if (!parser)
        return;
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, gStartElementHandler, gEndElementHandler);
    XML_SetCharacterDataHandler(parser, gCharacterDataHandler);
    XML_SetCommentHandler(parser, gCommentHandler);
}

bool FXmlParser2::leaveRestIn(IBStream* stream) {
    if (XML_GetErrorCode(parser) != XML_ERROR_JUNK_AFTER_DOC_ELEMENT)
        return false;
    const int64_t index = XML_GetCurrentByteIndex(parser);  // right for a document that began with the stream
    if (index > 0 && stream)
        stream->seek(index, IBStream::kSeekSet, nullptr);
    return true;
}

INewXmlHandler* FXmlParser2::handlerOf(void* userData) {
    auto* self = static_cast<FXmlParser2*>(userData);
    return self ? self->handler.get() : nullptr;
}

void FXmlParser2::gStartElementHandler(void* userData, const char* name, const char** attributes) {
    if (INewXmlHandler* listener = handlerOf(userData))
        listener->startTag(static_cast<FXmlParser2*>(userData), name, attributes);
}

void FXmlParser2::gEndElementHandler(void* userData, const char* name) {
    if (INewXmlHandler* listener = handlerOf(userData))
        listener->endTag(static_cast<FXmlParser2*>(userData), name);
}

void FXmlParser2::gCharacterDataHandler(void* userData, const char* data, int length) {
    if (INewXmlHandler* listener = handlerOf(userData))
        listener->charData(static_cast<FXmlParser2*>(userData), data, length);
}

void FXmlParser2::gCommentHandler(void* userData, const char* text) {
    if (INewXmlHandler* listener = handlerOf(userData))
        listener->comment(static_cast<FXmlParser2*>(userData), text);
}

int32_t XmlHandler::queryInterface(const char* iid, void** obj) {
    if (answerInterface<INewXmlHandler>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

XmlAttributeAccessor::XmlAttributeAccessor(const char** attributes) : attributes(attributes) {
    int32_t pointers = 0;
    while (attributes && attributes[pointers])
        ++pointers;
    count = pointers / 2;
}

const char* XmlAttributeAccessor::lookupValue(const char* name) const {
    for (int32_t i = 0; i < count; ++i)
        if (std::strcmp(attributes[2 * i], name) == 0)
            return attributes[2 * i + 1];
    return nullptr;
}

namespace {
constexpr const char* kLineEnd = "\r\n";
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";
constexpr int32_t kFloatDigits = 50;

/** A number in the C locale. */
struct NumberText {
    template <class Number, class... Form>
    explicit NumberText(Number value, Form... form) {
        *std::to_chars(std::begin(text), std::end(text) - 1, value, form...).ptr = 0;
    }
    static NumberText ofFloat(double value) { return NumberText(value, std::chars_format::general, kFloatDigits); }

    char text[kFloatDigits + 30];  // sign, point, exponent, or the zeros of 0.0001
};
}  // namespace

XmlWriter2::XmlWriter2(IBStream* stream) : stream(stream) {}

bool XmlWriter2::writeIntro(bool utf8) {
    append(utf8 ? kByteOrderMark : "");
    append(utf8 ? R"(<?xml version="1.0" encoding="utf-8"?>)" : R"(<?xml version="1.0"?>)");
    return writeLine(0);
}

bool XmlWriter2::writeStartTag(const char* name, XmlStartTagType type) {
    return beginStartTag(name) && finishStartTag(type);
}

bool XmlWriter2::beginStartTag(const char* name) {
    append("<");
    append(name);
    return true;
}

bool XmlWriter2::appendAttribute8(const char* name, const char* value) {
    line.beginAttribute(name);
    return finishAttribute(!value || FXmlWriter::encodeString(line, value, false));
}

bool XmlWriter2::appendAttribute16(const char* name, const tchar* value) {
    line.beginAttribute(name);
    return finishAttribute(!value || FXmlWriter::encodeString(line, value));
}

bool XmlWriter2::appendIntAttribute(const char* name, int64_t value) {
    return appendPlainAttribute(name, NumberText(value).text);
}

bool XmlWriter2::appendUIntAttribute(const char* name, uint64_t value) {
    return appendPlainAttribute(name, NumberText(value).text);
}

bool XmlWriter2::appendFloatAttribute(const char* name, double value) {
    return appendPlainAttribute(name, NumberText::ofFloat(value).text);
}

bool XmlWriter2::finishStartTag(XmlStartTagType type) {
    const int32_t indent = depth;
    if (type != kXmlStartTagEmpty)
        ++depth;
    append(type == kXmlStartTagEmpty ? "/>" : ">");
    return writeLine(indent);
}

bool XmlWriter2::writeEndTag(const char* name, bool endLine) {
    --depth;
    append("</");
    append(name);
    append(">");
    const bool written = writeLine(noLineBreaks ? 0 : depth);
    if (!noLineBreaks || !endLine)
        return written;
    noLineBreaks = false;
    return newLine() && written;
}

bool XmlWriter2::writeString8(const char* text) {
    return FXmlWriter::encodeString(line, text, true) && writeText();
}

bool XmlWriter2::writeString16(const tchar* text) {
    return appendString16(text, true) && writeText();
}

bool XmlWriter2::writeInt(int64_t value) {
    append(NumberText(value).text);
    return writeText();
}

bool XmlWriter2::writeFloat(double value) {
    append(NumberText::ofFloat(value).text);
    return writeText();
}

bool XmlWriter2::writeComment8(const char* text) {
    append("<!-- ");
    append(text);
    append(" -->");
    return writeLine(0);
}

bool XmlWriter2::writeComment16(const tchar* text) {
    append("<!-- ");
    const bool converted = appendString16(text, false);
    append(" -->");
    return writeLine(0) && converted;
}

bool XmlWriter2::appendString16(const tchar* text, bool escape) {
    if (escape || !text)
        return FXmlWriter::encodeString(line, text);
    return appendUtf8(line, text, std::char_traits<tchar>::length(text));
}

bool XmlWriter2::writeLine(int32_t indent) {
    if (line.getFillSize() == 0)
        return true;
    indentLine(indent);
    if (!noLineBreaks)
        append(kLineEnd);
    return writeText();
}

bool XmlWriter2::newLine() {
    append(kLineEnd);
    return writeText();
}

bool XmlWriter2::writeText() {
    if (line.getFillSize() == 0)
        return true;
    const auto size = int32_t(line.getFillSize());
    int32_t written = 0;
    const bool taken = stream && stream->write(line.data(), size, &written) == kResultOk && written == size;
    line.setFillSize(0);
    return taken;
}

bool XmlWriter2::finishAttribute(bool converted) {
    append("\"");
    return converted;
}

bool XmlWriter2::appendPlainAttribute(const char* name, const char* value) {
    line.beginAttribute(name);
    append(value);
    return finishAttribute(true);
}

void XmlWriter2::indentLine(int32_t indent) {
    const int32_t width = std::max(indent, 0) * (useBlanks ? 3 : 1);
    if (line.shiftAt(0, width))  // the depth is known when the line is full
        std::memset(line.data(), useBlanks ? ' ' : '\t', size_t(width));
}

}  // namespace Tessarine
