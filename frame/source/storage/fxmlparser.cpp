#include "storage/fxmlparser.h"
#include "base/source/finitializer.h"
#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessarine {
namespace {
constexpr uint32_t kBufferedBytes = 2048;
constexpr size_t kMaxName = 47, kMaxValue = 2047;  // bytes of an attribute, raw
constexpr int32_t kMaxNesting = 256;               // each takes a token's buffer of stack
constexpr int32_t kMarkBytes = 7;                  // behind "<![" and "<!D", unchecked
constexpr int32_t kCommentPiece = 4094;
constexpr int32_t kMaxPlugAttributes = 50;
constexpr std::ptrdiff_t kMaxShownReference = 10;
constexpr size_t kMaxEntity = 6;
constexpr std::string_view kOpening = "<!--";

/** What a byte ends or is. */
enum ByteClass : uint16_t {
    kNul = 1,
    kBlank = 2,  // tab, blank
    kLineEnd = 4,
    kEquals = 8,
    kTagMark = 16,  // '/', '?', '<'
    kSlash = 32,
    kGreater = 64,
    kLess = 128,
    kQuote = 256,
    kApostrophe = 512,
    kReference = 1024,
    kDataEnd = 2048,  // behind a '<' that ends a long text
    kOther = 4096,    // every byte is of some class, so that ~ means all others
};
constexpr uint16_t kWhite = kBlank | kLineEnd;
constexpr uint16_t kNameEnd = kNul | kWhite | kSlash | kGreater;
constexpr uint16_t kAttributeNameEnd = kNul | kWhite | kEquals;
constexpr uint16_t kNoAttribute = kNul | kWhite | kTagMark | kGreater;

using ByteClasses = std::array<uint16_t, 256>;

constexpr ByteClasses makeByteClasses() {
    ByteClasses classes;
    classes.fill(kOther);
    classes[0] = kNul;
    classes['\t'] = classes[' '] = kBlank;
    classes['\n'] = classes['\r'] = kLineEnd;
    classes['='] = kEquals;
    classes['/'] = kTagMark | kSlash | kDataEnd;
    classes['?'] = kTagMark | kDataEnd;
    classes['<'] = kTagMark | kLess;
    classes['>'] = kGreater;
    classes['"'] = kQuote;
    classes['\''] = kApostrophe;
    classes['&'] = kReference;
    classes['!'] = classes['_'] = kDataEnd;
    for (int32_t letter = 'a'; letter <= 'z'; ++letter)
        classes[letter] = classes[letter - 'a' + 'A'] = kDataEnd;
    return classes;
}
constexpr ByteClasses kClasses = makeByteClasses();

constexpr uint16_t classOf(char c) {
    return kClasses[uint8_t(c)];
}

template <class Place>
Place firstOf(Place begin, Place end, uint16_t classes) {
    return std::find_if(begin, end, [classes](char c) { return (classOf(c) & classes) != 0; });
}

/** The first byte that is one of the two or below a limit. Sixteen at a time where the processor can: names and values are
    short, and what a loop costs is the jump out of it that nobody foresees. */
const char* firstOfTwoOrBelow(const char* place, const char* end, char one, char other, uint8_t limit) {
#ifdef __SSE2__
    const __m128i ones = _mm_set1_epi8(one), others = _mm_set1_epi8(other), below = _mm_set1_epi8(char(limit - 1));
    for (; end - place >= 16; place += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(place));
        const __m128i either = _mm_or_si128(_mm_cmpeq_epi8(bytes, ones), _mm_cmpeq_epi8(bytes, others));
        const __m128i found = _mm_or_si128(either, _mm_cmpeq_epi8(_mm_min_epu8(bytes, below), bytes));
        if (const int mask = _mm_movemask_epi8(found))
            return place + std::countr_zero(unsigned(mask));
    }
#endif
    return std::find_if(place, end, [=](char c) { return c == one || c == other || uint8_t(c) < limit; });
}

bool isHigh(char c) {
    return uint8_t(c) >= 0x80;
}

const XmlEntity8* entityNamed(std::string_view name, bool windows) {
    if (name.size() > kMaxEntity)
        return nullptr;
    const auto& table = windows ? gEntityTable8Win : gEntityTable8Mac;
    const auto found = std::ranges::find_if(table, [name](const XmlEntity8& row) { return name == row.name; });
    return found != table.end() ? &*found : nullptr;
}

