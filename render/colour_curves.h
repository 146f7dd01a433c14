// The curves that colours go through, by operations that every processor rounds alike: + - * /,
// square roots, comparisons, compute/fixed_math.h and tables made of these. No function of the C
// library that rounds in its own way. Plain functions; any thread.
#pragma once

namespace render {

// The light of a level by the curve of sRGB (IEC 61966-2-1), and the level of a light, both 0 to 1;
// what lies outside is taken as the nearer end. Within 3e-7 of the exact curve.
double lightOf(double level);
double levelOf(double light);

// The sine of x for -2 <= x <= 2, within 1e-15.
double sine(double x);

}  // namespace render
