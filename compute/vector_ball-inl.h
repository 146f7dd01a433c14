// Trigonometric orbits that are followed with lean functions: how far the scalar rule's orbit may
// be from them, and a proof that one stays for ever.
//
// Write z for the state followed here, E for the bound, f for the function of the rule, h for the
// hyperbolic argument, u for half a unit in the last place of 1 in T. If the scalar rule's state
// lies within E <= 2^-4 of z, then its next state lies within
//     E' = E (|f'(z)| + 0.5335 E cosh h) + a u cosh h + b u |c|_1
// of the next z:
//   - Taylor's theorem, with |f''| <= cosh(|h| + E) <= e^(1/16) cosh h within E of z, half of which
//     is below 0.5323 cosh h.
//   - Two evaluations. The one here is within 11.5 u cosh h + u |c| of f(z) + c
//     (compute/vector_lean-inl.h). The scalar rule's functions are the doubles nearest to the true
//     values, so in double its product is within 3 u of itself and its sum rounds once; in float
//     product and sum round once each. |f| at its state is at most e^(1/16) cosh h. That is at most
//     4.3 u cosh h + u |c|. Together: below 16 u cosh h + 2 u |c|, and |c| <= |c|_1.
//   - |f'|^2 = o^2 + sinh^2 h, o being the sine or the cosine factor. The errors of these factors
//     take E * 12 u cosh h at most, less than u cosh h. The root may be 2^-13.9 too short, for
//     which it is taken 2^-13 longer.
// With a = 24 in double, 20 in float, and b = 4 what is left over, 3 u cosh h and 2 u |c|, is far
// more than the roundings of computing E' take from the terms of cosh h and c; those of the others
// are below their own surplus, 2^-14 and 2^-9.
//
// A decision needs E <= 2^-4 and |z|^2 further from the limit L than E (2 |z| + E) and roundings.
// An escape needs the small E of the step before alone: E' is a bound then, however large it is.
// That a state stays is mostly seen at once: |z|^2 + K E <= L (1 - 2^-18) with K = 16 max(L, 2)
// has both. For then E <= L / K <= 1/16, and 2 |z| + E <= 2 sqrt(L) + 1/16 < K.
//
// The ball. From a saved state z_s on a second bound F is carried along, by the same recurrence,
// from a radius F_s that is no less than E was. Every orbit of the scalar rule that begins within
// F_s of z_s is within F of z so many steps later, and stayed below the limit if F kept to the
// condition above at every step. When |z - z_s| + F <= F_s all of them are back where they began,
// inside the first ball: they return for ever, and the scalar rule's own is one of them.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_BALL_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_BALL_INL_H
#undef TESSARY_COMPUTE_VECTOR_BALL_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_BALL_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "compute/vector_claims-inl.h"
#include "compute/vector_lean-inl.h"
#include "compute/vector_number-inl.h"

#if TESSARY_HAS_LEAN

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Escape limits up to here leave sinh^2 of a live orbit below the largest float.
inline constexpr double LEAN_LIMIT = 1900.0;

template <class T>
struct LeanError;

template <>
struct LeanError<double> {
    static constexpr double COSH = 24 * 0x1p-53, CONSTANT = 4 * 0x1p-53, SIZE = 0x1p-50;
};

template <>
struct LeanError<float> {
    static constexpr double COSH = 20 * 0x1p-24, CONSTANT = 4 * 0x1p-24, SIZE = 0x1p-21;
};

// The escape limit, and the two numbers of the quick test.
template <class T>
struct LeanLimit {
    explicit LeanLimit(double escape)
        : limit(escape), inner(escape * (1 - 0x1p-18)), reach(16 * std::max(escape, 2.0)) {}
    Number<T> limit, inner, reach;
};

// One vector of orbits in registers.
template <class Kind, class T>
struct LeanOrbits {
    using N = Number<T>;
    using D = typename N::D;
    cpuComplex<N> z, c;
    N bound;
    N ball;  // the second bound
    MaskOf<T> live;
    MaskOf<T> inside;  // whose ball stayed below the limit so far

    template <bool BALL>
    HWY_INLINE void step() {
        const auto f = LeanRule<Kind>::template factors<T>(z);
        const N o = slopeFactor(Kind(), f), cosh = magnitude(f.cosh);
        const N slope =
            roughRoot(fused(o, o, fused(f.sinh, f.sinh, N(0x1p-60)))) * N(1.0 + 0x1p-13);
        const N curvature = cosh * N(0.5335);
        const N distance = (magnitude(c.r) + magnitude(c.i)) * N(LeanError<T>::CONSTANT);
        const N evaluation = fused(cosh, N(LeanError<T>::COSH), distance);
        z = leanNext(Kind(), f, c);
        bound = fused(bound, fused(bound, curvature, slope), evaluation);
        if constexpr (BALL) ball = fused(ball, fused(ball, curvature, slope), evaluation);
    }