/** What stands between '&' and ';', as a byte; 0: nothing that is known. */
char referenced(std::string_view reference, bool windows) {
    if (!reference.starts_with('#')) {
        const XmlEntity8* entity = entityNamed(reference, windows);
        return entity ? char(entity->code) : char(0);
    }
    const bool hexadecimal = reference.starts_with("#x");
    const std::string digits(reference.substr(hexadecimal ? 2 : 1, reference.find('&')));  // the next one has its turn
    return char(hexadecimal ? std::strtoul(digits.c_str(), nullptr, 16) : std::strtol(digits.c_str(), nullptr, 10));
}

/** The byte that a reference at begin stands for, and *behind the place after it; 0: none. */
char shownReference(const char* begin, const char* end, const char** behind) {
    const char* limit = begin + std::min(end - begin, kMaxShownReference + 2);
    const char* last = std::find(begin, firstOf(begin, limit, kWhite), ';');
    if (last - begin > kMaxShownReference + 1)
        return 0;
    *behind = last < end && *last == ';' ? last + 1 : last;
    return referenced({begin + 1, last}, false);
}

constexpr const tchar* kErrorTexts[] = {
    u"",
    u"Xml data malformed!",
    u"Unexpected tag or invalid attributes!",
    u"Unexpected end of file!",
    u"Not enough actual attributes in tag!",
    u"Unexpected Tag!",
};

bool initFXmlParser() {
    FFileType::registerType(&xmlFileType);
    return true;
}

/** Null when there is none. */
CmObject* takeSpare(CmArray& pool) {
    CmObject* last = pool.at(pool.total() - 1);
    pool.removeAt(pool.total() - 1);
    return last;
}

const OneTimeProcedure FXmlParserInitializer(true, initFXmlParser, "FXmlParser", 0);

/** By the face that the identifier stands for. */
FUnknown* createXmlParser() {
    IXmlParser2* face = new FPlugXmlParser;
    return face;
}

MetaClass xmlParserClass(nullptr, createXmlParser, IXmlParser::iid, nullptr);
MetaClass xmlParser2Class(nullptr, createXmlParser, IXmlParser2::iid, nullptr);
}  // namespace

const FFileType xmlFileType(u"XML File", u"xml", u"xml", 0, u"text/xml");

/** Collects a token. */
struct FXmlParser::Text {
    Text(char* begin, int32_t capacity) : begin(begin), capacity(capacity) {}
    /** false: there isn't room for all. */
    bool append(const char* bytes, size_t count) {
        if (count > size_t(capacity - size) && !grow(count))
            return false;
        std::copy_n(bytes, count, begin + size);
        size += int32_t(count);
        return true;
    }
    bool append(char c) { return append(&c, 1); }
    bool grow(size_t count) {
        if (!overflow || count > size_t(kMaxGrown - size))
            return false;
        const size_t wanted = std::min(std::max(size + count, 2 * size_t(capacity)), size_t(kMaxGrown));
        if (overflow->empty())
            overflow->assign(begin, size_t(size));
        overflow->resize(wanted + 1);
        begin = overflow->data();
        capacity = int32_t(wanted);
        return true;
    }
    char* terminated() {
        begin[size] = 0;
        return begin;
    }
    operator std::string_view() const { return {begin, size_t(size)}; }

    static constexpr int32_t kMaxGrown = 1 << 30;

    char* begin;  // capacity bytes and one for a terminator
    int32_t capacity;
    int32_t size = 0;
    std::string* overflow = nullptr;  // takes what is larger; null: nothing may be
    bool cutOff = false;              // the stream ended inside
};

/** Sees line ends pass by, of which a pair is one. */
struct FXmlParser::LineEnds {
    bool isNew(char c) {
        const bool isEnd = (classOf(c) & kLineEnd) != 0, isSecond = isEnd && first != 0 && first != c;
        first = isEnd && !isSecond ? c : char(0);
        return first != 0;
    }

    char first = 0;
};

/** Tells a comment's text. */
class FXmlParser::PieceWriter {
public:
    PieceWriter(FXmlParser& parser, void* userData, bool tell) : parser(parser), userData(userData), tell(tell) {}
    void put(char c) {
        if (!tell)
            return;
        piece[size++] = c;
        if (size == kCommentPiece)
            send(false);
    }
    void sendLast() {
        if (size > 0)
            send(true);
    }

private:
    void send(bool last) {
        piece[size] = 0;
        size = 0;
        parser.gotComment(piece, userData, last);
    }

