#include "deep_support.h"

deep::View toDeep(const oracle::View& v) {
    return {v.re, v.im, v.width, v.cRe, v.cIm, v.pixelsWide, v.pixelsHigh, v.limit, v.maxIters};
}

Numbers renderPart(const deep::Picture& picture, int x, int y, int across, int down,
                   StopFlag stop) {
    const auto pixels = static_cast<std::size_t>(across) * static_cast<std::size_t>(down);
    Numbers part{across, down, std::vector<std::int32_t>(pixels, UNTOUCHED),
                 std::vector<double>(pixels, UNTOUCHED), 0};
    part.undecided = picture.render(x, y, x + across, y + down, part.counts.data(),
                                    part.values.data(), across, stop);
    return part;
}

Numbers renderWhole(const oracle::View& view) {
    return renderPart(deep::Picture(toDeep(view)), 0, 0, view.pixelsWide, view.pixelsHigh);
}
