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
#include <cmath>
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

// The parts of the gradient that values lie in and how far in them, from 0 to 1.
template <std::size_t COUNT>
struct Places {
    HWY_ALIGN std::int32_t part[COUNT];
    HWY_ALIGN float share[COUNT];
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

// How many turns a length is. A turn of a power of two, as it is by itself, has an exact inverse:
// the product is the quotient.
class Turns {
  public:
    explicit HWY_INLINE Turns(double length)
        : turn(length), inverse(1 / length), isExact(isPowerOfTwo(length)) {}

    HWY_INLINE Number<double> in(Number<double> length) const {
        return isExact ? length * inverse : length / turn;
    }

  private:
    static bool isPowerOfTwo(double x) {
        int exponent;
        return std::frexp(x, &exponent) == 0.5;
    }

    const Number<double> turn, inverse;
    const bool isExact;
};

// count: a multiple of PIXELS.
template <std::size_t COUNT>
HWY_INLINE void placeValues(const ValueColours& how, const Turns& turn, const double* values,
                            std::size_t count, Places<COUNT>& out) {
    const Number<double>::D d;
    const hn::Rebind<std::int32_t, decltype(d)> di;
    const hn::Rebind<float, decltype(d)> df;
    const Number<double> start(how.start), offset(how.offset),
        inside(static_cast<double>(GRADIENT_INSIDE));
    for (std::size_t at = 0; at < count; at += hn::Lanes(d)) {
        const Number<double> value(hn::LoadU(d, values + at));
        const Number<double> turns = turn.in(onScale(value, how.scale) - start) + offset;
        const Number<double> place =
            placeOf(turns, how.endsAtOne) * Number<double>(double{GRADIENT_PARTS});
        const Number<double> found = select(value == value, place, inside);
        const auto part = hn::Trunc(found.v);
        hn::Store(hn::DemoteTo(di, part), di, out.part + at);
        hn::Store(hn::DemoteTo(df, hn::Sub(found.v, part)), df, out.share + at);
    }
}

using Pixel = hn::FixedTag<float, 4>;  // the levels of one, or their lights

HWY_INLINE hn::Vec<Pixel> onLine(const GradientPart& part, float share) {
    const Pixel d;
    const auto change = hn::Mul(hn::Set(d, share), hn::Load(d, part.change));
    return hn::Add(hn::Load(d, part.start), change);
}

HWY_INLINE void levelsAt(const Places<PIXELS>& places, const GradientPart* parts, float* levels) {
    for (std::size_t n = 0; n < PIXELS; ++n) {
        hn::Store(onLine(parts[places.part[n]], places.share[n]), Pixel(), levels + 4 * n);
    }
}

using SamplePlaces = Places<PIXELS * MOST_SAMPLES>;

// Adds the lights of a row of samples to those of their pixels.
HWY_INLINE void addLights(const SamplePlaces& places, const GradientPart* parts, std::size_t side,
                          float* lights) {
    const Pixel d;
    for (std::size_t n = 0, sample = 0; n < PIXELS; ++n) {
        auto sum = hn::Load(d, lights + 4 * n);
        for (std::size_t k = 0; k < side; ++k, ++sample) {
            sum = hn::Add(sum, onLine(parts[places.part[sample]], places.share[sample]));
        }
        hn::Store(sum, d, lights + 4 * n);
    }
}

// levelOfLight() of averages. The mark of a sample leaves one on its pixel.
HWY_INLINE void levelsOfSums(float share, float* sums) {
    const hn::ScalableTag<float> d;
    for (std::size_t at = 0; at < LEVELS; at += hn::Lanes(d)) {
        const auto light = hn::Mul(hn::Load(d, sums + at), hn::Set(d, share));
        const auto root = hn::Sqrt(hn::Sqrt(light));
        auto level = hn::Set(d, LEVEL_CURVE[7]);
        for (int n = 6; n >= 0; --n) {
            level = hn::Add(hn::Mul(level, root), hn::Set(d, LEVEL_CURVE[n]));
        }
        const auto bent = hn::Gt(light, hn::Set(d, LAST_LINE_LIGHT));
        const auto line = hn::Mul(light, hn::Set(d, LEVELS_A_LIGHT));
        hn::Store(hn::IfThenElse(bent, level, line), d, sums + at);
    }
}

// Levels as whole numbers; those out of range become the nearest ones.
HWY_INLINE void roundLevels(const float* levels, const float* roundings, std::uint8_t* out) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> di;
    const hn::Rebind<std::uint8_t, decltype(d)> dOut;
    const auto most = hn::Set(d, 255.0F);
    for (std::size_t at = 0; at < LEVELS; at += hn::Lanes(d)) {
        const auto rounding = hn::Load(d, roundings + at % (4 * ROUNDINGS));
        const auto raised = hn::Add(hn::Mul(hn::Load(d, levels + at), most), rounding);
        hn::StoreU(hn::DemoteTo(dOut, hn::ConvertTo(di, raised)), dOut, out + at);
    }
}

