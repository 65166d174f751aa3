// Texts: conversions, formatting, comparing, editing and scanning, each peer by its own natural call.
#include "base/source/fstring.h"
#include <benchmark/benchmark.h>
#include <functional>
#include <string>
#include <unicode/ucol.h>
#include <unicode/ustring.h>
#ifdef BENCH_QT
#include <QHash>
#include <QString>
#endif

using namespace Tessarine;

namespace {
constexpr size_t kTextBytes = 16384;

/** As long as so many bytes allow, whole pieces only. */
std::string repeated(const std::string& piece, size_t bytes) {
    std::string text;
    while (text.size() + piece.size() <= bytes)
        text += piece;
    return text;
}

std::u16string widened(const std::string& utf8) {
    String text;
    text.fromUTF8(utf8.c_str());
    return text.text16();
}

const std::string kAscii = repeated("Preamp 12: gain +34.5 dB, pad off, phantom power on. ", kTextBytes);
/** What a list of names in several languages looks like: mostly Latin, and no stretch is long. */
const std::string kMixed = repeated(
    "Vorverst\u00E4rker f\u00FCr die B\u00FChne, Kan\u00E4le 1\u20138; \u041C\u0438\u043A\u0440\u043E\u0444\u043E\u043D "
    "overhead left (spare), "
    "\u30DE\u30A4\u30AF 3 \u2013 na\u00EFve caf\u00E9 in the second row, \U0001F3A4 solo, guitar amp, bass DI, keys L/R. ",
    kTextBytes);
const std::u16string kName = u"Overhead Left Condenser, Stage Box B, Channel 12";  // 48 units
const std::u16string kNameShouted = u"OVERHEAD LEFT CONDENSER, STAGE BOX B, CHANNEL 12";
const std::u16string kPort9 = u"stage box 2, input 9", kPort10 = u"stage box 2, input 10";
const std::u16string kWord = u"headamp.gain.channel.12.position";  // 32 units
const std::string kSentence = repeated("one two three two one ", 4096);
const std::u16string kSentence16(kSentence.begin(), kSentence.end());
constexpr uint32_t kBuckets = 1009;
constexpr int32_t kAppends = 1000;

}  // namespace

struct Ours {
    using Text = String;
    static Text text(const std::u16string& units) { return Text(units.c_str()); }
    static Text fromUtf8(const std::string& utf8) {
        Text text;
        text.fromUTF8(utf8.c_str());
        return text;
    }
    static void roundTrip(Text& text) {
        text.toMultiByte(kCodePageUTF8);
        text.toWideString(kCodePageUTF8);
    }
    static Text print() { return Text().printf(u"%s %d: %.2f dB (%u)", u"Overhead", 12, 34.5, 7u); }
    static int compareIgnoringCase(const Text& a, const Text& b) { return a.compare(b, kIgnoreCase); }
    static int compareNatural(const Text& a, const Text& b) { return a.naturalCompare(b); }
    static uint32_t hash(const Text& text) { return hashString16(text.text16(), kBuckets); }
    static void append(Text& text, char16_t unit) { text.append(unit); }
    static void append(Text& text, const Text& word) { text.append(word); }
    static void replaceAll(Text& text) { text.replace(u"two", u"fourteen"); }
    static int64_t scanInt(const Text& text) {
        int64_t value = 0;
        text.scanInt64(value, 0, false);
        return value;
    }
    static double scanFloat(const Text& text) {
        double value = 0;
        text.scanFloat(value, 0, false);
        return value;
    }
};

/** Text in eight bits, beside peers that have it so. */
struct OursNarrow : Ours {
    static Text text(const std::u16string& units) {
        Text text(units.c_str());
        text.toMultiByte();
        return text;
    }
    static Text print() { return Text().printf("%s %d: %.2f dB (%u)", "Overhead", 12, 34.5, 7u); }
    static uint32_t hash(const Text& text) { return hashString8(text.text8(), kBuckets); }
    static void append(Text& text, char16_t unit) { text.append(char(unit)); }
    static void append(Text& text, const Text& word) { text.append(word); }
    static void replaceAll(Text& text) { text.replace("two", "fourteen"); }
};

