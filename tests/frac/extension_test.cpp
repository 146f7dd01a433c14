// Which paths get the extension.
#include "frac/frac_extension.h"

#include <gtest/gtest.h>

namespace {

struct Row {
    std::string chosen, result;
};

class Extension : public testing::TestWithParam<Row> {};

TEST_P(Extension, IsAppendedUnlessTheFirstOneEndsThePath) {
    std::string path = GetParam().chosen;
    applyFracExtension(path);
    EXPECT_EQ(path, GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, Extension,
    testing::Values(Row{"/data/a", "/data/a.frac"}, Row{"/data/a.frac", "/data/a.frac"},
                    Row{"/data/A.FRAC", "/data/A.FRAC"}, Row{"/data/a.FrAc", "/data/a.FrAc"},
                    Row{"/data/old.fractals/a.frac", "/data/old.fractals/a.frac.frac"},
                    Row{"a.frac.frac", "a.frac.frac.frac"}, Row{"a.fra", "a.fra.frac"},
                    Row{"a.fracx", "a.fracx.frac"}, Row{"frac", "frac.frac"}, Row{".frac", ".frac"},
                    Row{"", ".frac"}, Row{"a.txt", "a.txt.frac"},
                    Row{"b\xc3\x89.frac", "b\xc3\x89.frac"}, Row{"b\xc3\x89", "b\xc3\x89.frac"},
                    Row{"two words.", "two words..frac"}));

}  // namespace
