#pragma once
#include "pluginterfaces/base/conststringtable.h"
#include <concepts>
#include <cstdarg>
#include <cstdlib>
#include <string_view>

namespace Tessarine {
class FArchive;
class FStreamer;
class FVariant;
class IAttributes;
class IString;
class IStringResult;
class String;

/** One string family for the whole system. An object holds either 8-bit or 16-bit text and changes between the two on
    demand.

    Widths     8-bit text stands in code page 0, the default of the system; 16-bit text is UTF-16. UTF-8 comes in by
               fromUTF8 and goes out by a copy with toMultiByte(65001); it is never parked in a narrow string.
    Counts     a count of -1 means up to the terminator, or all; a count never reads past the terminator.
    Zeros      8-bit text that was loaded may have some inside: copies, edits of its own width and the stored form keep
               them, 16-bit text ends at the first.
    Threads    no locks. Reading a String in the other width converts it in place, so that a shared one must be read in
               its own width by all threads.
    Results    a failed allocation or conversion leaves the object as it was. */

/** Code pages of the conversions; any other number is ASCII. */
enum CodePage : uint32_t {
    kCodePageDefault = 0,
    kCodePageMacRoman = 2,
    kCodePageShiftJIS = 932,
    kCodePageLatin1 = 1252,
    kCodePageMacCentralEurope = 10029,
    kCodePageUTF8 = 65001,
};

/** What code page 0 is: 0 Mac Roman, 1576 Shift JIS. Set by the language service before other threads start. */
extern uint32_t kDefaultSystemEncoding;

enum CompareMode { kMatchCase, kIgnoreCase };
enum CharGroup { kWhiteSpace, kAlphaNumeric, kAlphabetic };
enum UnicodeNormalization { kNormalizationC, kNormalizationD, kNormalizationKC, kNormalizationKD };

/** The unit of a text in one of the two widths. */
template <class Char>
concept TextUnit = std::same_as<Char, char> || std::same_as<Char, tchar>;

/** The empty text, never null. */
[[maybe_unused]] static const tchar* const kEmptyString16 = ConstStringTable::instance()->getString("");
[[maybe_unused]] static const tchar* const kEmptyString = kEmptyString16;

/** h = (c + (h << 6)) % n over the characters, a char sign-extended; 0 for null or empty text, and for n 0. The result
    depends on n: it can't be kept for a table of another size. */
uint32_t hashString8(const char* text, uint32_t n);
uint32_t hashString16(const tchar* text, uint32_t n);

/** Natural order, in which numbers inside the texts compare by value: below, at or above 0. Null is empty. */
int32_t strnatcmp8(const char* a, const char* b, bool caseSensitive = true);
int32_t strnatcmp16(const tchar* a, const tchar* b, bool caseSensitive = true);

/** Formats as String::printf does and terminates: dst has room for 4096 units. The result is the length. */
int32_t sprintf16(tchar* dst, const tchar* format, ...);

/** A read-only view of a text that somebody else owns, so that it can be compared and searched without a copy.

    The text must outlive the view unchanged. Null is allowed and means empty. In the other width than its own a view
    reads as empty. A view of a part isn't terminated behind it: make a String of it for text8 or text16. */
class ConstString {
public:
    static constexpr uint32_t kMaxLength = (1u << 30) - 1;  // characters
    static constexpr uint32_t kNoEncoding = 65535;          // of the platform encodings

    constexpr ConstString() : buffer(nullptr), len(0), isWide(0) {}
    ConstString(const char* text, int32_t count = -1);
    ConstString(const tchar* text, int32_t count = -1);
    /** The tail from offset on; 0 or less takes the whole, past the end is empty. */
    ConstString(const ConstString& text, int32_t offset = 0);
    /** Another kind than text gives an empty view. */
    ConstString(const FVariant& value);
    ConstString& operator=(const ConstString&) = default;

