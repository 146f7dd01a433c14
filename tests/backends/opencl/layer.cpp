// An OpenCL layer for tests: it sits between the ICD loader and a real runtime, writes down every
// call and answers some of them its own way. Named in OPENCL_LAYERS and steered by
//   TESSARY_LAYER      settings, separated by ';':
//       fail=CALL[@PARAMETER][#NTH]:STATUS   the call (its NTH call; with this parameter) fails;
//                        CALL is * for all of them
//       lost=NTH         the device disappears: the NTH call of all and those after it fail
//       type=N           every device reports this CL_DEVICE_TYPE
//       no_fp64[=START]  extension lists lose cl_khr_fp64 (of devices whose name starts so)
//       items=N          a 4-byte CL_DEVICE_MAX_WORK_ITEM_SIZES query succeeds and answers N
//       local=WxH        kernels are launched in groups of this size
//       broken_source    programs are made from a text that does not compile
//       log_size=N       the build log claims this size
//       long_name=N      device names have N characters
//       long_extensions=N   N characters stand before cl_khr_fp64 in the extension list
//       unterminated     device texts end without a terminator
//       empty_text       device texts have size 0
//   TESSARY_LAYER_LOG  file that gets one line for each call
#include <CL/cl_layer.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>
#include <string>

namespace {

const cl_icd_dispatch* runtime = nullptr;  // what the calls go on to
cl_icd_dispatch ours;                      // what the loader calls

struct Fault {
    bool active = false;
    std::string call;
    long parameter = -1;  // -1: any
    int nth = 0;          // 0: every time
    cl_int status = CL_SUCCESS;
    int seen = 0;
};

struct Settings {
    Fault fault;
    std::map<std::string, std::string> values;