    HWY_INLINE N size() const { return fused(z.r, z.r, z.i * z.i); }

    // Lanes whose every state within `distance` surely stays below the limit, seen at once.
    HWY_INLINE MaskOf<T> staysWithin(N distance, const LeanLimit<T>& limit) const {
        return limit.inner >= fused(distance, limit.reach, size());
    }

    // How far |z|^2 may be from the scalar rule's, both as they were rounded.
    HWY_INLINE N marginOf(N square) const {
        const N reach = fused(N(2.01), magnitude(z.r) + magnitude(z.i), bound);
        return fused(bound, reach, square * N(LeanError<T>::SIZE));
    }

    // Lanes that surely escaped at this state, and those of which nobody knows.
    HWY_INLINE void decide(N limit, MaskOf<T>& escaped, MaskOf<T>& doubtful) const {
        const N square = size(), margin = marginOf(square);
        const MaskOf<T> certain = N(0x1p-4) >= bound;
        escaped = square - margin > limit;
        const MaskOf<T> stays = hn::And(certain, limit >= square + margin);
        doubtful = hn::AndNot(hn::Or(escaped, stays), live);
        escaped = hn::And(escaped, live);
    }

    // Lanes whose ball has returned into the saved one. A difference of two radii so small that its
    // square vanishes says nothing.
    HWY_INLINE MaskOf<T> returned(N savedR, N savedI, N radius) const {
        const N r = z.r - savedR, i = z.i - savedI, room = radius - ball;
        const N square = fused(r, r, fused(i, i, N(0x1p-100)));
        const MaskOf<T> near = room * room * N(1 - 0x1p-10) > square;
        return hn::And(hn::And(inside, near), room > N(0.0));
    }
};

template <class Kind, class T>
HWY_INLINE LeanOrbits<Kind, T> loadOrbits(const CertifiedSlotsOf<T>& slots, std::size_t at) {
    const typename Number<T>::D d;
    const auto& s = slots.s;
    const auto load = [&](const T* row) HWY_ATTR { return Number<T>(hn::Load(d, row + at)); };
    const MaskOf<T> live = hn::MaskFromVec(hn::Load(d, s.live + at));
    return {{load(s.zr), load(s.zi)},
            {load(s.cr), load(s.ci)},
            load(slots.bound),
            load(slots.ball),
            live,
            live};
}

// Takes `steps` steps with K vectors of slots. Lanes that escape or fall into doubt end; with BALL
// those whose ball returned, too. S: CertifiedSlotsOf<T>, or what derives from it with a
// noteEscape() of its own.
template <class Kind, bool BALL, std::size_t K, class T, class S>
HWY_NOINLINE HWY_FLATTEN void advanceLean(S& slots, std::size_t first, const LeanLimit<T>& limit,
                                          int steps, int stepsBefore) {
    using Orbits = LeanOrbits<Kind, T>;
    using N = Number<T>;
    const typename N::D d;
    const typename Slots<T>::DU du;
    constexpr std::size_t LANES = Slots<T>::LANES;
    Slots<T>& s = slots.s;
    Orbits orbits[K];
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) orbits[k] = loadOrbits<Kind, T>(slots, first + k * LANES);
    for (int i = 0; i < steps; ++i) {
        Orbits before[K];
        MaskOf<T> unsure[K];
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            before[k] = orbits[k];
            orbits[k].template step<BALL>();
            if constexpr (BALL) {
                const auto inside = orbits[k].staysWithin(orbits[k].ball, limit);
                orbits[k].inside = hn::And(orbits[k].inside, inside);
            }
            const auto stays = orbits[k].staysWithin(orbits[k].bound, limit);
            unsure[k] = hn::AndNot(stays, orbits[k].live);
        }
        auto any = unsure[0];
        HWY_UNROLL(4)
        for (std::size_t k = 1; k < K; ++k) any = hn::Or(any, unsure[k]);
        if (HWY_LIKELY(hn::AllFalse(d, any))) continue;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const std::size_t at = first + k * LANES;
            MaskOf<T> escaped, doubtful;
            orbits[k].decide(limit.limit, escaped, doubtful);
            const MaskOf<T> ended = hn::Or(escaped, doubtful);
            if (hn::AllFalse(d, ended)) continue;
            using Word = typename Slots<T>::Word;
            const Word count = static_cast<Word>(stepsBefore + i);
            hn::BlendedStore(hn::Set(du, count), hn::RebindMask(du, escaped), du, s.count + at);
            hn::BlendedStore(hn::Set(du, IN_DOUBT<T>), hn::RebindMask(du, doubtful), du,
                             s.count + at);
            slots.noteEscape(at, escaped, before[k], orbits[k]);
            s.alive -= hn::CountTrue(d, ended);
            orbits[k].live = hn::AndNot(ended, orbits[k].live);
        }
    }
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const std::size_t at = first + k * LANES;
        Orbits& o = orbits[k];
        if constexpr (BALL) {
            const auto load = [&](const T* row) HWY_ATTR { return N(hn::Load(d, row + at)); };
            const MaskOf<T> stay =
                hn::And(o.live, o.returned(load(s.savedR), load(s.savedI), load(slots.savedBound)));
            s.alive -= hn::CountTrue(d, stay);
            o.live = hn::AndNot(stay, o.live);
            const N lost(HUGE_VAL);
            hn::Store(select(o.inside, o.ball, lost).v, d, slots.ball + at);
        }
        hn::Store(o.z.r.v, d, s.zr + at);
        hn::Store(o.z.i.v, d, s.zi + at);
        hn::Store(o.bound.v, d, slots.bound + at);
        hn::Store(hn::VecFromMask(d, o.live), d, s.live + at);
    }
}