    FXmlParser& parser;
    void* userData;
    bool tell;
    int32_t size = 0;
    char piece[kCommentPiece + 1];
};

FXmlParser::FXmlParser(FStream* source, bool buffered) : stream(source), attributePool(0, -1), spareNames(0, -1) {
    buffer.setSize(buffered ? kBufferedBytes : 1);
    tagStack._ownsObjects = CmContainer::kTakesOver;
}

FXmlParser::~FXmlParser() {
    for (const CmArray* pool : {&attributePool, &spareNames})
        for (CmObject* object : *pool)
            object->release();
}

bool FXmlParser::process(void* userData) {
    if (nesting > kMaxNesting) {
        errorCode = kErrorMalformed;
        return false;
    }
    const int32_t earlierError = nesting > 0 ? errorCode : int32_t(kErrorNone);
    errorCode = kErrorNone;
    ++nesting;
    const int32_t target = tagStack.total() - 1;
    char bytes[kTokenSize + 1];
    for (bool done = false; !done && goesOn();) {
        Text text(bytes, kTokenSize);
        const Token token = tokenOf(text, false);
        handleToken(token, text, userData);
        const int32_t depth = tagStack.total();
        const bool closed = depth == target || (depth == 0 && (options & kStopAfterMainTag) != 0);
        done = token == kTokenEnd || (token == kTokenEndTag && closed);
    }
    --nesting;
    const bool succeeded = errorCode == kErrorNone;
    if (succeeded)
        errorCode = earlierError;
    return succeeded;
}

bool FXmlParser::skip() {
    const bool wasSkipping = std::exchange(skipping, true);
    const bool succeeded = process(nullptr);
    skipping = wasSkipping;
    return succeeded;
}

void FXmlParser::setStream(FStream* newStream) {
    stream = newStream;
    buffer.setFillSize(0);
    cursor = 0;
    peekedChar = 0;
    lineNumber = 0;
    stopped = false;
    encoding = 0;
    tagStack.removeAll();
}

const tchar* FXmlParser::errorMessage() const {
    const bool known = errorCode > kErrorNone && errorCode < int32_t(std::size(kErrorTexts));
    return kErrorTexts[known ? errorCode : kErrorNone];
}

void FXmlParser::getErrorContext(FString& text) const {
    text.printf("Line %d", lineNumber + 1);
}

const FString& FXmlParser::getCurrentStartTag() const {
    const auto* open = static_cast<CmString*>(tagStack.peek());
    return open ? *open : FEmptyString;
}

int64_t FXmlParser::getStreamPosition() const {
    return (stream ? stream->tell() : 0) - buffer.getFillSize() + cursor;
}

char FXmlParser::peekChar() {
    if (cursor < buffer.getFillSize())
        return buffer.data()[cursor];
    char c = 0;
    if (peekedChar == 0 && stream && stream->readRaw(&c, 1) == 1 && c == 0)
        stream->seek(-1, kFromCurrent);  // can't be told from no byte, so that it must be read again
    peekedChar = peekedChar ? peekedChar : c;
    return peekedChar;
}

void FXmlParser::ungetChar(char c) {
    if (c)
        stepBack(1);
}

bool FXmlParser::refill() {
    char* bytes = buffer.data();
    const uint32_t kept = peekedChar ? 1 : 0, room = buffer.getSize();
    if (room == 0)
        return false;
    if (kept)
        bytes[0] = std::exchange(peekedChar, char(0));
    const int64_t read = stream && room > kept ? stream->readRaw(bytes + kept, room - kept) : 0;
    cursor = 0;
    buffer.setFillSize(kept + uint32_t(std::clamp<int64_t>(read, 0, room - kept)));
    return buffer.getFillSize() > 0;
}

