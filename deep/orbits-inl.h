// Orbits of a block of pixels in vectors: all lanes at the same step of the reference as long as
// they stay together, then each at its own (see deep/apart_orbits-inl.h).
//
// Included once for each instruction set (see deep/vector_orbits.cpp).
#if defined(TESSARY_DEEP_ORBITS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_DEEP_ORBITS_INL_H
#undef TESSARY_DEEP_ORBITS_INL_H
#else
#define TESSARY_DEEP_ORBITS_INL_H
#endif

#include "deep/apart_orbits-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {
namespace deep_orbits {

// |d| and z may differ this much, as squares, where all lanes take a new reference because some
// have to: it costs the others that many times the rounding.
inline constexpr double CLOSE_ENOUGH = 256;

// Powers of two that the units of lanes may be apart which then share the largest: together with
// what a difference is below its units before it is rescaled that keeps clear of FLOOR.
inline constexpr std::int64_t MOST_UNITS_APART = 64;

// Steps between two looks at what is not in the loop.
inline constexpr int STEPS_TOGETHER = 64;

template <int PARTS>
class Orbits : public ApartOrbits<PARTS> {
    using Base = ApartOrbits<PARTS>;
    using typename Base::Constants, typename Base::State, typename Base::Vector;

  public:
    Orbits(const TierData<PARTS>& data, ::deep::Block& pixels, bool values, StopFlag flag)
        : Base(data, pixels, values, flag) {}

    void follow() {
        this->start();
        if (tier.maxIters <= 0) return this->finishAll(0);
        for (int l = 0; l < BLOCK; ++l) {
            if (this->isLive(l) && !tier.julia) this->decide(l);
        }
        at = this->m[0];
        done = this->k[0];
        bool united = live != 0 && rebaseSome();
        while (united && live != 0) united = together();
        if (live != 0) this->apart();
    }

  private:
    using Base::at, Base::bound, Base::c, Base::d, Base::done, Base::dSize, Base::live;
    using Base::nextTiny, Base::operations, Base::reference, Base::size, Base::skipLimit;
    using Base::stepsNow, Base::stop, Base::tier, Base::z;
    using Base::U;

    // Whether the lanes are still together. False too when none is left.
    bool together() {
        if (isSet(stop)) return this->finishAll(::deep::INTERRUPTED), false;
        if (done >= tier.maxIters) return this->finishAll(tier.maxIters), false;
        if (reference.isEnd(at)) return rebaseAll();
        if (at == nextTiny() || (at == reference.critical && anyTiny())) return tinyTogether();
        const double most = largest();
        if (most > 0x1p512 || (most < 0x1p-512 && most > 0)) return rescaleAll(most);
        if (const auto* node = findNode(most)) return skipTogether(*node);
        return stepTogether(stepsNow(most, skipLimit[0], STEPS_TOGETHER));
    }

    bool anyTiny() const {
        for (int l = 0; l < BLOCK; ++l) {
            if (this->isLive(l) && size[l] < 0x1p-300) return true;
        }
        return false;
    }

    // The largest D + 16 E of a live lane.
    double largest() const {
        auto most = hn::Zero(RealTag());
        for (int v = 0; v < VECTORS; ++v) {
            const Real e2 = this->vectorOf(operations, v) * this->vectorOf(bound, v);
            const Real x = mulAdd(Real(16.0), e2, this->vectorOf(dSize, v));
            most = hn::Max(most, hn::IfThenElseZero(this->lanesOf(v), x.v));
        }
        return hn::GetLane(hn::MaxOfLanes(RealTag(), most));
    }

    const Node<PARTS>* findNode(double most) {
        if (most > skipLimit[0]) return nullptr;
        const std::int64_t key = ::deep::keyOf(most, 2 * this->q[0]) + 1;
        return tier.skips.find(at, key, tier.maxIters - done, &span);
    }

