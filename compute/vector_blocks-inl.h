// Blocks of steps: how all slots of a chunk are advanced by some steps, and who escapes meanwhile.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_BLOCKS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_BLOCKS_INL_H
#undef TESSARY_COMPUTE_VECTOR_BLOCKS_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_BLOCKS_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>

#include "compute/vector_group-inl.h"
#include "compute/vector_slots-inl.h"
#include "compute/vector_unwatched-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Takes `steps` steps and returns whether every live lane is still live; only then the new states
// are stored. The loop holds nothing but the rule and the escape test.
template <class R, std::size_t K, class T>
HWY_NOINLINE HWY_FLATTEN bool allStay(Slots<T>& s, std::size_t first, const Shared<T>& view,
                                      int steps) {
    using S = Slots<T>;
    const typename S::D d;
    Group<R, K, T> g(s, first, view, false);
    if (!g.anyLive()) return true;
    for (int i = 0; i < steps; ++i) g.step();
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const auto before = hn::MaskFromVec(hn::Load(d, s.live + first + k * S::LANES));
        if (!hn::AllFalse(d, hn::AndNot(g.live[k], before))) return false;
    }
    g.storeState(s, first);
    if (s.saved && g.mayRepeat(s, first)) s.suspect = true;
    return true;
}

// The first `steps` steps of a group that has only taken its pixels; writes all of its slots, with
// the count `limit` for lanes that are still live, and returns how many are not. G: CountingGroup,
// or a group that keeps more.
template <class G>
HWY_NOINLINE HWY_FLATTEN std::size_t startOrbits(typename G::S& s, std::size_t first,
                                                 const Shared<typename G::Element>& view, int steps,
                                                 int limit) {
    using S = typename G::S;
    constexpr std::size_t K = G::VECTORS;
    const typename S::D d;
    const typename S::DU du;
    G g(s, first, view, true, 0);
    g.begin();
    g.run(steps - 1);
    const auto undecided = hn::Set(du, static_cast<typename S::Word>(limit));
    std::size_t staying = 0;
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const std::size_t at = first + k * S::LANES;
        staying += hn::CountTrue(d, g.live[k]);
        const auto live = hn::RebindMask(du, g.live[k]);
        hn::Store(hn::IfThenElse(live, undecided, g.count[k]), du, s.count + at);
        hn::Store(hn::VecFromMask(d, g.live[k]), d, s.live + at);
        g.storeEnded(s, at, k, hn::Not(g.live[k]));
    }
    if (staying > 0) g.storeState(s, first);
    return std::min(s.used - std::min(s.used, first), K * S::LANES) - staying;
}

// Takes `steps` steps, writes down the count of every lane that escapes and returns how many did.
// stepsBefore: the steps that all lanes have behind them.
template <class G>
HWY_NOINLINE HWY_FLATTEN std::size_t countEscapes(typename G::S& s, std::size_t first,
                                                  const Shared<typename G::Element>& view,
                                                  int steps, int stepsBefore) {
    using S = typename G::S;
    constexpr std::size_t K = G::VECTORS;
    const typename S::D d;
    const typename S::DU du;
    G g(s, first, view, false, stepsBefore);
    g.run(steps);
    g.storeState(s, first);
    std::size_t escaped = 0;
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < K; ++k) {
        const std::size_t at = first + k * S::LANES;
        const auto before = hn::MaskFromVec(hn::Load(d, s.live + at));
        const auto gone = hn::AndNot(g.live[k], before);
        if (hn::AllFalse(d, gone)) continue;
        escaped += hn::CountTrue(d, gone);
        storeByPixel(du, s, at, hn::RebindMask(du, gone), g.count[k], s.count);
        hn::Store(hn::VecFromMask(d, g.live[k]), d, s.live + at);
        g.storeEnded(s, at, k, gone);
    }
    if (s.saved && g.mayRepeat(s, first)) s.suspect = true;
    return escaped;
}

// What the slots have behind them, and what to do next.
struct Block {
    int steps;        // to take now
    int stepsBefore;  // taken by every slot
    int limit;        // of iterations
    bool calm;        // nobody escaped in the block before, and steps are cheap
    bool noReturn;    // whoever passes the limit stays beyond it; known for calm blocks alone
};

// What a picture keeps of a pixel: its count.
struct KeepCounts {
    template <class R, std::size_t K, class T>
    using GroupOf = CountingGroup<R, K, T>;
};

// Advances one group; returns how many lanes escaped. After a calm block counting would be waste;
// a block that proves eventful after all is done again. Fewer vectors than a full group wait for
// their own results anyway, and count meanwhile.
template <class Keep, class R, std::size_t K, class S, class T>
HWY_INLINE std::size_t advanceGroup(S& s, std::size_t first, const Shared<T>& view,
                                    const Block& block) {
    using G = typename Keep::template GroupOf<R, K, T>;
    if (block.stepsBefore == 0) return startOrbits<G>(s, first, view, block.steps, block.limit);
    if constexpr (K == GROUP && NoReturn<R>::known) {
        if (block.noReturn && allStayUnwatched<R, K, T>(s, first, view, block.steps)) return 0;
    }
    if constexpr (K == GROUP) {
        if (block.calm && !block.noReturn && allStay<R, K, T>(s, first, view, block.steps))
            return 0;
    }
    return countEscapes<G>(s, first, view, block.steps, block.stepsBefore);
}

// Advances all slots by one block.
template <class Keep, class R, class S, class T>
void advance(S& s, const Shared<T>& view, const Block& block) {
    constexpr std::size_t LANES = Slots<T>::LANES;
    std::size_t vectors = s.vectors(), first = 0;
    std::size_t escaped = 0;
    for (; vectors > 2; vectors -= std::min(vectors, GROUP), first += GROUP * LANES) {
        escaped += advanceGroup<Keep, R, GROUP>(s, first, view, block);
    }
    if (vectors == 2) {
        escaped += advanceGroup<Keep, R, 2>(s, first, view, block);
    } else if (vectors == 1) {
        escaped += advanceGroup<Keep, R, 1>(s, first, view, block);
    }
    s.alive -= escaped;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
