#pragma once
#include "pluginterfaces/base/conststringtable.h"
#include <cstdarg>
#include <cstdlib>

namespace Tessarine {
class FStreamer;
class FVariant;
class IString;
class IStringResult;
class String;

/** One string family for the whole system. An object holds either 8-bit or 16-bit text and changes between the two on
    demand.

    Widths     8-bit text stands in code page 0, the default of the system; 16-bit text is UTF-16. UTF-8 comes in by
               fromUTF8 and goes out by a copy with toMultiByte(65001); it is never parked in a narrow string.
    Counts     a count of -1 means up to the terminator, or all; a count never reads past the terminator.
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

/** The empty text, never null. */
[[maybe_unused]] static const tchar* const kEmptyString16 = ConstStringTable::instance()->getString("");
[[maybe_unused]] static const tchar* const kEmptyString = kEmptyString16;

/** h = (c + (h << 6)) % n over the characters, a char sign-extended; 0 for null or empty text. n is above 0. */
uint32_t hashString8(const char* text, uint32_t n);
uint32_t hashString16(const tchar* text, uint32_t n);

/** Natural order, in which numbers inside the texts compare by value: below, at or above 0. Null is empty. */
int32_t strnatcmp8(const char* a, const char* b, bool caseSensitive = true);
int32_t strnatcmp16(const tchar* a, const tchar* b, bool caseSensitive = true);

/** A read-only view of a text that somebody else owns, so that it can be compared and searched without a copy.

    The text must outlive the view unchanged. Null is allowed and means empty. In the other width than its own a view
    reads as empty. A view of a part isn't terminated behind it: make a String of it for text8 or text16. */
class ConstString {
public:
    static constexpr uint32_t kMaxLength = (1u << 30) - 1;  // characters

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

    bool isEmpty() const { return !buffer || len == 0; }
    bool isWideString() const { return isWide; }

    /** Below, at or above 0. A count compares at most so many characters. Ignoring case, 16-bit text gives -1 to 1. */
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
    int32_t findNext(int32_t start, char c, CompareMode mode = kMatchCase, int32_t end = -1) const;
    int32_t findNext(int32_t start, tchar c, CompareMode mode = kMatchCase, int32_t end = -1) const;
    /** The last place at or before start (-1: from the end), or -1. */
    int32_t findPrev(int32_t start, const ConstString& text, CompareMode mode = kMatchCase) const;
    int32_t findPrev(int32_t start, char c, CompareMode mode = kMatchCase) const;
    int32_t findPrev(int32_t start, tchar c, CompareMode mode = kMatchCase) const;
    bool contains(const ConstString& text, CompareMode mode = kMatchCase) const { return findNext(0, text, mode) >= 0; }
    /** Only an empty text starts or ends with an empty one. */
    bool startsWith(const ConstString& text, CompareMode mode = kMatchCase) const;
    bool endsWith(const ConstString& text, CompareMode mode = kMatchCase) const;

    /** Copies count characters from index on; false out of range. out may be this object. */
    bool extract(String& out, uint32_t index, int32_t count = -1) const;
    /** Copies and terminates, converted where the width differs; dst has room for count + 1 units. The result is the
        number of units copied. */
    int32_t copyTo8(char* dst, uint32_t index = 0, int32_t count = -1) const;
    int32_t copyTo16(tchar* dst, uint32_t index = 0, int32_t count = -1) const;
    void copyTo(IString& out) const;
    void copyTo(IStringResult* out) const;

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

    bool isDigit(uint32_t index) const;
    bool isAsciiString() const;

    /** Converts terminated text into dst, which has room for dstCount units, and terminates it; what doesn't fit is cut
        off at a whole character. The result counts units with the terminator; 0: src is malformed. A null dst asks for
        the size. */
    static int32_t multiByteToWideString(tchar* dst, const char* src, int32_t dstCount,
                                         uint32_t codePage = kCodePageDefault);
    /** The reverse; the result counts bytes with the terminator. A character that the code page lacks, a lone surrogate
        too, becomes one '?'. A null dst asks for a size that is surely enough. */
    static int32_t wideStringToMultiByte(char* dst, const tchar* src, int32_t dstCount,
                                         uint32_t codePage = kCodePageDefault);

    /** Unit by unit, the same in every locale; a unit whose other case is longer stays. 8 bits: ASCII alone. */
    static char toUpper(char c);
    static char toLower(char c);
    static tchar toUpper(tchar c);
    static tchar toLower(tchar c);
    static bool isCharUpper(char c);
    static bool isCharUpper(tchar c);
    static bool isCharLower(char c);
    static bool isCharLower(tchar c);
    /** 16 bits: the blanks of Unicode alone, no tab, no line end; 8 bits: these too. */
    static bool isCharSpace(char c);
    static bool isCharSpace(tchar c);
    /** ASCII letters and digits only, in both widths. */
    static bool isCharAlpha(char c);
    static bool isCharAlpha(tchar c);
    static bool isCharAlphaNum(char c);
    static bool isCharAlphaNum(tchar c);
    static bool isCharDigit(char c);
    static bool isCharDigit(tchar c);
    static bool isCharAscii(char c) { return (c & 0x80) == 0; }
    static bool isCharAscii(tchar c) { return c < 0x80; }

protected:
    // mutable: reading a String in the other width converts it in place
    union {
        mutable void* buffer;
        mutable char* buffer8;
        mutable tchar* buffer16;
    };
    mutable uint32_t len : 30;    // in characters
    mutable uint32_t isWide : 1;  // which member of the union is meant
};

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

