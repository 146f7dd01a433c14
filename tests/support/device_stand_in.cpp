#include "tests/support/device_stand_in.h"

#ifndef CL_TARGET_OPENCL_VERSION
#define CL_TARGET_OPENCL_VERSION 120
#endif
#include <CL/cl.h>

#include <cstring>
#include <string>

std::vector<bool> standInDevices;
std::function<void(const std::string& name)> onDeviceCall;
std::vector<unsigned char> uploadedBytes;

namespace {

// Handles are the addresses of these.
char platformHandle;
char deviceHandles[16];
char contextHandle, queueHandle, bufferHandle, programHandle, kernelHandle;

cl_int accept(const char* name) {
    if (onDeviceCall) onDeviceCall(name);
    return CL_SUCCESS;
}

template <class Handle>
Handle create(const char* name, char& handle, cl_int* status) {
    *status = accept(name);
    return reinterpret_cast<Handle>(&handle);
}

cl_int answer(const void* value, std::size_t length, std::size_t size, void* out,
              std::size_t* sizeReturned) {
    if (sizeReturned != nullptr) *sizeReturned = length;
    if (out == nullptr) return CL_SUCCESS;
    if (size < length) return CL_INVALID_VALUE;
    std::memcpy(out, value, length);
    return CL_SUCCESS;
}

cl_int answerText(const std::string& text, std::size_t size, void* out, std::size_t* returned) {
    return answer(text.c_str(), text.size() + 1, size, out, returned);
}

}  // namespace

extern "C" {

cl_int clGetPlatformIDs(cl_uint capacity, cl_platform_id* found, cl_uint* count) {
    if (standInDevices.empty()) return -1001;
    if (count != nullptr) *count = 1;
    if (capacity > 0) *found = reinterpret_cast<cl_platform_id>(&platformHandle);
    return CL_SUCCESS;
}

cl_int clGetPlatformInfo(cl_platform_id, cl_platform_info, std::size_t size, void* out,
                         std::size_t* returned) {
    return answerText("Platform", size, out, returned);
}

cl_int clGetDeviceIDs(cl_platform_id, cl_device_type, cl_uint capacity, cl_device_id* found,
                      cl_uint* count) {
    if (count != nullptr) *count = static_cast<cl_uint>(standInDevices.size());
    for (std::size_t i = 0; i < capacity && i < standInDevices.size(); ++i) {
        found[i] = reinterpret_cast<cl_device_id>(&deviceHandles[i]);
    }
    return CL_SUCCESS;
}

cl_int clGetDeviceInfo(cl_device_id device, cl_device_info what, std::size_t size, void* out,
                       std::size_t* returned) {
    const auto index =
        static_cast<std::size_t>(reinterpret_cast<const char*>(device) - deviceHandles);
    const cl_ulong gpu = CL_DEVICE_TYPE_GPU, number = 1024;
    const std::size_t itemSizes[3] = {16, 16, 1};
    switch (what) {
        case CL_DEVICE_NAME:
            return answerText("Device " + std::to_string(index), size, out, returned);
        case CL_DEVICE_EXTENSIONS:
            return answerText(standInDevices[index] ? "cl_khr_fp64" : "", size, out, returned);
        case CL_DEVICE_VERSION:
            return answerText("OpenCL 1.2", size, out, returned);
        case CL_DEVICE_TYPE:
            return answer(&gpu, sizeof gpu, size, out, returned);
        case CL_DEVICE_MAX_WORK_ITEM_SIZES:
            return answer(itemSizes, sizeof itemSizes, size, out, returned);
        default:
            return answer(&number, sizeof number, size, out, returned);
    }
}

cl_context clCreateContext(const cl_context_properties*, cl_uint, const cl_device_id*,
                           void(CL_CALLBACK*)(const char*, const void*, std::size_t, void*), void*,
                           cl_int* status) {
    return create<cl_context>("clCreateContext", contextHandle, status);
}

cl_command_queue clCreateCommandQueue(cl_context, cl_device_id, cl_command_queue_properties,
                                      cl_int* status) {
    return create<cl_command_queue>("clCreateCommandQueue", queueHandle, status);
}

cl_mem clCreateBuffer(cl_context, cl_mem_flags, std::size_t, void*, cl_int* status) {
    return create<cl_mem>("clCreateBuffer", bufferHandle, status);
}

cl_program clCreateProgramWithSource(cl_context, cl_uint, const char**, const std::size_t*,
                                     cl_int* status) {
    return create<cl_program>("clCreateProgramWithSource", programHandle, status);
}

cl_int clBuildProgram(cl_program, cl_uint, const cl_device_id*, const char*,
                      void(CL_CALLBACK*)(cl_program, void*), void*) {
    return accept("clBuildProgram");
}

cl_kernel clCreateKernel(cl_program, const char*, cl_int* status) {
    return create<cl_kernel>("clCreateKernel", kernelHandle, status);
}

cl_int clSetKernelArg(cl_kernel, cl_uint, std::size_t, const void*) {
    return CL_SUCCESS;
}

cl_int clEnqueueNDRangeKernel(cl_command_queue, cl_kernel, cl_uint, const std::size_t*,
                              const std::size_t*, const std::size_t*, cl_uint, const cl_event*,
                              cl_event*) {
    return accept("clEnqueueNDRangeKernel");
}

cl_int clEnqueueReadBuffer(cl_command_queue, cl_mem, cl_bool, std::size_t, std::size_t, void*,
                           cl_uint, const cl_event*, cl_event*) {
    return accept("clEnqueueReadBuffer");
}

cl_int clEnqueueWriteBuffer(cl_command_queue, cl_mem, cl_bool, std::size_t, std::size_t size,
                            const void* from, cl_uint, const cl_event*, cl_event*) {
    const auto* bytes = static_cast<const unsigned char*>(from);
    uploadedBytes.assign(bytes, bytes + size);
    return accept("clEnqueueWriteBuffer");
}

#define ACCEPT(name, Handle)  \
    cl_int name(Handle) {     \
        return accept(#name); \
    }
ACCEPT(clFlush, cl_command_queue)
ACCEPT(clFinish, cl_command_queue)
ACCEPT(clReleaseKernel, cl_kernel)
ACCEPT(clReleaseProgram, cl_program)
ACCEPT(clReleaseMemObject, cl_mem)
ACCEPT(clReleaseCommandQueue, cl_command_queue)
ACCEPT(clReleaseContext, cl_context)

}  // extern "C"
