// Orbits of the scalar trigonometric rules in float, to the bit: for pixels that lean orbits in
// float leave in doubt (compute/vector_stages-inl.h).
//
// States are floats in vectors of double. The product of the rule is taken with short factors; what
// lies too close to the middle between two floats goes to the scalar rule.
//
// Which orbits stay is mostly seen by a ball, as in compute/vector_ball-inl.h, but about the orbit
// of the scalar rule itself: E is 0. Write v for 2^-24. If the state w of another orbit lies within
// F <= 2^-4 of z, then one step later it lies within
//     F (|f'(z)| + 0.5335 F cosh h) + 6 v cosh h + 4 v |c|_1
// of the next z, by Taylor's theorem as there, and as each of the two orbits rounds its product and
// its sum to float: v (2.01 |f| + 1.01 |c|), and |f| is at most cosh h at z and e^(1/16) cosh h at
// w. Together that is below 4.2 v cosh h + 2.1 v |c|. What is left over is far more than the
// factors' errors, F 2^-41 cosh h, and what computing the bound rounds away. Fewer units than the
// lean bound has, so that weaker contractions are seen.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_TRIG_FLOATS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_TRIG_FLOATS_INL_H
#undef TESSARY_COMPUTE_VECTOR_TRIG_FLOATS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_TRIG_FLOATS_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "compute/stop_flag.h"
#include "compute/vector_ball-inl.h"
#include "compute/vector_rounded-inl.h"
#include "compute/vector_trig_short-inl.h"

#if TESSARY_HAS_LEAN

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

using NarrowTag = hn::Rebind<float, RealTag>;
using Narrow = hn::Vec<NarrowTag>;
inline constexpr std::size_t REAL_LANES = hn::MaxLanes(RealTag());

// The orbits of one vector in memory, where a single one can be replaced by that of another pixel.
struct FloatLanes {
    HWY_ALIGN double zr[REAL_LANES], zi[REAL_LANES];
    HWY_ALIGN double cr[REAL_LANES], ci[REAL_LANES];
    HWY_ALIGN double savedR[REAL_LANES], savedI[REAL_LANES];
    HWY_ALIGN double ball[REAL_LANES], radius[REAL_LANES];  // now, and about the saved state
    HWY_ALIGN double start[REAL_LANES];                     // the number of the first step
    HWY_ALIGN double last[REAL_LANES];                      // that of escape, infinite before
    HWY_ALIGN double saveAt[REAL_LANES];                    // steps until the next save
    HWY_ALIGN double live[REAL_LANES];                      // 1 while the orbit iterates, else 0
    std::size_t pixel[REAL_LANES];

    FloatLanes() {
        for (std::size_t n = 0; n < REAL_LANES; ++n) end(n);
    }

    // A state that is nowhere and a radius that nothing is below: no orbit has returned to these.
    void begin(std::size_t n, std::size_t ofPixel, double r, double i, std::int64_t step,
               double firstSave) {
        zr[n] = zi[n] = 0.0;
        cr[n] = r;
        ci[n] = i;
        savedR[n] = savedI[n] = std::nan("");
        ball[n] = HUGE_VAL;
        radius[n] = 0.0;
        start[n] = static_cast<double>(step);
        last[n] = HUGE_VAL;
        saveAt[n] = firstSave;
        live[n] = 1.0;
        pixel[n] = ofPixel;
    }

    void end(std::size_t n) {
        begin(n, 0, 0.0, 0.0, 0, 0);
        live[n] = 0.0;
    }
};

HWY_INLINE Narrow narrowed(Real x) {
    return hn::DemoteTo(NarrowTag(), x.v);
}

HWY_INLINE Real widened(Narrow x) {
    return Real(hn::PromoteTo(RealTag(), x));
}

// Lanes whose value may round to other floats than the scalar rule's.
HWY_NOINLINE inline RealMask isUnsafe(const cpuComplex<Real>& value) {
    const RealMask normal = hn::And(isZeroOrLarge(value.r), isZeroOrLarge(value.i));
    return hn::Or(hn::Not(normal), hn::Or(isNearMiddle(value.r), isNearMiddle(value.i)));
}