/** So many bytes from the cursor on, which fit into the buffer and stay; null: the stream has fewer. */
const char* FXmlParser::lookAhead(uint32_t count) {
    char* bytes = buffer.data();
    uint32_t filled = buffer.getFillSize() - cursor;
    if (filled >= count)
        return bytes + cursor;
    std::memmove(bytes, bytes + cursor, filled);
    cursor = 0;
    if (peekedChar)
        bytes[filled++] = std::exchange(peekedChar, char(0));
    for (int64_t read = 1; filled < count && stream && read > 0; filled += uint32_t(std::max<int64_t>(read, 0)))
        read = stream->readRaw(bytes + filled, buffer.getSize() - filled);
    buffer.setFillSize(filled);
    return filled >= count ? bytes : nullptr;
}

void FXmlParser::stepBack(uint32_t count) {
    if (cursor >= count) {
        cursor -= count;
        return;
    }
    const int64_t place = getStreamPosition() - (peekedChar ? 1 : 0) - count;
    if (place < 0 || !stream || stream->seek(place, kFromStart) != place)
        return;
    peekedChar = 0;
    refill();
}

/** Over all bytes of these classes. */
bool FXmlParser::passWhile(uint16_t classes) {
    do {
        const char* end = buffer.data() + buffer.getFillSize();
        const char* place = firstOf<const char*>(buffer.data() + cursor, end, uint16_t(~classes));
        cursor = uint32_t(place - buffer.data());
        if (place != end)
            return true;
    } while (refill());
    return false;
}

/** Up to the first byte of one of these classes, which stays. false: it doesn't come, or not soon enough. */
bool FXmlParser::takeUntil(Text& text, uint16_t classes) {
    do {
        const char* begin = buffer.data() + cursor;
        const char* end = buffer.data() + buffer.getFillSize();
        const char* place = firstOf(begin, end, classes);
        cursor += uint32_t(place - begin);
        if (!text.append(begin, size_t(place - begin)))
            return false;
        if (place != end)
            return true;
    } while (refill());
    return false;
}

void FXmlParser::passBytes(int32_t count) {
    for (; count > 0; --count)
        nextChar();
}

void FXmlParser::passLineEnd(char c) {
    const char other = peekChar();
    if ((classOf(other) & kLineEnd) != 0 && other != c)
        nextChar();
    ++lineNumber;
}

FXmlParser::Token FXmlParser::getNextToken(char* bytes, int64_t* size, bool inTag) {
    Text text(bytes, int32_t(std::clamp<int64_t>(*size, 0, INT32_MAX - 1)));
    const Token token = tokenOf(text, inTag);
    text.terminated();
    *size = text.size;
    return token;
}

FXmlParser::Token FXmlParser::tokenOf(Text& text, bool inTag) {
    const char c = nextChar();
    if (c == 0)
        return kTokenEnd;
    if ((classOf(c) & kLineEnd) != 0) {
        passLineEnd(c);
        return kTokenNewLine;
    }
    if ((classOf(c) & kBlank) != 0 && (inTag || (options & kKeepSpaces) == 0)) {
        passWhile(kBlank);
        return kTokenBlank;
    }
    if (c == '<')
        return markupToken(text);
    if (inTag && c == '>')
        return kTokenClose;
    if (inTag && (c == '/' || c == '?')) {
        const bool closed = nextChar() == '>';
        return !closed ? kTokenError : c == '/' ? kTokenEmptyClose : kTokenPIEnd;
    }
    if (!text.append(c))
        return kTokenError;
    if (inTag)
        return attributeToken(text);
    readData(text, true);
    return kTokenData;
}

/** Behind a '<'. */
FXmlParser::Token FXmlParser::markupToken(Text& text) {
    const char c = peekChar();
    if (c == '!')
        return declarationToken();
    if (!text.append('<'))
        return kTokenError;
    if (c != '/' && c != '?')
        return takeUntil(text, kNameEnd) && peekChar() ? kTokenStartTag : kTokenError;
    text.append(nextChar());
    if (c == '/')
        return endTagToken(text);
    return takeUntil(text, kNul | kWhite) && peekChar() ? kTokenPIStart : kTokenError;
}

/** Behind "</". */
FXmlParser::Token FXmlParser::endTagToken(Text& text) {
    const bool whole = takeUntil(text, kNul | kWhite | kGreater) && peekChar() == '>' && text.append(nextChar());
    return whole ? kTokenEndTag : kTokenError;
}

/** At the '!' of "<!". */
FXmlParser::Token FXmlParser::declarationToken() {
    nextChar();
    const char c = nextChar();
    if (c == '-')
        return nextChar() == '-' ? kTokenComment : kTokenError;
    if (c != '[' && c != 'D' && c != 'd')
        return kTokenError;
    passBytes(kMarkBytes);
    return c == '[' ? kTokenCData : kTokenDocType;
}

