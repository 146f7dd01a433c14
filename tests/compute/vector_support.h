// Rendering one view with the vector renderer and with the scalar one, to hold them together.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "compute/vector_renderer.h"
#include "tests/compute/view.h"
#include "tests/support/picture.h"

namespace vector_test {

// The whole picture in tiles, from threadCPU or threadScalar, over a canary.
test_support::Picture vectorPicture(const View& view);
test_support::Picture scalarPicture(const View& view);

// Every instruction set of this machine, "scalar" included; the list does not depend on what is
// forced at the moment.
const std::vector<vector_control::Target>& allTargets();

// Forces an instruction set and gives the machine's best one back at its end.
class ForcedTarget {
  public:
    explicit ForcedTarget(std::int64_t bit) { vector_control::forceTarget(bit); }
    ~ForcedTarget() { vector_control::forceTarget(0); }
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;
};

// Whether every instruction set gives the scalar picture byte for byte; names the first that
// differs. `name` is that of the files a difference leaves behind.
testing::AssertionResult allTargetsAgree(const View& view, const std::string& name);

}  // namespace vector_test