// Those of them that are live. A cheaper question, which exact zeros fail, nearly always settles
// it.
HWY_INLINE RealMask unsafeLanes(const cpuComplex<Real>& value, RealMask live) {
    const RealMask near = hn::Or(isNearMiddle(value.r), isNearMiddle(value.i));
    const RealMask suspect = hn::And(hn::Or(near, hasTinyPart(value)), live);
    if (HWY_LIKELY(hn::AllFalse(RealTag(), suspect))) return suspect;
    return hn::And(isUnsafe(value), live);
}

// Has the scalar rule evaluate these lanes of z.
template <class Kind>
HWY_NOINLINE void evaluateByRule(const cpuComplex<Real>& z, RealMask lanes,
                                 cpuComplex<Real>& value) {
    const RealTag d;
    HWY_ALIGN double zr[REAL_LANES], zi[REAL_LANES], vr[REAL_LANES], vi[REAL_LANES];
    hn::Store(z.r.v, d, zr);
    hn::Store(z.i.v, d, zi);
    hn::Store(value.r.v, d, vr);
    hn::Store(value.i.v, d, vi);
    forEachLane(d, lanes, [&](std::size_t n) HWY_ATTR {
        const auto exact =
            Kind::exact(cpuComplex<float>{static_cast<float>(zr[n]), static_cast<float>(zi[n])});
        vr[n] = static_cast<double>(exact.r);
        vi[n] = static_cast<double>(exact.i);
    });
    value = {Real(hn::Load(d, vr)), Real(hn::Load(d, vi))};
}

// One vector of orbits in registers.
template <class Kind>
struct FloatOrbits {
    cpuComplex<Real> z;
    Narrow cr, ci;
    Real roundings;  // what they add to a ball for the constant's sake
    Real ball;       // infinite if it ever reached over the limit
    RealMask live;
    Real last;  // the number of the step of escape

    HWY_INLINE void load(const FloatLanes& lanes) {
        const RealTag d;
        const auto row = [&](const double* at) HWY_ATTR { return Real(hn::Load(d, at)); };
        z = {row(lanes.zr), row(lanes.zi)};
        const Real r = row(lanes.cr), i = row(lanes.ci);
        cr = narrowed(r);
        ci = narrowed(i);
        roundings = (magnitude(r) + magnitude(i)) * Real(4 * 0x1p-24);
        ball = row(lanes.ball);
        last = row(lanes.last);
        live = row(lanes.live) > Real(0.0);
    }

    HWY_INLINE void store(FloatLanes& lanes) const {
        const RealTag d;
        hn::Store(z.r.v, d, lanes.zr);
        hn::Store(z.i.v, d, lanes.zi);
        hn::Store(ball.v, d, lanes.ball);
        hn::Store(last.v, d, lanes.last);
    }

    template <bool BALL>
    HWY_INLINE void step(const LeanLimit<double>& limit) {
        const bool real = Kind::REAL_IS_TRIGONOMETRIC;
        const ShortFactors f(real ? z.r : z.i, real ? z.i : z.r);
        cpuComplex<Real> value = Kind::value(static_cast<const Factors&>(f));
        const RealMask unsafe = unsafeLanes(value, live);
        if (HWY_UNLIKELY(!hn::AllFalse(RealTag(), unsafe))) evaluateByRule<Kind>(z, unsafe, value);
        z = {widened(hn::Add(narrowed(value.r), cr)), widened(hn::Add(narrowed(value.i), ci))};
        if constexpr (BALL) growBall(f, limit);
    }

    HWY_INLINE void growBall(const Factors& f, const LeanLimit<double>& limit) {
        const Real o = slopeFactor(Kind(), f), cosh = magnitude(f.cosh);
        const Real slope =
            roughRoot(fused(o, o, fused(f.sinh, f.sinh, Real(0x1p-60)))) * Real(1.0 + 0x1p-13);
        const Real growth = fused(ball, cosh * Real(0.5335), slope);
        ball = fused(ball, growth, fused(cosh, Real(6 * 0x1p-24), roundings));
        const RealMask inside = limit.inner >= fused(ball, limit.reach, size());
        ball = select(inside, ball, Real(HUGE_VAL));
    }

