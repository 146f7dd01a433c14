#include "commands/menu_handlers.h"

#include <GL/glut.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "backends/opencl_backend.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "commands/GetFilenameDialog.h"
#include "commands/menu_texts.h"
#include "commands/parameter_dialog.h"
#include "explorer/catalogue.h"
#include "explorer/frac_file.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "explorer/window_title.h"

using GlutMenu::CGlutMenu;

namespace {

// A command that creates an entry.
struct NewFractalCommand {
    const std::string& text;
    int type;
    int preset = 0;  // of a Julia entry: see CreateNewFractal
};

const std::array<NewFractalCommand, 18> newFractalCommands = {{
    {julia_default, 1, 5},
    {julia_marco, 1, 100},
    {julia_dendrite, 1, 103},
    {julia_rabbit, 1, 101},
    {julia_siegel, 1, 102},
    {barnsley_1, 6},
    {barnsley_2, 7},
    {barnsley_3, 8},
    {barnsley_sierpinski, 9},
    {mandelbrot, 0},
    {sin_frac, 2},
    {cos_frac, 3},
    {sinh_frac, 4},
    {cosh_frac, 5},
    {dragon_frac, 10},
    {chebyshev_frac, 11},
    {hermite_frac, 12},
    {legendre_frac, 13},
}};

void createNamedFractal(const std::string& text) {
    for (const NewFractalCommand& command : newFractalCommands) {
        if (text != command.text) continue;
        CreateNewFractal(command.type, command.preset);
        return;
    }
}

// Flips the precision. On a device, whose kernels are built for one precision, this builds them
// anew; a device without double precision stays single.
void switchPrecision(int item, CGlutMenu& source) {
    if (bCPU) {
        bDoublePrecision = !bDoublePrecision;
        return;
    }
    if (nCudaDevice == -1) return;
    const bool old = bDoublePrecision;
    if (!old && !hasDoublePrecision(nCudaDevice)) return;
    bDoublePrecision = !old;
    release_opencl_resource(old);
    source.SetCheckState(item, bDoublePrecision);
    kernel_string = load_kernel();
    setupOpenCL(kernel_string);
}

void toggleCycling(int item, CGlutMenu& source) {
    const bool on = cycleDir == 0;
    source.SetCheckState(item, on);
    cycleDir = on ? 1 : 0;
    glutIdleFunc(on ? idle : nullptr);
}

void moveToCpu(int item, CGlutMenu& source) {
    bCPU = true;
    source.SetMenuText(item, toggle_to_gpu);
    if (numCPUThreads < 1) numCPUThreads = max_threads;
}

void moveToGpu(int item, CGlutMenu& source) {
    bCPU = false;
    source.SetMenuText(item, toggle_to_cpu);
}

void load() {
    std::string path;
    if (!GetOpenFilename(path, "Load fractals")) return;
    LoadData(path);
    current_filename = path;
    setWindowTitle(get_title());
}

void save() {
    if (!GetSaveFilename(filename, "Save fractals")) return;
    SaveData(filename);
    current_filename = filename;
    setWindowTitle(get_title());
}

[[noreturn]] void quit() {
    image_refreshed = false;
    {
        const std::lock_guard lock(update_lock);
        update_count = 0;
    }
    std::exit(0);
}

// Carries out the command named `text`, item `item` of `source`. The texts are all different, so
// the order of the tests decides nothing.
void runCommand(const std::string& text, int item, CGlutMenu& source) {
    if (text == zoom_string) {
        zooming_enabled = true;
        menu.Deactive(true);
    } else if (text == double_precision) {
        switchPrecision(item, source);
        image_refreshed = true;
    } else if (text == random_colours) {
        paletteType = 0;
        source.SetCheckState(item, true);
        source.SetCheckState(item + 1, false);
        image_refreshed = true;
    } else if (text == rgb_cycle) {
        paletteType = 1;
        source.SetCheckState(item, true);
        source.SetCheckState(item - 1, false);
        image_refreshed = true;
    } else if (text == previous_fractal) {
        advanceCursor(-1, true);
    } else if (text == cycle_fractals) {
        toggleCycling(item, source);
        image_refreshed = true;
    } else if (text == next_fractal) {
        advanceCursor(1, true);
    } else if (text == toggle_to_cpu) {
        moveToCpu(item, source);
    } else if (text == toggle_to_gpu) {
        moveToGpu(item, source);
        image_refreshed = true;
    } else if (text == toggle_timing_logs) {
        bLogging = !bLogging;
        source.SetCheckState(item, bLogging);
    } else if (text == fractal_info) {
        showParameterDialog();
    } else if (text == load_from_disk) {
        load();
    } else if (text == quit_option) {
        quit();
    } else if (text == save_to_disk) {
        save();
    } else {
        createNamedFractal(text);
    }
}

void useCpu(CGlutMenu& devicesMenu) {
    bCPU = true;
    devicesMenu.SetCheckState(0, true);
    const int count = static_cast<int>(device_names.size());
    for (int i = 1; i <= count; ++i) devicesMenu.SetCheckState(i, false);
}

// Item k stands for device k - 1. A device without double precision is first taken back to single
// through the same command the user would choose, which sets it up once more than needed.
void useDevice(int k, CGlutMenu& devicesMenu) {
    release_opencl_resource(bDoublePrecision);
    nCudaDevice = k - 1;
    bCPU = false;
    const int count = static_cast<int>(device_names.size());
    for (int i = 1; i <= count; ++i) devicesMenu.SetCheckState(i, i == k);
    if (bDoublePrecision && !hasDoublePrecision(nCudaDevice)) {
        int precisionItem = devicesMenu.GetMenuPosition(double_precision);
        devices_callback(precisionItem, &devicesMenu, nullptr);
    }
    kernel_string = load_kernel();
    setupOpenCL(kernel_string);
}

void refreshDeviceStates(CGlutMenu& devicesMenu) {
    const int threadsItem = devicesMenu.GetMenuPosition(cpu_threads);
    const int precisionItem = devicesMenu.GetMenuPosition(double_precision);
    if (bCPU) {
        devicesMenu.SetMenuItemState(threadsItem, true);
        checkThreadCount(devicesMenu);
        devicesMenu.SetMenuItemState(precisionItem, true);
    } else if (isDevice(nCudaDevice)) {
        devicesMenu.SetMenuItemState(threadsItem, false);
        devicesMenu.SetCheckState(precisionItem, bDoublePrecision);
        devicesMenu.SetMenuItemState(precisionItem, hasDoublePrecision(nCudaDevice));
    }
}

std::string rendererName() {
    if (bCPU) return "CPU";
    if (nCudaDevice < 0 || nCudaDevice >= static_cast<int>(device_names.size())) return "";
    return device_names[static_cast<std::size_t>(nCudaDevice)];
}

void showSystemInformation() {
    std::vector<std::string> lines = {rendererName(),
                                      bDoublePrecision ? "Double precision" : "Single precision"};
    input.Initialise("System Information", lines, 100, 100, nullptr, nullptr);
    input.Display();
}

}  // namespace

