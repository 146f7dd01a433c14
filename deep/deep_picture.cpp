#include "deep/deep_picture.h"

#include <algorithm>
#include <limits>

#include "deep/exact_view.h"
#include "deep/multi_orbit.h"
#include "frac/decimal_text.h"

namespace deep {

class Picture::Work {
  public:
    explicit Work(const View& v) : view(v), exact(v) {}

    const View view;
    const ExactView exact;
};

Picture::Picture(const View& view, StopFlag) : work(std::make_unique<const Work>(view)) {}
Picture::~Picture() = default;
Picture::Picture(Picture&&) noexcept = default;
Picture& Picture::operator=(Picture&&) noexcept = default;

std::int64_t Picture::render(int xStart, int yStart, int xEnd, int yEnd, std::int32_t* counts,
                             double* values, std::ptrdiff_t stride, StopFlag stop) const {
    std::int64_t undecided = 0;
    const View& v = work->view;
    for (int y = std::max(yStart, 0); y < std::min(yEnd, v.pixelsHigh); ++y) {
        for (int x = std::max(xStart, 0); x < std::min(xEnd, v.pixelsWide); ++x) {
            const Outcome o = followExactly(work->exact, v, x, y, values != nullptr, stop);
            if (o.count == INTERRUPTED) return undecided;
            if (o.count == UNDECIDED) ++undecided;
            const std::ptrdiff_t at = std::ptrdiff_t{y - yStart} * stride + (x - xStart);
            if (counts != nullptr) counts[at] = o.count;
            if (values != nullptr) values[at] = o.value;
        }
    }
    return undecided;
}

}  // namespace deep
