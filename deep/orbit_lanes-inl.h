// Single lanes of a block: orbits as differences from a reference, each with a bound of its error.
//
// The squared error is carried, so that a step takes no square root: with j the number of
// operations so far and e^2 <= j F, (5) of docs/deep-zoom.md is
//     F' = 4 s F + 3 (j^2 F^2 + (18 u)^2 s D + b^2),   s = |z|^2, D = |d|^2,
// and e'^2 <= (j + 1) F'. An upper bound J of j serves wherever j is meant.
//
// Everything is in units of 2^q: d, dc and e, the squares in its square. FLOOR in each F' covers
// what underflows: it stands for an error of 2^-400 units, where a difference is never rescaled
// below 2^-256.
//
// Included once for each instruction set (see deep/vector_orbits.cpp).
#if defined(TESSARY_DEEP_ORBIT_LANES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_DEEP_ORBIT_LANES_INL_H
#undef TESSARY_DEEP_ORBIT_LANES_INL_H
#else
#define TESSARY_DEEP_ORBIT_LANES_INL_H
#endif

#include <algorithm>
#include <cmath>
#include <limits>

#include "compute/fixed_math.h"
#include "compute/rounded_value.h"
#include "compute/vector_pair-inl.h"
#include "deep/exact_tie.h"
#include "deep/multi_orbit.h"
#include "deep/tiers.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {
namespace deep_orbits {

using ::deep::BLOCK;
using ::deep::Node;
using ::deep::TierData;
using namespace pair_lanes;
using Bits = std::uint32_t;  // a lane each

inline constexpr int VECTORS = BLOCK / WIDTH;
inline constexpr double FLOOR = 0x1p-800;
inline constexpr double UPWARDS = 1 + 0x1p-30;

// The numbers of a block's lanes, and what is done with one lane at a time.
template <int PARTS>
class OrbitLanes {
  public:
    using Vector = Complex<Of<PARTS, Real>>;
    using Scalar = Complex<Of<PARTS, double>>;

    OrbitLanes(const TierData<PARTS>& data, ::deep::Block& pixels, bool values)
        : tier(data), reference(*data.reference), block(pixels), wantsValues(values) {}

  protected:
    static constexpr double U = TierData<PARTS>::UNIT;
    static constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

    void start() {
        live = block.used == BLOCK ? 0xFFFFu : (Bits{1} << block.used) - 1;
        for (int l = 0; l < BLOCK; ++l) {
            startLane(l, isLive(l));
            // The first step of a Mandelbrot orbit leads to c, whatever was there before.
            m[l] = tier.julia ? 0 : 1;
            k[l] = tier.julia ? 0 : 1;
            operations[l] = 1;
            sizeBefore[l] = boundBefore[l] = 0;
            setLaneScale(l, tier.unitExponent);
            measure(l);
        }
    }

    void startLane(int l, bool used) {
        const long right = used ? 2L * block.x[l] - tier.wide : 0;
        const long down = used ? 2L * block.y[l] - tier.high : 0;
        const auto unit = of<double>(tier.halfStep);
        const Scalar start{
            of<double>(::deep::cut<PARTS>(::Pair<double>{static_cast<double>(right), 0})) * unit,
            of<double>(::deep::cut<PARTS>(::Pair<double>{static_cast<double>(down), 0})) * unit};
        d.set(l, start);
        offset.set(l, tier.julia ? Scalar{} : start);
        bound[l] = tier.startSquared;
        if (used) block.count[l] = ::deep::UNDECIDED;
    }

    bool isLive(int l) const { return (live >> l & 1) != 0; }

    // The lane's orbit is known no further. Its numbers are made harmless to the other lanes.
    void finish(int l, std::int32_t count, double value) {
        block.count[l] = count;
        block.value[l] = value;
        live &= ~(Bits{1} << l);
        for (auto* numbers : {&d, &offset, &c}) numbers->set(l, Scalar{});
        bound[l] = 0;
        size[l] = dSize[l] = 0;
    }

    void finishAll(std::int32_t count) {
        for (int l = 0; l < BLOCK; ++l) {
            if (isLive(l)) finish(l, count, NOT_A_NUMBER);
        }
    }

    // Lane l's units become 2^exponent; d and F are in them already.
    void setLaneScale(int l, std::int64_t exponent) {
        q[l] = exponent;
        const double shift = widePower(tier.offsetExponent - exponent);
        scale[l] = widePower(exponent);
        scaleSquared[l] = widePower(2 * exponent);
        own[l] = tier.ownSquared * shift * shift + FLOOR;
        c.set(l, times(offset[l], shift));
        skipLimit[l] = largestSize(exponent);
    }

    // No D + 16 E above this is within the radius of any node.
    double largestSize(std::int64_t exponent) const {
        const std::int64_t most = tier.skips.largestKey();
        if (most == std::numeric_limits<std::int64_t>::min()) return -1;
        const std::int64_t power2 = (most >> 40) - 1023 - 2 * exponent;
        return widePower(power2 + 1);
    }

    // Changes lane l's units.
    void rescale(int l, std::int64_t exponent) {
        const double by = widePower(q[l] - exponent);
        d.set(l, times(d[l], by));
        bound[l] = bound[l] * by * by + FLOOR;
        dSize[l] *= by * by;
        setLaneScale(l, exponent);
    }

    Scalar point(int l) const { return of<double>(reference.template point<PARTS>(m[l])); }

