#include "compute/rounded_value.h"

#include <algorithm>
#include <cmath>

namespace {

double inUnits(double x) {
    return std::floor(x / VALUE_UNIT + 0.5);
}

}  // namespace

Rounded roundedValue(int count, double logBefore, double logAfter, double logLimit, double error) {
    // From a start of exactly 0 the quotient is no number and taken as 1.
    if (std::isinf(logBefore)) return {static_cast<double>(count), true};
    const double difference = logAfter - logBefore;
    // 4 roundings of q besides.
    const double q = (logLimit - logBefore) / difference;
    const double off = error / (difference - 2 * error) * (1 + 0x1p-30) + 0x1p-50;
    const Rounded rounded = roundedQuotient(count, q, off);
    return {rounded.value, rounded.certain && difference > 4 * error};
}

Rounded roundedQuotient(int count, double quotient, double off) {
    const double q = std::clamp(quotient, 0.0, 1.0);
    const double units = inUnits(q);
    const bool certain =
        inUnits(std::max(q - off, 0.0)) == units && inUnits(std::min(q + off, 1.0)) == units;
    return {(static_cast<double>(count) - 1) + units * VALUE_UNIT, certain};
}
