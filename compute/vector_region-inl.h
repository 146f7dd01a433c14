// Ends the orbits of a chunk in a region where they surely stay (compute/staying_region.h), which
// all pixels under one constant share, and proves the outline of such a region.
//
// Included once for each instruction set (see compute/vector_renderer.cpp).
#if defined(TESSARY_COMPUTE_VECTOR_REGION_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_COMPUTE_VECTOR_REGION_INL_H
#undef TESSARY_COMPUTE_VECTOR_REGION_INL_H
#else
#define TESSARY_COMPUTE_VECTOR_REGION_INL_H
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "compute/staying_region.h"
#include "compute/vector_discs-inl.h"
#include "compute/vector_forms-inl.h"
#include "compute/vector_number-inl.h"
#include "compute/vector_slots-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {

// Balls about as many middles, in float.
struct Balls {
    using N = Number<float>;

    static constexpr double V = 0x1p-24, WITHIN = 1.5;

    // One step, F to F (2 |m| + F) (1 + 16 v) + v (4 |m|^2 + 8.5 + 4.5 |c|). Rounding loses some 8
    // of the 16 v; the last term has a little to spare for its own.
    HWY_INLINE void step() {
        const N square = magnitudeSquared(middle), length(hn::Sqrt(square.v));
        furthest = N(hn::Max(furthest.v, (length + radius).v));
        const auto slope = hn::MulAdd(radius.v, N(1 + 16 * V).v, (length * N(2 + 32 * V)).v);
        const auto roundings = hn::MulAdd(square.v, N(4 * V).v, perStep.v);
        radius = N(hn::MulAdd(radius.v, slope, roundings));
        middle = Form<JuliaRule>::step(middle, c);
    }

    // Whether all have stayed within 3/2, with something to spare for what the length loses.
    HWY_INLINE bool stayed() const { return hn::AllTrue(N::D(), N(WITHIN - 1e-4) > furthest); }

    cpuComplex<N> middle, c;
    N radius, perStep;
    N furthest{0.0};
};

HWY_INLINE Balls ballsAbout(const cpuComplex<Number<float>>& middles, double radius,
                            const Point& c) {
    using N = Number<float>;
    constexpr double OF_AN_ORBIT = 3.7 * Balls::WITHIN * Balls::WITHIN;
    static_assert(OF_AN_ORBIT < 8.4);
    const double perStep = Balls::V * (8.5 + 4.5 * std::sqrt(magnitudeSquared(c)));
    return {middles, {N(c.r), N(c.i)}, N(radius), N(perStep)};
}

// Whether all that begin in the balls stay.
HWY_INLINE bool stay(Balls balls, int steps) {
    constexpr int BETWEEN_LOOKS = 16;
    for (int left = steps + 1; left > 0; left -= BETWEEN_LOOKS) {
        for (int n = std::min(left, BETWEEN_LOOKS); n > 0; --n) balls.step();
        if (!balls.stayed()) return false;
    }
    return true;
}

// Discs cover an edge with a strip on both sides of it, a tenth as wide as they are: more than the
// rounding of a state's cell or a middle may amount to.
HWY_NOINLINE HWY_FLATTEN inline bool edgeStays(const Horizon& h, const CellEdge& edge) {
    constexpr double SIDE = 1.0 / StayingRegion::PER_UNIT;
    constexpr std::size_t LANES = hn::MaxLanes(Number<float>::D());
    const double apart = SIDE / h.discsPerEdge();
    const double x = edge.x * SIDE - 2, y = edge.y * SIDE - 2;
    HWY_ALIGN float re[LANES], im[LANES];
    for (int first = 0; first < h.discsPerEdge(); first += static_cast<int>(LANES)) {
        for (std::size_t n = 0; n < LANES; ++n) {
            const double along = (first + static_cast<int>(n) + 0.5) * apart;
            re[n] = static_cast<float>(edge.across ? x + along : x);
            im[n] = static_cast<float>(edge.across ? y : y + along);
        }
        const Number<float>::D d;
        const cpuComplex<Number<float>> middles{Number<float>(hn::Load(d, re)),
                                                Number<float>(hn::Load(d, im))};
        if (!stay(ballsAbout(middles, 0.53 * apart, h.c), h.steps)) return false;
    }
    return true;
}

// The column or row of each coordinate, modulo their number. A sum beside so large a number is
// rounded to whole ones; to the neighbour where the coordinate is within a rounding of its edge.
template <class T>
HWY_INLINE hn::Vec<typename Slots<T>::DU> cellsOf(Number<T> coordinate) {
    constexpr double LARGE = 0.75 / std::numeric_limits<T>::epsilon() * 2;
    const typename Slots<T>::DU du;
    const Number<T> cell = coordinate * Number<T>(StayingRegion::PER_UNIT) + Number<T>(127.5);
    return hn::And(hn::BitCast(du, (cell + Number<T>(LARGE)).v),
                   hn::Set(du, StayingRegion::CELLS - 1));
}

