// Making pictures in memory and on disk, and looking at them.
#pragma once

#include <string>

#include "render/job.h"
#include "tests/support/catalogue_table.h"
#include "tests/support/picture.h"

namespace test_support {

// The job of a built-in view at this size with the rectangle as it is.
render::Job jobOf(const CatalogueRow& row, render::Size size, render::Precision precision);

// The pixels that RowRenderer makes of a job, in one piece.
Picture renderedRows(const render::Job& job);

// The pixels of a PNG file, by libpng's own reader, as a viewer would see them.
Picture readPng(const std::string& path);

// Writes the file that a job becomes, made by this many threads.
void writePicture(render::Job job, const std::string& path, int threads);

}  // namespace test_support
