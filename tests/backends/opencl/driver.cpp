// The OpenCL back-end without a window: a little language of commands, one an argument, carried out
// in order. It stands in for start-up, the frame loop and the menu, so that tests can see a process
// end, and so that the back-end can be tried on a machine that has a GPU and no display.
//
//   list                   list the devices, printing
//   device N               use device N
//   single | double        precision in force
//   size WxH               size of the picture (before setup)
//   type N   iters N   maxsize X   view XMIN,XMAX,YMIN,YMAX   c X,Y   palette N
//   texts                  fill both program texts, as start-up does
//   setup                  set up from the stored text, as the first frame does
//   text FILE              set up from the text in a file
//   frame                  render a frame
//   upload                 palette changed: upload it
//   precision              switch the precision, as the menu does
//   switch N               switch to device N, as the menu does
//   repeat N WORD          the command WORD, N times
//   release                release everything
//   save FILE              write the picture's bytes
//   report                 every rule in both precisions against the CPU, as a table
//   exact                  the rules of sums and products in both precisions against the CPU: a
//   line
//                          "same ..." or "different ..." each
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "backends/image.h"
#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "tests/backends/opencl/cpu_picture.h"
#include "tests/backends/opencl/device_reference.h"
#include "tests/support/catalogue_table.h"

namespace {

using Clock = std::chrono::steady_clock;

// The arguments not yet carried out.
struct Words {
    std::vector<std::string> all;
    std::size_t next = 0;

    std::string take() {
        if (next == all.size()) {
            std::cerr << "opencl_driver: an argument is missing" << std::endl;
            std::exit(64);
        }
        return all[next++];
    }
    int number() { return std::atoi(take().c_str()); }
};

void setSize(const std::string& text) {
    int width = 0, height = 0;
    if (std::sscanf(text.c_str(), "%dx%d", &width, &height) != 2) std::exit(64);
    winX = width;
    winY = height;
    buffer = makeArray<unsigned char>(imageBytes());
}

void setView(const std::string& text) {
    std::sscanf(text.c_str(), "%lf,%lf,%lf,%lf", &xMin, &xMax, &yMin, &yMax);
}

void setConstant(const std::string& text) {
    std::sscanf(text.c_str(), "%lf,%lf", &cx, &cy);
}

void switchPrecision() {
    const bool old = bDoublePrecision;
    bDoublePrecision = !old;
    release_opencl_resource(old);
    kernel_string = load_kernel();
    setupOpenCL(kernel_string);
}

void switchDevice(int number) {
    release_opencl_resource(bDoublePrecision);
    nCudaDevice = number;
    kernel_string = load_kernel();
    setupOpenCL(kernel_string);
}

void listDevices(bool print) {
    devices.clear();
    device_names.clear();
    fp64_support.clear();
    types.clear();
    get_list_of_devices(devices, device_names, fp64_support, types, print);
}

void fillTexts() {
    kernel_string = load_kernel();
    kernel_single_string = load_kernel();
}

void setUpFromFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    setupOpenCL(text.str());
}

void savePicture(const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(buffer.get()),
               static_cast<std::streamsize>(imageBytes()));
}

void setPaletteType(int type) {
    paletteType = type;
    updatePalette(type);
}

// The view in force, as the references take it.
device_reference::View viewInForce() {
    return {currentFractalType,
            static_cast<int>(winX),
            static_cast<int>(winY),
            xMin,
            xMax,
            yMin,
            yMax,
            cx,
            cy,
            maxSize,
            maxIters};
}

test_support::Picture drawnPicture() {
    test_support::Picture drawn(static_cast<int>(winX), static_cast<int>(winY), 0);
    std::copy_n(buffer.get(), imageBytes(), drawn.bytes.data());
    return drawn;
}

void setEntry(const test_support::CatalogueRow& row) {
    currentFractalType = row.type;
    xMin = row.xMin, xMax = row.xMax, yMin = row.yMin, yMax = row.yMax;
    cx = row.cx, cy = row.cy;
    maxSize = row.maxSize;
    maxIters = row.maxIters;
}

// One line of the report: the rule's start view in the precision in force.
void reportRow(const test_support::CatalogueRow& row) {
    setEntry(row);
    renderFrameOpenCL();
    const auto start = Clock::now();
    renderFrameOpenCL();
    const std::chrono::duration<double> seconds = Clock::now() - start;

    // Hermite is meant to be another picture than the CPU's.
    const auto picture = row.type == 12 ? device_reference::picture : cpu_picture::picture;
    const auto expected = picture(viewInForce(), bDoublePrecision, badAssColourPalette.get());
    const auto drawn = drawnPicture();
    std::printf("| %-16s | %s | %9.6f | %7ld | %.3f %% |\n", row.label.c_str(),
                bDoublePrecision ? "double" : "single", seconds.count(),
                device_reference::differingPixels(drawn, expected),
                100.0 * static_cast<double>(device_reference::differingPixels(drawn, expected)) /
                    static_cast<double>(winX * winY));
    std::fflush(stdout);
}