// No device is -1, which is beyond every list as an index.
bool isDevice(int device) {
    return static_cast<std::size_t>(device) < devices.size();
}

bool hasDoublePrecision(int device) {
    const auto index = static_cast<std::size_t>(device);
    return index < fp64_support.size() && fp64_support[index];
}

void checkThreadCount(const CGlutMenu& devicesMenu) {
    CGlutMenu* threads = devicesMenu.GetSubMenu(devicesMenu.GetMenuPosition(cpu_threads));
    if (threads == nullptr) return;
    for (int i = 0; i < max_threads; ++i) threads->SetCheckState(i, i + 1 == numCPUThreads);
}

void selection_callback(int& item, CGlutMenu* source, void*) {
    const std::string text = source->GetMenuText(item);
    image_refreshed = false;
    runCommand(text, item, *source);
    if (image_refreshed) addUpdate();
    glutPostRedisplay();
}

void devices_callback(int& item, CGlutMenu* source, void*) {
    CGlutMenu& devicesMenu = *source;
    const int chosen = item;
    const std::string text = devicesMenu.GetMenuText(chosen);
    if (chosen == 0) {
        useCpu(devicesMenu);
    } else if (chosen >= 1 && chosen <= static_cast<int>(device_names.size())) {
        useDevice(chosen, devicesMenu);
    }
    devicesMenu.SetCheckState(devicesMenu.GetMenuPosition(cpu_device), bCPU);
    if (text == double_precision) {
        switchPrecision(chosen, devicesMenu);
        devicesMenu.SetCheckState(chosen, bDoublePrecision);
    }
    refreshDeviceStates(devicesMenu);
    if (text == system_information) showSystemInformation();
    addUpdate();
    glutPostRedisplay();
}

void threads_callback(int& item, CGlutMenu* source, void*) {
    if (item >= 0 && item < max_threads) numCPUThreads = item + 1;
    for (int i = 0; i < max_threads; ++i) source->SetCheckState(i, i + 1 == numCPUThreads);
    image_refreshed = false;
}
