// Orbits of a block of pixels in vectors, each lane at a step of the reference of its own; and how
// many plain steps may follow there.
//
// Included once for each instruction set (see deep/vector_orbits.cpp).
#if defined(TESSARY_DEEP_APART_ORBITS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_DEEP_APART_ORBITS_INL_H
#undef TESSARY_DEEP_APART_ORBITS_INL_H
#else
#define TESSARY_DEEP_APART_ORBITS_INL_H
#endif

#include "deep/vector_steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {
namespace deep_orbits {

// Steps between two looks at what is not in the loop.
inline constexpr int STEPS_APART = 64;

template <int PARTS>
class ApartOrbits : public VectorSteps<PARTS> {
  protected:
    using Base = VectorSteps<PARTS>;
    using Base::bound, Base::c, Base::dSize, Base::live, Base::operations, Base::reference;
    using Base::skipLimit, Base::tier;
    using typename Base::Constants, typename Base::State, typename Base::Vector;

    ApartOrbits(const TierData<PARTS>& data, ::deep::Block& pixels, bool values, StopFlag flag)
        : Base(data, pixels, values), stop(flag) {}

    std::uint32_t nextTiny() {
        if (at < tinyFrom || at > tinyNext) {
            const auto* tiny = reference.tinyFrom(at);
            tinyFrom = at;
            tinyNext = tiny == reference.tinyEnd() ? ~std::uint32_t{0} : tiny->at;
        }
        return tinyNext;
    }

    int stepsLeft() {
        const std::uint32_t end = at <= reference.firstEnd ? reference.firstEnd : reference.lastEnd;
        const std::uint32_t room = std::min(end, nextTiny()) - at;
        return static_cast<int>(std::min(room, static_cast<std::uint32_t>(tier.maxIters - done)));
    }

    // How many plain steps from index `at` on: to the next index that nodes start at, where the
    // difference is in reach of one.
    int stepsNow(double most, double reach, int limit) {
        const int all = std::min(stepsLeft(), limit);
        if (!(most <= reach)) return all;
        const std::uint32_t start = at > reference.critical ? reference.critical : 0;
        constexpr std::uint32_t SPAN = 1u << ::deep::LEAST_LEVEL;
        return std::min(all, static_cast<int>(SPAN - (at - start - 1) % SPAN));
    }

    // Follows the live lanes to their ends.
    void apart() {
        for (int l = 0; l < BLOCK; ++l) {
            if (this->isLive(l)) attend(l);
            if (!this->isLive(l)) park(l);
        }
        while (live != 0) {
            for (int v = 0; v < VECTORS; ++v) {
                const Bits here = live >> (v * WIDTH) & ((Bits{1} << WIDTH) - 1);
                if (here != 0) stepApart(v);
            }
            if (++rounds % STEPS_APART == 0 && isSet(stop)) this->finishAll(::deep::INTERRUPTED);
        }
    }

    // An ended lane goes nowhere.
    void park(int l) {
        next[l] = 0;
        advances[l] = 0;
        left[l] = 1;
    }

    void stepApart(int v) {
        const hn::RebindToSigned<RealTag> di;
        const int l = v * WIDTH;
        State x = this->load(v);
        const Constants with = this->constantsOf(v, 1);
        const auto index = hn::Load(di, next + l);
        const Vector to{this->gathered(0, index, x.d.re), this->gathered(1, index, x.d.im)};
        const Vector w = scaleAdd(-with.unit, x.d, x.z + x.z);
        const RealMask calm = this->step(x, with, w, c.vector(v), to);
        this->store(v, x);
        const auto one = hn::Load(di, advances + l);
        hn::Store(hn::Add(index, one), di, next + l);
        const auto rest = hn::Sub(hn::Load(di, left + l), hn::ShiftRight<1>(one));
        hn::Store(rest, di, left + l);
        pair_lanes::store(this->vectorOf(operations, v) + Real(1.0), operations + l);
        const RealMask over = hn::RebindMask(RealTag(), hn::Eq(rest, hn::Zero(di)));
        const RealMask wanted = hn::Or(hn::Not(calm), over);
        Bits calls = bitsOf(wanted) << l & live;
        for (; calls != 0; calls &= calls - 1) call(std::countr_zero(calls));
    }

    void call(int l) {
        const int made = until[l] - static_cast<int>(left[l]);
        this->m[l] += static_cast<std::uint32_t>(made);
        this->k[l] += made;
        if (!this->isInside(l)) this->decide(l);
        if (this->isLive(l)) attend(l);
        if (!this->isLive(l)) park(l);
    }

    // Does for lane l, which has not escaped, what is no plain step, until one is due.
    void attend(int l) {
        for (;;) {
            if (this->k[l] >= tier.maxIters) {
                return this->finish(l, tier.maxIters, Base::NOT_A_NUMBER);
            }
            const bool rebases = this->m[l] != reference.critical && this->wantsRebase(l);
            if (rebases || reference.isEnd(this->m[l])) this->rebase(l);
            if (this->isTiny(l)) {
                this->tinyStep(l);
                if (!this->isLive(l)) return;
            } else if (!skipAlone(l)) {
                return wait(l);
            }
        }
    }

    bool skipAlone(int l) {
        const double most = dSize[l] + 16 * operations[l] * bound[l];
        if (most > 0x1p512 || (most < 0x1p-512 && most > 0)) {
            this->rescale(l, this->q[l] + std::ilogb(most) / 2);
        }
        const double now = dSize[l] + 16 * operations[l] * bound[l];
        if (!(now <= skipLimit[l])) return false;
        int steps = 0;
        const std::int64_t key = ::deep::keyOf(now, 2 * this->q[l]) + 1;
        const auto* node = tier.skips.find(this->m[l], key, tier.maxIters - this->k[l], &steps);
        if (node != nullptr) this->skip(l, *node, steps);
        return node != nullptr;
    }

    // Sets how many plain steps may follow.
    void wait(int l) {
        at = this->m[l];
        done = this->k[l];
        const double most = dSize[l] + 16 * operations[l] * bound[l];
        const int steps = stepsNow(most, skipLimit[l], STEPS_APART);
        until[l] = steps;
        left[l] = steps;
        next[l] = 2 * (std::int64_t{at} + 1);
        advances[l] = 2;
    }

    const StopFlag stop;
    // Of all lanes together, or of the one that is attended to: index and steps done.
    std::uint32_t at = 0;
    int done = 0;
    std::uint32_t tinyFrom = 1, tinyNext = 0;
    unsigned rounds = 0;
    // Where the real part of the next point stands, 2 for a live lane, plain steps that may
    // follow.
    HWY_ALIGN std::int64_t next[BLOCK], advances[BLOCK], left[BLOCK];
    int until[BLOCK] = {};
};

}  // namespace deep_orbits
}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