    // |z|^2, but for its roundings.
    HWY_INLINE Real size() const { return fused(z.r, z.r, z.i * z.i); }

    // Lanes that may have escaped.
    HWY_INLINE RealMask mayHaveEscaped(Real nearLimit) const {
        return hn::And(live, size() > nearLimit);
    }

    // Ends the orbits that escaped with this step: |z|^2 as the rule rounds it.
    HWY_INLINE void endEscaped(Real limit, std::int64_t step) {
        const Narrow r = narrowed(z.r), i = narrowed(z.i);
        const Real rounded = widened(hn::Add(hn::Mul(r, r), hn::Mul(i, i)));
        const RealMask escaped = hn::And(live, rounded > limit);
        last = select(escaped, Real(static_cast<double>(step)), last);
        live = hn::AndNot(escaped, live);
    }

    // Lanes that stay for ever: the ball lies in the saved one, or the state is the saved one, or
    // no number and so never will be one.
    HWY_INLINE RealMask stays(const FloatLanes& lanes) const {
        const RealTag d;
        const Real savedR(hn::Load(d, lanes.savedR)), savedI(hn::Load(d, lanes.savedI));
        const Real r = z.r - savedR, i = z.i - savedI,
                   room = Real(hn::Load(d, lanes.radius)) - ball;
        const Real square = fused(r, r, fused(i, i, Real(0x1p-200)));
        const RealMask inside = room * room * Real(1 - 0x1p-10) > square;
        const RealMask returned = hn::And(inside, room > Real(0.0));
        const RealMask repeats = hn::And(z.r == savedR, z.i == savedI);
        return hn::Or(hn::Or(returned, repeats), hn::IsNaN((z.r + z.i).v));
    }
};

// Follows pixels, K vectors of them at a time. A lane whose orbit has ended takes the next pixel.
template <class Kind, std::size_t K>
class FloatFollower {
  public:
    // maxSize: the escape limit. limit: the iteration limit. detect: whether to look for orbits
    // that stay.
    FloatFollower(FollowedPixels& toFollow, float maxSize, int limit, bool detect)
        : pixels(toFollow),
          escapeLimit(static_cast<double>(maxSize)),
          ballLimit(static_cast<double>(maxSize)),
          nearLimit(static_cast<double>(maxSize) * (1 - 0x1p-20) - 0x1p-120),
          iterationLimit(limit),
          firstSave(detect ? FIRST_SAVE : HUGE_VAL) {
        for (std::size_t k = 0; k < K; ++k) {
            for (std::size_t n = 0; n < REAL_LANES; ++n) takeNext(k, n, 0);
        }
    }

    // Returns whether all came to their end, rather than being told to stop.
    bool run(StopFlag stop) {
        for (std::int64_t step = 0; alive > 0; step += STEPS) {
            if (isSet(stop)) return false;
            if (balls) {
                takeSteps<true>(step);
            } else {
                takeSteps<false>(step);
            }
        }
        return true;
    }

  private:
    using Orbits = FloatOrbits<Kind>;
    static constexpr int STEPS = 4;  // between two looks at what stays
    static constexpr double FIRST_SAVE = 16;

    // Gives lane n of vector k the next pixel, from this step on, if there is one.
    void takeNext(std::size_t k, std::size_t n, std::int64_t step) {
        if (next == pixels.used) return lanes[k].end(n);
        lanes[k].begin(n, next, pixels.re[next], pixels.im[next], step, firstSave);
        ++next;
        ++alive;
    }

