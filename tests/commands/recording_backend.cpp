// An OpenCL back-end that only remembers what it was asked for, in the place of the real one.
#include "backends/opencl_backend.h"

#include "backends/renderer.h"
#include "tests/support/stand_ins.h"

std::vector<cl_device_id> devices;
std::vector<std::string> device_names;
std::vector<bool> fp64_support;
std::vector<std::uint64_t> types;
std::int32_t nCudaDevice = -1;
std::string kernel_string, kernel_single_string;
bool bOpenCLInitialised = false;

static void record(const std::string& call) {
    stand_ins::backendCalls.push_back(call);
}

std::string load_kernel() {
    record("load");
    return bDoublePrecision ? "double text" : "single text";
}

void setupOpenCL(std::string source) {
    record("set up " + std::to_string(nCudaDevice) + " with " + source);
}

void release_opencl_resource(bool doublePrecision) {
    record(doublePrecision ? "release double" : "release single");
}

void renderFrameOpenCL() {
    record("render");
}
void uploadPalette() {
    record("upload");
}
