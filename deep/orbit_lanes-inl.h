// Single lanes of a block: orbits as differences from a reference, each with a bound of its error.
//
// The squared error is carried, so that a step takes no square root. From e' <= p + q with
// p = 2 |z| e, q = e^2 + 18 u |z||d| + b it follows for every j > 0 that
//     e'^2 <= (1 + 1/j) p^2 + (1 + j) q^2.
// With j the number of operations so far and e^2 <= j F this becomes
//     F' = 4 s F + 3 (j^2 F^2 + (18 u)^2 s D + b^2),   s = |z|^2, D = |d|^2,
// and e'^2 <= (j + 1) F': all roundings weigh the same, however long the orbit is. An upper bound J
// of j serves wherever j is meant.
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
#include "compute/vector_number-inl.h"
#include "deep/multi_orbit.h"
#include "deep/pair.h"
#include "deep/smooth.h"
#include "deep/tiers.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {
namespace deep_orbits {

using ::deep::BLOCK;
using ::deep::Node;
using ::deep::TierData;
using Real = Number<double>;
using RealTag = Real::D;
using RealMask = MaskOf<double>;
using Bits = std::uint32_t;  // a lane each

inline constexpr int WIDTH = static_cast<int>(hn::MaxLanes(RealTag()));
inline constexpr int VECTORS = BLOCK / WIDTH;
inline constexpr double FLOOR = 0x1p-800;
inline constexpr double UPWARDS = 1 + 0x1p-30;

// Sums of two doubles and the bounds are for fused operations.
#undef TESSARY_HAS_FUSED
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 || \
    (defined(HWY_NATIVE_FMA) && !HWY_NATIVE_FMA)
#define TESSARY_HAS_FUSED 0
#else
#define TESSARY_HAS_FUSED 1
#endif

// In software where the processor has no such instruction.
HWY_INLINE Real mulAdd(Real a, Real b, Real c) {
#if !TESSARY_HAS_FUSED
    const RealTag d;
    HWY_ALIGN double x[WIDTH], y[WIDTH], z[WIDTH];
    hn::Store(a.v, d, x);
    hn::Store(b.v, d, y);
    hn::Store(c.v, d, z);
    for (int l = 0; l < WIDTH; ++l) z[l] = std::fma(x[l], y[l], z[l]);
    return Real(hn::Load(d, z));
#else
    return Real(hn::MulAdd(a.v, b.v, c.v));
#endif
}

HWY_INLINE double mulAdd(double a, double b, double c) {
    return std::fma(a, b, c);
}

#define TESSARY_VECTOR_TEXT
#include "deep/pair.h"
#undef TESSARY_VECTOR_TEXT

template <class R>
HWY_INLINE R scaleAdd(R power, R a, R c) {
    return mulAdd(power, a, c);
}

HWY_INLINE double head(double x) {
    return x;
}
HWY_INLINE Real head(Real x) {
    return x;
}
template <class R>
HWY_INLINE R head(Pair<R> x) {
    return x.high;
}

template <class R>
HWY_INLINE R times(R x, R power) {
    return x * power;
}
template <class R>
HWY_INLINE Pair<R> times(Pair<R> x, R power) {
    return {x.high * power, x.low * power};
}

template <int PARTS, class R>
using Of = std::conditional_t<PARTS == 1, R, Pair<R>>;

// 2^exponent; 0 below the normal numbers, infinite above them.
HWY_INLINE double power(std::int64_t exponent) {
    if (exponent < -1022) return 0;
    return exponent > 1023 ? std::numeric_limits<double>::infinity()
                           : powerOfTwo(static_cast<int>(exponent));
}

// Numbers of all lanes, in as many parts as the tier has.
template <int PARTS>
struct Lanes {
    HWY_ALIGN double part[PARTS][BLOCK];