/** Behind its first byte, which may be the '=' already. */
FXmlParser::Token FXmlParser::attributeToken(Text& text) {
    const bool named = text.begin[0] == '=' || (takeUntil(text, kNul | kEquals) && text.append(nextChar()));
    if (!named || text.begin[text.size - 1] != '=' || !passWhile(kWhite))
        return kTokenError;
    const char delimiter = nextChar();
    if ((delimiter != '"' && delimiter != '\'') || !text.append(delimiter))
        return kTokenError;
    const uint16_t end = kNul | (delimiter == '"' ? kQuote : kApostrophe);
    for (;;) {
        if (!takeUntil(text, end) || !peekChar() || !text.append(nextChar()))
            return kTokenError;
        const bool escaped = (options & kBackslashEscape) != 0 && text.begin[text.size - 2] == '\\';
        if (!escaped)
            return kTokenAttribute;
    }
}

/** Until the text's end or its capacity. */
void FXmlParser::readData(Text& text, bool first) {
    while (text.size < text.capacity) {
        if (cursor == buffer.getFillSize() && !refill()) {
            text.cutOff = true;
            return;
        }
        const char* begin = buffer.data() + cursor;
        const size_t room = std::min<size_t>(size_t(text.capacity - text.size), buffer.getFillSize() - cursor);
        const char* place = firstOf(begin, begin + room, kNul | kLess);
        text.append(begin, size_t(place - begin));
        cursor += uint32_t(place - begin);
        if (place == begin + room)
            continue;
        text.cutOff = *place == 0;
        if (text.cutOff || endsData(first))
            return;
        text.append(nextChar());
    }
}

/** At a '<', which stays. */
bool FXmlParser::endsData(bool first) {
    if (first)
        return tagStack.isEmpty() || looksAtEndTag();
    if (cursor + 1 < buffer.getFillSize())
        return (classOf(buffer.data()[cursor + 1]) & kDataEnd) != 0;
    const char less = nextChar();
    const bool ends = (classOf(peekChar()) & kDataEnd) != 0;
    ungetChar(less);
    return ends;
}

/** "</" and the name of the innermost open tag follow. */
bool FXmlParser::looksAtEndTag() {
    const std::string_view name = getCurrentStartTag().text8();  // somebody may have asked for 16 bits
    const size_t wanted = name.size() + 2;
    const auto expected = [name](size_t i) { return i == 0 ? '<' : i == 1 ? '/' : name[i - 2]; };
    if (wanted <= buffer.getSize()) {
        const char* place = lookAhead(uint32_t(wanted));
        return place && place[1] == '/' && std::equal(name.begin(), name.end(), place + 2);
    }
    uint32_t passed = 0;
    bool same = true;
    for (size_t i = 0; i < wanted && same; ++i) {
        const char c = nextChar();
        passed += c || cursor > 0 ? 1 : 0;
        same = c == expected(i);
    }
    stepBack(passed);
    return same;
}

void FXmlParser::handleToken(Token token, Text& text, void* userData) {
    switch (token) {
    case kTokenEnd:
    case kTokenNewLine:
    case kTokenBlank:
        break;
    case kTokenStartTag:
        text.terminated();
        handleStartTag(std::string_view(text).substr(1), userData);
        break;
    case kTokenEndTag:
        handleEndTag(text, userData);
        break;
    case kTokenData:
        handleData(text, userData);
        break;
    case kTokenPIStart:
        handlePI();
        break;
    case kTokenComment:
        readComment(userData, (options & kParseComments) != 0);
        break;
    case kTokenCData:
        skipCData();
        break;
    case kTokenDocType:
        skipDocType();
        break;
    default:
        errorCode = kErrorMalformed;
    }
}

/** name is terminated. */
void FXmlParser::handleStartTag(std::string_view name, void* userData) {
    OPtr<CmArray> attributes(spareList.detach());
    if (!attributes)
        attributes = new CmArray(0, -1);
    attributes->_ownsObjects = CmContainer::kTakesOver;
    bool empty = false;
    if (!readAttributes(*attributes, empty)) {
        errorCode = kErrorMalformed;
    } else {
        if (!empty)
            pushTag(name);
        if (!startTag(name.data(), *attributes, empty, userData) && errorCode == kErrorNone)
            errorCode = kErrorRefused;
    }
    returnToPool(*attributes);
    spareList = attributes;
}

