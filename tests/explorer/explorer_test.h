// What the tests of catalogue, frame loop and navigation start from: no window, a small image, no
// worker threads (frames are rendered on the calling thread), and the globals as the program has
// them at its start. Everything is put back afterwards.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/backend_globals.h"
#include "tests/support/glut_stand_in.h"
#include "tests/support/lock_probe.h"
#include "tests/support/stdout_capture.h"

using glut_stand_in::call;
using glut_stand_in::callsNamed;
using glut_stand_in::glut;

class ExplorerTest : public testing::Test {
  protected:
    ExplorerTest();
    ~ExplorerTest() override;

    // What was printed since the test began.
    std::string printed() const { return output.text().substr(preparation); }

    // Makes these the catalogue and the first one current and shown.
    static void setCatalogue(const std::vector<fractal>& entries);

    // Builds a menu bar with these items and shows it.
    static void showMenuBar(std::vector<std::string> items);

    test_support::ViewGuard view;
    test_support::ImageGuard image{256, 256};

  private:
    test_support::StdoutCapture output;
    std::size_t preparation;  // how much the making of the fixture printed
};

// The rectangle of the live view and of an entry, as xMax, xMin, yMax, yMin.
using Rectangle = std::vector<double>;
Rectangle viewRectangle();
Rectangle rectangleOf(const fractal& entry);

// An entry named `name` with this identity and rectangle.
fractal namedEntry(const std::string& name, int id, const Rectangle& rectangle);
