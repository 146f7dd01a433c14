// The escape-time rules. Every function maps pixel (x, y) to its point of the plane, iterates and
// returns the count; a count that reaches maxIters means that the orbit stayed.

cuComplex pixelPoint(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin,
                     REAL yMax) {
    return setComplex((REAL)x / (REAL)width * (xMax - xMin) + xMin,
                      (REAL)y / (REAL)height * (yMax - yMin) + yMin);
}

int mandel(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax, REAL cx,
           REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex c = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex z = setComplex(0.0, 0.0);
    int count = 0;
    while (count < maxIters) {
        z = add(mult(z, z), c);
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

// Takes one step at least, and an orbit that stays returns maxIters + 1.
int julia(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax, REAL cx,
          REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex c = setComplex(cx, cy);
    int count = 0;
    for (;;) {
        z = add(mult(z, z), c);
        if (magnitude2(z) > maxSizeSquared) return count;
        if (count > maxIters) return count;
        ++count;
    }
}

int sinFractal(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
               REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex c = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex z = setComplex(0.0, 0.0);
    int count = 0;
    while (count < maxIters) {
        z = add(sinCREAL(z), c);
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int cosFractal(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
               REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex c = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex z = setComplex(0.0, 0.0);
    int count = 0;
    while (count < maxIters) {
        z = add(cosCREAL(z), c);
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int sinhFractal(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
                REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex c = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex z = setComplex(0.0, 0.0);
    int count = 0;
    while (count < maxIters) {
        z = add(sinhCREAL(z), c);
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int coshFractal(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
                REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex c = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex z = setComplex(0.0, 0.0);
    int count = 0;
    while (count < maxIters) {
        z = add(coshCREAL(z), c);
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int barnsley1(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
              REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex c = setComplex(cx, cy);
    int count = 0;
    while (count < maxIters) {
        if (z.r >= 0) {
            z = subtract(mult(c, z), c);
        } else {
            z = add(mult(c, z), c);
        }
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int barnsley2(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
              REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex c = setComplex(cx, cy);
    int count = 0;
    while (count < maxIters) {
        if (mult(c, z).i >= 0) {
            z = subtract(mult(c, z), c);
        } else {
            z = add(mult(c, z), c);
        }
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

// Both halves of the plane take the same step.
int barnsley3(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
              REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex c = setComplex(cx, cy);
    int count = 0;
    while (count < maxIters) {
        if (z.r >= 0) {
            z = addScalar(addScalar(mult(z, z), -1.0), c.r * z.r);
        } else {
            z = addScalar(addScalar(mult(z, z), -1.0), c.r * z.r);
        }
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int barnsleySierpinski(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin,
                       REAL yMax, REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex p = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    REAL zx = p.r;
    REAL zy = p.i;
    int count = 0;
    while (count < maxIters) {
        REAL nx = 2.0 * zx;
        REAL ny = 2.0 * zy;
        if (zy > 0.5) {
            ny = 2.0 * zy - 1.0;
        } else if (zx > 0.5) {
            nx = 2.0 * zx - 1.0;
        }
        if (nx * nx + ny * ny > maxSizeSquared) break;
        zx = nx;
        zy = ny;
        ++count;
    }
    return count;
}

int dragon(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax, REAL cx,
           REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex c = setComplex(cx, cy);
    int count = 0;
    while (count < maxIters) {
        cuComplex k = setComplex(1.0, 0.0);
        z = mult(mult(c, z), subtract(k, z));
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int chebychev(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
              REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex c = z;
    int count = 0;
    while (count < maxIters) {
        z = add(add(add(mults(16.0, pow_int(z, 5)), mults(-20.0, pow_int(z, 3))), mults(5.0, z)),
                c);
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

// Adds the pixel's point to the polynomial h.
int hermite(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
            REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    cuComplex c = z;
    int count = 0;
    while (count < maxIters) {
        cuComplex h = add(add(mults(16.0, pow_int(z, 4)), mults(-48.0, pow_int(z, 2))),
                          setComplex(12.0, 0.0));
        z = HERMITE_SUM;
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}

int legendre(int x, int y, int width, int height, REAL xMin, REAL xMax, REAL yMin, REAL yMax,
             REAL cx, REAL cy, REAL maxSizeSquared, int maxIters) {
    cuComplex z = pixelPoint(x, y, width, height, xMin, xMax, yMin, yMax);
    int count = 0;
    while (count < maxIters) {
        z = add(add(add(mults(20.0, pow_int(z, 3)), mults(-30.0, pow_int(z, 2))), mults(12.0, z)),
                setComplex(-1.0, 0.0));
        if (magnitude2(z) > maxSizeSquared) break;
        ++count;
    }
    return count;
}