    constexpr virtual ~ConstString() = default;
    /** In characters of its own width, without the terminator. */
    virtual uint32_t length() const { return len; }
    /** Never null. */
    virtual const char* text8() const;
    virtual const tchar* text16() const;
    virtual const tchar* text() const { return text16(); }
    /** The buffer in its own width; may be null. */
    virtual const void* ptr() const { return buffer; }
    /** 0 out of range. */
    virtual char getChar8(uint32_t index) const;
    virtual tchar getChar16(uint32_t index) const;
    /** A copy as the system's own string, which here is an `IString` with one reference for the caller. 8-bit text is
        taken as being in the platform encoding, ASCII without one; null when it is malformed. The copy is 16-bit text,
        and may be changed whatever is asked for. */
    virtual void* toCFStringRef(uint32_t encoding = kNoEncoding, bool changeable = false) const;

    bool isEmpty() const { return !buffer || len == 0; }
    bool isWideString() const { return isWide; }

    /** Below, at or above 0. A count compares at most so many characters. Ignoring case, 16-bit text gives -1 to 1, and
        a count asks whether the start of the other text stands here, however much follows. */
    int32_t compare(const ConstString& other, CompareMode mode = kMatchCase) const { return compare(other, -1, mode); }
    int32_t compare(const ConstString& other, int32_t count, CompareMode mode = kMatchCase) const;
    /** The same from index on; an index at or past the end compares as the empty text and gives 0 or -1. */
    int32_t compareAt(uint32_t index, const ConstString& other, int32_t count = -1,
                      CompareMode mode = kMatchCase) const;
    int32_t naturalCompare(const ConstString& other, CompareMode mode = kMatchCase) const;
    bool operator==(const ConstString& other) const { return compare(other) == 0; }
    bool operator<(const ConstString& other) const { return compare(other) < 0; }
    bool operator>(const ConstString& other) const { return compare(other) > 0; }

    /** The first place at or after start that lies wholly before end (-1: the end of the text), or -1. An empty text is
        nowhere. */
    int32_t findNext(int32_t start, const ConstString& text, CompareMode mode = kMatchCase, int32_t end = -1) const;
    int32_t findNext(int32_t start, TextUnit auto c, CompareMode mode = kMatchCase, int32_t end = -1) const {
        return findNext(start, ConstString(&c, 1), mode, end);
    }
    /** The last place at or before start (-1: from the end), or -1. */
    int32_t findPrev(int32_t start, const ConstString& text, CompareMode mode = kMatchCase) const;
    int32_t findPrev(int32_t start, TextUnit auto c, CompareMode mode = kMatchCase) const {
        return findPrev(start, ConstString(&c, 1), mode);
    }
    bool contains(const ConstString& text, CompareMode mode = kMatchCase) const { return findNext(0, text, mode) >= 0; }
    /** Only an empty text starts or ends with an empty one. */
    bool startsWith(const ConstString& text, CompareMode mode = kMatchCase) const;
    bool endsWith(const ConstString& text, CompareMode mode = kMatchCase) const;
    /** Those that don't overlap, from start on. */
    int32_t countOccurences(const ConstString& text, uint32_t start = 0, CompareMode mode = kMatchCase) const;
    int32_t countOccurences(TextUnit auto c, uint32_t start = 0, CompareMode mode = kMatchCase) const {
        return countOccurences(ConstString(&c, 1), start, mode);
    }
    /** The index where the texts part, which may be the end of one; -1: they are equal. */
    int32_t getFirstDifferent(const ConstString& other, CompareMode mode = kMatchCase) const;

    /** Copies count characters from index on; false out of range. out may be this object. */
    bool extract(String& out, uint32_t index, int32_t count = -1) const;
    /** Copies and terminates, converted where the width differs; dst has room for count + 1 units. The result is the
        number of units copied. */
    int32_t copyTo8(char* dst, uint32_t index = 0, int32_t count = -1) const;
    int32_t copyTo16(tchar* dst, uint32_t index = 0, int32_t count = -1) const;
    void copyTo(IString& out) const;
    void copyTo(IStringResult* out) const;
    /** A value that borrows the text, in its own width. */
    void toVariant(FVariant& value) const;