struct Icu {
    using Text = std::u16string;
    static Text text(const std::u16string& units) { return units; }
    static Text fromUtf8(const std::string& utf8) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t size = 0;
        Text units(utf8.size(), u'\0');
        u_strFromUTF8(units.data(), int32_t(units.size()), &size, utf8.data(), int32_t(utf8.size()), &error);
        units.resize(size_t(size));
        return units;
    }
    static void roundTrip(Text& text) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t size = 0;
        std::string utf8(2 * kTextBytes, '\0');
        u_strToUTF8(utf8.data(), int32_t(utf8.size()), &size, text.data(), int32_t(text.size()), &error);
        utf8.resize(size_t(size));
        text = fromUtf8(utf8);
    }
    static int compareIgnoringCase(const Text& a, const Text& b) {
        UErrorCode error = U_ZERO_ERROR;
        return u_strCaseCompare(a.data(), int32_t(a.size()), b.data(), int32_t(b.size()), U_FOLD_CASE_DEFAULT, &error);
    }
    static int compareNatural(const Text& a, const Text& b) {
        static UCollator* const collator = [] {
            UErrorCode error = U_ZERO_ERROR;
            UCollator* made = ucol_open("", &error);
            ucol_setAttribute(made, UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
            return made;
        }();
        return ucol_strcoll(collator, a.data(), int32_t(a.size()), b.data(), int32_t(b.size()));
    }
};

struct Std {
    using Text = std::string;
    static Text text(const std::u16string& units) { return {units.begin(), units.end()}; }
    static Text print() {
        char text[128];
        return {text, size_t(snprintf(text, sizeof text, "%s %d: %.2f dB (%u)", "Overhead", 12, 34.5, 7u))};
    }
    static uint32_t hash(const Text& text) { return uint32_t(std::hash<Text>()(text) % kBuckets); }
    static void append(Text& text, char16_t unit) { text += char(unit); }
    static void append(Text& text, const Text& word) { text += word; }
    static void replaceAll(Text& text) {
        Text result;
        size_t from = 0;
        for (size_t at; (at = text.find("two", from)) != text.npos; from = at + 3)
            result.append(text, from, at - from).append("fourteen");
        text = result.append(text, from);
    }
    static int64_t scanInt(const Text& text) { return std::stoll(text); }
    static double scanFloat(const Text& text) { return std::stod(text); }
};

#ifdef BENCH_QT
struct Qt5 {
    using Text = QString;
    static Text text(const std::u16string& units) { return Text::fromStdU16String(units); }
    static Text fromUtf8(const std::string& utf8) { return Text::fromUtf8(utf8.data(), int(utf8.size())); }
    static void roundTrip(Text& text) { text = Text::fromUtf8(text.toUtf8()); }
    static Text print() {
        const char16_t* name = u"Overhead";
        return Text::asprintf("%ls %d: %.2f dB (%u)", reinterpret_cast<const wchar_t*>(name), 12, 34.5, 7u);
    }
    static int compareIgnoringCase(const Text& a, const Text& b) { return a.compare(b, Qt::CaseInsensitive); }
    static uint32_t hash(const Text& text) { return qHash(text) % kBuckets; }
    static void append(Text& text, char16_t unit) { text += QChar(unit); }
    static void append(Text& text, const Text& word) { text += word; }
    static void replaceAll(Text& text) { text.replace(QLatin1String("two"), QLatin1String("fourteen")); }
    static int64_t scanInt(const Text& text) { return text.toLongLong(); }
    static double scanFloat(const Text& text) { return text.toDouble(); }
};
#endif

/** Time of a thousand bytes of UTF-8. */
template <class Peer>
void Utf8ToUtf16(benchmark::State& state, const std::string& utf8) {
    for (auto _ : state) {
        auto text = Peer::fromUtf8(utf8);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * int64_t(utf8.size()) / 1000);
}
/** To UTF-8 and back. */
template <class Peer>
void RoundTrip(benchmark::State& state, const std::string& utf8) {
    auto text = Peer::text(widened(utf8));
    for (auto _ : state) {
        Peer::roundTrip(text);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * int64_t(utf8.size()) / 1000);
}
template <class Peer>
void Utf8ToUtf16Ascii(benchmark::State& state) {
    Utf8ToUtf16<Peer>(state, kAscii);
}
template <class Peer>
void Utf8ToUtf16Mixed(benchmark::State& state) {
    Utf8ToUtf16<Peer>(state, kMixed);
}
template <class Peer>
void RoundTripAscii(benchmark::State& state) {
    RoundTrip<Peer>(state, kAscii);
}
template <class Peer>
void RoundTripMixed(benchmark::State& state) {
    RoundTrip<Peer>(state, kMixed);
}

