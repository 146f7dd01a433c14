#include "backends/opencl_backend.h"

#include <cstdlib>
#include <iostream>
#include <utility>

#include "backends/image.h"
#include "backends/kernels/embedded.h"
#include "backends/opencl_state.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"

std::int32_t nCudaDevice = -1;
std::string kernel_string, kernel_single_string;
bool bOpenCLInitialised = false;

cl_context context = nullptr;
cl_command_queue command_queue = nullptr;
cl_mem memobj[2] = {nullptr, nullptr};
cl_program program = nullptr;
cl_kernel kernels[2] = {nullptr, nullptr};
unsigned char running_kernel = 1;
cl_int ret = CL_SUCCESS;
std::int32_t max_items = 16;

namespace {

constexpr unsigned char DOUBLE_KERNEL = 0, SINGLE_KERNEL = 1;

// Ends the process when the last call failed: the message, then what `explain` prints.
template <class Explain>
void check(const char* message, int exitStatus, Explain&& explain) {
    if (ret == CL_SUCCESS) return;
    std::cout << message << std::endl;
    explain();
    std::exit(exitStatus);
}

void check(const char* message, int exitStatus) {
    check(message, exitStatus, [] {});
}

void printErrorCode() {
    std::cout << "Error code " << ret << std::endl;
}

// Takes no checks: the process is about to end, and a log that cannot be read is an empty one.
void printBuildLog(cl_device_id device) {
    std::size_t size = 0;
    clGetProgramBuildInfo(program, device, CL_PROGRAM_BUILD_LOG, 0, nullptr, &size);
    std::string log(size + 1, '\0');
    clGetProgramBuildInfo(program, device, CL_PROGRAM_BUILD_LOG, size, log.data(), nullptr);
    log.resize(log.find('\0'));
    if (size == 0) log = "Build log is NULL";
    std::cout << log;
    if (log.empty() || log.back() != '\n') std::cout << '\n';
    std::cout.flush();
}

// The device in use; null when nCudaDevice names none, which set-up then reports as a context that
// could not be created.
cl_device_id chosenDevice() {
    const auto index = static_cast<std::size_t>(nCudaDevice);
    return nCudaDevice >= 0 && index < devices.size() ? devices[index] : nullptr;
}

std::string chosenDeviceName() {
    const auto index = static_cast<std::size_t>(nCudaDevice);
    return nCudaDevice >= 0 && index < device_names.size() ? device_names[index] : std::string();
}

bool chosenDeviceIsCPU() {
    const auto index = static_cast<std::size_t>(nCudaDevice);
    return nCudaDevice >= 0 && index < types.size() && types[index] == CL_DEVICE_TYPE_CPU;
}

void releaseKernel(unsigned char index) {
    if (kernels[index]) ret = clReleaseKernel(kernels[index]);
    kernels[index] = nullptr;
}

template <class T>
void setArgument(cl_uint index, const T& value) {
    ret = clSetKernelArg(kernels[running_kernel], index, sizeof value, &value);
}

// Arguments 2 to 8, the ones whose size follows the precision.
template <class T>
void setViewArguments() {
    const double view[] = {xMin, xMax, yMin, yMax, cx, cy, maxSize};
    cl_uint index = 2;
    for (const double value : view) setArgument(index++, static_cast<T>(value));
}

// Only the last of the calls is looked at: an argument that failed earlier keeps its old value.
void setKernelArguments() {
    setArgument(0, static_cast<cl_int>(winX));
    setArgument(1, static_cast<cl_int>(winY));
    if (running_kernel == DOUBLE_KERNEL) {
        setViewArguments<cl_double>();
    } else {
        setViewArguments<cl_float>();
    }
    setArgument(9, cl_int{maxIters});
    setArgument(10, memobj[0]);
    setArgument(11, memobj[1]);
    setArgument(12, cl_int{currentFractalType});
    check("Could not set kernel arg", 4);
}

// 16 x 16 is what the kernel's local array holds. A CPU device chooses for itself.
void enqueueKernel() {
    const std::size_t side = max_items == 1 ? 1 : 16;
    const std::size_t local[2] = {side, side};
    const std::size_t global[2] = {static_cast<std::size_t>(winX), static_cast<std::size_t>(winY)};
    ret = clEnqueueNDRangeKernel(command_queue, kernels[running_kernel], 2, nullptr, global,
                                 chosenDeviceIsCPU() ? nullptr : local, 0, nullptr, nullptr);
    check("Could not enqueue task", 5,
          [] { std::cout << ret << " is the error code." << std::endl; });
}

void readImage() {
    ret = clEnqueueReadBuffer(command_queue, memobj[0], CL_TRUE, 0, imageBytes(), buffer.get(), 0,
                              nullptr, nullptr);
    check("Could not read back buffer", 6, [] {
        printErrorCode();
        // The kernel may still run, and what a runtime tears down at exit must not meet it.
        clFinish(command_queue);
    });
}

void createContextAndQueue(cl_device_id device) {
    context = clCreateContext(nullptr, 1, &device, nullptr, nullptr, &ret);
    check("Could not create context", 2);
    command_queue = clCreateCommandQueue(context, device, 0, &ret);
    check("Could not create command queue", 3);
}

void buildProgram(const std::string& source, cl_device_id device) {
    const char* text = source.c_str();
    const std::size_t length = source.size();
    program = clCreateProgramWithSource(context, 1, &text, &length, &ret);
    check("Could not create program from source", 4);
    ret = clBuildProgram(program, 1, &device, nullptr, nullptr, nullptr);
    check("Could not build program", 5, [device] {
        printErrorCode();
        printBuildLog(device);
    });
}

void createKernel() {
    const unsigned char index = bDoublePrecision ? DOUBLE_KERNEL : SINGLE_KERNEL;
    kernels[index] = clCreateKernel(program, "do_work", &ret);
    check("Could not create kernel", 6);
}

}  // namespace