    bool has(const std::string& name) const { return values.count(name) != 0; }
    long number(const std::string& name) const { return std::atol(values.at(name).c_str()); }
};

Fault parseFault(std::string text) {
    Fault fault;
    fault.active = true;
    const auto cut = [&text](char mark, long otherwise) {
        const auto at = text.rfind(mark);
        if (at == std::string::npos) return otherwise;
        const long value = std::atol(text.c_str() + at + 1);
        text.resize(at);
        return value;
    };
    fault.status = static_cast<cl_int>(cut(':', CL_OUT_OF_RESOURCES));
    fault.nth = static_cast<int>(cut('#', 0));
    fault.parameter = cut('@', -1);
    fault.call = text;
    return fault;
}

Settings& settings() {
    static Settings all = [] {
        Settings parsed;
        const char* text = std::getenv("TESSARY_LAYER");
        std::istringstream stream(text ? text : "");
        for (std::string item; std::getline(stream, item, ';');) {
            const auto equals = item.find('=');
            const std::string name = item.substr(0, equals);
            const std::string value = equals == std::string::npos ? "" : item.substr(equals + 1);
            if (name == "fail") parsed.fault = parseFault(value);
            parsed.values[name] = value;
        }
        return parsed;
    }();
    return all;
}

void note(const std::string& line) {
    static FILE* file = [] {
        const char* path = std::getenv("TESSARY_LAYER_LOG");
        return path ? std::fopen(path, "w") : nullptr;
    }();
    if (!file) return;
    std::fprintf(file, "%s\n", line.c_str());
    std::fflush(file);
}

cl_command_queue lastQueue = nullptr;

// Whether the device has disappeared by this call; with it goes the work it was at.
bool isLost() {
    static long calls = 0;
    if (!settings().has("lost") || ++calls < settings().number("lost")) return false;
    if (lastQueue) runtime->clFinish(lastQueue);
    lastQueue = nullptr;
    return true;
}

// The status this call must fail with, or CL_SUCCESS.
cl_int fault(const char* call, long parameter = -1) {
    if (isLost()) return CL_DEVICE_NOT_AVAILABLE;
    Fault& f = settings().fault;
    if (!f.active || (f.call != "*" && f.call != call) ||
        (f.parameter >= 0 && f.parameter != parameter)) {
        return CL_SUCCESS;
    }
    ++f.seen;
    return f.nth == 0 || f.nth == f.seen ? f.status : CL_SUCCESS;
}

// For calls that answer a handle: true when it must fail, with the status stored.
bool refuses(const char* call, cl_int* status) {
    const cl_int failure = fault(call);
    if (failure == CL_SUCCESS) return false;
    if (status) *status = failure;
    return true;
}

template <class... Parts>
std::string line(const Parts&... parts) {
    std::ostringstream stream;
    const char* gap = "";
    ((stream << gap << parts, gap = " "), ...);
    return stream.str();
}

cl_int answer(const void* data, std::size_t bytes, std::size_t size, void* value,
              std::size_t* sizeReturned) {
    if (value && size < bytes) return CL_INVALID_VALUE;
    if (value) std::memcpy(value, data, bytes);
    if (sizeReturned) *sizeReturned = bytes;
    return CL_SUCCESS;
}

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

cl_int CL_API_CALL getPlatformIDs(cl_uint n, cl_platform_id* ids, cl_uint* count) {
    note("clGetPlatformIDs");
    if (const cl_int failure = fault("clGetPlatformIDs")) return failure;
    return runtime->clGetPlatformIDs(n, ids, count);
}

cl_int CL_API_CALL getPlatformInfo(cl_platform_id platform, cl_platform_info what, size_t size,
                                   void* value, size_t* sizeReturned) {
    note(line("clGetPlatformInfo", what, size));
    if (const cl_int failure = fault("clGetPlatformInfo")) return failure;
    return runtime->clGetPlatformInfo(platform, what, size, value, sizeReturned);
}

cl_int CL_API_CALL getDeviceIDs(cl_platform_id platform, cl_device_type type, cl_uint n,
                                cl_device_id* ids, cl_uint* count) {
    note(line("clGetDeviceIDs", type, n));
    if (const cl_int failure = fault("clGetDeviceIDs")) return failure;
    return runtime->clGetDeviceIDs(platform, type, n, ids, count);
}

std::string runtimeText(cl_device_id device, cl_device_info what) {
    std::size_t size = 0;
    runtime->clGetDeviceInfo(device, what, 0, nullptr, &size);
    std::string text(size, '\0');
    runtime->clGetDeviceInfo(device, what, size, text.data(), nullptr);
    return text.c_str();
}

bool losesDoubles(cl_device_id device) {
    return settings().has("no_fp64") &&
           runtimeText(device, CL_DEVICE_NAME).rfind(settings().values.at("no_fp64"), 0) == 0;
}

std::string extensionList(cl_device_id device) {
    std::string list = runtimeText(device, CL_DEVICE_EXTENSIONS);
    const std::string name = "cl_khr_fp64";
    if (losesDoubles(device)) {
        for (auto at = list.find(name); at != std::string::npos; at = list.find(name)) {
            list.erase(at, name.size());
        }
    }
    if (settings().has("long_extensions")) {
        list = std::string(static_cast<std::size_t>(settings().number("long_extensions")), 'e') +
               " " + name;
    }
    return list;
}

std::string deviceName(cl_device_id device) {
    if (!settings().has("long_name")) return runtimeText(device, CL_DEVICE_NAME);
    return std::string(static_cast<std::size_t>(settings().number("long_name")), 'n');
}

cl_int answerText(const std::string& text, size_t size, void* value, size_t* sizeReturned) {
    std::size_t bytes = text.size() + 1;
    if (settings().has("unterminated")) bytes = text.size();
    if (settings().has("empty_text")) bytes = 0;
    return answer(text.c_str(), bytes, size, value, sizeReturned);
}

cl_int CL_API_CALL getDeviceInfo(cl_device_id device, cl_device_info what, size_t size, void* value,
                                 size_t* sizeReturned) {
    note(line("clGetDeviceInfo", what, size));
    if (const cl_int failure = fault("clGetDeviceInfo", static_cast<long>(what))) return failure;
    if (what == CL_DEVICE_TYPE && settings().has("type")) {
        const auto type = static_cast<cl_device_type>(settings().number("type"));
        return answer(&type, sizeof type, size, value, sizeReturned);
    }
    if (what == CL_DEVICE_MAX_WORK_ITEM_SIZES && size == 4 && settings().has("items")) {
        const auto items = static_cast<cl_uint>(settings().number("items"));
        return answer(&items, sizeof items, size, value, sizeReturned);
    }
    if (what == CL_DEVICE_NAME) {
        return answerText(deviceName(device), size, value, sizeReturned);
    }
    if (what == CL_DEVICE_EXTENSIONS) {
        return answerText(extensionList(device), size, value, sizeReturned);
    }
    return runtime->clGetDeviceInfo(device, what, size, value, sizeReturned);
}

cl_context CL_API_CALL createContext(const cl_context_properties* properties, cl_uint n,
                                     const cl_device_id* devices,
                                     void(CL_CALLBACK* notify)(const char*, const void*, size_t,
                                                               void*),
                                     void* user, cl_int* status) {
    note(line("clCreateContext", properties ? "properties" : "none", n,
              notify ? "callback" : "none"));
    if (refuses("clCreateContext", status)) return nullptr;
    return runtime->clCreateContext(properties, n, devices, notify, user, status);
}

cl_command_queue CL_API_CALL createCommandQueue(cl_context context, cl_device_id device,
                                                cl_command_queue_properties properties,
                                                cl_int* status) {
    note(line("clCreateCommandQueue", properties));
    if (refuses("clCreateCommandQueue", status)) return nullptr;
    lastQueue = runtime->clCreateCommandQueue(context, device, properties, status);
    return lastQueue;
}

cl_mem CL_API_CALL createBuffer(cl_context context, cl_mem_flags flags, size_t size, void* host,
                                cl_int* status) {
    note(line("clCreateBuffer", flags, size));
    if (refuses("clCreateBuffer", status)) return nullptr;
    return runtime->clCreateBuffer(context, flags, size, host, status);
}

cl_program CL_API_CALL createProgramWithSource(cl_context context, cl_uint n, const char** texts,
                                               const size_t* lengths, cl_int* status) {
    note(line("clCreateProgramWithSource", n, lengths ? lengths[0] : 0, firstLine(texts[0])));
    if (refuses("clCreateProgramWithSource", status)) return nullptr;
    if (!settings().has("broken_source")) {
        return runtime->clCreateProgramWithSource(context, n, texts, lengths, status);
    }
    const char* broken = "__kernel void do_work() { this_does_not_exist(); }";
    return runtime->clCreateProgramWithSource(context, 1, &broken, nullptr, status);
}

cl_int CL_API_CALL buildProgram(cl_program program, cl_uint n, const cl_device_id* devices,
                                const char* options, void(CL_CALLBACK* notify)(cl_program, void*),
                                void* user) {
    note(line("clBuildProgram", n, options ? options : "none"));
    if (const cl_int failure = fault("clBuildProgram")) return failure;
    return runtime->clBuildProgram(program, n, devices, options, notify, user);
}

cl_int CL_API_CALL getProgramBuildInfo(cl_program program, cl_device_id device,
                                       cl_program_build_info what, size_t size, void* value,
                                       size_t* sizeReturned) {
    note(line("clGetProgramBuildInfo", what, size));
    if (const cl_int failure = fault("clGetProgramBuildInfo")) return failure;
    if (settings().has("log_size")) {
        const std::string log(static_cast<std::size_t>(settings().number("log_size")), 'l');
        return answer(log.data(), log.size(), size, value, sizeReturned);
    }
    return runtime->clGetProgramBuildInfo(program, device, what, size, value, sizeReturned);
}

cl_kernel CL_API_CALL createKernel(cl_program program, const char* name, cl_int* status) {
    note(line("clCreateKernel", name));
    if (refuses("clCreateKernel", status)) return nullptr;
    return runtime->clCreateKernel(program, name, status);
}

// The value is noted as its bytes in memory order.
cl_int CL_API_CALL setKernelArg(cl_kernel kernel, cl_uint index, size_t size, const void* value) {
    std::string bytes;
    for (std::size_t i = 0; value && i < size; ++i) {
        char hex[3];
        std::snprintf(hex, sizeof hex, "%02x", static_cast<const unsigned char*>(value)[i]);
        bytes += hex;
    }
    note(line("clSetKernelArg", index, size, bytes));
    if (const cl_int failure = fault("clSetKernelArg", static_cast<long>(index))) return failure;
    return runtime->clSetKernelArg(kernel, index, size, value);
}

cl_int CL_API_CALL enqueueNDRangeKernel(cl_command_queue queue, cl_kernel kernel,
                                        cl_uint dimensions, const size_t* offset,
                                        const size_t* global, const size_t* local, cl_uint n,
                                        const cl_event* events, cl_event* event) {
    const std::string group = local ? line(local[0], local[1]) : std::string("none");
    note(line("clEnqueueNDRangeKernel", dimensions, offset ? "offset" : "none", global[0],
              global[1], "in", group));
    if (const cl_int failure = fault("clEnqueueNDRangeKernel")) return failure;
    size_t forced[2];
    if (settings().has("local") && std::sscanf(settings().values.at("local").c_str(), "%zux%zu",
                                               &forced[0], &forced[1]) == 2) {
        local = forced;
    }
    return runtime->clEnqueueNDRangeKernel(queue, kernel, dimensions, offset, global, local, n,
                                           events, event);
}

cl_int CL_API_CALL enqueueReadBuffer(cl_command_queue queue, cl_mem memory, cl_bool blocking,
                                     size_t offset, size_t size, void* target, cl_uint n,
                                     const cl_event* events, cl_event* event) {
    note(line("clEnqueueReadBuffer", blocking, offset, size));
    if (const cl_int failure = fault("clEnqueueReadBuffer")) return failure;
    return runtime->clEnqueueReadBuffer(queue, memory, blocking, offset, size, target, n, events,
                                        event);
}

cl_int CL_API_CALL enqueueWriteBuffer(cl_command_queue queue, cl_mem memory, cl_bool blocking,
                                      size_t offset, size_t size, const void* data, cl_uint n,
                                      const cl_event* events, cl_event* event) {
    note(line("clEnqueueWriteBuffer", blocking, offset, size));
    if (const cl_int failure = fault("clEnqueueWriteBuffer")) return failure;
    return runtime->clEnqueueWriteBuffer(queue, memory, blocking, offset, size, data, n, events,
                                         event);
}

cl_int CL_API_CALL flush(cl_command_queue queue) {
    note("clFlush");
    if (const cl_int failure = fault("clFlush")) return failure;
    return runtime->clFlush(queue);
}

cl_int CL_API_CALL finish(cl_command_queue queue) {
    note("clFinish");
    if (const cl_int failure = fault("clFinish")) return failure;
    return runtime->clFinish(queue);
}

// A release that is made to fail still releases: what counts is that the caller carries on.
template <class Handle>
cl_int release(const char* call, cl_int(CL_API_CALL* next)(Handle), Handle handle) {
    note(call);
    const cl_int failure = fault(call);
    const cl_int status = next(handle);
    return failure ? failure : status;
}

cl_int CL_API_CALL releaseKernel(cl_kernel kernel) {
    return release("clReleaseKernel", runtime->clReleaseKernel, kernel);
}

cl_int CL_API_CALL releaseProgram(cl_program program) {
    return release("clReleaseProgram", runtime->clReleaseProgram, program);
}

cl_int CL_API_CALL releaseMemObject(cl_mem memory) {
    return release("clReleaseMemObject", runtime->clReleaseMemObject, memory);
}

cl_int CL_API_CALL releaseCommandQueue(cl_command_queue queue) {
    if (queue == lastQueue) lastQueue = nullptr;
    return release("clReleaseCommandQueue", runtime->clReleaseCommandQueue, queue);
}

cl_int CL_API_CALL releaseContext(cl_context context) {
    return release("clReleaseContext", runtime->clReleaseContext, context);
}

void overrideCalls() {
    ours.clGetPlatformIDs = getPlatformIDs;
    ours.clGetPlatformInfo = getPlatformInfo;
    ours.clGetDeviceIDs = getDeviceIDs;
    ours.clGetDeviceInfo = getDeviceInfo;
    ours.clCreateContext = createContext;
    ours.clCreateCommandQueue = createCommandQueue;
    ours.clCreateBuffer = createBuffer;
    ours.clCreateProgramWithSource = createProgramWithSource;
    ours.clBuildProgram = buildProgram;
    ours.clGetProgramBuildInfo = getProgramBuildInfo;
    ours.clCreateKernel = createKernel;
    ours.clSetKernelArg = setKernelArg;
    ours.clEnqueueNDRangeKernel = enqueueNDRangeKernel;
    ours.clEnqueueReadBuffer = enqueueReadBuffer;
    ours.clEnqueueWriteBuffer = enqueueWriteBuffer;
    ours.clFlush = flush;
    ours.clFinish = finish;
    ours.clReleaseKernel = releaseKernel;
    ours.clReleaseProgram = releaseProgram;
    ours.clReleaseMemObject = releaseMemObject;
    ours.clReleaseCommandQueue = releaseCommandQueue;
    ours.clReleaseContext = releaseContext;
}

}  // namespace

CL_API_ENTRY cl_int CL_API_CALL clGetLayerInfo(cl_layer_info what, size_t size, void* value,
                                               size_t* sizeReturned) {
    const cl_layer_api_version version = CL_LAYER_API_VERSION_100;
    if (what == CL_LAYER_API_VERSION) {
        return answer(&version, sizeof version, size, value, sizeReturned);
    }
    const char name[] = "tessary test layer";
    if (what == CL_LAYER_NAME) return answer(name, sizeof name, size, value, sizeReturned);
    return CL_INVALID_VALUE;
}

CL_API_ENTRY cl_int CL_API_CALL clInitLayer(cl_uint entries, const cl_icd_dispatch* target,
                                            cl_uint* entriesReturned,
                                            const cl_icd_dispatch** layer) {
    if (entries < sizeof(cl_icd_dispatch) / sizeof(void*)) return CL_INVALID_VALUE;
    runtime = target;
    ours = *target;
    overrideCalls();
    *layer = &ours;
    *entriesReturned = sizeof(cl_icd_dispatch) / sizeof(void*);
    return CL_SUCCESS;
}