    bool stepTogether(int steps) {
        State x[VECTORS];
        Constants with[VECTORS];
        RealMask lanes[VECTORS];
        for (int v = 0; v < VECTORS; ++v) {
            x[v] = this->load(v);
            with[v] = this->constantsOf(v, steps);
            lanes[v] = this->lanesOf(v);
        }
        bool calm = true;
        const int made = stepRun(x, with, lanes, steps, calm);
        for (int v = 0; v < VECTORS; ++v) this->store(v, x[v]);
        for (double& n : operations) n += made;
        at += static_cast<std::uint32_t>(made);
        done += made;
        return calm || settle();
    }

    // The steps made, and whether all lanes are calm behind them.
    HWY_INLINE int stepRun(State (&x)[VECTORS], const Constants (&with)[VECTORS],
                           const RealMask (&lanes)[VECTORS], int steps, bool& allCalm) const {
        for (int n = 0; n < steps; ++n) {
            const std::size_t index = at + static_cast<std::size_t>(n);
            const Vector from = this->pointOfAll(index), to = this->pointOfAll(index + 1);
            RealMask restless = hn::FirstN(RealTag(), 0);
            for (int v = 0; v < VECTORS; ++v) {
                const RealMask calm = this->step(x[v], with[v], x[v].z + from, c.vector(v), to);
                restless = hn::Or(restless, hn::AndNot(calm, lanes[v]));
            }
            allCalm = hn::AllFalse(RealTag(), restless);
            if (!allCalm) return n + 1;
        }
        return steps;
    }

    // After a step that not all lanes are calm after.
    bool settle() {
        Bits doubtful = 0, wanting = 0, far = 0;
        for (int v = 0; v < VECTORS; ++v) {
            const Constants with = this->constantsOf(v, 0);
            const Real s = this->vectorOf(size, v), f = this->vectorOf(bound, v);
            const Real d2 = with.squared * this->vectorOf(dSize, v);
            const auto inside = hn::Lt(mulAdd(with.doubt, f, s).v, with.inside.v);
            doubtful |= bitsOf(hn::Not(inside)) << (v * WIDTH);
            wanting |= bitsOf(hn::Not(hn::Ge(s.v, d2.v))) << (v * WIDTH);
            far |= bitsOf(hn::Not(hn::Le(s.v, (Real(CLOSE_ENOUGH) * d2).v))) << (v * WIDTH);
        }
        spread();
        decideAll(doubtful & live);
        if ((wanting & live) == 0) return true;
        return (far & live) == 0 && rebaseAll();
    }

    void decideAll(Bits lanes) {
        if (lanes == 0 || areInside()) return;
        for (; lanes != 0; lanes &= lanes - 1) this->decide(std::countr_zero(lanes));
    }

    // Whether all lanes are as surely inside as the reference is, next to which they are: with m
    // the largest |d| and e <= m / 4, | |z|^2 - |Z|^2 | and all errors are below 8 m (|Z| + m).
    bool areInside() const {
        const Wide kept = reference.sizeAt(at);
        if (!(kept < Wide())) return false;
        const Wide most(std::sqrt(largest()) * (1 + 0x1p-20), this->q[0]);
        const double re = reference.z[0][2 * at], im = reference.z[0][2 * at + 1];
        const Wide off = Wide(8) * most * (Wide(std::hypot(re, im)) + most) + tier.ownSizeOff;
        return off < -kept;
    }

    void spread() {
        for (int l = 0; l < BLOCK; ++l) {
            this->m[l] = at;
            this->k[l] = done;
        }
    }

    bool rebaseAll() {
        if (this->q[0] >= -200) return rebaseTogether();
        spread();
        for (int l = 0; l < BLOCK; ++l) {
            if (this->isLive(l)) this->rebase(l);
        }
        at = reference.critical;
        return gather();
    }