    HWY_INLINE Of<PARTS, Real> vector(int v) const {
        const RealTag d;
        if constexpr (PARTS == 1) {
            return Real(hn::Load(d, part[0] + v * WIDTH));
        } else {
            return {Real(hn::Load(d, part[0] + v * WIDTH)), Real(hn::Load(d, part[1] + v * WIDTH))};
        }
    }
    HWY_INLINE void setVector(int v, Of<PARTS, Real> x) {
        const RealTag d;
        if constexpr (PARTS == 1) {
            hn::Store(x.v, d, part[0] + v * WIDTH);
        } else {
            hn::Store(x.high.v, d, part[0] + v * WIDTH);
            hn::Store(x.low.v, d, part[1] + v * WIDTH);
        }
    }
    HWY_INLINE Of<PARTS, double> operator[](int l) const {
        if constexpr (PARTS == 1) {
            return part[0][l];
        } else {
            return {part[0][l], part[1][l]};
        }
    }
    HWY_INLINE void set(int l, Of<PARTS, double> x) {
        if constexpr (PARTS == 1) {
            part[0][l] = x;
        } else {
            part[0][l] = x.high;
            part[1][l] = x.low;
        }
    }
};

template <int PARTS, class R>
HWY_INLINE Of<PARTS, R> numberOf(const double* high, const double* low) {
    if constexpr (PARTS == 1) {
        (void)low;
        return R(*high);
    } else {
        return {R(*high), R(*low)};
    }
}

HWY_INLINE Bits bitsOf(RealMask mask) {
    HWY_ALIGN std::uint8_t bytes[8] = {};
    hn::StoreMaskBits(RealTag(), mask, bytes);
    return bytes[0];
}

// The numbers of a block's lanes, and what is done with one lane at a time.
template <int PARTS>
class OrbitLanes {
  public:
    using Vector = Of<PARTS, Real>;
    using Scalar = Of<PARTS, double>;

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
        const Scalar unit = numberOf<PARTS, double>(tier.halfStep, tier.halfStep + PARTS - 1);
        const double none = 0;
        const double r = static_cast<double>(right), i = static_cast<double>(down);
        const Scalar re = numberOf<PARTS, double>(&r, &none) * unit;
        const Scalar im = numberOf<PARTS, double>(&i, &none) * unit;
        const Scalar zero = numberOf<PARTS, double>(&none, &none);
        dRe.set(l, re);
        dIm.set(l, im);
        offsetRe.set(l, tier.julia ? zero : re);
        offsetIm.set(l, tier.julia ? zero : im);
        bound[l] = tier.startSquared;
        if (used) block.count[l] = ::deep::UNDECIDED;
    }

    bool isLive(int l) const { return (live >> l & 1) != 0; }

    // The lane's orbit is known no further. Its numbers are made harmless to the other lanes.
    void finish(int l, std::int32_t count, double value) {
        block.count[l] = count;
        block.value[l] = value;
        live &= ~(Bits{1} << l);
        const double none = 0;
        const Scalar zero = numberOf<PARTS, double>(&none, &none);
        dRe.set(l, zero);
        dIm.set(l, zero);
        offsetRe.set(l, zero);
        offsetIm.set(l, zero);
        cRe.set(l, zero);
        cIm.set(l, zero);
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
        const double shift = power(tier.offsetExponent - exponent);
        scale[l] = power(exponent);
        scaleSquared[l] = power(2 * exponent);
        own[l] = tier.ownSquared * shift * shift + FLOOR;
        cRe.set(l, times(offsetRe[l], shift));
        cIm.set(l, times(offsetIm[l], shift));
        skipLimit[l] = largestSize(exponent);
    }

    // No D + 16 E above this is within the radius of any node.
    double largestSize(std::int64_t exponent) const {
        const std::int64_t most = tier.skips.largestKey();
        if (most == std::numeric_limits<std::int64_t>::min()) return -1;
        const std::int64_t power2 = (most >> 40) - 1023 - 2 * exponent;
        return power(power2 + 1);
    }

    // Changes lane l's units.
    void rescale(int l, std::int64_t exponent) {
        const double by = power(q[l] - exponent);
        dRe.set(l, times(dRe[l], by));
        dIm.set(l, times(dIm[l], by));
        bound[l] = bound[l] * by * by + FLOOR;
        dSize[l] *= by * by;
        setLaneScale(l, exponent);
    }

    Scalar referenceRe(std::uint32_t at) const {
        return numberOf<PARTS, double>(&reference.z[0][2 * at], &reference.z[PARTS - 1][2 * at]);
    }
    Scalar referenceIm(std::uint32_t at) const {
        return numberOf<PARTS, double>(&reference.z[0][2 * at + 1],
                                       &reference.z[PARTS - 1][2 * at + 1]);
    }

    // z, |z|^2 and |d|^2 of lane l.
    void measure(int l) {
        const Scalar re = scaleAdd(scale[l], dRe[l], referenceRe(m[l]));
        const Scalar im = scaleAdd(scale[l], dIm[l], referenceIm(m[l]));
        zRe.set(l, re);
        zIm.set(l, im);
        size[l] = head(re) * head(re) + head(im) * head(im);
        const double r = dRe.part[0][l], i = dIm.part[0][l];
        dSize[l] = r * r + i * i;
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
        const Scalar re = referenceRe(m[l]), im = referenceIm(m[l]);
        const double none = 0;
        const Scalar zero = numberOf<PARTS, double>(&none, &none);
        const Scalar tr = scaleAdd(scale[l], dRe[l], zero), ti = scaleAdd(scale[l], dIm[l], zero);
        const Scalar kept =
            numberOf<PARTS, double>(&reference.size[0][m[l]], &reference.size[PARTS - 1][m[l]]);
        const Scalar beyond = kept + (tr * (re + re + tr) + ti * (im + im + ti));
        const double d = std::sqrt(dSize[l]) * scale[l];
        const double z = std::hypot(head(re), head(im));
        // Where its square would underflow e does not.
        const double e = std::sqrt(operations[l] * bound[l]) * scale[l];
        const double off = (2 * std::sqrt(size[l]) * e + e * e +
                            8 * U * (std::fabs(head(kept)) + 4 * d * (z + d)) + tier.sizeOff) *
                           (1 + 0x1p-20);
        if (-head(beyond) > off) return;
        if (head(beyond) > off) return escaped(l);
        if (off < 0x1p-470) return decideBelowDoubles(l);
        finish(l, ::deep::UNDECIDED, NOT_A_NUMBER);
    }