/** Up to the end of a tag; false: malformed. */
bool FXmlParser::readAttributes(CmArray& attributes, bool& empty) {
    for (;;) {
        if (takeAttribute(attributes))
            continue;
        char bytes[kTokenSize + 1];
        std::string longBytes;
        Text text(bytes, kTokenSize);
        text.overflow = (options & kLongValues) != 0 ? &longBytes : nullptr;
        switch (tokenOf(text, true)) {
        case kTokenNewLine:
        case kTokenBlank:
            break;
        case kTokenAttribute:
            if (!tokenToAttribute(text, attributes))
                return false;
            break;
        case kTokenEmptyClose:
            return empty = true;
        case kTokenClose:
            return true;
        default:
            return false;
        }
    }
}

/** Takes an attribute that is whole in the buffer and of the plain form, which most are; false: nothing has happened. */
bool FXmlParser::takeAttribute(CmArray& attributes) {
    if ((options & kBackslashEscape) != 0)
        return false;
    const char* end = buffer.data() + buffer.getFillSize();
    const char* name = firstOf<const char*>(buffer.data() + cursor, end, uint16_t(~kBlank));
    if (name == end || (classOf(*name) & kNoAttribute) != 0)
        return false;
    const char* nameEnd = firstOfTwoOrBelow(name, end, '=', '=', ' ' + 1);
    if (end - nameEnd < 3 || *nameEnd != '=' || size_t(nameEnd - name) > kMaxName)
        return false;
    const char delimiter = nameEnd[1];
    if (delimiter != '"' && delimiter != '\'')
        return false;
    const char* value = nameEnd + 2;
    const char* reference = firstOfTwoOrBelow(value, end, delimiter, '&', 1);
    const bool references = reference != end && *reference == '&';
    const char* valueEnd = references ? firstOfTwoOrBelow(reference, end, delimiter, delimiter, 1) : reference;
    if (valueEnd == end || *valueEnd == 0 || size_t(valueEnd - value) > kMaxValue)
        return false;
    addAttribute(attributes, {name, nameEnd}, {value, valueEnd}, references);
    cursor = uint32_t(valueEnd + 1 - buffer.data());
    return true;
}

bool FXmlParser::tokenToAttribute(std::string_view token, CmArray& attributes) {
    const char* end = token.data() + token.size() - 1;  // the closing delimiter
    const char* nameEnd = firstOf(token.data(), end, kAttributeNameEnd);
    const char* equals = firstOf<const char*>(nameEnd, end, uint16_t(~kWhite));
    if (equals == end || *equals != '=' || size_t(nameEnd - token.data()) > kMaxName)
        return false;
    const char* value = equals + 2;
    if (size_t(end - value) > kMaxValue && (options & kLongValues) == 0)
        return false;
    addAttribute(attributes, {token.data(), nameEnd}, {value, end}, true);
    return true;
}

void FXmlParser::addAttribute(CmArray& attributes, std::string_view name, std::string_view value, bool references) {
    auto* attribute = static_cast<FXmlAttribute*>(takeSpare(attributePool));
    if (!attribute)
        attribute = new FXmlAttribute;
    attribute->name.setBytes(name.data(), uint32_t(name.size()));
    attribute->value.setBytes(value.data(), uint32_t(value.size()));
    if (references) {
        bool highByte = false;
        removeEntities(attribute->value.writable8(), &highByte, (options & kWindowsEntities) != 0);
        attribute->value.updateLength();
    }
    if ((options & kWidenAttributes) != 0 && std::ranges::any_of(units8(attribute->value), isHigh))
        attribute->value.toWideString();
    if (!attributes.add(attribute))
        attribute->release();
}

void FXmlParser::pushTag(std::string_view name) {
    auto* open = static_cast<XmlPooledText<CmString>*>(takeSpare(spareNames));
    if (!open)
        open = new XmlPooledText<CmString>;
    open->setBytes(name.data(), uint32_t(name.size()));
    tagStack.push(open);
}