// Of 16 bits the product is one in double: 24 bits would round it a second time.
HWY_INLINE void roundLevels(const float* levels, const float* roundings, std::uint16_t* out) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<float, decltype(d)> df;
    const hn::Rebind<std::int32_t, decltype(d)> dHalf;
    const auto most = hn::Set(d, 65535.0);
    HWY_ALIGN std::int32_t whole[LEVELS];
    for (std::size_t at = 0; at < LEVELS; at += hn::Lanes(d)) {
        const auto level = hn::PromoteTo(d, hn::Load(df, levels + at));
        const auto rounding = hn::PromoteTo(d, hn::Load(df, roundings + at % (4 * ROUNDINGS)));
        const auto raised = hn::Add(hn::Mul(level, most), rounding);
        hn::Store(hn::DemoteTo(dHalf, raised), dHalf, whole + at);
    }
    const hn::ScalableTag<std::int32_t> di;
    const hn::Rebind<std::uint16_t, decltype(di)> dOut;
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
    const Turns turn;
    HWY_ALIGN float roundings[4 * ROUNDINGS];  // of each level

    RowOfColours(const ValueColours& colours, const float* ofPixels)
        : how(colours), turn(colours.turn) {
        for (std::size_t n = 0; n < 4 * ROUNDINGS; ++n) roundings[n] = ofPixels[n / 4];
    }
};

// The bytes of PIXELS pixels of these levels. `out` has four more than they need. Returns how many
// pixels are left.
template <class Whole>
HWY_INLINE int finishBlock(const RowOfColours& row, const float* levels, int first,
                           unsigned char* out, std::int32_t* left) {
    HWY_ALIGN Whole whole[LEVELS];
    roundLevels(levels, row.roundings, whole);
    if (putPixels(whole, out)) return 0;
    int count = 0;
    for (std::size_t n = 0; n < PIXELS; ++n) {
        if (whole[4 * n + 3] != 0) left[count++] = first + static_cast<int>(n);
    }
    return count;
}

// Colours PIXELS pixels, as finishBlock() says.
template <class Whole>
HWY_INLINE int colourBlock(const RowOfColours& row, const double* values, int first,
                           unsigned char* out, std::int32_t* left) {
    Places<PIXELS> places;
    HWY_ALIGN float levels[LEVELS];
    placeValues(row.how, row.turn, values, PIXELS, places);
    levelsAt(places, row.how.parts, levels);
    return finishBlock<Whole>(row, levels, first, out, left);
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

// At most PIXELS pixels of samples, with not a byte more than theirs.
template <class Whole>
HWY_INLINE int averageBlock(const RowOfColours& row, const SampleRows& samples, int first, int n,
                            unsigned char* out, std::int32_t* left) {
    const auto side = static_cast<std::size_t>(samples.side);
    SamplePlaces places;
    HWY_ALIGN float levels[LEVELS] = {};
    HWY_ALIGN double padded[PIXELS * MOST_SAMPLES];
    std::fill_n(padded, side * PIXELS, std::numeric_limits<double>::quiet_NaN());
    for (int y = 0; y < samples.side; ++y) {
        const double* values =
            samples.values + y * samples.stride + std::ptrdiff_t{first} * samples.side;
        std::copy_n(values, static_cast<std::size_t>(n) * side, padded);
        placeValues(row.how, row.turn, padded, side * PIXELS, places);
        addLights(places, row.how.parts, side, levels);
    }
    levelsOfSums(1 / static_cast<float>(side * side), levels);
    unsigned char bytes[3 * sizeof(Whole) * PIXELS + 4];
    const int count = finishBlock<Whole>(row, levels, first, bytes, left);
    std::memcpy(out, bytes, 3 * sizeof(Whole) * static_cast<std::size_t>(n));
    return count;
}

template <class Whole>
HWY_NOINLINE HWY_FLATTEN int colourSamples(const RowOfColours& row, const SampleRows& samples,
                                           int n, unsigned char* out, std::int32_t* left) {
    constexpr int BLOCK = PIXELS, BYTES = 3 * sizeof(Whole);
    int count = 0;
    for (int first = 0; first < n; first += BLOCK) {
        count += averageBlock<Whole>(row, samples, first, std::min(n - first, BLOCK),
                                     out + BYTES * first, left + count);
    }
    return count;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif
