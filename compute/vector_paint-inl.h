// How counts become the pixels of the picture: one by one, or a vector of them at a time.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_PAINT_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_PAINT_INL_H
#undef TESSARY_COMPUTE_VECTOR_PAINT_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_PAINT_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "compute/pixels.h"
#include "compute/vector_slots-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Colours pixels by the rule of colourPixel, a whole pixel at a time.
class Painter {
  public:
    Painter(unsigned char* firstPixel, int iterationLimit, const unsigned char* colours)
        : first(firstPixel), palette(colours), limit(static_cast<std::size_t>(iterationLimit)) {
        constexpr unsigned char OPAQUE[4] = {0, 0, 0, 255};
        std::memcpy(&alpha, OPAQUE, sizeof alpha);
    }

    // place: pixels from the first one; count: 0 to the iteration limit.
    void operator()(std::size_t place, std::size_t count) const {
        constexpr unsigned char BLACK[4] = {0, 0, 0, 0};
        const std::size_t entry = limit > PALETTE_ENTRIES ? count % PALETTE_ENTRIES : count;
        const unsigned char* colour = count < limit ? palette + 4 * entry : BLACK;
        std::uint32_t pixel;
        std::memcpy(&pixel, colour, sizeof pixel);
        pixel |= alpha;
        std::memcpy(first + 4 * place, &pixel, sizeof pixel);
    }

  private:
    unsigned char* first;
    const unsigned char* palette;
    std::size_t limit;
    std::uint32_t alpha;
};

// Asks for the lines of a chunk's pixels, so that they are at hand when it is painted. Rows are far
// apart, and the neighbouring tiles that share the lines may have been painted by another thread.
inline void prefetchRows(const unsigned char* firstPixel, int rows, int width) {
    for (int y = 0; y < rows; ++y) {
        const unsigned char* row = firstPixel + 4 * std::ptrdiff_t{y} * width;
#if HWY_ARCH_X86
        asm volatile("prefetchw %0" : : "m"(*row));
#else
        __builtin_prefetch(row, 1);
#endif
    }
}

// n mod 768 for n below 2^31. n / 256 is below 2^23, a number of float; its product with the float
// next above 1/3 lies between its third and the next whole number, however that rounds.
template <class D>
HWY_INLINE hn::Vec<D> paletteEntry(D d, hn::Vec<D> n) {
    static_assert(PALETTE_ENTRIES == 3 * 256);
    const hn::RebindToSigned<D> di;
    const hn::RebindToFloat<D> df;
    const auto part = hn::ConvertTo(df, hn::BitCast(di, hn::ShiftRight<8>(n)));
    const auto third =
        hn::BitCast(d, hn::ConvertTo(di, hn::Mul(part, hn::Set(df, 0x1.555556p-2f))));
    return hn::Sub(n, hn::ShiftLeft<8>(hn::Add(third, hn::Add(third, third))));
}

// A vector of counts, as 32 bits each.
template <class D>
HWY_INLINE hn::Vec<D> narrowCounts(D d, const std::uint32_t* counts) {
    return hn::Load(d, counts);
}

template <class D>
HWY_INLINE hn::Vec<D> narrowCounts(D d, const std::uint64_t* counts) {
    return hn::TruncateTo(d, hn::Load(hn::Rebind<std::uint64_t, D>(), counts));
}

// The colours of palette entries, each below PALETTE_ENTRIES.
template <class D>
HWY_INLINE hn::Vec<D> lookUp(D d, const unsigned char* palette, hn::Vec<D> entry) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    const hn::RebindToSigned<D> di;
    const auto* colours = reinterpret_cast<const std::uint32_t*>(palette);
    return hn::GatherIndex(d, colours, hn::BitCast(di, entry));
#else
    HWY_ALIGN std::uint32_t lanes[hn::MaxLanes(d)];
    hn::Store(entry, d, lanes);
    for (std::uint32_t& lane : lanes) std::memcpy(&lane, palette + 4 * std::size_t{lane}, 4);
    return hn::Load(d, lanes);
#endif
}

// The colours of n counts, and of some behind them, by the rule of colourPixel. A count that
// reached the limit looks up entry 0, for what lies behind the palette is not its own.
template <class Word>
HWY_NOINLINE HWY_FLATTEN void colourCounts(const Word* counts, std::size_t n, int limit,
                                           const unsigned char* palette, std::uint32_t* colours) {
    const hn::Rebind<std::uint32_t, hn::ScalableTag<Word>> d;
    const hn::RebindToSigned<decltype(d)> di;
    constexpr unsigned char OPAQUE[4] = {0, 0, 0, 255};
    std::uint32_t opaque;
    std::memcpy(&opaque, OPAQUE, sizeof opaque);
    const auto most = hn::Set(d, static_cast<std::uint32_t>(limit)), alpha = hn::Set(d, opaque);
    for (std::size_t at = 0; at < n; at += hn::Lanes(d)) {
        auto entry = narrowCounts(d, counts + at);
        const auto escaped = hn::Lt(hn::BitCast(di, entry), hn::BitCast(di, most));
        if (limit > PALETTE_ENTRIES) entry = paletteEntry(d, entry);
        entry = hn::BitCast(d, hn::IfThenElseZero(escaped, hn::BitCast(di, entry)));
        const auto colour = lookUp(d, palette, entry);
        const auto seen = hn::IfThenElseZero(hn::RebindMask(d, escaped), colour);
        hn::Store(hn::Or(seen, alpha), d, colours + at);
    }
}

// Writes a chunk of pixels, which lie row by row without gaps, to rows `width` pixels apart.
inline void writeRows(const std::uint32_t* pixels, std::size_t columns, std::size_t rows,
                      unsigned char* to, std::size_t width) {
    if (columns == 8) {
        for (; rows > 0; --rows, pixels += 8, to += 4 * width) std::memcpy(to, pixels, 32);
    }
    for (; rows > 0; --rows, pixels += columns, to += 4 * width) {
        std::memcpy(to, pixels, 4 * columns);
    }
}

// Paints a chunk whose counts lie by pixel. to: its first pixel in a picture of that width.
template <class T>
HWY_INLINE void paintChunk(const Slots<T>& s, std::size_t rows, unsigned char* to,
                           std::size_t width, int limit, const unsigned char* palette) {
    HWY_ALIGN std::uint32_t colours[Slots<T>::ROOM];
    colourCounts(s.count, rows * s.columns, limit, palette, colours);
    writeRows(colours, s.columns, rows, to, width);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
