// A catalogue that cannot be written costs nobody the one that was there.
#include <gtest/gtest.h>

#include "explorer/frac_file.h"
#include "tests/support/stand_ins.h"

using test_support::FileSizeLimit;

namespace {

class SaveFailure : public stand_ins::CommandsTest {
  protected:
    stand_ins::TemporaryFolder folder;
};

TEST_F(SaveFailure, IsOneLineAndNoEntryCountsAsSaved) {
    setCatalogue({stand_ins::someEntry("a"), stand_ins::someEntry("b")});
    for (const std::string path : {"/nonexistent/a.frac", "/dev/full", "/"}) {
        forgetOutput();
        SaveData(path);
        EXPECT_EQ(printed(), "Could not write to disk\n") << path;
    }
}

TEST_F(SaveFailure, LeavesTheOldCatalogueLoadable) {
    const std::string path = folder / "a.frac";
    setCatalogue({stand_ins::someEntry("kept")});
    SaveData(path);
    setCatalogue({stand_ins::someEntry(std::string(5000, 'x'))});
    {
        const FileSizeLimit limit(200);
        SaveData(path);
    }
    LoadData(path);
    EXPECT_EQ(fractals.at(0).name, "kept");
}

}  // namespace