void FXmlParser::returnToPool(CmArray& attributes) {
    for (CmObject* object : attributes) {
        const bool isSpare = object->getClass() == &FXmlAttribute::__fClass &&
                             !static_cast<FXmlAttribute*>(object)->isShared() && attributePool.add(object);
        if (!isSpare)
            object->release();
    }
    attributes._ownsObjects = CmContainer::kBorrows;
    attributes.removeAll();
}

void FXmlParser::handleEndTag(std::string_view token, void* userData) {
    OPtr<CmString> open(static_cast<CmString*>(tagStack.pop()));
    const bool closes = open && token.substr(2).starts_with(open->text8());
    if (!closes)
        errorCode = kErrorMalformed;
    else if (!skipping && !endTag(open->text8(), userData))
        errorCode = kErrorRefused;
    if (open && spareNames.add(open))
        open.detach();
}

void FXmlParser::handleData(Text& text, void* userData) {
    const auto tell = [&] {
        if (!skipping)
            gotData(text.terminated(), uint32_t(text.size), userData);
    };
    tell();
    while (goesOn() && !text.cutOff) {
        text.size = 0;
        readData(text, false);
        if (text.size > 0)
            tell();
        if (text.size < text.capacity)
            break;
    }
    if (!goesOn())
        return;
    if (text.cutOff)
        errorCode = kErrorEndOfFile;
    else if (!skipping)
        gotData(text.begin, 0, userData);
}

void FXmlParser::handlePI() {
    CmArray attributes(0, -1);
    attributes._ownsObjects = CmContainer::kTakesOver;
    char bytes[kTokenSize + 1];
    for (Token token = kTokenBlank; token != kTokenPIEnd;) {
        Text text(bytes, kTokenSize);
        token = tokenOf(text, true);
        const bool passes = token == kTokenBlank || token == kTokenPIEnd ||
                            (token == kTokenAttribute && tokenToAttribute(text, attributes));
        if (!passes) {
            errorCode = kErrorMalformed;
            break;
        }
    }
    for (CmObject* object : attributes) {
        const auto* attribute = static_cast<FXmlAttribute*>(object);
        if (units8(attribute->name) == "encoding" && units8(attribute->value) == "utf-8")
            encoding = kCodePageUTF8;
    }
    returnToPool(attributes);
}

/** Behind "<!--". An inner one wants an end of its own. */
void FXmlParser::readComment(void* userData, bool tell) {
    PieceWriter piece(*this, userData, tell);
    const bool split = tell && (options & kSplitNestedComments) != 0;
    LineEnds lineEnds;
    size_t opening = 0;  // so much of "<!--" has come
    int32_t dashes = 0;
    for (int32_t open = 1; open > 0;) {
        const char c = nextChar();
        if (c == 0) {
            errorCode = kErrorEndOfFile;
            return;
        }
        lineNumber += lineEnds.isNew(c) ? 1 : 0;
        if (c == kOpening[opening]) {
            dashes = 0;
            if (++opening < kOpening.size())
                continue;
            opening = 0;
            if (split)
                piece.sendLast();
            else
                ++open;
            continue;
        }
        if (opening > 1)
            piece.put('!');  // it began nothing
        opening = c == '<' ? 1 : 0;
        if (c == '>' && dashes > 1)
            --open;
        else if (c != '<' && c != '-')
            piece.put(c);
        dashes = c == '-' ? dashes + 1 : 0;
    }
    piece.sendLast();
}

void FXmlParser::skipCData() {
    LineEnds lineEnds;
    for (int32_t brackets = 0;;) {
        const char c = nextChar();
        if (c == 0) {
            errorCode = kErrorEndOfFile;
            return;
        }
        lineNumber += lineEnds.isNew(c) ? 1 : 0;
        if (c == '>' && brackets > 1)
            return;
        brackets = c == ']' ? brackets + 1 : 0;
    }
}

void FXmlParser::skipDocType() {
    LineEnds lineEnds;
    char quote = 0;
    for (int32_t depth = 0;;) {
        const char c = nextChar();
        if (c == 0) {
            errorCode = kErrorEndOfFile;
            return;
        }
        lineNumber += lineEnds.isNew(c) ? 1 : 0;
        if (c == '>' && depth == 0 && quote == 0)
            return;
        if (quote != 0)
            quote = c == quote ? char(0) : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '[')
            ++depth;
        else if (c == ']')
            depth = std::max(depth - 1, 0);
    }
}

