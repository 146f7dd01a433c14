// What is done with single lanes of a block besides plain steps: starting anew at the critical
// point, steps from tiny points, skips.
//
// Included once for each instruction set (see deep/vector_orbits.cpp).
#if defined(TESSARY_DEEP_LANE_STEPS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_DEEP_LANE_STEPS_INL_H
#undef TESSARY_DEEP_LANE_STEPS_INL_H
#else
#define TESSARY_DEEP_LANE_STEPS_INL_H
#endif

#include "deep/orbit_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_vector {
namespace HWY_NAMESPACE {
namespace deep_orbits {

template <int PARTS>
class LaneSteps : public OrbitLanes<PARTS> {
  protected:
    using Base = OrbitLanes<PARTS>;
    using Base::bound, Base::boundBefore, Base::c, Base::d, Base::dSize, Base::k, Base::m;
    using Base::offset, Base::operations, Base::q, Base::reference, Base::scaleSquared, Base::size;
    using Base::sizeBefore, Base::tier, Base::z;
    using Base::U;
    using typename Base::Scalar;

    using Base::Base;

    bool wantsRebase(int l) const { return !(size[l] >= dSize[l] * scaleSquared[l]); }

    // d <- z with the reference at 0 again.
    void rebase(int l) {
        operations[l] += 1;
        std::int64_t exponent = q[l];
        if (exponent < -200 && size[l] > 0) {
            exponent = std::max<std::int64_t>(exponent, std::ilogb(size[l]) / 2);
        }
        const double to = widePower(-exponent);
        beginAnew(l, exponent, times(z[l], to), size[l] * to * to);
    }

    // z and s = |z|^2 in units of 2^unit. z has Z's rounding and its own: 2 u (|d| + 2 |z|).
    void beginAnew(int l, std::int64_t unit, const Scalar& from, double s) {
        const double by = widePower(q[l] - unit);
        bound[l] = ((bound[l] + 8 * U * U * dSize[l]) * by * by + 32 * U * U * s + FLOOR) * UPWARDS;
        d.set(l, from);
        m[l] = reference.critical;
        this->setLaneScale(l, unit);
        this->measure(l);
    }

    // Whether lane l stands where z, or what it is made of, is too small for a step in plain
    // doubles.
    bool isTiny(int l) const {
        if (m[l] == reference.critical) return size[l] < 0x1p-300;
        return reference.tinyAt(m[l]) != nullptr;
    }

    // One step from a tiny point, or from 0, with every product in units of its own.
    void tinyStep(int l) {
        operations[l] += 1;
        fit(l);
        const auto* tiny = m[l] != reference.critical ? reference.tinyAt(m[l]) : nullptr;
        const std::int64_t unit =
            tiny != nullptr ? std::max<std::int64_t>(tiny->exponent, q[l]) : q[l];
        Scalar from{};
        if (tiny != nullptr) {
            from = times(of<double>(::deep::cut<PARTS>(tiny->number)),
                         widePower(tiny->exponent - unit));
        }
        const double ofD = widePower(q[l] - unit);
        const Scalar to = scaleAdd(ofD, d[l], from);
        const double s = squareOf(to);
        if (tiny != nullptr && s < dSize[l] * ofD * ofD) return beginAnew(l, unit, to, s);
        const std::int64_t next = std::max(unit + q[l], tier.offsetExponent);
        const double product = widePower(unit + q[l] - next),
                     added = widePower(tier.offsetExponent - next);
        growTiny(l, s, product, added, widePower(4 * q[l] - 2 * next));
        sizeBefore[l] = s * widePower(unit) * widePower(unit);
        boundBefore[l] *= widePower(2 * (q[l] - next));
        moveOn(l, scaleAdd(product, (to + from) * d[l], times(offset[l], added)), 1, next);
        if (!this->isInside(l)) this->decide(l);
    }

    void growTiny(int l, double s, double product, double added, double ofSquares) {
        const double f = bound[l], j = operations[l];
        boundBefore[l] = f;
        bound[l] = ((s * (4 * f + 2 * tier.sizeFactor * dSize[l]) * product * product +
                     3 * j * f * j * f * ofSquares) *
                        UPWARDS +
                    tier.ownSquared * added * added * UPWARDS + FLOOR);
    }

    // Many steps of lane l.
    void skip(int l, const Node<PARTS>& node, int steps) {
        operations[l] += 1;
        const bool moves = node.aExponent != 0 || node.bExponent != 0;
        if (moves) fit(l);
        const std::int64_t ofA = q[l] + node.aExponent;
        const std::int64_t ofB = tier.offsetExponent + node.bExponent;
        const std::int64_t next = moves ? std::max(ofA, ofB) : q[l];
        const double a = widePower(ofA - next), b = widePower(ofB - next);
        bound[l] = (node.onBound * bound[l] + node.onSize * dSize[l]) * a * a +
                   node.onDelta * b * b + FLOOR;
        bound[l] *= UPWARDS;
        const Scalar added = of<double>(node.b) * times(offset[l], b);
        moveOn(l, mulAdd(of<double>(node.a), times(d[l], a), added), steps, next);
    }

  private:
    // Units of the size of the difference: what is made of its square keeps clear of FLOOR.
    void fit(int l) {
        const double most = std::max(dSize[l], operations[l] * bound[l]);
        this->rescale(l, q[l] + std::ilogb(most) / 2 + 1);
    }

    void moveOn(int l, const Scalar& to, int steps, std::int64_t unit) {
        d.set(l, to);
        m[l] += static_cast<std::uint32_t>(steps);
        k[l] += steps;
        if (unit != q[l]) this->setLaneScale(l, unit);
        this->measure(l);
    }
};

}  // namespace deep_orbits
}  // namespace HWY_NAMESPACE
}  // namespace tessary_vector
HWY_AFTER_NAMESPACE();

#endif
