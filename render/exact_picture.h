// Pictures of exact arithmetic as the threads of a run share them.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "deep/deep_picture.h"
#include "render/geometry.h"

namespace render {

// What a thread keeps of the picture whose rows it computed last.
using HeldPicture = std::shared_ptr<const deep::Picture>;

// A picture, its references made when the first of its rows are computed and gone when no thread
// holds them any more: a film has many. Any thread.
class ExactPicture {
  public:
    // The view must be one that deep::refusal() lets pass.
    explicit ExactPicture(deep::View what) : view(std::move(what)) {}

    // Lets it take over the reference of a picture of the same flight, if that serves it; before
    // the first row, on one thread. It is another one, and shares nothing itself.
    void shareReferenceOf(std::shared_ptr<ExactPicture> other) { lender = std::move(other); }
    const deep::View& what() const { return view; }

    // Computes counts, or values, of these rows of samples without gaps; either may be null. A
    // sample that is not decided has the count -1, and no value.
    void compute(RowRange rows, std::int32_t* counts, double* values, StopFlag stop,
                 HeldPicture& held);

    // How many samples were not decided so far; and from now on.
    std::int64_t unproven() const { return undecided; }
    void countAnew() { undecided = 0; }

  private:
    HeldPicture picture(StopFlag stop);
    HeldPicture fresh(StopFlag stop) const;

    const deep::View view;
    std::shared_ptr<ExactPicture> lender;  // may be null
    std::mutex making;
    std::weak_ptr<const deep::Picture> made;  // under the mutex
    std::atomic<std::int64_t> undecided{0};
};

}  // namespace render