    /** Reads a number as the C library's scanf does in the C locale. scanToEnd: at the first place from offset on that
        has one, otherwise at offset alone. false, and value as it was: there is none. Integers out of range become the
        nearest bound, and the 32-bit forms keep the low 32 bits of that. */
    bool scanInt64(int64_t& value, uint32_t offset = 0, bool scanToEnd = true) const;
    bool scanUInt64(uint64_t& value, uint32_t offset = 0, bool scanToEnd = true) const;
    bool scanInt32(int32_t& value, uint32_t offset = 0, bool scanToEnd = true) const;
    bool scanUInt32(uint32_t& value, uint32_t offset = 0, bool scanToEnd = true) const;
    /** Hexadecimal; the low 8 bits. */
    bool scanHex(uint8_t& value, uint32_t offset = 0, bool scanToEnd = true) const;
    /** '.' or ',' is the decimal mark. */
    bool scanFloat(double& value, uint32_t offset = 0, bool scanToEnd = true) const;
    /** Where the digits at the end of the text begin; -1: there are none, or not exactly width of them (0: any). */
    int32_t getTrailingNumberIndex(uint32_t width = 0) const;
    int64_t getTrailingNumber(int64_t otherwise = 0) const;

    bool isDigit(uint32_t index) const;
    bool isAsciiString() const;
    bool isNormalized(UnicodeNormalization form = kNormalizationC) const;
    /** The character at an index is c; false out of range and in the other width. */
    bool testChar8(uint32_t index, char c) const { return !isWide && index < len && buffer8[index] == c; }
    bool testChar16(uint32_t index, tchar c) const { return isWide && index < len && buffer16[index] == c; }

    /** Converts terminated text into dst, which has room for dstCount units, and terminates it; what doesn't fit is cut
        off at a whole character. The result counts units with the terminator; 0: src is malformed, and dst empty. A null
        dst asks for the size. */
    static int32_t multiByteToWideString(tchar* dst, const char* src, int32_t dstCount,
                                         uint32_t codePage = kCodePageDefault);
    /** The reverse; the result counts bytes with the terminator. A character that the code page lacks, a lone surrogate
        too, becomes one '?'. A null dst asks for a size that is surely enough. */
    static int32_t wideStringToMultiByte(char* dst, const tchar* src, int32_t dstCount,
                                         uint32_t codePage = kCodePageDefault);

    /** Unit by unit, the same in every locale; a unit whose other case is longer stays. 8 bits: ASCII alone. */
    static char toUpper(char c) { return isIn(c, 'a', 'z') ? char(c - 0x20) : c; }
    static char toLower(char c) { return isIn(c, 'A', 'Z') ? char(c + 0x20) : c; }
    static tchar toUpper(tchar c);
    static tchar toLower(tchar c);
    static bool isCharUpper(TextUnit auto c) { return toLower(c) != c; }
    static bool isCharLower(TextUnit auto c) { return toUpper(c) != c; }
    /** 16 bits: the blanks of Unicode alone, no tab, no line end; 8 bits: these too. */
    static bool isCharSpace(char c) { return c == ' ' || isIn(c, '\t', '\r'); }
    static bool isCharSpace(tchar c);
    /** ASCII letters and digits only, in both widths. */
    template <TextUnit Char>
    static constexpr bool isCharAlpha(Char c) {
        return isIn(Char(c | 0x20), 'a', 'z');
    }
    template <TextUnit Char>
    static constexpr bool isCharAlphaNum(Char c) {
        return isCharAlpha(c) || isCharDigit(c);
    }
    template <TextUnit Char>
    static constexpr bool isCharDigit(Char c) {
        return isIn(c, '0', '9');
    }
    template <TextUnit Char>
    static constexpr bool isCharAscii(Char c) {
        return (c & ~0x7F) == 0;
    }

protected:
    // mutable: reading a String in the other width converts it in place
    union {
        mutable void* buffer;
        mutable char* buffer8;
        mutable tchar* buffer16;
    };
    mutable uint32_t len : 30;    // in characters
    mutable uint32_t isWide : 1;  // which member of the union is meant

private:
    template <TextUnit Char>
    static constexpr bool isIn(Char c, char first, char last) {
        return c >= Char(first) && c <= Char(last);
    }
    /** A view of count characters from index on, as many as there are. */
    ConstString part(uint32_t index, int32_t count) const;
    friend class String;
    friend std::string_view units8(const ConstString& text);
    friend std::u16string_view units16(const ConstString& text);
};

/** The units of a text in the width that it has; the other function must not be asked. */
inline std::string_view units8(const ConstString& text) {
    return {text.buffer8, text.buffer8 ? text.len : 0u};
}
inline std::u16string_view units16(const ConstString& text) {
    return {text.buffer16, text.buffer16 ? text.len : 0u};
}

/** A text of its own, in a block of malloc. Editors that return the string return it also when they could do nothing. A
    source may be the string's own text. */
class String : public ConstString {
public:
    constexpr String() = default;
    String(const char* text, int32_t count = -1) { assign(text, count); }
    String(const tchar* text, int32_t count = -1) { assign(text, count); }
    String(const ConstString& text, int32_t count = -1) { assign(text, count); }
    String(const String& text) : ConstString() { assign(text); }
    String(String&& text) noexcept { swapContent(text); }
    explicit String(const FVariant& value) { assign(ConstString(value)); }
    constexpr ~String() override { freeBuffer(); }