/** Four fields: text, integer, two decimals, unsigned. */
template <class Peer>
void Print(benchmark::State& state) {
    for (auto _ : state) {
        auto text = Peer::print();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class Peer>
void CompareIgnoringCase(benchmark::State& state) {
    const auto a = Peer::text(kName), b = Peer::text(kNameShouted);
    for (auto _ : state)
        benchmark::DoNotOptimize(Peer::compareIgnoringCase(a, b));
    state.SetItemsProcessed(state.iterations());
}

template <class Peer>
void CompareNatural(benchmark::State& state) {
    const auto a = Peer::text(kPort9), b = Peer::text(kPort10);
    for (auto _ : state)
        benchmark::DoNotOptimize(Peer::compareNatural(a, b));
    state.SetItemsProcessed(state.iterations());
}

/** A key of 32 characters into 1009 buckets. */
template <class Peer>
void HashText(benchmark::State& state) {
    auto text = Peer::text(kWord);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(Peer::hash(text));
    }
    state.SetItemsProcessed(state.iterations());
}

/** A text grows by a thousand characters, or words of eight; time of one. */
template <class Peer>
void AppendUnit(benchmark::State& state) {
    for (auto _ : state) {
        typename Peer::Text text;
        for (int32_t i = 0; i < kAppends; ++i)
            Peer::append(text, u'x');
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * kAppends);
}
template <class Peer>
void AppendWord(benchmark::State& state) {
    const auto word = Peer::text(u"channel ");
    for (auto _ : state) {
        typename Peer::Text text;
        for (int32_t i = 0; i < kAppends; ++i)
            Peer::append(text, word);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * kAppends);
}

/** In a text of 4 KB with about 370 places, the copying of the text included. */
template <class Peer>
void ReplaceAll(benchmark::State& state) {
    const auto original = Peer::text(kSentence16);
    for (auto _ : state) {
        auto text = original;
        Peer::replaceAll(text);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class Peer>
void ScanInteger(benchmark::State& state) {
    auto text = Peer::text(u"-1234567");
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(Peer::scanInt(text));
    }
    state.SetItemsProcessed(state.iterations());
}
template <class Peer>
void ScanFloat(benchmark::State& state) {
    auto text = Peer::text(u"-34.53125");
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        benchmark::DoNotOptimize(Peer::scanFloat(text));
    }
    state.SetItemsProcessed(state.iterations());
}

#define BENCHMARK_CONVERSIONS(Peer)             \
    BENCHMARK_TEMPLATE(Utf8ToUtf16Ascii, Peer); \
    BENCHMARK_TEMPLATE(Utf8ToUtf16Mixed, Peer); \
    BENCHMARK_TEMPLATE(RoundTripAscii, Peer);   \
    BENCHMARK_TEMPLATE(RoundTripMixed, Peer);   \
    BENCHMARK_TEMPLATE(CompareIgnoringCase, Peer)
#define BENCHMARK_WIDTH(Family, Peer, Width, Whose) BENCHMARK_TEMPLATE(Family, Peer)->Name(#Family #Width "<" Whose ">")
#define BENCHMARK_EDITS(Peer, Width, Whose)           \
    BENCHMARK_WIDTH(Print, Peer, Width, Whose);       \
    BENCHMARK_WIDTH(HashText, Peer, Width, Whose);    \
    BENCHMARK_WIDTH(AppendUnit, Peer, Width, Whose);  \
    BENCHMARK_WIDTH(AppendWord, Peer, Width, Whose);  \
    BENCHMARK_WIDTH(ReplaceAll, Peer, Width, Whose);  \
    BENCHMARK_WIDTH(ScanInteger, Peer, Width, Whose); \
    BENCHMARK_WIDTH(ScanFloat, Peer, Width, Whose)

BENCHMARK_CONVERSIONS(Ours);
BENCHMARK_EDITS(Ours, 16, "Ours");
BENCHMARK_EDITS(OursNarrow, 8, "Ours");
BENCHMARK_TEMPLATE(CompareNatural, Ours);
BENCHMARK_CONVERSIONS(Icu);
BENCHMARK_TEMPLATE(CompareNatural, Icu);
BENCHMARK_EDITS(Std, 8, "Std");
#ifdef BENCH_QT
BENCHMARK_CONVERSIONS(Qt5);
BENCHMARK_EDITS(Qt5, 16, "Qt5");
#endif
