// A lane of the vector tiers that a test puts into a state of its choice, and what becomes of its
// bound, against exact arithmetic. Compiled for the instruction set of the build alone: that all
// give the same numbers is another test's.
#pragma once

#include <gmpxx.h>
#include <hwy/highway.h>

#include "deep/orbits-inl.h"

namespace lane_probe {

using deep::TierData;
namespace orbits = tessary_vector::HWY_NAMESPACE::deep_orbits;
using Orbits = orbits::Orbits<1>;

// Members by name, whatever their access: an explicit instantiation may say them all.
template <class Name, auto MEMBER>
struct Opened {
    friend auto member(Name) { return MEMBER; }
};
#define TESSARY_OPEN(Name, name)  \
    struct Name {                 \
        friend auto member(Name); \
    };                            \
    template struct Opened<Name, &Orbits::name>
TESSARY_OPEN(Differences, d);
TESSARY_OPEN(Added, c);
TESSARY_OPEN(Bound, bound);
TESSARY_OPEN(Operations, operations);
TESSARY_OPEN(Index, m);
TESSARY_OPEN(StepsDone, k);
TESSARY_OPEN(Unit, q);
TESSARY_OPEN(Start, start);
TESSARY_OPEN(SetLaneScale, setLaneScale);
TESSARY_OPEN(Measure, measure);
TESSARY_OPEN(IsLive, isLive);
TESSARY_OPEN(Decide, decide);
TESSARY_OPEN(Rebase, rebase);
TESSARY_OPEN(RebaseTogether, rebaseTogether);
TESSARY_OPEN(IsInside, isInside);
TESSARY_OPEN(AreInside, areInside);
TESSARY_OPEN(TinyStep, tinyStep);
TESSARY_OPEN(Rescale, rescale);
TESSARY_OPEN(Size, size);
TESSARY_OPEN(SizeBefore, sizeBefore);
TESSARY_OPEN(Largest, largest);
TESSARY_OPEN(SkipAlone, skipAlone);
TESSARY_OPEN(TogetherAt, at);
TESSARY_OPEN(TinyTogether, tinyTogether);
TESSARY_OPEN(Gather, gather);
TESSARY_OPEN(SizeOfDifference, dSize);
TESSARY_OPEN(Load, load);
TESSARY_OPEN(Store, store);
TESSARY_OPEN(ConstantsOf, constantsOf);
TESSARY_OPEN(Step, step);
#undef TESSARY_OPEN

struct Exact {
    mpq_class re, im;
};

inline Exact operator+(const Exact& a, const Exact& b) {
    return {a.re + b.re, a.im + b.im};
}
inline Exact operator-(const Exact& a, const Exact& b) {
    return {a.re - b.re, a.im - b.im};
}
inline Exact operator*(const Exact& a, const Exact& b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline mpq_class squareOf(const Exact& a) {
    return a.re * a.re + a.im * a.im;
}

enum class Verdict { stays, escapes, left };

// Lane 0. Units are 1 once a state was put, 2^unit() before.
class Probe {
  public:
    explicit Probe(const TierData<1>& data, int x = 0, int y = 0, bool wantsValues = false)
        : tier(data), lanes(data, block, wantsValues, nullptr) {
        block.used = 1;
        block.x[0] = x;
        block.y[0] = y;
        (lanes.*member(Start()))();
    }

    // d at this index of the reference, nothing to be added by a step.
    void put(std::uint32_t index, double re, double im, double squared = 0, double count = 1) {
        (lanes.*member(SetLaneScale()))(0, 0);
        (lanes.*member(Added())).set(0, orbits::OrbitLanes<1>::Scalar{});
        at() = index;
        operations() = count;
        setDifference(re, im, squared);
    }
    // d with the square of its error, over the count; units, index and what a step adds stay.
    void setDifference(double re, double im, double squared) {
        (lanes.*member(Differences())).set(0, orbits::OrbitLanes<1>::Scalar{re, im});
        bound() = squared;
        (lanes.*member(Measure()))(0);
    }

    // Whether the lane is calm behind it.
    bool step() {
        auto x = (lanes.*member(Load()))(0);
        const auto with = (lanes.*member(ConstantsOf()))(0, 1);
        const orbits::OrbitLanes<1>::Vector from = point(at()), to = point(at() + 1);
        const auto calm =
            (lanes.*member(Step()))(x, with, x.z + from, (lanes.*member(Added())).vector(0), to);
        (lanes.*member(Store()))(0, x);
        operations() += 1;
        ++at();
        return (orbits::bitsOf(calm) & 1) != 0;
    }
    void stepFromTiny() {
        stepFromTinyInItsOwnUnits();
        (lanes.*member(Rescale()))(0, 0);
    }
    void stepFromTinyInItsOwnUnits() { (lanes.*member(TinyStep()))(0); }

    bool isInside() { return (lanes.*member(IsInside()))(0); }
    // As lanes next to a reference are, all together.
    bool areInside() {
        (lanes.*member(TogetherAt())) = at();
        return (lanes.*member(AreInside()))();
    }

    // |z|^2 as if these had been reached, by one step that had no error before it.
    void setSizes(double before, double now) {
        (lanes.*member(SizeBefore()))[0] = before;
        (lanes.*member(Size()))[0] = now;
        (lanes.*member(StepsDone()))[0] = 1;
    }

    void rebase() { (lanes.*member(Rebase()))(0); }
    void rebaseInVectors() { (lanes.*member(RebaseTogether()))(); }

    // The step from a tiny point at this index, as all lanes take it together.
    void stepFromTinyInVectors() {
        (lanes.*member(TogetherAt())) = at();
        (lanes.*member(TinyTogether()))();
        (lanes.*member(Rescale()))(0, 0);
    }
    // Whether a node was used.
    bool skips() { return (lanes.*member(SkipAlone()))(0); }
    // What all lanes together look for a node with, in units.
    double squaredReach() { return (lanes.*member(Largest()))(); }
    // From the start to the end, behind which the index of the last look at the lane is left.
    void follow() { lanes.follow(); }
    std::uint32_t index() { return at(); }

    Verdict decide() {
        (lanes.*member(Decide()))(0);
        if ((lanes.*member(IsLive()))(0)) return Verdict::stays;
        return block.count[0] == deep::UNDECIDED ? Verdict::left : Verdict::escapes;
    }

    // Whether lane 0 goes on together with another one whose error is 0 and whose difference has
    // this size in units of 2^unit; *share: its error then, as a part of the difference, squared.
    bool gathersWith(double difference, std::int64_t unit, double* share) {
        block.used = 2;
        (lanes.*member(Start()))();
        put(0, 1, 0);
        (lanes.*member(SetLaneScale()))(1, unit);
        (lanes.*member(Index()))[1] = at();
        (lanes.*member(Differences())).set(1, orbits::OrbitLanes<1>::Scalar{difference, 0});
        (lanes.*member(Bound()))[1] = 0;
        (lanes.*member(Measure()))(1);
        const bool together = (lanes.*member(Gather()))();
        *share = (lanes.*member(Bound()))[1] / (lanes.*member(SizeOfDifference()))[1];
        return together;
    }

    std::int64_t unit() { return (lanes.*member(Unit()))[0]; }
    Exact difference() {
        const auto d = (lanes.*member(Differences()))[0];
        return {mpq_class(d.re), mpq_class(d.im)};
    }
    // No less than the square of the error, in the square of the unit.
    mpq_class squaredBound() { return mpq_class(operations()) * mpq_class(bound()); }

  private:
    orbits::OrbitLanes<1>::Vector point(std::uint32_t m) const {
        return orbits::of<orbits::Real>(tier.reference->point<1>(m));
    }
    double& bound() { return (lanes.*member(Bound()))[0]; }
    double& operations() { return (lanes.*member(Operations()))[0]; }
    std::uint32_t& at() { return (lanes.*member(Index()))[0]; }

    const TierData<1>& tier;
    deep::Block block;
    Orbits lanes;
};

}  // namespace lane_probe