    // Takes STEPS steps and ends the orbits that escape, that stay or have reached the limit. BALL:
    // whether there are finite balls.
    template <bool BALL>
    HWY_NOINLINE HWY_FLATTEN void takeSteps(std::int64_t stepsBefore) {
        const RealTag d;
        Orbits orbits[K];
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) orbits[k].load(lanes[k]);
        for (std::int64_t step = stepsBefore; step < stepsBefore + STEPS; ++step) {
            HWY_UNROLL(4)
            for (std::size_t k = 0; k < K; ++k) orbits[k].template step<BALL>(ballLimit);
            RealMask any = orbits[0].mayHaveEscaped(nearLimit);
            HWY_UNROLL(4)
            for (std::size_t k = 1; k < K; ++k) {
                any = hn::Or(any, orbits[k].mayHaveEscaped(nearLimit));
            }
            if (HWY_LIKELY(hn::AllFalse(d, any))) continue;
            HWY_UNROLL(4)
            for (std::size_t k = 0; k < K; ++k) orbits[k].endEscaped(escapeLimit, step);
        }
        balls = false;
        for (std::size_t k = 0; k < K; ++k) endAndSave(k, orbits[k], stepsBefore + STEPS);
    }

    // At the end of a block: ends orbits that stay or have reached the limit, gives ended lanes
    // other pixels and saves what is due. step: the number of the next one.
    HWY_INLINE void endAndSave(std::size_t k, const Orbits& orbits, std::int64_t step) {
        const RealTag d;
        FloatLanes& l = lanes[k];
        orbits.store(l);
        const Real age = Real(static_cast<double>(step)) - Real(hn::Load(d, l.start));
        const RealMask atLimit = age >= Real(static_cast<double>(iterationLimit));
        const RealMask goesOn = hn::AndNot(hn::Or(atLimit, orbits.stays(l)), orbits.live);
        const RealMask due = hn::And(goesOn, age >= Real(hn::Load(d, l.saveAt)));
        balls |= !hn::AllFalse(d, hn::And(goesOn, Real(HUGE_VAL) > orbits.ball));
        if (!hn::AllFalse(d, due)) save(k, due, age);
        const RealMask ended = hn::AndNot(goesOn, Real(hn::Load(d, l.live)) > Real(0.0));
        if (!hn::AllFalse(d, ended)) replace(k, ended, step);
    }

    // Remembers the present states of these lanes, with balls around them.
    HWY_NOINLINE void save(std::size_t k, RealMask which, Real age) {
        const RealTag d;
        FloatLanes& l = lanes[k];
        hn::BlendedStore(hn::Load(d, l.zr), which, d, l.savedR);
        hn::BlendedStore(hn::Load(d, l.zi), which, d, l.savedI);
        const auto radius = hn::Min(Real(BALL_RADIUS).v, hn::Div(Real(BALL_SHRINKS).v, age.v));
        hn::BlendedStore(radius, which, d, l.ball);
        hn::BlendedStore(radius, which, d, l.radius);
        hn::BlendedStore((age * Real(1.5)).v, which, d, l.saveAt);
        balls = true;
    }

    // Keeps the counts of these lanes and gives them the next pixels.
    HWY_NOINLINE void replace(std::size_t k, RealMask which, std::int64_t step) {
        forEachLane(RealTag(), which, [&](std::size_t n) HWY_ATTR {
            const FloatLanes& l = lanes[k];
            const double count = std::min(l.last[n] - l.start[n], iterationLimit + 0.0);
            pixels.count[l.pixel[n]] = static_cast<std::uint64_t>(count);
            --alive;
            takeNext(k, n, step);
        });
    }

    FollowedPixels& pixels;
    const Real escapeLimit;
    const LeanLimit<double> ballLimit;
    const Real nearLimit;
    const int iterationLimit;
    const double firstSave;
    std::size_t next = 0, alive = 0;
    bool balls = false;  // whether there may be a finite ball
    FloatLanes lanes[K];
};

// Follows all pixels with the scalar rule in float, up to the iteration limit, at escape limits up
// to LEAN_LIMIT; points are floats. Returns whether all came to their end, rather than being told
// to stop.
template <class Kind>
bool followFloats(FollowedPixels& pixels, float maxSize, int limit, bool detect, StopFlag stop) {
    if (pixels.used <= REAL_LANES) {
        return FloatFollower<Kind, 1>(pixels, maxSize, limit, detect).run(stop);
    }
    return FloatFollower<Kind, 2>(pixels, maxSize, limit, detect).run(stop);
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // TESSARY_HAS_LEAN

#endif
