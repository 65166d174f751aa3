#include "frame/source/graphics/cairo/cairocells.h"
#include <algorithm>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessarine::Graphics {
namespace {
constexpr int64_t kMaxCell = 1 << 16;     // pixels; larger ones are seldom drawn twice alike
constexpr size_t kMaxAllCells = 1 << 21;  // pixels: 8 MB, and then all go

StretchedCells* gShared = nullptr;  // borrowed

uint32_t part255(uint32_t value, uint32_t of255) {
    const uint32_t product = value * of255 + 0x80;
    return (product + (product >> 8)) >> 8;
}

uint32_t dimmed(uint32_t pixel, uint32_t of255) {
    uint32_t result = 0;
    for (int32_t shift = 0; shift < 32; shift += 8)
        result |= part255(pixel >> shift & 0xFF, of255) << shift;
    return result;
}

uint32_t summed(uint32_t a, uint32_t b) {
    uint32_t result = 0;
    for (int32_t shift = 0; shift < 32; shift += 8)
        result |= std::min<uint32_t>((a >> shift & 0xFF) + (b >> shift & 0xFF), 255) << shift;
    return result;
}

#ifdef __SSE2__
/** Eight channels of 16 bits times 255ths, rounded as above. */
__m128i part255(__m128i values, __m128i of255) {
    const __m128i product = _mm_add_epi16(_mm_mullo_epi16(values, of255), _mm_set1_epi16(0x80));
    return _mm_mulhi_epu16(product, _mm_set1_epi16(0x0101));
}

/** Four pixels, each by what stands in both halves of its word. */
__m128i dimmed(__m128i pixels, __m128i of255) {
    const __m128i even = part255(_mm_and_si128(pixels, _mm_set1_epi16(0xFF)), of255);
    const __m128i odd = part255(_mm_srli_epi16(pixels, 8), of255);
    return _mm_or_si128(even, _mm_slli_epi16(odd, 8));
}

__m128i laidOver(__m128i to, __m128i from) {
    const __m128i rest = _mm_sub_epi32(_mm_set1_epi32(255), _mm_srli_epi32(from, 24));
    return _mm_adds_epu8(from, dimmed(to, _mm_or_si128(rest, _mm_slli_epi32(rest, 16))));
}

bool allOf(__m128i comparison) {
    return _mm_movemask_epi8(comparison) == 0xFFFF;
}

/** Four pixels at a time; answers how many are done. */
int32_t blendFours(uint32_t* to, const uint32_t* from, int32_t count, uint32_t opacity) {
    const __m128i alphaBits = _mm_set1_epi32(int32_t(0xFF000000)), zero = _mm_setzero_si128();
    const __m128i factor = _mm_set1_epi16(int16_t(opacity));
    int32_t done = 0;
    for (; done + 4 <= count; done += 4) {
        auto* place = reinterpret_cast<__m128i*>(to + done);
        __m128i source = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
        if (opacity != 255)
            source = dimmed(source, factor);
        if (allOf(_mm_cmpeq_epi32(source, zero)))
            continue;
        const bool opaque = allOf(_mm_cmpeq_epi32(_mm_and_si128(source, alphaBits), alphaBits));
        _mm_storeu_si128(place, opaque ? source : laidOver(_mm_loadu_si128(place), source));
    }
    return done;
}
#else
int32_t blendFours(uint32_t*, const uint32_t*, int32_t, uint32_t) {
    return 0;
}
#endif
}  // namespace

void blendRowPlain(uint32_t* to, const uint32_t* from, int32_t count, uint32_t opacity) {
    for (int32_t index = 0; index < count; ++index) {
        const uint32_t source = opacity == 255 ? from[index] : dimmed(from[index], opacity);
        to[index] = summed(source, dimmed(to[index], 255 - (source >> 24)));
    }
}