    // z, |z|^2 and |d|^2 of lane l.
    void measure(int l) {
        z.set(l, scaleAdd(scale[l], d[l], point(l)));
        size[l] = squareOf(z[l]);
        dSize[l] = squareOf(d[l]);
    }

    // Whether lane l has surely not escaped: (|z| + e)^2 is at most s (1 + 1 / 1023) + 1024 e^2.
    bool isInside(int l) const {
        return size[l] + 1024 * operations[l] * bound[l] * scaleSquared[l] < 0.9375 * tier.limit;
    }

    // Whether the orbit of lane l, at z_k, has escaped: ends the lane if so, or if that cannot be
    // said.
    //
    // |z|^2 - L = (|Z|^2 - L) + d (2 Z + d) with an error of 2 |z| e + e^2 and that of the sum.
    void decide(int l) {
        const Scalar from = point(l), t = times(d[l], scale[l]);
        const auto kept = of<double>(
            ::deep::cut<PARTS>(::Pair<double>{reference.size[0][m[l]], reference.size[1][m[l]]}));
        const Scalar sum = from + from + t;
        const auto beyond = kept + (t.re * sum.re + t.im * sum.im);
        const double away = std::sqrt(dSize[l]) * scale[l];
        const double length = std::hypot(head(from.re), head(from.im));
        // Where its square would underflow e does not.
        const double e = std::sqrt(operations[l] * bound[l]) * scale[l];
        const double off =
            (2 * std::sqrt(size[l]) * e + e * e +
             8 * U * (std::fabs(head(kept)) + 4 * away * (length + away)) + tier.sizeOff) *
            (1 + 0x1p-20);
        if (-head(beyond) > off) return;
        if (head(beyond) > off) return escaped(l);
        if (off < 0x1p-470) return decideBelowDoubles(l);
        leave(l);
    }

    // The same sum and the same bound in numbers that do not underflow, of a double's precision.
    void decideBelowDoubles(int l) {
        constexpr double u = 0x1p-53;
        const Wide dr(head(d[l].re), q[l]), di(head(d[l].im), q[l]);
        const double re = reference.z[0][2 * m[l]], im = reference.z[0][2 * m[l] + 1];
        const Wide kept = reference.sizeAt(m[l]);
        const Wide beyond = kept + (dr * (Wide(2 * re) + dr) + di * (Wide(2 * im) + di));
        const Wide away(std::sqrt(dSize[l]), q[l]), e(std::sqrt(operations[l] * bound[l]), q[l]);
        const Wide length(std::hypot(re, im));
        const Wide roundings = Wide(8 * u) * (abs(kept) + Wide(4) * away * (length + away));
        const Wide off = (Wide(2 * std::sqrt(size[l])) * e + e * e + roundings + tier.ownSizeOff) *
                         Wide(1 + 0x1p-20);
        if (-beyond > off) return;
        if (beyond > off) return escaped(l);
        leave(l);
    }

    // Where no bound decides. The point itself is known as it is: all along the line Re c = -2 its
    // way to |c| = 2 is the square of what is kept of it.
    void leave(int l) {
        if (k[l] != 1 || tier.julia) return finish(l, ::deep::UNDECIDED, NOT_A_NUMBER);
        const ::deep::ExactPoint place = tier.exact->pixel(block.x[l], block.y[l]);
        if (isBeyond(*tier.exact, place, tier.limit)) escaped(l);
    }

    void escaped(int l) {
        const std::int32_t count = k[l] - 1;
        if (!wantsValues) return finish(l, count, 0);
        if (count == 0 && !tier.julia) return finish(l, 0, 0);
        const double error =
            std::max(relative(sizeBefore[l], operations[l] * boundBefore[l] * scaleSquared[l]),
                     relative(size[l], operations[l] * bound[l] * scaleSquared[l]));
        const double before = fixedLog(sizeBefore[l]), after = fixedLog(size[l]);
        const double all = error + 0x1p-50 * (std::fabs(before) + std::fabs(after));
        const auto v = roundedValue(count, before, after, tier.logLimit, all);
        const bool good = v.certain && sizeBefore[l] > 0x1p-900;
        finish(l, good ? count : ::deep::UNDECIDED, v.value);
    }

    // How far the logarithm of |z|^2 may be off.
    static double relative(double s, double e2) {
        const double off = (2 * std::sqrt(s * e2) + e2) / s * (1 + 0x1p-20) + 0x1p-49;
        return off < 0.5 ? off / (1 - off) : std::numeric_limits<double>::infinity();
    }

    const TierData<PARTS>& tier;
    const ::deep::Reference& reference;
    ::deep::Block& block;
    const bool wantsValues;

    Bits live = 0;
    // Differences, what each step adds to them (dc in the units of now, and as the picture has it),
    // and the states of the orbits.
    Lanes<PARTS, BLOCK> d, c, offset, z;
    // F, |z|^2, |d|^2; the first two before the last step as well.
    HWY_ALIGN double bound[BLOCK], size[BLOCK], dSize[BLOCK];
    HWY_ALIGN double sizeBefore[BLOCK], boundBefore[BLOCK];
    // 2^q, its square, 3 b^2, the largest D + 16 E of any node.
    HWY_ALIGN double scale[BLOCK], scaleSquared[BLOCK], own[BLOCK], skipLimit[BLOCK];
    HWY_ALIGN double operations[BLOCK];  // no less than j
    std::int64_t q[BLOCK] = {};
    std::uint32_t m[BLOCK] = {};  // index of the reference
    std::int32_t k[BLOCK] = {};   // steps done
};

}  // namespace deep_orbits
}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