    /** In the other width these convert the whole string in place with code page 0: the buffer moves, and characters
        that the code page lacks are lost. An unconvertible text reads as empty and stays. */
    const char* text8() const override;
    const tchar* text16() const override;
    char getChar8(uint32_t index) const override;
    tchar getChar16(uint32_t index) const override;
    /** Copies the text of an `IString`, which stays the caller's, in the string's present width: 8-bit text in the
        platform encoding, ASCII without one. false, and the old text stays, for null. */
    virtual bool fromCFStringRef(const void* ref, uint32_t encoding = kNoEncoding);

    /** The width of the source becomes the string's. */
    String& assign(const char* text, int32_t count = -1);
    String& assign(const tchar* text, int32_t count = -1);
    String& assign(const ConstString& text, int32_t count = -1);
    String& assign(char c, int32_t count = 1);
    String& assign(tchar c, int32_t count = 1);
    /** 16-bit text widens a narrow string, 8-bit text is widened for a wide one; an empty string takes on the source's
        width. */
    String& append(const char* text, int32_t count = -1) { return appendPart(ConstString(text, count)); }
    String& append(const tchar* text, int32_t count = -1) { return appendPart(ConstString(text, count)); }
    String& append(const ConstString& text, int32_t count = -1) {
        return appendPart(count < 0 ? text : text.part(0, count));
    }
    String& append(TextUnit auto c, int32_t count = 1) {
        const uint32_t end = len;
        const bool fits = isWide == (sizeof c == sizeof(tchar)) && (size_t(end) + 2) * sizeof c <= room;
        if (count != 1 || c == 0 || end == 0 || !fits)
            return appendRepeated(c, count);
        auto* const place = units<decltype(c)>() + end;
        place[0] = c;
        place[1] = 0;
        len = end + 1;
        return *this;
    }
    /** Nothing for an index past the end. */
    String& insertAt(uint32_t index, const char* text, int32_t count = -1) {
        return insertAt(index, ConstString(text, count));
    }
    String& insertAt(uint32_t index, const tchar* text, int32_t count = -1) {
        return insertAt(index, ConstString(text, count));
    }
    String& insertAt(uint32_t index, const ConstString& text, int32_t count = -1);
    String& insertAt(uint32_t index, TextUnit auto c) { return insertAt(index, ConstString(&c, 1)); }
    /** Puts text in the place of count characters at index. */
    String& replace(uint32_t index, int32_t count, const ConstString& text);
    /** Every occurrence of one text becomes another; the result is how many there were. */
    int32_t replace(const ConstString& what, const ConstString& with, CompareMode mode = kMatchCase);
    String& remove(uint32_t index = 0, int32_t count = -1);
    /** The first occurrence, or all; false: there was none. */
    bool removeSubString(const ConstString& text, bool allOccurences = true);
    /** What trim takes off the ends, everywhere. True: something went. */
    bool removeChars(CharGroup group = kWhiteSpace);
    /** Every character of a list. A 16-bit list widens a narrow string, an 8-bit one is widened for a wide one. */
    bool removeChars8(const char* list);
    bool removeChars16(const tchar* list);
    /** Every character of a list becomes another one, which isn't 0. */
    bool replaceChars8(const char* list, char with);
    bool replaceChars16(const tchar* list, tchar with);
    String& operator=(const ConstString& text) { return assign(text); }
    String& operator=(const String& text) { return assign(text); }
    String& operator=(String&& text) noexcept;
    String& operator=(const char* text) { return assign(text); }
    String& operator=(const tchar* text) { return assign(text); }
    String& operator=(TextUnit auto c) { return assign(c); }
    String& operator+=(const ConstString& text) { return append(text); }
    String& operator+=(const char* text) { return append(text); }
    String& operator+=(const tchar* text) { return append(text); }
    String& operator+=(TextUnit auto c) { return append(c); }

