// The OpenCL back-end: devices, and one device at a time set up, launched and released. This module
// owns every OpenCL handle of the program. All functions: GLUT thread (main thread) only. A failure
// after a device has been chosen prints its message and ends the process with its status.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "backends/opencl.h"

// All devices found, in discovery order. Written at start-up, read by start-up, menus and set-up;
// main thread only.
extern std::vector<cl_device_id> devices;

// Per device: its name, ":" and its version. Written at start-up; main thread only.
extern std::vector<std::string> device_names;

// Per device: can run double precision. Written at start-up; main thread only.
extern std::vector<bool> fp64_support;

// Per device: its CL_DEVICE_TYPE. Written at start-up; main thread only.
extern std::vector<std::uint64_t> types;

// Index of the device to use, -1 while none is chosen. Written by start-up and the device menu,
// read by set-up and menus; main thread only.
extern std::int32_t nCudaDevice;

// Double- and single-precision program texts in use. Written by start-up and the menu handlers,
// read by setupOpenCL; main thread only.
extern std::string kernel_string, kernel_single_string;

// A context and its objects exist. Written by set-up and release; main thread only.
extern bool bOpenCLInitialised;

// Appends every CPU, GPU and accelerator device of every platform to the four parallel lists and,
// when print is set, prints one line for each. Platforms or devices that fail their queries are
// left out or listed with what is there.
void get_list_of_devices(std::vector<cl_device_id>& devices, std::vector<std::string>& device_names,
                         std::vector<bool>& fp64_support, std::vector<std::uint64_t>& types,
                         bool print);

// The program text for bDoublePrecision.
std::string load_kernel();

// Sets up device nCudaDevice for the precision in force from `source`, or from the stored text of
// that precision when source is empty.
void setupOpenCL(std::string source);

// The set-up steps proper; the integer is not used.
void setup_opencl_kernel(std::string source, cl_device_id device, int);

// Creates the device image from `buffer` and the device palette from badAssColourPalette.
void createBuffers();

// Releases a buffer if it is set and clears the handle.
void freeBuffer(cl_mem& memory);

// Releases all that setup_opencl_kernel made; doublePrecision is the precision in force then. A
// second call does nothing.
void release_opencl_resource(bool doublePrecision);

// Renders the live view on the device and reads the picture back into `buffer`.
void renderFrameOpenCL();

// Writes badAssColourPalette into the device's palette buffer, blocking; its status is not checked.
void uploadPalette();
