// Plain steps of a vector of lanes.
//
// Included once for each instruction set (see deep/vector_orbits.cpp).
#if defined(TESSARY_DEEP_VECTOR_STEPS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_DEEP_VECTOR_STEPS_INL_H
#undef TESSARY_DEEP_VECTOR_STEPS_INL_H
#else
#define TESSARY_DEEP_VECTOR_STEPS_INL_H
#endif

#include "deep/lane_steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {
namespace deep_orbits {

template <int PARTS>
class VectorSteps : public LaneSteps<PARTS> {
  protected:
    using Base = LaneSteps<PARTS>;
    using Base::bound, Base::boundBefore, Base::d, Base::dSize, Base::live, Base::reference;
    using Base::size, Base::sizeBefore, Base::tier, Base::z;
    using typename Base::Vector;

    using Base::Base;

    static HWY_INLINE Real vectorOf(const double (&numbers)[BLOCK], int v) {
        return Real(hn::Load(RealTag(), numbers + v * WIDTH));
    }

    // What a step needs that stays while the units do.
    struct Constants {
        Real unit, squared, own, inside, second, doubt;
    };

    Constants constantsOf(int v, double steps) const {
        const Real j = vectorOf(this->operations, v) + Real(steps);
        const Real squared = vectorOf(this->scaleSquared, v);
        return {vectorOf(this->scale, v),
                squared,
                vectorOf(this->own, v),
                Real(0.9375 * tier.limit),
                Real(3 * UPWARDS) * j * j * squared,
                Real(1024) * j * squared};
    }

    // The numbers of a vector of lanes while they are stepped.
    struct State {
        Vector d, z;
        Real f, s, d2, fBefore, sBefore;
    };

    State load(int v) const {
        const Real f = vectorOf(bound, v), s = vectorOf(size, v);
        return {d.vector(v), z.vector(v), f, s, vectorOf(dSize, v), f, s};
    }

    void store(int v, const State& x) {
        const int l = v * WIDTH;
        d.set(l, x.d);
        z.set(l, x.z);
        pair_lanes::store(x.f, bound + l);
        pair_lanes::store(x.s, size + l);
        pair_lanes::store(x.d2, dSize + l);
        pair_lanes::store(x.fBefore, boundBefore + l);
        pair_lanes::store(x.sBefore, sizeBefore + l);
    }

    // One step, given w = 2 Z + d and dc; then z from the reference's next point.
    HWY_INLINE RealMask step(State& x, const Constants& with, const Vector& w, const Vector& add,
                             const Vector& next) const {
        x.fBefore = x.f;
        x.sBefore = x.s;
        const Real slope = mulAdd(with.second, x.f, Real(4 * UPWARDS) * x.s);
        const Real own2 = mulAdd(x.s, Real(tier.sizeFactor * UPWARDS) * x.d2, with.own);
        x.f = mulAdd(x.f, slope, own2);
        return arrive(x, with, mulAdd(w, x.d, add), next);
    }

    // z and the squares behind a step to the difference `to`. The lanes that are calm: surely not
    // escaped, and with |z| >= |d|.
    HWY_INLINE RealMask arrive(State& x, const Constants& with, const Vector& to,
                               const Vector& next) const {
        x.d = to;
        x.z = scaleAdd(with.unit, to, next);
        x.s = squareOf(x.z);
        x.d2 = squareOf(x.d);
        return hn::And(hn::Lt(mulAdd(with.doubt, x.f, x.s).v, with.inside.v),
                       hn::Ge(x.s.v, (with.squared * x.d2).v));
    }

    HWY_INLINE Vector pointOfAll(std::size_t index) const {
        return of<Real>(reference.template point<PARTS>(index));
    }

    // The next points of the lanes' references, re or im; index is that of the real part.
    template <class Index>
    HWY_INLINE Real gathered(int component, Index index, Real, int part = 0) const {
        return Real(hn::GatherIndex(RealTag(), reference.z[part].data() + component, index));
    }
    template <class Index>
    HWY_INLINE Pair<Real> gathered(int component, Index index, Pair<Real> as) const {
        return {gathered(component, index, as.high), gathered(component, index, as.high, 1)};
    }

    // Of other lanes 0.
    static HWY_INLINE Real onlyOf(RealMask lanes, Real x) {
        return Real(hn::IfThenElseZero(lanes, x.v));
    }
    static HWY_INLINE Pair<Real> onlyOf(RealMask lanes, Pair<Real> x) {
        return {onlyOf(lanes, x.high), onlyOf(lanes, x.low)};
    }

    // The lanes of vector v that are live.
    RealMask lanesOf(int v) const {
        constexpr Bits ALL = (Bits{1} << BLOCK) - 1;
        if (live == ALL) return hn::FirstN(RealTag(), WIDTH);
        HWY_ALIGN double on[WIDTH];
        for (int l = 0; l < WIDTH; ++l) on[l] = this->isLive(v * WIDTH + l) ? 1.0 : 0.0;
        return hn::Gt(hn::Load(RealTag(), on), hn::Zero(RealTag()));
    }
};

}  // namespace deep_orbits
}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