    /** Takes off both ends what isn't in the group; for white space, what is. True: something went. */
    bool trim(CharGroup group = kWhiteSpace);
    void toLower();
    void toUpper();
    void toLower(uint32_t index);
    void toUpper(uint32_t index);
    /** false out of range. A 0 ends the text there. A 16-bit character widens a narrow string. */
    bool setChar8(uint32_t index, char c);
    bool setChar16(uint32_t index, tchar c);

    /** Makes room for so many characters of a width. The length isn't touched, 0 apart: fill the block, then
        updateLength. fill: blanks for what is beyond the length. */
    bool resize(uint32_t newLength, bool wide, bool fill = false);
    /** Counts the length anew, up to the first terminator. */
    void updateLength();
    /** The block to fill after resize, in its own width; null when that is another one, or without a block. */
    char* writable8() { return isWide ? nullptr : buffer8; }
    tchar* writable16() { return isWide ? buffer16 : nullptr; }

    /** Makes 16-bit text of text in a code page; true when it is wide already. */
    bool toWideString(uint32_t codePage = kCodePageDefault);
    /** Makes 8-bit text in a code page. A narrow string is taken as code page 0. */
    bool toMultiByte(uint32_t codePage = kCodePageDefault);
    /** Of a wide string; false for a narrow one. */
    bool normalize(UnicodeNormalization form = kNormalizationC);
    /** 16-bit text from UTF-8; false, and the old text stays, for malformed input. Null is empty. */
    bool fromUTF8(const char* text);
    /** A byte of length and so many bytes, 8-bit text. */
    void fromPascalString(const unsigned char* text);
    /** The reverse, cut at 255 bytes; dst has room for 256. The result is the length. */
    int32_t toPascalString(unsigned char* dst) const;
    /** Copies a text; false, and the old text stays, for another kind. */
    bool fromVariant(const FVariant& value);
    /** The variant owns the text afterwards, and the string is empty. */
    void passToVariant(FVariant& value);
    /** The text under a key. */
    bool toAttributes(IAttributes* attributes, const char* key) const;
    bool fromAttributes(IAttributes* attributes, const char* key);

