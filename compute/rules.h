// The fourteen escape-time rules, each stated once.
//
// A rule says where its orbit starts, where its constant c comes from and how one step goes. The
// step is a template over the number type N of compute/complex.h, so the scalar functions of
// compute/formulas.h and the vector renderer are instances of this same text.
//
// Polynomials are sums from left to right of products with complex constants (k, 0); powers are
// repeated products. The OpenCL program has its own text of the same rules (backends/kernels).
//
// Included once by plain code and again for each instruction set, as compute/complex.h is.
#if !defined(TESSARY_COMPUTE_RULES_H) || defined(TESSARY_VECTOR_TEXT)
#ifndef TESSARY_COMPUTE_RULES_H
#define TESSARY_COMPUTE_RULES_H
#endif

#include "compute/complex.h"

enum class Start { zero, pixel };     // z0: the origin, or the pixel's point p
enum class Constant { pixel, view };  // c: the pixel's point p, or (cx, cy) of the view

template <Start s, Constant k>
struct Rule {
    static constexpr Start start = s;
    static constexpr Constant constant = k;
};

struct MandelbrotRule : Rule<Start::zero, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return z * z + c;
    }
};

// The only rule with a loop of its own (see juliaCPU): it counts one step further.
struct JuliaRule : Rule<Start::pixel, Constant::view> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return z * z + c;
    }
};

struct SinRule : Rule<Start::zero, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return sinC(z) + c;
    }
};

struct CosRule : Rule<Start::zero, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return cosC(z) + c;
    }
};

struct SinhRule : Rule<Start::zero, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return sinhC(z) + c;
    }
};

struct CoshRule : Rule<Start::zero, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return coshC(z) + c;
    }
};

// z exactly on the axis subtracts c; a NaN adds it, as every comparison with NaN is false.
struct Barnsley1Rule : Rule<Start::pixel, Constant::view> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        const cpuComplex<N> w = c * z;
        const auto right = z.r >= N(0.0);
        return {select(right, w.r - c.r, w.r + c.r), select(right, w.i - c.i, w.i + c.i)};
    }
};

struct Barnsley2Rule : Rule<Start::pixel, Constant::view> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        const cpuComplex<N> w = c * z;
        const auto upper = w.i >= N(0.0);
        return {select(upper, w.r - c.r, w.r + c.r), select(upper, w.i - c.i, w.i + c.i)};
    }
};

// Takes the real part of c alone.
struct Barnsley3Rule : Rule<Start::pixel, Constant::view> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return {z.r * z.r - z.i * z.i - N(1.0) + c.r * z.r, N(2.0) * z.r * z.i};
    }
};

// Doubling, minus one in the upper or else the right half. Doubling is exact, so 2x - 1 rounds once
// in N: for float the same bits as forming it in double and rounding on storing.
struct BarnsleySierpinskiRule : Rule<Start::pixel, Constant::view> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>&) {
        const N half(0.5), one(1.0), two(2.0);
        const N x = two * z.r, y = two * z.i;
        const auto upper = z.i > half;
        const auto right = z.r > half;
        return {select(upper, x, select(right, x - one, x)), select(upper, y - one, y)};
    }
};

struct DragonRule : Rule<Start::pixel, Constant::view> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        return (c * z) * cpuComplex<N>{N(1.0) - z.r, -z.i};
    }
};

struct ChebyshevRule : Rule<Start::pixel, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>& c) {
        const cpuComplex<N> z3 = z * z * z;
        const cpuComplex<N> z5 = z3 * z * z;
        return realConstant<N>(16.0) * z5 + realConstant<N>(-20.0) * z3 + realConstant<N>(5.0) * z +
               c;
    }
};

// Adds no pixel point; the OpenCL program does, and both pictures stay as they are.
struct HermiteRule : Rule<Start::pixel, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>&) {
        const cpuComplex<N> z2 = z * z;
        const cpuComplex<N> z4 = z2 * z * z;
        return realConstant<N>(16.0) * z4 + realConstant<N>(-48.0) * z2 + realConstant<N>(12.0);
    }
};

// Keeps the name of the polynomial family; the coefficients are this program's own.
struct LegendreRule : Rule<Start::pixel, Constant::pixel> {
    template <class N>
    static cpuComplex<N> step(const cpuComplex<N>& z, const cpuComplex<N>&) {
        const cpuComplex<N> z2 = z * z;
        const cpuComplex<N> z3 = z2 * z;
        return realConstant<N>(20.0) * z3 + realConstant<N>(-30.0) * z2 +
               realConstant<N>(12.0) * z + realConstant<N>(-1.0);
    }
};

// Calls visit(SomeRule{}) with the rule of formula number `type` and returns true; an unknown
// number calls nothing and returns false.
template <class Visitor>
bool visitRule(int type, Visitor&& visit) {
    switch (type) {
        case 0:
            visit(MandelbrotRule{});
            return true;
        case 1:
            visit(JuliaRule{});
            return true;
        case 2:
            visit(SinRule{});
            return true;
        case 3:
            visit(CosRule{});
            return true;
        case 4:
            visit(SinhRule{});
            return true;
        case 5:
            visit(CoshRule{});
            return true;
        case 6:
            visit(Barnsley1Rule{});
            return true;
        case 7:
            visit(Barnsley2Rule{});
            return true;
        case 8:
            visit(Barnsley3Rule{});
            return true;
        case 9:
            visit(BarnsleySierpinskiRule{});
            return true;
        case 10:
            visit(DragonRule{});
            return true;
        case 11:
            visit(ChebyshevRule{});
            return true;
        case 12:
            visit(HermiteRule{});
            return true;
        case 13:
            visit(LegendreRule{});
            return true;
        default:
            return false;
    }
}

#endif
