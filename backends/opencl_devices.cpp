#include <algorithm>
#include <iostream>

#include "backends/opencl_backend.h"

std::vector<cl_device_id> devices;
std::vector<std::string> device_names;
std::vector<bool> fp64_support;
std::vector<std::uint64_t> types;

namespace {

// The text that query(size, value, sizeReturned) answers, up to its terminator; empty when it
// fails.
template <class Query>
std::string queryText(Query&& query) {
    std::size_t size = 0;
    if (query(std::size_t{0}, nullptr, &size) != CL_SUCCESS || size == 0) return {};
    std::string text(size, '\0');
    if (query(size, text.data(), nullptr) != CL_SUCCESS) return {};
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

std::string platformText(cl_platform_id platform, cl_platform_info what) {
    return queryText([&](std::size_t size, void* value, std::size_t* sizeReturned) {
        return clGetPlatformInfo(platform, what, size, value, sizeReturned);
    });
}

std::string deviceText(cl_device_id device, cl_device_info what) {
    return queryText([&](std::size_t size, void* value, std::size_t* sizeReturned) {
        return clGetDeviceInfo(device, what, size, value, sizeReturned);
    });
}

// A 64-bit property; 0 when the query fails.
std::uint64_t deviceNumber(cl_device_id device, cl_device_info what) {
    cl_ulong value = 0;
    if (clGetDeviceInfo(device, what, sizeof value, &value, nullptr) != CL_SUCCESS) return 0;
    return value;
}

// All handles that list(capacity, handles, count) answers. A call that fails leaves its count
// untouched on some runtimes, so a count is believed only after a success.
template <class Handle, class List>
std::vector<Handle> listHandles(List&& list) {
    cl_uint count = 0;
    if (list(cl_uint{0}, nullptr, &count) != CL_SUCCESS || count == 0) return {};
    std::vector<Handle> handles(count);
    cl_uint found = count;
    if (list(count, handles.data(), &found) != CL_SUCCESS) return {};
    handles.resize(std::min(count, found));
    return handles;
}

std::vector<cl_platform_id> listPlatforms() {
    return listHandles<cl_platform_id>([](cl_uint capacity, cl_platform_id* found, cl_uint* count) {
        return clGetPlatformIDs(capacity, found, count);
    });
}

std::vector<cl_device_id> listDevices(cl_platform_id platform) {
    constexpr cl_device_type wanted =
        CL_DEVICE_TYPE_CPU | CL_DEVICE_TYPE_GPU | CL_DEVICE_TYPE_ACCELERATOR;
    return listHandles<cl_device_id>([&](cl_uint capacity, cl_device_id* found, cl_uint* count) {
        return clGetDeviceIDs(platform, wanted, capacity, found, count);
    });
}

struct DeviceFacts {
    std::string name, extensions, version;
    std::uint64_t memoryBytes, type;

    bool hasDouble() const { return extensions.find("cl_khr_fp64") != std::string::npos; }
};

DeviceFacts queryDevice(cl_device_id device) {
    std::size_t itemSizesBytes = 0;
    clGetDeviceInfo(device, CL_DEVICE_MAX_WORK_ITEM_SIZES, 0, nullptr, &itemSizesBytes);
    DeviceFacts facts;
    facts.name = deviceText(device, CL_DEVICE_NAME);
    facts.extensions = deviceText(device, CL_DEVICE_EXTENSIONS);
    facts.version = deviceText(device, CL_DEVICE_VERSION);
    facts.memoryBytes = deviceNumber(device, CL_DEVICE_GLOBAL_MEM_SIZE);
    facts.type = deviceNumber(device, CL_DEVICE_TYPE);
    return facts;
}

void printDevice(std::size_t id, const std::string& platformName, const DeviceFacts& facts) {
    std::cout << " Device ID: " << id << " " << platformName << " Version " << facts.version << " "
              << facts.name << " RAM: " << (facts.memoryBytes >> 20)
              << " MB, Double Precision: " << (facts.hasDouble() ? "Yes" : "No") << std::endl;
}

}  // namespace

void get_list_of_devices(std::vector<cl_device_id>& ids, std::vector<std::string>& names,
                         std::vector<bool>& doubles, std::vector<std::uint64_t>& typeList,
                         bool print) {
    for (const cl_platform_id platform : listPlatforms()) {
        const std::string platformName = platformText(platform, CL_PLATFORM_NAME);
        for (const cl_device_id device : listDevices(platform)) {
            const DeviceFacts facts = queryDevice(device);
            typeList.push_back(facts.type);
            if (print) printDevice(ids.size(), platformName, facts);
            ids.push_back(device);
            names.push_back(facts.name + ":" + facts.version);
            doubles.push_back(facts.hasDouble());
        }
    }
}
