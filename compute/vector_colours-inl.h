// The colours of values on vectors: places in the gradient for as many pixels as a vector has
// lanes, then the three levels of each pixel as one vector, for they lie together in the table, and
// at last the bytes of many levels at once.
//
// Included once for each instruction set (see compute/colour_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_COLOURS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_COLOURS_INL_H
#undef TESSARY_COMPUTE_VECTOR_COLOURS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_COLOURS_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "compute/value_colours.h"
#include "compute/vector_log-inl.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Pixels that are worked on together, and their levels: red, green, blue and the mark of a part
// that is not straight. So many that each way of working is a loop through memory: of fewer the
// compiler would pick single lanes out of registers, which costs more.
inline constexpr std::size_t PIXELS = 64;
inline constexpr std::size_t LEVELS = 4 * PIXELS;

// A pixel's part of the gradient and how far it lies in it, from 0 to 1.
struct Places {
    HWY_ALIGN std::int32_t part[PIXELS];
    HWY_ALIGN float share[PIXELS];
};

HWY_INLINE Number<double> onScale(Number<double> value, ValueScale scale) {
    if (scale == ValueScale::linear) return value;
    const Number<double> zero(0.0), above = select(value > zero, value, zero);
    if (scale == ValueScale::squareRoot) return Number<double>(hn::Sqrt(above.v));
    return fixedLog(above + Number<double>(1.0));
}

// What is left of whole turns.
HWY_INLINE Number<double> placeOf(Number<double> turns, bool endsAtOne) {
    const Number<double> zero(0.0), one(1.0), most(0x1p52);
    const Number<double> rest = turns - Number<double>(hn::Trunc(turns.v));
    const Number<double> upwards = select(zero > rest, rest + one, rest);
    const auto known = hn::And(turns > -most, most > turns);
    const Number<double> place = select(known, upwards, zero);
    return endsAtOne ? select(hn::And(place == zero, turns > zero), one, place) : place;
}

HWY_INLINE void placePixels(const ValueColours& how, const double* values, Places& out) {
    const Number<double>::D d;
    const hn::Rebind<std::int32_t, decltype(d)> di;
    const hn::Rebind<float, decltype(d)> df;
    const Number<double> start(how.start), turn(how.turn), offset(how.offset),
        inside(static_cast<double>(GRADIENT_INSIDE));
    for (std::size_t at = 0; at < PIXELS; at += hn::Lanes(d)) {
        const Number<double> value(hn::LoadU(d, values + at));
        const Number<double> turns = (onScale(value, how.scale) - start) / turn + offset;
        const Number<double> place =
            placeOf(turns, how.endsAtOne) * Number<double>(double{GRADIENT_PARTS});
        const Number<double> found = select(value == value, place, inside);
        const auto part = hn::Trunc(found.v);
        hn::Store(hn::DemoteTo(di, part), di, out.part + at);
        hn::Store(hn::DemoteTo(df, hn::Sub(found.v, part)), df, out.share + at);
    }
}

HWY_INLINE void levelsAt(const Places& places, const GradientPart* parts, float* levels) {
    const hn::FixedTag<float, 4> d;
    for (std::size_t n = 0; n < PIXELS; ++n) {
        const GradientPart& part = parts[places.part[n]];
        const auto change = hn::Mul(hn::Set(d, places.share[n]), hn::Load(d, part.change));
        hn::Store(hn::Add(hn::Load(d, part.start), change), d, levels + 4 * n);
    }
}

// Levels as whole numbers of type Out; those out of range become the nearest ones.
template <class Out>
HWY_INLINE void roundLevels(const float* levels, const double* roundings, Out* out) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<float, decltype(d)> df;
    const hn::Rebind<std::int32_t, decltype(d)> dHalf;
    const auto most = hn::Set(d, double{std::numeric_limits<Out>::max()});
    HWY_ALIGN std::int32_t whole[LEVELS];
    for (std::size_t at = 0; at < LEVELS; at += hn::Lanes(d)) {
        const auto level = hn::PromoteTo(d, hn::Load(df, levels + at));
        const auto rounding = hn::Load(d, roundings + at % (4 * ROUNDINGS));
        const auto raised = hn::Add(hn::Mul(level, most), rounding);
        hn::Store(hn::DemoteTo(dHalf, raised), dHalf, whole + at);
    }
    const hn::ScalableTag<std::int32_t> di;
    const hn::Rebind<Out, decltype(di)> dOut;
    for (std::size_t at = 0; at < LEVELS; at += hn::Lanes(di)) {
        hn::StoreU(hn::DemoteTo(dOut, hn::Load(di, whole + at)), dOut, out + at);
    }
}

