// Some vectors of slots in registers, which advance together.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_GROUP_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_GROUP_INL_H
#undef TESSARY_COMPUTE_VECTOR_GROUP_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_GROUP_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "compute/vector_forms-inl.h"
#include "compute/vector_number-inl.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_tile.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// The rules whose step takes four rounded functions in scalar code, and is worth hundreds of plain
// ones.
template <class R>
inline constexpr bool usesTrig = std::is_same_v<R, SinRule> || std::is_same_v<R, CosRule> ||
                                 std::is_same_v<R, SinhRule> || std::is_same_v<R, CoshRule>;

// What every pixel of a tile shares: the escape limit, and c where the view gives it.
template <class T>
struct Shared {
    explicit Shared(const VectorTile<T>& tile)
        : limit(lanes(tile.limit)), c{lanes(tile.cx), lanes(tile.cy)} {}

    static Number<T> lanes(T value) { return Number<T>(hn::Set(typename Number<T>::D(), value)); }

    Number<T> limit;
    cpuComplex<Number<T>> c;
};

// K vectors of slots in registers.
template <class R, std::size_t K, class T>
struct Group {
    using S = Slots<T>;
    using D = typename S::D;
    using C = cpuComplex<Number<T>>;

    // Orbits as the slots hold them, or at their start.
    HWY_INLINE Group(const S& s, std::size_t first, const Shared<T>& view, bool atStart)
        : limit(view.limit) {
        const D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const std::size_t at = first + k * S::LANES;
            const C point = pair(s.cr + at, s.ci + at);
            c[k] = R::constant == Constant::view ? view.c : point;
            if (atStart) {
                z[k] = R::start == Start::pixel ? point : C{Number<T>(0.0), Number<T>(0.0)};
                live[k] = hn::FirstN(d, s.used - std::min(s.used, at));
            } else {
                z[k] = pair(s.zr + at, s.zi + at);
                live[k] = hn::MaskFromVec(hn::Load(d, s.live + at));
            }
        }
    }

    static HWY_INLINE C pair(const T* r, const T* i) {
        return {Number<T>(hn::Load(D(), r)), Number<T>(hn::Load(D(), i))};
    }

    // One step of every lane. A lane is live until |z|^2 is greater than the limit for the first
    // time; "not greater" keeps a NaN alive, which no later step can make greater.
    HWY_INLINE void step() {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            if constexpr (usesTrig<R>) clearEnded(k);
            z[k] = Form<R>::step(z[k], c[k]);
            live[k] = andNotGreater(live[k], magnitudeSquared(z[k]), limit);
        }
    }

    // An ended orbit that went on would soon leave the range where a trigonometric step is cheap.
    HWY_INLINE void clearEnded(std::size_t k) {
        const Number<T> zero(0.0);
        z[k] = {select(live[k], z[k].r, zero), select(live[k], z[k].i, zero)};
    }

    // A step without a look at where it leads.
    HWY_INLINE void move() {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) z[k] = Form<R>::step(z[k], c[k]);
    }

    // The lanes of vector k whose |z|^2 is a number within the limit.
    HWY_INLINE MaskOf<T> within(std::size_t k) const { return limit >= magnitudeSquared(z[k]); }

    HWY_INLINE void firstStep() {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            z[k] = R::step(z[k], c[k]);
            live[k] = andNotGreater(live[k], magnitudeSquared(z[k]), limit);
        }
    }

    HWY_INLINE bool anyLive() const {
        auto any = live[0];
        HWY_UNROLL(4)
        for (std::size_t k = 1; k < K; ++k) any = hn::Or(any, live[k]);
        return !hn::AllFalse(D(), any);
    }

    // Whether the real part of some live lane is the saved one again: the whole comparison waits
    // for that.
    HWY_INLINE bool mayRepeat(const S& s, std::size_t first) const {
        const D d;
        auto any = hn::And(live[0], hn::Eq(z[0].r.v, hn::Load(d, s.savedR + first)));
        HWY_UNROLL(4)
        for (std::size_t k = 1; k < K; ++k) {
            const auto saved = hn::Load(d, s.savedR + first + k * S::LANES);
            any = hn::Or(any, hn::And(live[k], hn::Eq(z[k].r.v, saved)));
        }
        return !hn::AllFalse(d, any);
    }

    HWY_INLINE void storeState(S& s, std::size_t first) const {
        const D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const std::size_t at = first + k * S::LANES;
            hn::Store(z[k].r.v, d, s.zr + at);
            hn::Store(z[k].i.v, d, s.zi + at);
        }
    }

    Number<T> limit;
    C z[K], c[K];
    MaskOf<T> live[K];
};

// A group that counts the steps of each lane while it lives.
template <class R, std::size_t K, class T>
struct CountingGroup : Group<R, K, T> {
    static constexpr std::size_t VECTORS = K;
    using Element = T;
    using S = Slots<T>;
    using DU = typename S::DU;

    HWY_INLINE CountingGroup(const S& s, std::size_t first, const Shared<T>& view, bool atStart,
                             int stepsBefore)
        : Group<R, K, T>(s, first, view, atStart) {
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            count[k] = hn::Set(DU(), static_cast<typename S::Word>(stepsBefore));
        }
    }

    // Two steps at a time until `steps` are taken or nobody is left.
    HWY_INLINE void run(int steps) {
        for (; steps > 1; steps -= 2) {
            stepAndCount();
            stepAndCount();
            if (!this->anyLive()) return;
        }
        if (steps == 1) stepAndCount();
    }

    // The first step, by the rule itself: an orbit may begin anywhere.
    HWY_INLINE void begin() {
        this->firstStep();
        countLive();
    }

    HWY_INLINE void stepAndCount() {
        this->step();
        countLive();
    }

    HWY_INLINE void countLive() {
        const typename S::D d;
        HWY_UNROLL(4)
        for (std::size_t k = 0; k < K; ++k) {
            const auto alive = hn::VecFromMask(d, this->live[k]);
            count[k] = hn::Sub(count[k], hn::BitCast(DU(), alive));
        }
    }

    // What else is to be kept of the lanes of vector k that are in `ended`, in the slots from `at`.
    HWY_INLINE void storeEnded(S&, std::size_t, std::size_t, MaskOf<T>) const {}

    hn::Vec<DU> count[K];
};

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