    /** The width of the source becomes the string's. */
    String& assign(const char* text, int32_t count = -1);
    String& assign(const tchar* text, int32_t count = -1);
    String& assign(const ConstString& text, int32_t count = -1);
    String& assign(char c, int32_t count = 1);
    String& assign(tchar c, int32_t count = 1);
    /** 16-bit text widens a narrow string, 8-bit text is widened for a wide one; an empty string takes on the source's
        width. */
    String& append(const char* text, int32_t count = -1);
    String& append(const tchar* text, int32_t count = -1);
    String& append(const ConstString& text, int32_t count = -1);
    String& append(char c, int32_t count = 1);
    String& append(tchar c, int32_t count = 1);
    /** Nothing for an index past the end. */
    String& insertAt(uint32_t index, const char* text, int32_t count = -1);
    String& insertAt(uint32_t index, const tchar* text, int32_t count = -1);
    String& insertAt(uint32_t index, const ConstString& text, int32_t count = -1);
    String& insertAt(uint32_t index, char c) { return insertAt(index, ConstString(&c, 1)); }
    String& insertAt(uint32_t index, tchar c) { return insertAt(index, ConstString(&c, 1)); }
    /** Puts text in the place of count characters at index. */
    String& replace(uint32_t index, int32_t count, const ConstString& text);
    /** Every occurrence of one text becomes another; the result is how many there were. */
    int32_t replace(const ConstString& what, const ConstString& with, CompareMode mode = kMatchCase);
    String& remove(uint32_t index = 0, int32_t count = -1);
    String& operator=(const char* text) { return assign(text); }
    String& operator=(const tchar* text) { return assign(text); }
    String& operator=(const ConstString& text) { return assign(text); }
    String& operator=(const String& text) { return assign(text); }
    String& operator=(String&& text) noexcept;
    String& operator=(char c) { return assign(c); }
    String& operator=(tchar c) { return assign(c); }
    String& operator+=(const char* text) { return append(text); }
    String& operator+=(const tchar* text) { return append(text); }
    String& operator+=(const ConstString& text) { return append(text); }
    String& operator+=(char c) { return append(c); }
    String& operator+=(tchar c) { return append(c); }

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
    /** 16-bit text from UTF-8; false, and the old text stays, for malformed input. Null is empty. */
    bool fromUTF8(const char* text);

    /** As the C library formats in the C locale; results are cut at 4095 characters. In a 16-bit format "%s" takes a
        tchar*; %s with a width or a precision takes a char* in code page 0. */
    String& printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    String& printf(const tchar* format, ...);
    String& vprintf(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));
    String& vprintf(const tchar* format, va_list arguments);
    /** In the string's present width. */
    String& printInt64(int64_t value);
    /** Six digits behind the point without trailing zeros, but at least one. */
    String& printFloat(double value);

    /** Adopts a terminated block of malloc, null too. */
    void take(void* text, bool wide);
    /** Empties the other string. */
    void take(String& other);
    /** Hands the block to the caller, who frees it with free(); null for an empty string. The width stays. */
    void* pass();
    void swapContent(String& other);

protected:
    constexpr void freeBuffer() {
        if (buffer)
            std::free(buffer);
    }

private:
    template <class Char>
    Char* units() const;
    bool owns(const void* text) const;
    void setBlock(void* block, uint32_t newLength, bool wide) const;
    template <class Char>
    String& assignUnits(const Char* text, uint32_t count);
    template <class Char>
    String& assignRepeated(Char c, int32_t count);
    template <class Char>
    String& replaceUnits(uint32_t index, uint32_t removed, const Char* text, uint32_t count);
    String& replaceRange(uint32_t index, uint32_t removed, const ConstString& text);
    bool widen(uint32_t codePage) const;
    bool narrow(uint32_t codePage) const;
    template <class Map>
    void mapUnits(uint32_t from, uint32_t to, Map map);
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

    /** More than 50000 bytes are skipped. false, and the old text stays: too long, cut off or malformed. */
    bool load(FStreamer& stream);
    bool store(FStreamer& stream) const;
    /** Write the stored form of raw text; null is empty. */
    static bool storeString8(FStreamer& stream, const char* text, int32_t count = -1);
    static bool storeString16(FStreamer& stream, const tchar* text, int32_t count = -1);
};

/** An empty string that is always there. */
extern const FString FEmptyString;

}  // namespace Tessarine
