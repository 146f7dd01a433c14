#include "app/start_up.h"

#include <GL/freeglut.h>
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <thread>

#include "GlutMenu/GlutKeys.h"
#include "app/signals.h"
#include "backends/image.h"
#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/worker_pool.h"
#include "commands/menu_tree.h"
#include "explorer/catalogue.h"
#include "explorer/frac_file.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/platform_x11.h"
#include "explorer/window_icon.h"
#include "explorer/window_state.h"
#include "explorer/window_title.h"

namespace {

// What the command line said beyond the globals it sets.
struct Options {
    bool precisionChosen = false;
    std::string benchmarkFile;
};

using ExitStatus = std::optional<int>;  // empty: carry on

// Fills the device lists anew; asking again must not list a device twice.
void findDevices(bool print) {
    devices.clear();
    device_names.clear();
    fp64_support.clear();
    types.clear();
    get_list_of_devices(devices, device_names, fp64_support, types, print);
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

bool equalsIgnoringCase(const std::string& text, const char* other) {
    return strcasecmp(text.c_str(), other) == 0;
}

const char* precisionName() {
    return bDoublePrecision ? "Double precision" : "Single precision";
}

void chooseCpu(const std::string& argument) {
    bCPU = true;
    numCPUThreads = std::atoi(argument.c_str() + 5);
    if (numCPUThreads < 1) numCPUThreads = max_threads;
    std::cout << "CPU Threads: " << numCPUThreads << std::endl;
}

void chooseDevice(const std::string& argument) {
    findDevices(false);
    nCudaDevice = std::atoi(argument.c_str() + 8);
    if (nCudaDevice >= 0 && nCudaDevice < static_cast<std::int32_t>(devices.size())) return;
    std::cout << "Invalid device Id. Run this app with the --list option to see available devices"
              << std::endl;
    std::exit(1);
}

// Options that carry a value are found anywhere in an argument, but their value is read at a fixed
// place; --list and --help must be the whole argument. The first test that matches decides.
ExitStatus readArgument(const std::string& argument, Options& options) {
    if (contains(argument, "--cpu")) {
        chooseCpu(argument);
    } else if (contains(argument, "--device")) {
        chooseDevice(argument);
    } else if (equalsIgnoringCase(argument, "--list")) {
        findDevices(true);
        return 0;
    } else if (equalsIgnoringCase(argument, "--help")) {
        listOptions();
        return 0;
    } else if (contains(argument, "--bench:")) {
        bBench = true;
        options.benchmarkFile = argument.substr(8);
    } else if (contains(argument, "--single")) {
        bDoublePrecision = false;
        options.precisionChosen = true;
    } else if (contains(argument, "--double")) {
        bDoublePrecision = true;
        options.precisionChosen = true;
    }
    return {};
}

ExitStatus readCommandLine(int argc, char** argv, Options& options) {
    for (int i = 0; i < argc; ++i) {
        if (const ExitStatus status = readArgument(argv[i], options)) return status;
    }
    return {};
}

// The lowest-numbered device that can do what was asked for, or device 0.
std::int32_t defaultDevice() {
    if (!bDoublePrecision) return 0;
    const auto found = std::find(fp64_support.begin(), fp64_support.end(), true);
    return found == fp64_support.end() ? 0
                                       : static_cast<std::int32_t>(found - fp64_support.begin());
}

ExitStatus chooseRenderer() {
    if (devices.empty()) {
        std::cout << "No OpenCL devices are available. Reverting to CPU rendering" << std::endl;
        bCPU = true;
        numCPUThreads = max_threads;
    } else if (bCPU) {
        return {};
    } else if (nCudaDevice == -1) {
        nCudaDevice = defaultDevice();
    } else if (nCudaDevice >= static_cast<std::int32_t>(devices.size())) {
        std::cout << "Available devices are: " << std::endl;
        findDevices(true);
        std::cout << "OpenCL Device " << nCudaDevice
                  << " does not exist. Run with --list parameter to see list of available devices"
                  << std::endl;
        return 1;
    }
    return {};
}

// Settles the precision on a device: single unless double was asked for, whatever the device can
// do.
ExitStatus choosePrecision(bool chosen) {
    const bool available = fp64_support[static_cast<std::size_t>(nCudaDevice)];
    if (bDoublePrecision && !available) {
        std::cout << "Double precision has been forced, but the the GPU does not support it"
                  << std::endl;
        return 1;
    }
    if (!bDoublePrecision) {
        std::cout << (!available ? "Double Precision is not Available"
                      : chosen   ? "Forcing single precision, double is available"
                                 : "Double Precision Available")
                  << std::endl;
    }
    kernel_string = load_kernel();
    kernel_single_string = load_kernel();
    return {};
}

void printRenderer() {
    if (bCPU) {
        std::cout << "Running on CPU with " << numCPUThreads << " threads in ";
    } else {
        std::cout << "Running on device: " << device_names[static_cast<std::size_t>(nCudaDevice)]
                  << " in ";
    }
    std::cout << precisionName() << std::endl;
}

ExitStatus allocateImage() {
    try {
        badAssColourPalette = makeArray<unsigned char>(PALETTE_BYTES);
        buffer = makeArray<unsigned char>(imageBytes());
        reserveTiles();
    } catch (const std::bad_alloc&) {
        std::cout << "No memory for the picture of " << winX << " x " << winY << " pixels"
                  << std::endl;
        return 1;
    }
    return {};
}

void openWindow() {
    screen_width = static_cast<std::int32_t>(0.9 * glutGet(GLUT_SCREEN_WIDTH));
    screen_height = static_cast<std::int32_t>(0.9 * glutGet(GLUT_SCREEN_HEIGHT));
    glutInitWindowSize(screen_width, screen_height);
    glutInitDisplayMode(GLUT_RGBA | GLUT_DOUBLE | GLUT_DEPTH);
    title = get_title();
    glutCreateWindow(title.c_str());
    setWindowClass();
    if (hasXWindow()) setWindowIcon(drawWindowIcons());
    GlutMenu::EnableShiftTab();
}

void registerCallbacks() {
    glutDisplayFunc(renderScene);
    glutReshapeFunc(reshape);
    glutKeyboardFunc(keyboard);
    glutSpecialFunc(special_keyboard);
    glutMouseFunc(mouse);
    glutMotionFunc(nullptr);
    watchWindow();
    if (!bBench) return;
    totalTime = 0;
    cycleDir = 1;
    glutIdleFunc(idle);
}

void enterMainLoop() {
    stopMainLoopOnSignals();
    try {
        glutMainLoop();
    } catch (unsigned) {
        // Thrown to leave the loop, not to report anything.
    }
    leaveMainLoopAlone();
    if (!bCPU) release_opencl_resource(bDoublePrecision);
}

// What follows the start of the workers; answers the exit status.
int openAndRun(int argc, char** argv) {
    nCudaDevice = -1;
    numCPUThreads = max_threads;
    findDevices(false);

    Options options;
    if (const ExitStatus status = readCommandLine(argc, argv, options)) return *status;
    if (const ExitStatus status = chooseRenderer()) return *status;

    glutInit(&argc, argv);
    // Closing the window ends the loop, not the process, so that main shuts down in order.
    glutSetOption(GLUT_ACTION_ON_WINDOW_CLOSE, GLUT_ACTION_GLUTMAINLOOP_RETURNS);
    tempColours = makeArray<unsigned char>(PALETTE_BYTES);
    if (!bCPU) {
        if (const ExitStatus status = choosePrecision(options.precisionChosen)) return *status;
    }
    printRenderer();
    if (const ExitStatus status = allocateImage()) return *status;
    openWindow();
    if (bBench) {
        LoadData(options.benchmarkFile);
    } else {
        CreateNewFractal(0, 0);
    }
    createMenu();
    registerCallbacks();
    enterMainLoop();
    return 0;
}

}  // namespace

void listOptions() {
    std::cout << "CL Tessary V" << 1 << "." << 0 << std::endl;
    std::cout << std::endl;
    for (const char* line :
         {"--cpuN      forces CPU mode with N threads. N should ideally be set to the number of "
          "CPU "
          "cores",
          "--deviceN   forces app to run on OpenCL device N",
          "--list      lists available OpenCL devices",
          "--single    forces single precision (default for GPUs without double precision)",
          "--double    forces double precision (default for CPU and GPU with double precision)",
          "--bench:filename runs a benchmark of the fractal set specified in filename",
          "--help      displays this information"}) {
        std::cout << line << std::endl;
    }
}

int runTessary(int argc, char** argv) {
    winX = roundImageSide(winX);
    winY = roundImageSide(winY);
    max_threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    std::cout << "Maximum CPU threads: " << max_threads << std::endl;
    const CThreadShutdown shutdown;
    try {
        startWorkers(max_threads);
        return openAndRun(argc, argv);
    } catch (const std::bad_alloc&) {
        leaveMainLoopAlone();
        std::cout << "Out of memory" << std::endl;
        return 1;
    }
}