    // The same sum and the same bound in numbers that do not underflow, of a double's precision.
    void decideBelowDoubles(int l) {
        using ::deep::Wide;
        constexpr double u = 0x1p-53;
        const Wide dr(dRe.part[0][l], q[l]), di(dIm.part[0][l], q[l]);
        const double re = reference.z[0][2 * m[l]], im = reference.z[0][2 * m[l] + 1];
        const Wide kept = reference.sizeAt(m[l]);
        const Wide beyond = kept + (dr * (Wide(2 * re) + dr) + di * (Wide(2 * im) + di));
        const Wide d(std::sqrt(dSize[l]), q[l]), e(std::sqrt(operations[l] * bound[l]), q[l]);
        const Wide z(std::hypot(re, im));
        const Wide roundings = Wide(8 * u) * (abs(kept) + Wide(4) * d * (z + d));
        const Wide off = (Wide(2 * std::sqrt(size[l])) * e + e * e + roundings + tier.ownSizeOff) *
                         Wide(1 + 0x1p-20);
        if (-beyond > off) return;
        if (beyond > off) return escaped(l);
        finish(l, ::deep::UNDECIDED, NOT_A_NUMBER);
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
        const auto v = ::deep::roundedValue(count, before, after, tier.logLimit, all);
        const bool good = v.certain && sizeBefore[l] > 0x1p-900;
        finish(l, good ? count : ::deep::UNDECIDED, v.value);
    }

    // How far the logarithm of |z|^2 may be off.
    static double relative(double s, double e2) {
        const double off = (2 * std::sqrt(s * e2) + e2) / s * (1 + 0x1p-20) + 0x1p-49;
        return off < 0.5 ? off / (1 - off) : std::numeric_limits<double>::infinity();
    }

    // d <- z with the reference at 0 again. z has Z's rounding and its own: 2 u (|d| + 2 |z|).
    void rebase(int l) {
        operations[l] += 1;
        std::int64_t exponent = q[l];
        if (exponent < -200 && size[l] > 0) {
            exponent = std::max<std::int64_t>(exponent, std::ilogb(size[l]) / 2);
        }
        const double to = power(-exponent), by = power(q[l] - exponent);
        bound[l] =
            (bound[l] + 8 * U * U * dSize[l]) * by * by + 32 * U * U * size[l] * to * to + FLOOR;
        bound[l] *= UPWARDS;
        dRe.set(l, times(zRe[l], to));
        dIm.set(l, times(zIm[l], to));
        m[l] = reference.critical;
        if (exponent != q[l]) setLaneScale(l, exponent);
        measure(l);
    }

    bool wantsRebase(int l) const { return !(size[l] >= dSize[l] * scaleSquared[l]); }

    // Whether lane l stands where z, or what it is made of, is too small for a step in plain
    // doubles.
    bool isTiny(int l) const {
        if (m[l] == reference.critical) return size[l] < 0x1p-300;
        const ::deep::TinyPoint* tiny = reference.tinyFrom(m[l]);
        return tiny != tinyEnd() && tiny->at == m[l];
    }
    const ::deep::TinyPoint* tinyEnd() const {
        return reference.tiny.data() + reference.tiny.size();
    }