std::string load_kernel() {
    return bDoublePrecision ? kernel_double_mac_embedded : kernel_single_embedded;
}

void setupOpenCL(std::string source) {
    const cl_device_id device = chosenDevice();
    // Four bytes are too few for the answer, so that most runtimes refuse and the hint stays; one
    // that does answer gets its way.
    clGetDeviceInfo(device, CL_DEVICE_MAX_WORK_ITEM_SIZES, sizeof max_items, &max_items, nullptr);
    if (!bDoublePrecision) {
        std::cout << "OpenCL single precison on " << chosenDeviceName() << std::endl;
        running_kernel = SINGLE_KERNEL;
        if (source.empty()) source = kernel_single_string;
    } else {
        std::cout << "OpenCL double precison on " << chosenDeviceName() << std::endl;
        running_kernel = DOUBLE_KERNEL;
        if (source.empty()) source = kernel_string;
    }
    setup_opencl_kernel(std::move(source), device, 0);
}

void setup_opencl_kernel(std::string source, cl_device_id device, int) {
    // A device without double precision is set up twice in a row when it takes over from one that
    // ran in double; the first set of objects must not be lost.
    if (bOpenCLInitialised) release_opencl_resource(kernels[DOUBLE_KERNEL] != nullptr);
    bOpenCLInitialised = true;
    createContextAndQueue(device);
    createBuffers();
    buildProgram(source, device);
    createKernel();
}

void createBuffers() {
    constexpr cl_mem_flags flags = CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR;
    memobj[0] = clCreateBuffer(context, flags, imageBytes(), buffer.get(), &ret);
    memobj[1] = clCreateBuffer(context, flags, PALETTE_BYTES, badAssColourPalette.get(), &ret);
    check("Could not create memory buffer", 7);
}

void freeBuffer(cl_mem& memory) {
    if (memory) ret = clReleaseMemObject(memory);
    memory = nullptr;
}

void release_opencl_resource(bool doublePrecision) {
    if (!bOpenCLInitialised) return;
    ret = clFlush(command_queue);
    ret = clFinish(command_queue);
    releaseKernel(doublePrecision ? DOUBLE_KERNEL : SINGLE_KERNEL);
    // The precision may have been switched while the CPU rendered, and then names the kernel that
    // does not exist.
    releaseKernel(doublePrecision ? SINGLE_KERNEL : DOUBLE_KERNEL);
    ret = clReleaseProgram(std::exchange(program, nullptr));
    freeBuffer(memobj[0]);
    freeBuffer(memobj[1]);
    ret = clReleaseCommandQueue(std::exchange(command_queue, nullptr));
    ret = clReleaseContext(std::exchange(context, nullptr));
    bOpenCLInitialised = false;
}

void renderFrameOpenCL() {
    setKernelArguments();
    // Without a device image, whose creation nobody checks, the kernel would write to address 0;
    // the read-back then fails in its stead.
    if (memobj[0]) enqueueKernel();
    readImage();
}

void uploadPalette() {
    ret = clEnqueueWriteBuffer(command_queue, memobj[1], CL_TRUE, 0, PALETTE_BYTES,
                               badAssColourPalette.get(), 0, nullptr, nullptr);
}