    // Where the units are large enough to stay.
    bool rebaseTogether() {
        const Real to(widePower(-this->q[0])), toSquared = to * to;
        const Real ofD(8 * U * U), ofZ(32 * U * U * UPWARDS);
        for (int v = 0; v < VECTORS; ++v) {
            State x = this->load(v);
            const RealMask lanes = this->lanesOf(v);
            x.s = this->onlyOf(lanes, x.s);
            x.f = mulAdd(Real(UPWARDS), mulAdd(ofD, x.d2, x.f),
                         mulAdd(ofZ * toSquared, x.s, Real(FLOOR)));
            x.z = {this->onlyOf(lanes, x.z.re), this->onlyOf(lanes, x.z.im)};
            x.d = times(x.z, to);
            x.d2 = x.s * toSquared;
            this->store(v, x);
        }
        for (double& n : operations) n += 1;
        at = reference.critical;
        return true;
    }

    bool tinyTogether() {
        spread();
        for (int l = 0; l < BLOCK; ++l) {
            if (this->isLive(l) && this->isTiny(l)) this->tinyStep(l);
        }
        return live != 0 && rebaseSome() && gather();
    }

    // Where |z| is below |d|, which may be so where an orbit begins and behind a tiny point.
    // Whether the lanes are still together.
    bool rebaseSome() {
        bool any = false;
        for (int l = 0; l < BLOCK; ++l) {
            if (!this->isLive(l) || this->m[l] == reference.critical || !this->wantsRebase(l)) {
                continue;
            }
            this->rebase(l);
            any = true;
        }
        return !any || gather();
    }

    bool rescaleAll(double most) {
        const std::int64_t exponent = this->q[0] + std::ilogb(most) / 2;
        for (int l = 0; l < BLOCK; ++l) this->rescale(l, exponent);
        return true;
    }

    // Whether all live lanes are at one step and of about one size; they then get the same units
    // and operations.
    bool gather() {
        const int first = std::countr_zero(live);
        std::int64_t exponent = this->q[first], least = exponent;
        double most = 0;
        for (int l = 0; l < BLOCK; ++l) {
            if (!this->isLive(l)) continue;
            if (this->m[l] != this->m[first] || this->k[l] != this->k[first]) return false;
            exponent = std::max(exponent, this->q[l]);
            least = std::min(least, this->q[l]);
            most = std::max(most, operations[l]);
        }
        if (exponent - least > MOST_UNITS_APART) return false;
        at = this->m[first];
        done = this->k[first];
        for (int l = 0; l < BLOCK; ++l) {
            if (this->q[l] != exponent) this->rescale(l, exponent);
            operations[l] = most;
        }
        return true;
    }

    bool skipTogether(const Node<PARTS>& node) {
        if (node.aExponent != 0 || node.bExponent != 0) return skipScaled(node);
        const Vector a = of<Real>(node.a), b = of<Real>(node.b);
        at += static_cast<std::uint32_t>(span);
        done += span;
        const Vector to = this->pointOfAll(at);
        const Real onBound(node.onBound * UPWARDS), onSize(node.onSize * UPWARDS);
        const Real onOwn(node.onDelta / tier.ownSquared * UPWARDS);
        RealMask restless = hn::FirstN(RealTag(), 0);
        for (int v = 0; v < VECTORS; ++v) {
            State x = this->load(v);
            const Constants with = this->constantsOf(v, 1);
            x.f = mulAdd(onBound, x.f, mulAdd(onSize, x.d2, mulAdd(onOwn, with.own, Real(FLOOR))));
            const RealMask calm = this->arrive(x, with, mulAdd(a, x.d, b * c.vector(v)), to);
            restless = hn::Or(restless, hn::AndNot(calm, this->lanesOf(v)));
            this->store(v, x);
        }
        for (double& n : operations) n += 1;
        return hn::AllFalse(RealTag(), restless) || settle();
    }

    // The same, lane by lane: where exponents change.
    bool skipScaled(const Node<PARTS>& node) {
        spread();
        for (int l = 0; l < BLOCK; ++l) {
            if (this->isLive(l)) this->skip(l, node, span);
        }
        if (!gather()) return false;
        return settle();
    }

    int span = 0;
};

}  // namespace deep_orbits
}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
