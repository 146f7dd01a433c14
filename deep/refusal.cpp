#include <unistd.h>

#include <cmath>

#include "deep/view.h"
#include "frac/decimal_text.h"

namespace deep {
namespace {

// Decimals with more digits behind the point take longer to multiply than a picture is worth.
constexpr std::int64_t MOST_DECIMALS = 100000;

// What a step of a reference with its tables may take. A Julia set has two orbits to refer to.
constexpr double BYTES_A_STEP = 200;

// What is wrong with the size or the length of a decimal, or nothing.
std::string faultOf(const std::string& what, const std::string& text) {
    const auto parts = decimalParts(text);
    if (!parts) return {};
    const auto digits = static_cast<std::int64_t>(parts->fraction.size());
    const bool isLarge = decimalMagnitude(text).value_or(0) > 10;
    if (isLarge || parts->exponent < -MOST_DECIMALS) return what + " has an absurd exponent";
    if (digits - parts->exponent > MOST_DECIMALS) return what + " has too many digits";
    return {};
}

double memory() {
    return static_cast<double>(sysconf(_SC_PHYS_PAGES)) *
           static_cast<double>(sysconf(_SC_PAGESIZE));
}

}  // namespace

std::string refusal(const View& view) {
    if (!isDecimal(view.re) || !isDecimal(view.im)) return "the centre is no pair of decimals";
    if (!isPositiveDecimal(view.width)) return "the width is no positive decimal";
    if (view.cRe.empty() != view.cIm.empty()) return "the constant has one part only";
    if (!view.cRe.empty() && !(isDecimal(view.cRe) && isDecimal(view.cIm))) {
        return "the constant is no pair of decimals";
    }
    const std::string faults[] = {faultOf("the centre", view.re), faultOf("the centre", view.im),
                                  faultOf("the width", view.width),
                                  faultOf("the constant", view.cRe),
                                  faultOf("the constant", view.cIm)};
    for (const std::string& fault : faults) {
        if (!fault.empty()) return fault;
    }
    if (view.pixelsWide < 1 || view.pixelsHigh < 1) return "the picture has no pixels";
    const int orbits = view.cRe.empty() ? 1 : 2;
    if (orbits * BYTES_A_STEP * view.maxIters > memory()) {
        return "so many iterations take more memory than this machine has";
    }
    return {};
}

}  // namespace deep
