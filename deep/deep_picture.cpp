#include "deep/deep_picture.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <tuple>
#include <vector>

#include "deep/exact_view.h"
#include "deep/multi_orbit.h"
#include "deep/tiers.h"

namespace deep {
namespace {

struct Pixel {
    std::int32_t x, y;
};

// Where a call's pixels go.
struct Target {
    int xStart, yStart;
    std::int32_t* counts;
    double* values;
    std::ptrdiff_t stride;

    void write(Pixel p, std::int32_t count, double value) const {
        const std::ptrdiff_t at = std::ptrdiff_t{p.y - yStart} * stride + (p.x - xStart);
        if (counts != nullptr) counts[at] = count;
        if (values != nullptr) values[at] = value;
    }
};

}  // namespace

class Picture::Work {
  public:
    Work(const View& v, const Work* before, StopFlag stop) : view(v), exact(v) {
        if (!isForVectors(view)) return;
        reference =
            before != nullptr && before->serves(*this)
                ? before->reference
                : std::make_shared<const Reference>(exact, view, referenceBits(exact), stop);
        doubles = makeTier<1>(*reference, exact, view);
        pairs = makeTier<2>(*reference, exact, view);
    }

    // In bands, which bound the memory and the wait for a stop.
    std::int64_t render(const Target& target, int xEnd, int yEnd, StopFlag stop) const {
        constexpr int BAND_PIXELS = 1 << 16, BAND_ROWS = 64;
        const int width = std::max(xEnd - target.xStart, 1);
        const int rows = std::clamp(BAND_PIXELS / width / 4 * 4, 4, BAND_ROWS);
        std::int64_t undecided = 0;
        for (int y = target.yStart; y < yEnd && !isSet(stop); y += rows) {
            undecided += band(pixelsOf(target, xEnd, y, std::min(y + rows, yEnd)), target, stop);
        }
        return undecided;
    }

    bool shares(const Work& other) const {
        return reference != nullptr && reference == other.reference;
    }

  private:
    // Whether its reference is one for `other`. One that was cut short is for nobody else.
    bool serves(const Work& other) const {
        const auto orbit = [](const View& v) {
            return std::tie(v.re, v.im, v.cRe, v.cIm, v.limit);
        };
        return reference != nullptr && reference->isWhole && orbit(view) == orbit(other.view) &&
               view.maxIters >= other.view.maxIters &&
               reference->bits >= referenceBits(other.exact);
    }

    std::int64_t band(std::vector<Pixel> left, const Target& target, StopFlag stop) const {
        if (reference && isInUse(Tier::doubles)) left = follow(doubles, left, target, stop);
        if (reference && isInUse(Tier::pairs)) left = follow(pairs, left, target, stop);
        if (reference && !isInUse(Tier::digits)) return giveUp(left, target);
        return followExactly(left, target, stop);
    }

    // In blocks of 4 x 4: neighbours stay together longest.
    static std::vector<Pixel> pixelsOf(const Target& t, int xEnd, int yStart, int yEnd) {
        std::vector<Pixel> all;
        for (int y = yStart; y < yEnd; y += 4) {
            for (int x = t.xStart; x < xEnd; x += 4) {
                for (int j = y; j < std::min(y + 4, yEnd); ++j) {
                    for (int i = x; i < std::min(x + 4, xEnd); ++i) all.push_back({i, j});
                }
            }
        }
        return all;
    }

    // Those that the tier leaves undecided.
    template <int PARTS>
    std::vector<Pixel> follow(const TierData<PARTS>& tier, const std::vector<Pixel>& pixels,
                              const Target& target, StopFlag stop) const {
        std::vector<Pixel> left;
        for (std::size_t first = 0; first < pixels.size() && !isSet(stop); first += BLOCK) {
            Block block;
            for (std::size_t n = first; n < std::min(first + BLOCK, pixels.size()); ++n) {
                block.x[block.used] = pixels[n].x;
                block.y[block.used++] = pixels[n].y;
            }
            deep::follow(tier, block, target.values != nullptr, stop);
            for (int l = 0; l < block.used; ++l) {
                const Pixel p{block.x[l], block.y[l]};
                if (block.count[l] == UNDECIDED) left.push_back(p);
                if (block.count[l] >= 0) target.write(p, block.count[l], block.value[l]);
            }
        }
        return left;
    }

    std::int64_t followExactly(const std::vector<Pixel>& pixels, const Target& target,
                               StopFlag stop) const {
        std::int64_t undecided = 0;
        for (const Pixel& p : pixels) {
            const Outcome o =
                deep::followExactly(exact, view, p.x, p.y, target.values != nullptr, stop);
            if (o.count == INTERRUPTED) break;
            if (o.count == UNDECIDED) ++undecided;
            target.write(p, o.count, o.value);
        }
        return undecided;
    }

    static std::int64_t giveUp(const std::vector<Pixel>& pixels, const Target& target) {
        constexpr double NOT_KNOWN = std::numeric_limits<double>::quiet_NaN();
        for (const Pixel& p : pixels) target.write(p, UNDECIDED, NOT_KNOWN);
        return static_cast<std::int64_t>(pixels.size());
    }

    const View view;
    const ExactView exact;
    std::shared_ptr<const Reference> reference;  // null where vectors are not for the view
    TierData<1> doubles;
    TierData<2> pairs;
};

Picture::Picture(const View& view, StopFlag stop)
    : work(std::make_unique<const Work>(view, nullptr, stop)) {}
Picture::Picture(const View& view, const Picture& before, StopFlag stop)
    : work(std::make_unique<const Work>(view, before.work.get(), stop)) {}
Picture::~Picture() = default;
Picture::Picture(Picture&&) noexcept = default;
Picture& Picture::operator=(Picture&&) noexcept = default;

bool Picture::sharesReference(const Picture& other) const {
    return work->shares(*other.work);
}

std::int64_t Picture::render(int xStart, int yStart, int xEnd, int yEnd, std::int32_t* counts,
                             double* values, std::ptrdiff_t stride, StopFlag stop) const {
    return work->render({xStart, yStart, counts, values, stride}, xEnd, yEnd, stop);
}

}  // namespace deep