// Advances all slots.
template <class Kind, bool BALL, class T, class S>
HWY_INLINE void advanceAllLean(S& slots, const LeanLimit<T>& limit, int steps, int stepsBefore) {
    constexpr std::size_t LANES = Slots<T>::LANES, K = 2;
    std::size_t at = 0;
    for (; at + (K - 1) * LANES < slots.s.used; at += K * LANES) {
        advanceLean<Kind, BALL, K>(slots, at, limit, steps, stepsBefore);
    }
    for (; at < slots.s.used; at += LANES) {
        advanceLean<Kind, BALL, 1>(slots, at, limit, steps, stepsBefore);
    }
}

// Remembers the present states, with balls of at least this radius around them.
template <class T>
void saveBalls(CertifiedSlotsOf<T>& slots, double radius) {
    const typename Number<T>::D d;
    saveStates(slots.s);
    for (std::size_t at = 0; at < slots.s.used; at += Slots<T>::LANES) {
        const auto ball = hn::Max(hn::Load(d, slots.bound + at), Number<T>(radius).v);
        hn::Store(ball, d, slots.ball + at);
        hn::Store(ball, d, slots.savedBound + at);
    }
}

// The ball laid after so many steps: as far as an orbit that has come so slowly still is from where
// it will rest. A larger one takes the strength of a weak contraction in its second order.
inline constexpr double BALL_RADIUS = 0x1p-6, BALL_SHRINKS = 128 * BALL_RADIUS;
inline double ballRadius(double steps) {
    return std::min(BALL_RADIUS, BALL_SHRINKS / steps);
}

// Iterates the pixels in the slots to their end; counts may be IN_DOUBT. close() closes ranks. With
// `detect`, balls are laid at steps that grow by half. Returns whether all came to their end,
// rather than being told to stop.
template <class Kind, class T, class S, class Close>
HWY_INLINE bool iterateLean(S& slots, double escape, int limit, bool detect, StopFlag stop,
                            Close&& close) {
    constexpr int FIRST_BALL = 16;
    Slots<T>& s = slots.s;
    const LeanLimit<T> limits(escape);
    fill(typename Number<T>::D(), slots.bound, s.used, hn::Zero(typename Number<T>::D()));
    int saveAt = FIRST_BALL;
    for (int steps = 0; steps < limit && s.alive > 0;) {
        if (isSet(stop)) return false;
        const int block = std::min(steps < FIRST_BALL ? 2 : 8, limit - steps);
        if (s.saved) {
            advanceAllLean<Kind, true>(slots, limits, block, steps);
        } else {
            advanceAllLean<Kind, false>(slots, limits, block, steps);
        }
        steps += block;
        if (detect && steps >= saveAt) {
            saveBalls(slots, ballRadius(steps));
            saveAt = steps > (1 << 29) ? steps : steps + steps / 2;
        }
        const std::size_t needed = (s.alive + Slots<T>::LANES - 1) / Slots<T>::LANES;
        if (s.alive > 0 && 2 * needed <= s.vectors()) close();
    }
    return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif  // TESSARY_HAS_LEAN

#endif