// The words of a region's bits at so many words from the first; above the lowest 32 bits may lie
// anything.
template <class DU>
HWY_INLINE hn::Vec<DU> wordsAt(DU du, const StayingRegion& region, hn::Vec<DU> at) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
    const hn::RebindToSigned<DU> di;
    const auto* words = reinterpret_cast<const hn::TFromD<DU>*>(region.row);
    return hn::GatherOffset(du, words, hn::BitCast(di, hn::ShiftLeft<2>(at)));
#else
    HWY_ALIGN hn::TFromD<DU> lanes[hn::MaxLanes(du)];
    hn::Store(at, du, lanes);
    for (auto& lane : lanes) lane = region.row[lane / 8][lane % 8];
    return hn::Load(du, lanes);
#endif
}

// The lanes of z in the region.
template <class T>
HWY_INLINE MaskOf<T> inRegion(const StayingRegion& region, const cpuComplex<Number<T>>& z) {
    const typename Number<T>::D d;
    const typename Slots<T>::DU du;
    const auto near = hn::And(Number<T>(2.0) > Number<T>(hn::Abs(z.r.v)),
                              Number<T>(2.0) > Number<T>(hn::Abs(z.i.v)));
    const auto x = cellsOf(z.r), y = cellsOf(z.i);
    const auto words = wordsAt(du, region, hn::Add(hn::ShiftLeft<3>(y), hn::ShiftRight<5>(x)));
    const auto bits = hn::Shl(hn::Set(du, 1), hn::And(x, hn::Set(du, 31)));
    return hn::And(near, hn::RebindMask(d, hn::Ne(hn::And(words, bits), hn::Zero(du))));
}

// Ends the orbits in a region.
template <class T>
HWY_NOINLINE void endInRegion(Slots<T>& s, const StayingRegion& region) {
    const typename Slots<T>::D d;
    endWhere(s, [&](std::size_t at) HWY_ATTR {
        const cpuComplex<Number<T>> z{Number<T>(hn::Load(d, s.zr + at)),
                                      Number<T>(hn::Load(d, s.zi + at))};
        return inRegion(region, z);
    });
}

// Seeks a region about the first orbit of a chunk that has taken all its steps.
template <class T>
HWY_NOINLINE void seekRegion(const Slots<T>& s, KnownRegion& known, StopFlag stop) {
    const typename Slots<T>::D d;
    for (std::size_t at = 0; at < s.used; at += Slots<T>::LANES) {
        const auto first = hn::FindFirstTrue(d, hn::MaskFromVec(hn::Load(d, s.live + at)));
        if (first < 0) continue;
        const std::size_t n = at + static_cast<std::size_t>(first);
        const Point place{static_cast<double>(s.zr[n]), static_cast<double>(s.zi[n])};
        known.sought = findStayingRegion(known.horizon, place, edgeStays, known.region, stop);
        return;
    }
}

// The region that a thread knows for a view of rule R, or is about to know.
template <class R, class T>
class ViewRegion {
  public:
    // limit: of iterations. wanted: whether orbits may end before they have taken all steps.
    ViewRegion(const VectorTile<T>& tile, int limit, bool wanted) {
        if (!squares<R> || R::constant != Constant::view || !wanted) return;
        if (!(tile.limit >= T(4)) || limit > Horizon::MOST_STEPS) return;
        known = &lastRegion;
        stop = tile.stop;
        known->turnTo({{static_cast<double>(tile.cx), static_cast<double>(tile.cy)}, limit});
    }

    bool any() const { return known != nullptr && known->region.any; }

    // Whether all orbits of a chunk that has just been taken start in it.
    bool holdAll(const Slots<T>& s) const {
        return any() && known->region.holdsAll(pointOf(s, 0), pointOf(s, s.used - 1));
    }

    // Ends the orbits in it, after few steps: whoever is not there by then seldom comes.
    void end(Slots<T>& s, int steps) const {
        if (any() && (steps == 8 || steps == 24)) endInRegion(s, known->region);
    }

    // To be told of the orbits that took all steps: where they are many, a region is sought.
    void note(const Slots<T>& s) const {
        if (known == nullptr || s.alive == 0) return;
        if (known->worthASearch(s.alive)) seekRegion(s, *known, stop);
    }

  private:
    static Point pointOf(const Slots<T>& s, std::size_t n) {
        return {static_cast<double>(s.cr[n]), static_cast<double>(s.ci[n])};
    }

    KnownRegion* known = nullptr;
    StopFlag stop = nullptr;
};

}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