void FXmlParser::removeEntities(char* text, bool* highByte, bool windows) {
    if (!text)
        return;
    char* out = std::strchr(text, '&');
    if (!out)
        return;
    const char* in = out;
    const char* semicolon = in;
    while (*in) {
        if (*in == '&' && semicolon && semicolon <= in)
            semicolon = std::strchr(in, ';');
        const bool candidate = *in == '&' && semicolon;
        const char byte = candidate ? referenced({in + 1, semicolon}, windows) : char(0);
        if (byte && isHigh(byte) && highByte)
            *highByte = true;
        *out++ = byte ? byte : *in;
        in = byte ? semicolon + 1 : in + 1;
    }
    *out = 0;
}

int32_t FPlugXmlParser::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IXmlParser2>(this, iid, obj) || answerInterface<IXmlParser>(this, iid, obj) ||
        answerInterface<FUnknown>(this, iid, obj))
        return kResultOk;
    return noInterface(obj);
}

uint32_t FPlugXmlParser::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t FPlugXmlParser::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

int32_t FPlugXmlParser::initialize(IBStream* source, IXmlParserDef* newDefinition) {
    if (definition)
        return kFailed;
    auto* object = classCast<FStream>(commonObject(source));
    if (!object)
        return kBadStream;
    setStream(object);
    definition = newDefinition;
    return kDone;
}

int32_t FPlugXmlParser::process(void* userData) {
    if (!definition)
        return kNotInitialized;
    const IPtr<IXmlParser2> alive(this);  // a handler may let go of it
    return FXmlParser::process(userData) ? kDone : kFailed;
}

int32_t FPlugXmlParser::stop(int32_t mode) {
    errorCode = mode == kStopAsRefused ? kErrorRefused : kErrorMalformed;
    return kDone;
}

int32_t FPlugXmlParser::getCurrentStartTag(const char** name) {
    *name = FXmlParser::getCurrentStartTag().text8();
    return kDone;
}

int32_t FPlugXmlParser::keepSpaces(bool state) {
    options = state ? options | kKeepSpaces : options & ~kKeepSpaces;
    return kDone;
}

int32_t FPlugXmlParser::stopAfterMainTag() {
    options |= kStopAfterMainTag;
    return kDone;
}

int32_t FPlugXmlParser::repositionStream() {
    if (!stream)
        return kFailed;
    const int64_t place = getStreamPosition();
    return stream->seek(place, kFromStart) == place ? kDone : kFailed;
}

bool FPlugXmlParser::startTag(const char* name, CmContainer& attributes, bool empty, void* userData) {
    const int32_t count = attributes.total();
    if (count > kMaxPlugAttributes)
        return false;
    const char* names[kMaxPlugAttributes];
    const char* values[kMaxPlugAttributes];
    for (int32_t i = 0; i < count; ++i) {
        const auto* attribute = static_cast<FXmlAttribute*>(attributes.at(i));
        names[i] = attribute->name.text8();
        values[i] = attribute->value.text8();
    }
    return definition->startTag(this, name, count, names, values, empty, userData);
}

bool FPlugXmlParser::endTag(const char* name, void* userData) {
    return definition->endTag(this, name, userData);
}

void FPlugXmlParser::gotData(void* data, uint32_t size, void* userData) {
    definition->gotData(this, data, size, userData);
}

int32_t FXmlTextFormatter::format(const void* data, int32_t size, int32_t flags, char* text) {
    const char* in = static_cast<const char*>(data);
    const char* end = in + std::max(size, 0);
    char* out = text;
    while (in < end) {
        in = firstOf<const char*>(in, end, uint16_t(~kBlank));  // a line begins
        while (in < end && (classOf(*in) & kLineEnd) == 0) {
            const char* behind = in;
            const bool decodes = *in == '&' && (flags & kDecodeEntities) != 0;
            const char byte = decodes ? shownReference(in, end, &behind) : char(0);
            *out++ = byte ? byte : *in;
            in = byte ? behind : in + 1;
        }
        if (in == end)
            break;
        const char first = *in++;
        if (in < end && (classOf(*in) & kLineEnd) != 0 && *in != first)
            ++in;
        *out++ = (flags & kLineBreakToBlank) != 0 ? ' ' : '\n';
    }
    return int32_t(out - text);
}

}  // namespace Tessarine
