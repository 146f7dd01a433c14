// The program from its first line to the main loop and back, without a window. Every run is a
// process of its own; GLUT's calls show among the printed lines.
#include "app/start_up.h"

#include <GL/freeglut.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "app/standard_streams.h"
#include "backends/image.h"
#include "backends/opencl_backend.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "commands/menu_tree.h"
#include "explorer/frac_file.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "tests/app/failing_new.h"
#include "tests/support/device_stand_in.h"
#include "tests/support/glut_stand_in.h"
#include "tests/support/sanitized.h"
#include "tests/support/stdout_capture.h"

void createMenu() {
    std::cout << "createMenu()" << std::endl;
}
void LoadData(std::string path) {
    std::cout << "LoadData(" << path << ")" << std::endl;
}

namespace {

using glut_stand_in::call;
using glut_stand_in::glut;
using testing::AllOf;
using testing::ContainsRegex;
using testing::Eq;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Arguments = std::vector<std::string>;
using Devices = std::vector<bool>;

// The fact that is asked for by the test, printed by the main loop.
void printFact(const char* name, bool holds) {
    std::cout << name << (holds ? ": yes" : ": no") << std::endl;
}

void printState() {
    printFact("idle registered", glut.idle == idle);
    printFact("motion registered", glut.motion != nullptr);
    printFact("callbacks registered", glut.display == renderScene && glut.reshape == reshape &&
                                          glut.keyboard == keyboard &&
                                          glut.special == special_keyboard && glut.mouse == mouse);
    printFact("storage allocated", tempColours && badAssColourPalette && buffer);
    printFact("workers running",
              vThreads.size() == static_cast<std::size_t>(max_threads) && !shutdown_threads);
    printFact("device texts filled", !kernel_string.empty());
    printFact("device texts equal", kernel_string == kernel_single_string);
    printFact("cpu", bCPU);
    printFact("double", bDoublePrecision);
    printFact("benchmark", bBench && cycleDir == 1 && totalTime == 0);
    std::cout << "threads " << numCPUThreads << " device " << nCudaDevice << " size " << winX << 'x'
              << winY << " screen " << screen_width << 'x' << screen_height << " entries "
              << fractals.size() << std::endl;
}

// How many allocations of the program succeed before one fails.
long allocationsBeforeOneFails = NONE_FAILS;

// Runs the program with these arguments after its path and ends the process with its status.
[[noreturn]] void runProgram(Arguments arguments, Devices devicesThere,
                             std::function<void()> loop = printState,
                             const char* path = "/usr/bin/tessary") {
    test_support::sendStdoutToStderr();
    standInDevices = devicesThere;
    glut.echo = true;
    glut.mainLoop = loop;
    onDeviceCall = [also = onDeviceCall](const std::string& name) {
        std::cout << name << std::endl;
        if (also) also(name);
    };
    arguments.insert(arguments.begin(), path);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    totalTime = 77;
    const int count = static_cast<int>(pointers.size());
    allocationsUntilOneFails = allocationsBeforeOneFails;
    const int status = runTessary(count, pointers.data());
    allocationsUntilOneFails = NONE_FAILS;
    std::exit(status);
}

const Devices NONE{}, SINGLE{false}, DOUBLE{true};

std::string hardwareThreads() {
    const unsigned count = std::thread::hardware_concurrency();
    return std::to_string(count == 0 ? 1 : count);
}

std::string shutdownLines() {
    std::string lines = "Releasing OpenCL resources ...[DONE]\nShutting down threads\n";
    for (int i = 0; i < std::stoi(hardwareThreads()); ++i) {
        lines += "Waiting for thread " + std::to_string(i) + "\n";
    }
    return lines + "Thread shutdown complete\n";
}

class StartUpTest : public testing::Test {
  protected:
    StartUpTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

const auto noWindow = Not(HasSubstr("glut"));

TEST_F(StartUpTest, OpensOnTheMandelbrotViewInAFixedOrder) {
    const std::string first = "Maximum CPU threads: " + hardwareThreads() +
                              "\n"
                              "No OpenCL devices are available. Reverting to CPU rendering\n"
                              "glutInit()\n";
    const std::string window = "Running on CPU with " + hardwareThreads() +
                               " threads in Single precision\n"
                               "glutInitWindowSize(1152, 900)\n" +
                               call("glutInitDisplayMode", GLUT_RGBA | GLUT_DOUBLE | GLUT_DEPTH) +
                               "\n"
                               "glutCreateWindow(Tessary with OpenCL V1.0 :)\n"
                               "Mandelbrot Z-range:(-2.000000, -1.500000)-(2.000000, 1.500000), "
                               "c = (0.000000,0.000000), maxIters = 768, maxSize = 4.000000\r\n"
                               "glutSetWindowTitle(Tessary with OpenCL V1.0 : Mandelbrot)\n"
                               "createMenu()\n"
                               "glutDisplayFunc(set)\n"
                               "glutReshapeFunc(set)\n"
                               "glutKeyboardFunc(set)\n"
                               "glutSpecialFunc(set)\n"
                               "glutMouseFunc(set)\n"
                               "glutMotionFunc(null)\n"
                               "glutMainLoop()\n";
    EXPECT_EXIT(runProgram({}, NONE), ExitedWithCode(0),
                AllOf(StartsWith(first), HasSubstr(window)));
}

TEST_F(StartUpTest, ADeviceIsSettledAfterGlutAndBeforeTheWindowAndSetUpAtTheFirstFrame) {
    const std::string first = "Maximum CPU threads: " + hardwareThreads() + "\nglutInit()\n";
    EXPECT_EXIT(runProgram({}, DOUBLE, [] { glut.display(); }), ExitedWithCode(0),
                AllOf(StartsWith(first),
                      HasSubstr("\nDouble Precision Available\n"
                                "Running on device: Device 0:OpenCL 1.2 in Single precision\n"
                                "glutInitWindowSize(1152, 900)\n"),
                      ContainsRegex("createMenu.*glutMainLoop.*OpenCL single precison on Device "
                                    "0:OpenCL 1.2\nclCreateContext\n")));
}

TEST_F(StartUpTest, TheMainLoopFindsEverythingInPlace) {
    EXPECT_EXIT(
        runProgram({}, NONE), ExitedWithCode(0),
        AllOf(HasSubstr("callbacks registered: yes\n"), HasSubstr("motion registered: no\n"),
              HasSubstr("idle registered: no\n"), HasSubstr("storage allocated: yes\n"),
              HasSubstr("workers running: yes\n"), HasSubstr("benchmark: no\n"),
              HasSubstr("size 2048x2048 screen 1152x900 entries 1\n")));
}

TEST_F(StartUpTest, TheShutdownFollowsTheMainLoop) {
    EXPECT_EXIT(runProgram({}, NONE, [] {}), ExitedWithCode(0),
                HasSubstr("glutMainLoop()\n" + shutdownLines()));
}

TEST_F(StartUpTest, WhatTheDeviceHoldsIsReleasedBeforeTheShutdown) {
    const std::string released =
        "clFlush\nclFinish\nclReleaseKernel\nclReleaseProgram\nclReleaseMemObject\n"
        "clReleaseMemObject\nclReleaseCommandQueue\nclReleaseContext\n";
    for (const Arguments& arguments : {Arguments{"--single"}, Arguments{"--double"}}) {
        EXPECT_EXIT(runProgram(arguments, DOUBLE, [] { glut.display(); }), ExitedWithCode(0),
                    HasSubstr("glutSwapBuffers()\n" + released + shutdownLines()));
    }
}

TEST_F(StartUpTest, NoSignalTouchesGlutAfterTheMainLoop) {
    EXPECT_EXIT(
        {
            onDeviceCall = [](const std::string& name) {
                if (name == "clReleaseContext") raise(SIGTERM);
            };
            runProgram({}, DOUBLE, [] { glut.display(); });
        },
        ExitedWithCode(0),
        AllOf(HasSubstr("clReleaseContext\n" + shutdownLines()),
              Not(HasSubstr("glutLeaveMainLoop"))));
}

TEST_F(StartUpTest, TheSizeOfThePictureIsRoundedUpToAMultipleOf8) {
    EXPECT_EXIT(
        {
            winX = 1001;
            winY = 1009;
            runProgram({}, NONE);
        },
        ExitedWithCode(0), HasSubstr("size 1008x1016 screen"));
}

TEST_F(StartUpTest, APictureThatFindsNoMemoryIsOneLineAndStatusOne) {
    if (SANITIZED) GTEST_SKIP() << "a sanitizer ends a process that asks for so much";
    EXPECT_EXIT(
        {
            winX = winY = std::int64_t{1} << 28;
            runProgram({}, NONE);
        },
        ExitedWithCode(1),
        AllOf(HasSubstr("No memory for the picture of 268435456 x 268435456 pixels\n" +
                        shutdownLines()),
              Not(HasSubstr("glutCreateWindow"))));
}

// 0 when descriptors 0 to 2 are the null device and take what is written.
int nullDeviceIsMissing() {
    struct stat nullDevice = {}, there = {};
    stat("/dev/null", &nullDevice);
    for (const int stream : {0, 1, 2}) {
        if (fstat(stream, &there) != 0 || there.st_rdev != nullDevice.st_rdev) return 1;
    }
    return write(1, "x", 1) == 1 && write(2, "x", 1) == 1 ? 0 : 1;
}

TEST_F(StartUpTest, ClosedStandardStreamsAreOpenedOnTheNullDevice) {
    EXPECT_EXIT(
        {
            close(0);
            close(1);
            close(2);
            openClosedStandardStreams();
            std::exit(nullDeviceIsMissing());
        },
        ExitedWithCode(0), "");
}

TEST_F(StartUpTest, StandardStreamsThatAreOpenStayWhatTheyAre) {
    EXPECT_EXIT(
        {
            close(0);
            openClosedStandardStreams();
            std::cerr << "still the error stream" << std::endl;
            std::exit(0);
        },
        ExitedWithCode(0), "still the error stream");
}

TEST_F(StartUpTest, AnUnsignedExceptionEndsTheLoopQuietly) {
    EXPECT_EXIT(runProgram({}, NONE, [] { throw 5u; }), ExitedWithCode(0),
                HasSubstr("glutMainLoop()\n" + shutdownLines()));
}

TEST_F(StartUpTest, MissingMemoryInACallbackIsOneLineAndStatusOne) {
    EXPECT_EXIT(runProgram({}, NONE, [] { throw std::bad_alloc(); }), ExitedWithCode(1),
                HasSubstr("glutMainLoop()\nOut of memory\n" + shutdownLines()));
}

// The first allocations are the list of the workers, the handle and the body of the first of them.
TEST_F(StartUpTest, MissingMemoryForTheWorkersIsOneLineAndStatusOneToo) {
    if (SANITIZED) GTEST_SKIP() << "the sanitizer's operator new does not fail when wanted";
    for (const long before : {0, 1, 2}) {
        EXPECT_EXIT(
            {
                allocationsBeforeOneFails = before;
                runProgram({}, NONE);
            },
            ExitedWithCode(1),
            Eq("Maximum CPU threads: " + hardwareThreads() +
               "\nOut of memory\nReleasing OpenCL resources ...[DONE]\n"
               "Shutting down threads\nThread shutdown complete\n"))
            << before;
    }
}

TEST_F(StartUpTest, ExitFromACallbackKeepsItsStatus) {
    EXPECT_EXIT(runProgram({}, NONE, [] { std::exit(6); }), ExitedWithCode(6),
                Not(HasSubstr("terminate")));
}

TEST_F(StartUpTest, WithoutDevicesTheThreadCountOfTheCommandLineIsReplaced) {
    const std::string given = std::to_string(std::stoi(hardwareThreads()) + 1);
    EXPECT_EXIT(runProgram({"--cpu" + given}, NONE), ExitedWithCode(0),
                AllOf(HasSubstr("CPU Threads: " + given + "\nNo OpenCL devices"),
                      HasSubstr("Running on CPU with " + hardwareThreads() + " threads")));
}

TEST_F(StartUpTest, CpuTakesItsThreadCount) {
    EXPECT_EXIT(runProgram({"--cpu4"}, DOUBLE), ExitedWithCode(0),
                AllOf(HasSubstr("CPU Threads: 4\n"),
                      HasSubstr("Running on CPU with 4 threads in Single precision\n"),
                      HasSubstr("cpu: yes\n"), HasSubstr("device texts filled: no\n")));
}

TEST_F(StartUpTest, ACpuCountBelowOneIsTheHardwares) {
    for (const char* option : {"--cpu0", "--cpu", "--cpu-3", "--cpux"}) {
        EXPECT_EXIT(runProgram({option}, DOUBLE), ExitedWithCode(0),
                    HasSubstr("CPU Threads: " + hardwareThreads() + "\n"));
    }
}

struct TypedCount {
    std::string typed;
    std::string threads;
};

TEST_F(StartUpTest, ACpuCountIsReadAsTheCLibraryReadsIt) {
    const std::string all = hardwareThreads();
    for (const TypedCount& row :
         std::vector<TypedCount>{{" 7", "7"},
                                 {"\t7", "7"},
                                 {"+7", "7"},
                                 {"007", "7"},
                                 {"7.9", "7"},
                                 {"7 8", "7"},
                                 {"0x7", all},
                                 {"+ 7", all},
                                 {"2147483647", "2147483647"},
                                 {"2147483648", all},  // wraps to a negative number
                                 {"99999999999999999999", all}}) {
        EXPECT_EXIT(runProgram({"--cpu" + row.typed}, DOUBLE, [] {}), ExitedWithCode(0),
                    HasSubstr("CPU Threads: " + row.threads + "\n"))
            << row.typed;
    }
}

TEST_F(StartUpTest, TheCpuCountIsReadAtItsFixedPlace) {
    // The sixth character of "x--cpu4" is the "u".
    EXPECT_EXIT(runProgram({"x--cpu4"}, DOUBLE), ExitedWithCode(0),
                HasSubstr("CPU Threads: " + hardwareThreads() + "\n"));
}

TEST_F(StartUpTest, TheFirstTestThatMatchesDecides) {
    EXPECT_EXIT(runProgram({"--cpu3--device9--double"}, DOUBLE), ExitedWithCode(0),
                HasSubstr("Running on CPU with 3 threads in Single precision\n"));
}

TEST_F(StartUpTest, TheProgramsOwnPathIsReadLikeAnArgument) {
    EXPECT_EXIT(runProgram({}, NONE, printState, "/opt/--double/tessary"), ExitedWithCode(0),
                HasSubstr("in Double precision\n"));
}

TEST_F(StartUpTest, UnknownArgumentsAreIgnored) {
    EXPECT_EXIT(
        runProgram({"", "-x", "--nothing", "file.frac", "--list=1", "x--list", "x--help"}, NONE),
        ExitedWithCode(0), HasSubstr("glutMainLoop()\n"));
}

TEST_F(StartUpTest, ListEndsBeforeAnyWindow) {
    for (const char* option : {"--list", "--LIST", "--List"}) {
        EXPECT_EXIT(runProgram({option}, DOUBLE), ExitedWithCode(0),
                    AllOf(noWindow, HasSubstr("Device 0"), HasSubstr(shutdownLines())));
    }
}

TEST_F(StartUpTest, HelpListsTheOptionsAndEndsBeforeAnyWindow) {
    const std::string help =
        "CL Tessary V1.0\n"
        "\n"
        "--cpuN      forces CPU mode with N threads. N should ideally be set to the number of CPU "
        "cores\n"
        "--deviceN   forces app to run on OpenCL device N\n"
        "--list      lists available OpenCL devices\n"
        "--single    forces single precision (default for GPUs without double precision)\n"
        "--double    forces double precision (default for CPU and GPU with double precision)\n"
        "--bench:filename runs a benchmark of the fractal set specified in filename\n"
        "--help      displays this information\n";
    for (const char* option : {"--help", "--Help"}) {
        EXPECT_EXIT(
            runProgram({option}, DOUBLE), ExitedWithCode(0),
            Eq("Maximum CPU threads: " + hardwareThreads() + "\n" + help + shutdownLines()));
    }
}

TEST_F(StartUpTest, ADeviceThatIsNotThereEndsWithStatusOne) {
    for (const char* option : {"--device7", "--device3", "--device-1"}) {
        EXPECT_EXIT(runProgram({option}, {true, true, true}), ExitedWithCode(1),
                    AllOf(noWindow, HasSubstr("Invalid device Id. Run this app with the --list "
                                              "option to see available devices\n")));
    }
}

TEST_F(StartUpTest, WithoutDevicesEveryDeviceNumberIsInvalid) {
    EXPECT_EXIT(runProgram({"--device0"}, NONE), ExitedWithCode(1),
                HasSubstr("Invalid device Id."));
}

TEST_F(StartUpTest, ADeviceIsChosenByItsNumber) {
    EXPECT_EXIT(runProgram({"--device1"}, {true, true, true}), ExitedWithCode(0),
                AllOf(HasSubstr("Running on device: Device 1"), HasSubstr("cpu: no\n")));
}

TEST_F(StartUpTest, ADeviceRunsInSinglePrecisionThoughItCanDoDouble) {
    EXPECT_EXIT(runProgram({}, DOUBLE), ExitedWithCode(0),
                AllOf(HasSubstr("Double Precision Available\nRunning on device: Device 0"),
                      HasSubstr(" in Single precision\n"), HasSubstr("double: no\n"),
                      HasSubstr("device texts filled: yes\ndevice texts equal: yes\n")));
}

TEST_F(StartUpTest, SingleOnADoubleDeviceIsSaidToBeForced) {
    EXPECT_EXIT(
        runProgram({"--single"}, DOUBLE), ExitedWithCode(0),
        AllOf(HasSubstr("Forcing single precision, double is available\nRunning on device:"),
              HasSubstr("double: no\n")));
}

TEST_F(StartUpTest, DoubleOnADoubleDevicePrintsNothingOfItsOwn) {
    EXPECT_EXIT(runProgram({"--double"}, DOUBLE), ExitedWithCode(0),
                AllOf(Not(HasSubstr("vailable")), HasSubstr(" in Double precision\n"),
                      HasSubstr("double: yes\n"), HasSubstr("device texts equal: yes\n")));
}

TEST_F(StartUpTest, ADeviceWithoutDoubleSaysSo) {
    for (const Arguments& arguments : {Arguments{}, Arguments{"--single"}}) {
        EXPECT_EXIT(runProgram(arguments, SINGLE), ExitedWithCode(0),
                    AllOf(HasSubstr("Double Precision is not Available\nRunning on device:"),
                          HasSubstr(" in Single precision\n")));
    }
}

TEST_F(StartUpTest, DoubleOnADeviceWithoutItEndsWithStatusOneBeforeTheWindow) {
    EXPECT_EXIT(
        runProgram({"--double"}, SINGLE), ExitedWithCode(1),
        AllOf(HasSubstr("Double precision has been forced, but the the GPU does not support "
                        "it\n" +
                        shutdownLines()),
              Not(HasSubstr("glutCreateWindow"))));
}

TEST_F(StartUpTest, DoubleTakesTheFirstDeviceThatHasIt) {
    EXPECT_EXIT(runProgram({"--double"}, {false, true, true}), ExitedWithCode(0),
                HasSubstr("Running on device: Device 1"));
}

TEST_F(StartUpTest, DoubleTakesDeviceZeroWhereNoneHasIt) {
    const Devices neither{false, false};
    EXPECT_EXIT(
        {
            std::atexit([] { std::cout << "chosen: " << nCudaDevice << std::endl; });
            runProgram({"--double"}, neither);
        },
        ExitedWithCode(1), AllOf(HasSubstr("but the the GPU"), HasSubstr("chosen: 0\n")));
}

TEST_F(StartUpTest, TheDevicesAreAskedForAgainWhenOneIsChosen) {
    onDeviceList = [] { standInDevices = {true, true}; };  // the second is plugged in late
    EXPECT_EXIT(runProgram({"--device1"}, {true}), ExitedWithCode(0),
                HasSubstr("Running on device: Device 1"));
}

TEST_F(StartUpTest, DoubleOnAChosenDeviceWithoutItIsRefused) {
    EXPECT_EXIT(runProgram({"--double", "--device0"}, {false, true}), ExitedWithCode(1),
                HasSubstr("but the the GPU"));
}

TEST_F(StartUpTest, WithoutAnOptionTheFirstDeviceIsTaken) {
    EXPECT_EXIT(runProgram({}, {false, true}), ExitedWithCode(0),
                HasSubstr("Running on device: Device 0"));
}

TEST_F(StartUpTest, DoubleOnTheCpuNeedsNoDevice) {
    EXPECT_EXIT(runProgram({"--double", "--cpu2"}, SINGLE), ExitedWithCode(0),
                AllOf(HasSubstr("Running on CPU with 2 threads in Double precision\n"),
                      Not(HasSubstr("vailable"))));
}

TEST_F(StartUpTest, TheLastPrecisionOptionCounts) {
    EXPECT_EXIT(runProgram({"--double", "--single"}, NONE), ExitedWithCode(0),
                HasSubstr("in Single precision\n"));
    EXPECT_EXIT(runProgram({"--single", "x--doublex"}, NONE), ExitedWithCode(0),
                HasSubstr("in Double precision\n"));
}

TEST_F(StartUpTest, TheBenchmarkLoadsItsFileAndCycles) {
    EXPECT_EXIT(runProgram({"--bench:a/b c.frac"}, NONE), ExitedWithCode(0),
                AllOf(HasSubstr("glutCreateWindow(Tessary with OpenCL V1.0 :)\n"
                                "LoadData(a/b c.frac)\ncreateMenu()\n"),
                      HasSubstr("glutMotionFunc(null)\nglutIdleFunc(set)\nglutMainLoop()\n"),
                      HasSubstr("benchmark: yes\n"), HasSubstr("idle registered: yes\n"),
                      HasSubstr("entries 0\n")));
}

TEST_F(StartUpTest, ALaterBenchmarkReplacesTheFile) {
    EXPECT_EXIT(runProgram({"--bench:one", "--bench:two"}, NONE), ExitedWithCode(0),
                AllOf(HasSubstr("LoadData(two)\n"), Not(HasSubstr("LoadData(one)"))));
}

TEST_F(StartUpTest, TheBenchmarkFileIsReadAtItsFixedPlace) {
    EXPECT_EXIT(runProgram({"xy--bench:file"}, NONE), ExitedWithCode(0),
                HasSubstr("LoadData(h:file)\n"));
    EXPECT_EXIT(runProgram({"--bench:"}, NONE), ExitedWithCode(0), HasSubstr("LoadData()\n"));
}

}  // namespace