void blendRow(uint32_t* to, const uint32_t* from, int32_t count, uint32_t opacity) {
    const int32_t done = blendFours(to, from, count, opacity);
    blendRowPlain(to + done, from + done, count - done, opacity);
}

void copyRow(uint32_t* to, const uint32_t* from, int32_t count, uint32_t /*opacity*/) {
    std::copy_n(from, count, to);
}

PartPattern::PartPattern(const PixelRows& pixels, const PixelRect& part, bool copied) : part(part) {
    const int32_t width = part.right - part.left, height = part.bottom - part.top;
    PixelRows rows = pixels.from(part.left, part.top);
    if (copied) {
        copy.resize(size_t(width) * size_t(height));
        const PixelRows own = {copy.data(), width};
        for (int32_t y = 0; y < height; ++y)
            std::copy_n(rows.at(0, y), width, own.at(0, y));
        rows = own;
    }
    view.reset(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(rows.first), CAIRO_FORMAT_ARGB32,
                                                   width, height, int(rows.stride) * int(sizeof(uint32_t))));
    pattern = cairo_pattern_create_for_surface(view.get());
    cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
}

void PartPattern::place(const Rect& source, const Rect& target, cairo_filter_t filter) {
    const double across = source.width / target.width, down = source.height / target.height;
    const cairo_matrix_t matrix = {
        across, 0, 0, down, source.x - part.left - target.x * across, source.y - part.top - target.y * down};
    cairo_pattern_set_matrix(pattern, &matrix);
    cairo_pattern_set_filter(pattern, filter);
}

IPtr<StretchedCells> StretchedCells::shared() {
    if (gShared)
        return gShared;
    gShared = new StretchedCells;
    return OPtr<StretchedCells>(gShared);
}

StretchedCells::~StretchedCells() {
    gShared = nullptr;
}

size_t StretchedCells::Key::hash() const {
    uint64_t result = stamp;
    for (const int32_t number : {source.left, source.top, source.right, source.bottom, width, height, int32_t(filter)})
        result = (result ^ uint32_t(number)) * 0x9E3779B97F4A7C15;
    return size_t(result >> 32);
}

void StretchedCells::empty() {
    std::ranges::fill(cells, Cell());
    total = 0;
}

StretchedCells::Found StretchedCells::find(CairoBitmap* bitmap, const PixelRect& source, int32_t width, int32_t height,
                                           cairo_filter_t filter) {
    const int64_t size = int64_t(width) * height;
    if (size > kMaxCell)
        return {};
    const Key key = {bitmap->getStamp(), source, width, height, filter};
    Cell& cell = cells[key.hash() % cells.size()];
    if (cell.key != key) {
        if (total - cell.pixels.size() + size_t(size) > kMaxAllCells)
            empty();
        total -= cell.pixels.size();
        cell = stretched(key, bitmap);
        total += cell.pixels.size();
    }
    return {
        {cell.pixels.data(), width},
        cell.isOpaque
    };
}

StretchedCells::Cell StretchedCells::stretched(const Key& key, CairoBitmap* bitmap) {
    Cell cell = {key, std::vector<uint32_t>(size_t(key.width) * size_t(key.height))};
    const SurfaceHolder surface(
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(cell.pixels.data()), CAIRO_FORMAT_ARGB32,
                                            key.width, key.height, key.width * 4));
    const PixelRect& part = key.source;
    PartPattern pattern(bitmap->getSurfacePixels(), part, false);
    pattern.place({double(part.left), double(part.top), double(part.right) - part.left, double(part.bottom) - part.top},
                  {0, 0, double(key.width), double(key.height)}, key.filter);
    cairo_t* context = cairo_create(surface.get());
    cairo_set_source(context, pattern.get());
    cairo_paint(context);
    cairo_destroy(context);
    cairo_surface_flush(surface.get());
    cell.isOpaque = std::ranges::all_of(cell.pixels, [](uint32_t pixel) { return pixel >> 24 == 0xFF; });
    return cell;
}

}  // namespace Tessarine::Graphics