// Does something in each precision that the device has, set up for it.
void inBothPrecisions(const std::function<void()>& work) {
    for (const bool precision : {false, true}) {
        if (precision && !fp64_support[static_cast<std::size_t>(nCudaDevice)]) break;
        release_opencl_resource(bDoublePrecision);
        bDoublePrecision = precision;
        setupOpenCL(load_kernel());
        work();
    }
}

void report() {
    std::printf(
        "| view | precision | seconds a frame | pixels that differ | share |\n"
        "|---|---|---|---|---|\n");
    inBothPrecisions([] {
        for (const auto& row : test_support::catalogueRows()) reportRow(row);
    });
}

// No more than so many steps, for devices that are simulated.
constexpr int EXACT_STEPS = 200;

void compareWithTheCpu(const test_support::CatalogueRow& row) {
    setEntry(row);
    maxIters = std::min<std::int32_t>(maxIters, EXACT_STEPS);
    renderFrameOpenCL();
    const auto expected =
        cpu_picture::picture(viewInForce(), bDoublePrecision, badAssColourPalette.get());
    const bool same = device_reference::differingPixels(drawnPicture(), expected) == 0;
    std::cout << (same ? "same " : "different ") << row.label
              << (bDoublePrecision ? " in double" : " in single") << std::endl;
}

void exact() {
    inBothPrecisions([] {
        for (const auto& row : test_support::catalogueRows()) {
            if (cpu_picture::isExact(row.type)) compareWithTheCpu(row);
        }
    });
}

void carryOut(const std::string& word, Words& words);

void repeatCommand(Words& words) {
    const int times = words.number();
    const std::size_t start = words.next;
    for (int i = 0; i < times; ++i) {
        words.next = start;
        carryOut(words.take(), words);
    }
}

void carryOut(const std::string& word, Words& words) {
    static const std::map<std::string, std::function<void(Words&)>> commands = {
        {"list", [](Words&) { listDevices(true); }},
        {"device", [](Words& w) { nCudaDevice = w.number(); }},
        {"single", [](Words&) { bDoublePrecision = false; }},
        {"double", [](Words&) { bDoublePrecision = true; }},
        {"size", [](Words& w) { setSize(w.take()); }},
        {"type", [](Words& w) { currentFractalType = w.number(); }},
        {"iters", [](Words& w) { maxIters = w.number(); }},
        {"maxsize", [](Words& w) { maxSize = std::atof(w.take().c_str()); }},
        {"view", [](Words& w) { setView(w.take()); }},
        {"c", [](Words& w) { setConstant(w.take()); }},
        {"palette", [](Words& w) { setPaletteType(w.number()); }},
        {"texts", [](Words&) { fillTexts(); }},
        {"setup", [](Words&) { setupOpenCL(""); }},
        {"text", [](Words& w) { setUpFromFile(w.take()); }},
        {"frame", [](Words&) { renderFrameOpenCL(); }},
        {"upload", [](Words&) { uploadPalette(); }},
        {"precision", [](Words&) { switchPrecision(); }},
        {"switch", [](Words& w) { switchDevice(w.number()); }},
        {"repeat", repeatCommand},
        {"release", [](Words&) { release_opencl_resource(bDoublePrecision); }},
        {"save", [](Words& w) { savePicture(w.take()); }},
        {"report", [](Words&) { report(); }},
        {"exact", [](Words&) { exact(); }},
    };
    const auto command = commands.find(word);
    if (command == commands.end()) {
        std::cerr << "opencl_driver: no such command: " << word << std::endl;
        std::exit(64);
    }
    command->second(words);
}

}  // namespace

int main(int argc, char** argv) {
    tempColours = makeArray<unsigned char>(PALETTE_BYTES);
    badAssColourPalette = makeArray<unsigned char>(PALETTE_BYTES);
    setPaletteType(1);
    setSize("256x256");
    currentFractalType = 0;
    xMin = -2, xMax = 2, yMin = -1.5, yMax = 1.5;
    listDevices(false);
    nCudaDevice = 0;

    Words words;
    words.all.assign(argv + 1, argv + argc);
    while (words.next < words.all.size()) carryOut(words.take(), words);
    return 0;
}
