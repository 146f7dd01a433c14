#include "render/exact_picture.h"

#include <algorithm>
#include <limits>

namespace render {

namespace {

// A picture that keeps the one whose reference it shares, so that the next one finds it as well.
struct Borrower {
    HeldPicture lender;
    deep::Picture picture;
};

}  // namespace

HeldPicture ExactPicture::fresh(StopFlag stop) const {
    if (!lender) return std::make_shared<const deep::Picture>(view, stop);
    HeldPicture from = lender->picture(stop);
    deep::Picture own(view, *from, stop);
    const auto both = std::make_shared<const Borrower>(Borrower{std::move(from), std::move(own)});
    return {both, &both->picture};
}

HeldPicture ExactPicture::picture(StopFlag stop) {
    const std::lock_guard lock(making);
    if (auto there = made.lock()) return there;
    HeldPicture now = fresh(stop);
    made = now;
    return now;
}

// Without a step no orbit escapes, wherever it is.
void ExactPicture::compute(RowRange rows, std::int32_t* counts, double* values, StopFlag stop,
                           HeldPicture& held) {
    const auto samples =
        static_cast<std::size_t>(view.pixelsWide) * static_cast<std::size_t>(rows.count());
    if (view.maxIters < 1) {
        if (counts != nullptr) std::fill_n(counts, samples, 0);
        if (values != nullptr)
            std::fill_n(values, samples, std::numeric_limits<double>::quiet_NaN());
        return;
    }
    held = picture(stop);
    undecided += held->render(0, rows.first, view.pixelsWide, rows.end, counts, values,
                              view.pixelsWide, stop);
}

}  // namespace render