    // One step from a tiny point, with every product in units of its own.
    void tinyStep(int l) {
        operations[l] += 1;
        const ::deep::TinyPoint* tiny = reference.tinyFrom(m[l]);
        const bool at = m[l] != reference.critical;
        const std::int64_t unit = at ? std::max<std::int64_t>(tiny->exponent, q[l]) : q[l];
        const double ofZ = at ? power(tiny->exponent - unit) : 0, ofD = power(q[l] - unit);
        const double none = 0;
        const Scalar zero = numberOf<PARTS, double>(&none, &none);
        const Scalar re =
            at ? times(numberOf<PARTS, double>(tiny->re, tiny->re + PARTS - 1), ofZ) : zero;
        const Scalar im =
            at ? times(numberOf<PARTS, double>(tiny->im, tiny->im + PARTS - 1), ofZ) : zero;
        const Scalar zr = scaleAdd(ofD, dRe[l], re), zi = scaleAdd(ofD, dIm[l], im);
        const double s = head(zr) * head(zr) + head(zi) * head(zi);
        if (at && s < dSize[l] * ofD * ofD) return tinyRebase(l, unit, zr, zi, s);
        const Scalar wr = zr + re, wi = zi + im;
        const std::int64_t next = std::max(unit + q[l], tier.offsetExponent);
        const double product = power(unit + q[l] - next);
        const double c = power(tier.offsetExponent - next);
        const Scalar dr = scaleAdd(product, wr * dRe[l] + -(wi * dIm[l]), times(offsetRe[l], c));
        const Scalar di = scaleAdd(product, wr * dIm[l] + wi * dRe[l], times(offsetIm[l], c));
        const double f = bound[l];
        const double j = operations[l];
        bound[l] = ((s * (4 * f + 2 * tier.sizeFactor * dSize[l]) * product * product +
                     3 * j * f * j * f * power(4 * q[l] - 2 * next)) *
                        UPWARDS +
                    tier.ownSquared * c * c * UPWARDS + FLOOR);
        sizeBefore[l] = s * power(unit) * power(unit);
        boundBefore[l] = f * power(2 * (q[l] - next));
        dRe.set(l, dr);
        dIm.set(l, di);
        ++m[l];
        ++k[l];
        setLaneScale(l, next);
        measure(l);
        if (!isInside(l)) decide(l);
    }

    void tinyRebase(int l, std::int64_t unit, Scalar zr, Scalar zi, double s) {
        const double by = power(q[l] - unit);
        bound[l] = ((bound[l] + 8 * U * U * dSize[l]) * by * by + 32 * U * U * s + FLOOR) * UPWARDS;
        dRe.set(l, zr);
        dIm.set(l, zi);
        m[l] = reference.critical;
        setLaneScale(l, unit);
        measure(l);
    }

    // Many steps of lane l.
    void skip(int l, const Node<PARTS>& node, int steps) {
        operations[l] += 1;
        const Scalar ar = numberOf<PARTS, double>(node.ar, node.ar + PARTS - 1);
        const Scalar ai = numberOf<PARTS, double>(node.ai, node.ai + PARTS - 1);
        const Scalar br = numberOf<PARTS, double>(node.br, node.br + PARTS - 1);
        const Scalar bi = numberOf<PARTS, double>(node.bi, node.bi + PARTS - 1);
        const double f = operations[l] * bound[l];
        const double most = std::max(dSize[l], f);
        if (node.aExponent != 0 || node.bExponent != 0) {
            if (most > 0) rescale(l, q[l] + std::ilogb(most) / 2 + 1);
        }
        const std::int64_t ofA = q[l] + node.aExponent;
        const std::int64_t ofB = tier.offsetExponent + node.bExponent;
        const bool moves = node.aExponent != 0 || node.bExponent != 0;
        const std::int64_t next = moves ? std::max(ofA, ofB) : q[l];
        const double a = power(ofA - next), b = power(ofB - next);
        const Scalar pr = times(dRe[l], a), pi = times(dIm[l], a);
        const Scalar cr = times(offsetRe[l], b), ci = times(offsetIm[l], b);
        bound[l] = (node.onBound * bound[l] + node.onSize * dSize[l]) * a * a +
                   node.onDelta * b * b + FLOOR;
        bound[l] *= UPWARDS;
        dRe.set(l, ar * pr + -(ai * pi) + (br * cr + -(bi * ci)));
        dIm.set(l, ar * pi + ai * pr + (br * ci + bi * cr));
        m[l] += static_cast<std::uint32_t>(steps);
        k[l] += steps;
        if (next != q[l]) setLaneScale(l, next);
        measure(l);
    }

    const TierData<PARTS>& tier;
    const ::deep::Reference& reference;
    ::deep::Block& block;
    const bool wantsValues;

    Bits live = 0;
    // Differences, what each step adds to them (dc in the units of now, and as the picture has it),
    // and the states of the orbits.
    Lanes<PARTS> dRe, dIm, cRe, cIm, offsetRe, offsetIm, zRe, zIm;
    // F, |z|^2, |d|^2; the first two before the last step as well.
    HWY_ALIGN double bound[BLOCK], size[BLOCK], dSize[BLOCK];
    HWY_ALIGN double sizeBefore[BLOCK], boundBefore[BLOCK];
    // 2^q, its square, 3 b^2, the largest D + 16 E of any node.
    HWY_ALIGN double scale[BLOCK], scaleSquared[BLOCK], own[BLOCK], skipLimit[BLOCK];
    HWY_ALIGN double operations[BLOCK];  // no less than j
    std::int64_t q[BLOCK];
    std::uint32_t m[BLOCK];  // index of the reference
    std::int32_t k[BLOCK];   // steps done
};

}  // namespace deep_orbits
}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
