#include <unistd.h>

#include <cmath>

#include "deep/view.h"
#include "frac/decimal_text.h"

namespace deep {
namespace {

// Decimals with more digits behind the point take longer to multiply than a picture is worth.
constexpr std::int64_t MOST_DECIMALS = 100000;

// What a step of a reference with its tables may take.
constexpr double BYTES_A_STEP = 200;

bool isAbsurd(const std::string& text) {
    const auto parts = decimalParts(text);
    if (!parts) return false;
    const auto behind = static_cast<std::int64_t>(parts->fraction.size()) - parts->exponent;
    return behind > MOST_DECIMALS || decimalMagnitude(text).value_or(0) > 10;
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
    if (isAbsurd(view.re) || isAbsurd(view.im)) return "the centre has an absurd exponent";
    if (isAbsurd(view.width)) return "the width has an absurd exponent";
    if (isAbsurd(view.cRe) || isAbsurd(view.cIm)) return "the constant has an absurd exponent";
    if (view.pixelsWide < 1 || view.pixelsHigh < 1) return "the picture has no pixels";
    if (BYTES_A_STEP * view.maxIters > memory()) {
        return "so many iterations take more memory than this machine has";
    }
    return {};
}

}  // namespace deep