    /** As the C library formats in the C locale; results are cut at 4095 characters. Arguments may be the string's own
        text. In a 16-bit format the two characters "%s" are always read as "%S", which takes a tchar*; %s with a width
        or a precision takes a char* in code page 0. Formats are the program's own: never one that came from outside. */
    String& printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    String& printf(const tchar* format, ...);
    String& vprintf(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));
    String& vprintf(const tchar* format, va_list arguments);
    /** In the string's present width. */
    String& printInt64(int64_t value);
    /** Six digits behind the point without trailing zeros, but at least one. */
    String& printFloat(double value);
    /** Counts up the number at the end of the text, or begins with 1; at least minNumber, and with at least width
        digits. A separator stands between text and number; 0: none. applyOnlyFormat: the number that is there stays.
        false: the width is above 32. */
    bool incrementTrailingNumber(uint32_t width = 2, tchar separator = u' ', uint32_t minNumber = 1,
                                 bool applyOnlyFormat = false);

    /** Adopts a terminated block of malloc, null too. */
    void take(void* text, bool wide);
    /** Empties the other string. */
    void take(String& other);
    /** Hands the block to the caller, who frees it with free(); null for an empty string. The width stays. */
    void* pass();
    void swapContent(String& other);

protected:
    uint32_t countedLength() const;
    constexpr void freeBuffer() {
        if (buffer)
            std::free(buffer);
    }

private:
    template <class Char>
    Char* units() const {
        if constexpr (sizeof(Char) == 1)
            return buffer8;
        else
            return buffer16;
    }
    bool owns(const void* text) const;
    void setBlock(void* block, uint32_t newLength, bool wide) const;
    bool hasRoom(uint32_t newLength) const { return (size_t(newLength) + 1) << isWide <= room; }
    bool makeRoom(uint32_t newLength);
    void terminate() {
        if (isWide)
            buffer16[len] = 0;
        else
            buffer8[len] = 0;
    }
    template <class Char>
    String& assignUnits(const Char* text, uint32_t count);
    template <class Char>
    String& assignRepeated(Char c, int32_t count);
    String& appendRepeated(char c, int32_t count);
    String& appendRepeated(tchar c, int32_t count);
    String& appendPart(const ConstString& text);
    template <class Char>
    String& replaceUnits(uint32_t index, uint32_t removed, const Char* text, uint32_t count);
    String& replaceRange(uint32_t index, uint32_t removed, const ConstString& text);
    template <class Char>
    int32_t replaceAll(std::basic_string_view<Char> what, std::basic_string_view<Char> with, CompareMode mode);
    template <class Char>
    bool setUnit(uint32_t index, Char c);
    template <class Test>
    bool removeUnits(Test test);
    template <class Char, class Call>
    bool withList(const Char* list, Call call);
    template <class Char>
    bool removeListed(const Char* list);
    template <class Char>
    bool replaceListed(const Char* list, Char with);
    bool convert(bool wide, uint32_t codePage) const;
    template <class Map>
    void mapUnits(uint32_t from, uint32_t to, Map map);

    mutable uint32_t room = 0;  // bytes of the block, as far as they are known
};

/** A string that streams store.

    Form   a signed 32-bit count of bytes, 0 for the empty string, and the bytes: 8-bit text with its terminator, or
           UTF-8 with its terminator and the three bytes EF BB BF behind it. */
class FString : public String {
public:
    constexpr FString() = default;
    using String::String;
    FString(const String& text) : String(text) {}
    FString(const FString&) = default;
    FString(FString&&) noexcept = default;
    using String::operator=;
    FString& operator=(const FString&) = default;
    FString& operator=(FString&&) noexcept = default;

    /** More than 50000 bytes are skipped. false, and the old text stays: too long or cut off. What should be UTF-8 and
        is malformed stays 8-bit. */
    bool load(FStreamer& stream);
    bool store(FStreamer& stream) const;
    /** The text of a form whose bytes are here, without their count. False: no memory. */
    bool fromStored(std::string_view bytes);
    /** The same on an archive's stream. */
    bool internalize(FArchive& archive);
    bool externalize(FArchive& archive) const;
    /** Write the stored form of raw text; null is empty. */
    static bool storeString8(FStreamer& stream, const char* text, int32_t count = -1);
    static bool storeString16(FStreamer& stream, const tchar* text, int32_t count = -1);
};

/** An empty string that is always there. */
extern const FString FEmptyString;

}  // namespace Tessarine
