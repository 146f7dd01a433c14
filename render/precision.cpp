#include "render/precision.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "compute/saturate.h"
#include "frac/decimal.h"
#include "frac/formula_names.h"
#include "frac/json_entry.h"
#include "frac/number_text.h"
#include "render/exact_picture.h"
#include "render/failure.h"

namespace render {
namespace {

constexpr std::int32_t MANDELBROT = 0, JULIA = 1;

double largestCoordinate(const fractal& view) {
    double largest = 0;
    for (const double edge : {view.xMin, view.xMax, view.yMin, view.yMax}) {
        largest = std::max(largest, std::abs(edge));
    }
    if (view.fractalType != JULIA) return largest;
    return std::max({largest, std::abs(view.cx), std::abs(view.cy)});
}

Size samplesOf(const Job& job) {
    const Size size = wholeSize(job);
    return {size.width * job.supersample, size.height * job.supersample};
}

double limitOf(const Job& job) {
    return job.colouring ? escapeBound(job.view, job.colouring->wanted())
                         : truncateToInt(job.view.maxSize);
}

std::string decimalOf(const std::string& decimal, double value) {
    if (!decimal.empty()) return decimal;
    if (!std::isfinite(value)) throw Failure("exact arithmetic takes a finite constant c alone");
    return Decimal::of(value).text();
}

deep::View deepView(const Job& job) {
    const fractal& view = job.view;
    const ExactPlace& place = *view.exact;
    const Size samples = samplesOf(job);
    deep::View deep{place.re,      place.im,       place.width,  {},           {},
                    samples.width, samples.height, limitOf(job), view.maxIters};
    if (view.fractalType == JULIA) {
        deep.cRe = decimalOf(place.cRe, view.cx);
        deep.cIm = decimalOf(place.cIm, view.cy);
    }
    return deep;
}

std::string formulaName(const fractal& view) {
    const auto name = nameOf(formulaNames(), view.fractalType);
    return name ? std::string(*name) : "formula " + std::to_string(view.fractalType);
}

// By more than doubles round.
bool hasProportions(const fractal& view, Size size) {
    constexpr double MOST = 0x1p-10;
    const double wide = (view.xMax - view.xMin) * size.height;
    const double high = (view.yMax - view.yMin) * size.width;
    return std::abs(wide - high) <= MOST * wide;
}

Decimal middleOf(double low, double high) {
    return (Decimal::of(low) + Decimal::of(high)) * Decimal::of(0.5);
}

}  // namespace

fractal framed(fractal view, Size size) {
    if (!view.exact) return view;
    const double re = nearestNumber(view.exact->re), im = nearestNumber(view.exact->im);
    const double half = 0.5 * nearestNumber(view.exact->width);
    const double halfHeight = half * size.height / size.width;
    view.xMin = re - half, view.xMax = re + half;
    view.yMin = im - halfHeight, view.yMax = im + halfHeight;
    return view;
}

// Widths that no double holds are beyond it at either end.
bool isBeyondDouble(const fractal& view, Size samples) {
    constexpr double SHARE = 0x1p-40, LEAST = 1e-280;
    const double width = view.exact ? nearestNumber(view.exact->width) : view.xMax - view.xMin;
    const double spacing = std::abs(width) / samples.width;
    if (!std::isfinite(spacing)) return true;
    return spacing < SHARE * largestCoordinate(view) || spacing < LEAST;
}

fractal placedExactly(fractal view, Size size) {
    if (view.exact) return view;
    const bool isUpright = view.xMin < view.xMax && view.yMin < view.yMax;
    const bool isFinite = std::isfinite(view.xMin) && std::isfinite(view.xMax) &&
                          std::isfinite(view.yMin) && std::isfinite(view.yMax);
    if (!isUpright || !isFinite) {
        throw Failure("exact arithmetic takes no rectangle that is mirrored, empty or infinite");
    }
    if (!hasProportions(view, size)) {
        throw Failure(
            "exact arithmetic takes square pixels alone: the rectangle has other "
            "proportions than the picture");
    }
    ExactPlace place;
    place.re = middleOf(view.xMin, view.xMax).text();
    place.im = middleOf(view.yMin, view.yMax).text();
    place.width = (Decimal::of(view.xMax) - Decimal::of(view.xMin)).text();
    placeExactly(view, place);
    return framed(std::move(view), size);
}

namespace {

// What pictures of one reference have in common.
std::string referenceOf(const deep::View& view) {
    std::string text;
    for (const std::string* part : {&view.re, &view.im, &view.cRe, &view.cIm}) {
        text.append(*part).append(1, ' ');
    }
    return text.append(numberText(view.limit));
}

// A reference serves narrower spacing and more steps than the picture has.
bool servesMore(const ExactPicture& a, const ExactPicture& b) {
    const deep::View &one = a.what(), &other = b.what();
    if (one.maxIters != other.maxIters) return one.maxIters > other.maxIters;
    const Decimal shorter = Decimal::of(std::string_view(one.width)),
                  longer = Decimal::of(std::string_view(other.width));
    return (shorter - longer).sign() < 0;
}

}  // namespace

void shareReferences(const std::vector<Job>& jobs) {
    std::map<std::string, std::shared_ptr<ExactPicture>> best;
    for (const Job& job : jobs) {
        if (!job.exact) continue;
        auto& lender = best[referenceOf(job.exact->what())];
        if (!lender || servesMore(*job.exact, *lender)) lender = job.exact;
    }
    for (const Job& job : jobs) {
        if (!job.exact) continue;
        const auto& lender = best[referenceOf(job.exact->what())];
        if (lender != job.exact) job.exact->shareReferenceOf(lender);
    }
}

void choosePrecision(Job& job, Precision wanted) {
    if (wanted == Precision::automatic) {
        const bool beyond = isBeyondDouble(job.view, samplesOf(job));
        wanted = beyond ? Precision::exact : Precision::doubles;
    }
    job.precision = wanted;
    if (wanted != Precision::exact) return;
    if (job.view.fractalType != MANDELBROT && job.view.fractalType != JULIA) {
        throw Failure(
            "exact arithmetic, which a view this deep takes, is there for Mandelbrot and "
            "Julia alone, not for " +
            formulaName(job.view));
    }
    job.view = placedExactly(std::move(job.view), wholeSize(job));
    const deep::View view = deepView(job);
    const std::string refusal = view.maxIters < 1 ? std::string() : deep::refusal(view);
    if (!refusal.empty()) throw Failure(refusal);
    job.exact = std::make_shared<ExactPicture>(view);
}

}  // namespace render