// Where the bytes of a pixel's levels lie among 16 bytes of four levels a pixel; the last four are
// of no pixel.
inline constexpr std::uint8_t ORDER_8[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15};
inline constexpr std::uint8_t ORDER_16[16] = {1, 0, 3, 2, 5, 4, 9, 8, 11, 10, 13, 12, 6, 7, 14, 15};

// Drops the marks. Writes four bytes behind the last pixel. Returns whether there was no mark.
template <class Whole>
HWY_INLINE bool putPixels(const Whole* levels, unsigned char* out) {
    const hn::FixedTag<std::uint8_t, 16> d;
    const auto order = hn::LoadU(d, sizeof(Whole) == 1 ? ORDER_8 : ORDER_16);
    auto any = hn::Zero(d);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(levels);
    for (std::size_t at = 0; at < LEVELS * sizeof(Whole); at += 16, out += 12) {
        const auto pixels = hn::TableLookupBytes(hn::Load(d, bytes + at), order);
        any = hn::Or(any, pixels);
        hn::StoreU(pixels, d, out);
    }
    const hn::FixedTag<std::uint32_t, 4> words;
    return hn::ExtractLane(hn::BitCast(words, any), 3) == 0;
}

// What is the same for all pixels of a row.
struct RowOfColours {
    const ValueColours& how;
    HWY_ALIGN double roundings[4 * ROUNDINGS];  // of each level

    RowOfColours(const ValueColours& colours, const double* ofPixels) : how(colours) {
        for (std::size_t n = 0; n < 4 * ROUNDINGS; ++n) roundings[n] = ofPixels[n / 4];
    }
};

// Colours PIXELS pixels. `out` has four more bytes than they need. Returns how many are left.
template <class Whole>
HWY_INLINE int colourBlock(const RowOfColours& row, const double* values, int first,
                           unsigned char* out, std::int32_t* left) {
    Places places;
    HWY_ALIGN float levels[LEVELS];
    HWY_ALIGN Whole whole[LEVELS];
    placePixels(row.how, values, places);
    levelsAt(places, row.how.parts, levels);
    roundLevels(levels, row.roundings, whole);
    if (putPixels(whole, out)) return 0;
    int count = 0;
    for (std::size_t n = 0; n < PIXELS; ++n) {
        if (whole[4 * n + 3] != 0) left[count++] = first + static_cast<int>(n);
    }
    return count;
}

// The same of at most PIXELS pixels, with not a byte more than theirs.
template <class Whole>
int colourRest(const RowOfColours& row, const double* values, int first, int n, unsigned char* out,
               std::int32_t* left) {
    HWY_ALIGN double padded[PIXELS];
    unsigned char bytes[3 * sizeof(Whole) * PIXELS + 4];
    std::fill_n(padded, PIXELS, std::numeric_limits<double>::quiet_NaN());
    std::copy_n(values, n, padded);
    const int count = colourBlock<Whole>(row, padded, first, bytes, left);
    std::memcpy(out, bytes, 3 * sizeof(Whole) * static_cast<std::size_t>(n));
    return count;
}

template <class Whole>
HWY_NOINLINE HWY_FLATTEN int colourRow(const RowOfColours& row, const double* values, int n,
                                       unsigned char* out, std::int32_t* left) {
    constexpr int BLOCK = PIXELS, BYTES = 3 * sizeof(Whole);
    int first = 0, count = 0;
    // Another whole block behind this one takes the bytes that are too many.
    for (; n - first >= 2 * BLOCK; first += BLOCK) {
        count += colourBlock<Whole>(row, values + first, first, out + BYTES * first, left + count);
    }
    for (; first < n; first += BLOCK) {
        count += colourRest<Whole>(row, values + first, first, std::min(n - first, BLOCK),
                                   out + BYTES * first, left + count);
    }
    return count;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif
