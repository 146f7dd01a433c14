#include "compute/opencl_backend.h"

std::vector<cl_device_id> devices;
std::vector<std::string> device_names;
std::vector<bool> fp64_support;
std::vector<std::uint64_t> types;
std::int32_t nCudaDevice = -1;
std::string kernel_string, kernel_single_string;
bool bOpenCLInitialised = false;

void get_list_of_devices(std::vector<cl_device_id>&, std::vector<std::string>&, std::vector<bool>&,
                         std::vector<std::uint64_t>&, bool) {}
std::string load_kernel() {
    return {};
}
void setupOpenCL(std::string) {}
void setup_opencl_kernel(std::string, cl_device_id, int) {}
void createBuffers() {}
void freeBuffer(cl_mem&) {}
void release_opencl_resource(bool) {}
void renderFrameOpenCL() {}
void uploadPalette() {}
