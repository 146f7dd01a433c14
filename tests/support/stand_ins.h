// What the commands' tests put in the place of a window, of the desktop's panels and of OpenCL, and
// the fixture that leaves no global changed.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "GlutMenu/CGlutMenu.h"
#include "backends/view_state.h"
#include "tests/support/backend_globals.h"
#include "tests/support/files.h"
#include "tests/support/stdout_capture.h"

namespace stand_ins {

// What GLUT was asked for since the last forget().
struct GlutCalls {
    int redisplays = 0;
    void (*idle)() = nullptr;
    int idleCalls = 0;
    std::vector<std::string> titles;
    std::function<void()> onRedisplay;  // runs while one is asked for
};
extern GlutCalls glut;

// One use of a file panel: what it was given and, to be set before, what the user does.
struct PanelUse {
    std::string pathBefore, message;
};
extern std::vector<PanelUse> openPanels, savePanels;
// The path that the next panel answers; none: the user cancels.
extern std::optional<std::string> panelAnswer;

// The calls that reached the recording OpenCL back-end, such as "release double", in order. Unused
// by tests that link the real one.
extern std::vector<std::string> backendCalls;

// Lists devices "Device 0", "Device 1", ... with these double-precision flags.
void listDevices(std::vector<bool> doubles);

void forget();

using test_support::readFile;
using test_support::TemporaryFolder;
using test_support::writeFile;

// An entry with distinct values in every member.
fractal someEntry(const std::string& name, int id = 0);

// Base of all fixtures: an empty catalogue, nothing owed, CPU, single precision, four threads, no
// devices, and every global as it was afterwards.
class CommandsTest : public testing::Test {
  protected:
    CommandsTest();
    ~CommandsTest() override;

    // What was printed since the test began or output was forgotten.
    std::string printed() const { return output.text().substr(mark); }
    void forgetOutput() { mark = output.text().size(); }

    // Makes these the catalogue, the first one current.
    void setCatalogue(std::vector<fractal> entries);

  private:
    struct Saved;
    test_support::ViewGuard view;
    std::unique_ptr<Saved> saved;
    test_support::StdoutCapture output;
    std::size_t mark = 0;
};

// The submenu reached by these item texts from the bar; fails the test when there is none.
GlutMenu::CGlutMenu* submenu(std::vector<std::string> path);

// Chooses the item with this text of a menu, as the toolkit does.
void choose(GlutMenu::CGlutMenu* holder, const std::string& text);

}  // namespace stand_ins
