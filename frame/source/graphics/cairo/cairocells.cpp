#include "frame/source/graphics/cairo/cairocells.h"
#include <algorithm>
#include <cstring>
#include <cwchar>
#include <span>

namespace Tessarine::Graphics {
namespace {
constexpr int64_t kMaxCell = 1 << 16;     // pixels; larger ones are seldom drawn twice alike
constexpr size_t kMaxAllCells = 1 << 21;  // pixels: 8 MB, and then all go
constexpr size_t kSets = 64;
constexpr size_t kPlaces = 4;  // of a set: enough for the cells of many frames to stay beside each other

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

/** Pixels that the processor takes at once, as the compiler makes them of its registers. */
template <int32_t bytes>
struct Wide {
    using Bytes [[gnu::vector_size(bytes)]] = uint8_t;
    using Halves [[gnu::vector_size(bytes)]] = uint16_t;
    using Words [[gnu::vector_size(bytes)]] = uint32_t;

    /** Each channel by 255ths, which stand in both halves of its word; rounded as above. */
    [[gnu::always_inline]] static void dim(Words& pixels, const Halves& of255) {
        Halves even = (Halves(pixels) & 0xFF) * of255 + 0x80, odd = (Halves(pixels) >> 8) * of255 + 0x80;
        even = (even + (even >> 8)) >> 8;
        odd = (odd + (odd >> 8)) & 0xFF00;
        pixels = Words(even | odd);
    }

    [[gnu::always_inline]] static void layOver(Words& to, const Words& from) {
        Words rest = ~from >> 24;
        rest |= rest << 16;
        dim(to, Halves(rest));
        const Bytes below = Bytes(to), room = ~Bytes(from);
        to = Words((below < room ? below : room) + Bytes(from));
    }

    /** Answers how many are done. */
    [[gnu::always_inline]] static int32_t blend(uint32_t* to, const uint32_t* from, int32_t count, uint32_t opacity) {
        constexpr int32_t kStep = bytes / int32_t(sizeof(uint32_t));
        const Halves factor = Halves{} + uint16_t(opacity);
        int32_t done = 0;
        for (; done + kStep <= count; done += kStep) {
            Words source, target;
            std::memcpy(&source, from + done, bytes);
            std::memcpy(&target, to + done, bytes);
            if (opacity != 255)
                dim(source, factor);
            layOver(target, source);
            std::memcpy(to + done, &target, bytes);
        }
        return done;
    }
};

template <int32_t... steps>
[[gnu::always_inline]] inline void blendBy(const PixelRows& to, const PixelRows& from, int32_t width, int32_t height,
                                           uint32_t opacity) {
    for (int32_t y = 0; y < height; ++y) {
        int32_t done = 0;
        ((done += Wide<steps>::blend(to.at(done, y), from.at(done, y), width - done, opacity)), ...);
        if (done < width)
            blendRowPlain(to.at(done, y), from.at(done, y), width - done, opacity);
    }
}

#ifdef __x86_64__
/** The same, compiled for more than every processor has. */
[[gnu::target("avx2")]] void blendByEights(const PixelRows& to, const PixelRows& from, int32_t width, int32_t height,
                                           uint32_t opacity) {
    blendBy<32, 16>(to, from, width, height, opacity);
}
#endif
}  // namespace

void blendRowPlain(uint32_t* to, const uint32_t* from, int32_t count, uint32_t opacity) {
    for (int32_t index = 0; index < count; ++index) {
        const uint32_t source = opacity == 255 ? from[index] : dimmed(from[index], opacity);
        to[index] = summed(source, dimmed(to[index], 255 - (source >> 24)));
    }
}

void blendRows(const PixelRows& to, const PixelRows& from, int32_t width, int32_t height, uint32_t opacity) {
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2"))
        return blendByEights(to, from, width, height, opacity);
#endif
    blendBy<16>(to, from, width, height, opacity);
}

void copyRows(const PixelRows& to, const PixelRows& from, int32_t width, int32_t height, uint32_t /*opacity*/) {
    for (int32_t y = 0; y < height; ++y)
        std::copy_n(from.at(0, y), width, to.at(0, y));
}

/** The library's function takes the widest stores that the processor has. */
void fillRows(const PixelRows& to, int32_t width, int32_t height, uint32_t pixel) {
    static_assert(sizeof(wchar_t) == sizeof(uint32_t));
    for (int32_t y = 0; y < height; ++y)
        std::wmemset(reinterpret_cast<wchar_t*>(to.at(0, y)), wchar_t(pixel), size_t(width));
}

PartPattern::PartPattern(const PixelRows& pixels, const PixelRect& part, bool copied) : part(part) {
    const int32_t width = part.right - part.left, height = part.bottom - part.top;
    PixelRows rows = pixels.from(part.left, part.top);
    if (copied) {
        copy.resize(size_t(width) * size_t(height));
        const PixelRows own = {copy.data(), width};
        copyRows(own, rows, width, height, 255);
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

StretchedCells::StretchedCells() : cells(kSets * kPlaces) {}

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

StretchedCells::Cell& StretchedCells::placeOf(const Key& key) {
    const std::span<Cell> set = std::span(cells).subspan(key.hash() % kSets * kPlaces, kPlaces);
    const auto found = std::ranges::find(set, key, &Cell::key);
    return found != set.end() ? *found : *std::ranges::min_element(set, {}, &Cell::lastUse);
}

StretchedCells::Found StretchedCells::find(CairoBitmap* bitmap, const PixelRect& source, int32_t width, int32_t height,
                                           cairo_filter_t filter) {
    const int64_t size = int64_t(width) * height;
    if (size > kMaxCell)
        return {};
    const Key key = {bitmap->getStamp(), source, width, height, filter};
    Cell& cell = placeOf(key);
    if (cell.key != key) {
        if (total - cell.pixels.size() + size_t(size) > kMaxAllCells)
            empty();
        total -= cell.pixels.size();
        cell = stretched(key, bitmap);
        total += cell.pixels.size();
    }
    cell.lastUse = ++uses;
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
