#include "compute/formulas.h"

// The named functions differ in nothing but their rule, so one macro line states each and
// instantiates it in both precisions.
#define TESSARY_FORMULA(name, rule)                                                               \
    template <class T>                                                                            \
    int name(int x, int y, int width, int height, T xMin, T xMax, T yMin, T yMax, T cx, T cy,     \
             T maxSizeSquared, int maxIters) {                                                    \
        return pixelCount<rule>(x, y, width, height, xMin, xMax, yMin, yMax, cx, cy,              \
                                maxSizeSquared, maxIters);                                        \
    }                                                                                             \
    template int name(int, int, int, int, float, float, float, float, float, float, float, int);  \
    template int name(int, int, int, int, double, double, double, double, double, double, double, \
                      int)

TESSARY_FORMULA(juliaCPU, JuliaRule);
TESSARY_FORMULA(sinCPU, SinRule);
TESSARY_FORMULA(cosCPU, CosRule);
TESSARY_FORMULA(sinhCPU, SinhRule);
TESSARY_FORMULA(coshCPU, CoshRule);
TESSARY_FORMULA(barnsley1CPU, Barnsley1Rule);
TESSARY_FORMULA(barnsley2CPU, Barnsley2Rule);
TESSARY_FORMULA(barnsley3CPU, Barnsley3Rule);
TESSARY_FORMULA(barnsleySierpinskiCPU, BarnsleySierpinskiRule);
TESSARY_FORMULA(dragonCPU, DragonRule);
TESSARY_FORMULA(chebyshevCPU, ChebyshevRule);
TESSARY_FORMULA(hermiteCPU, HermiteRule);
TESSARY_FORMULA(legendreCPU, LegendreRule);

#undef TESSARY_FORMULA
