#include "commands/menu_tree.h"

#include <cstdint>
#include <string>
#include <vector>

#include "backends/opencl_backend.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "commands/menu_handlers.h"
#include "commands/menu_texts.h"
#include "explorer/frame_loop.h"
#include "explorer/window_state.h"

using GlutMenu::CGlutMenu;

namespace {

using Texts = std::vector<std::string>;

constexpr int FRACTALS_ITEM = 0, PALETTE_ITEM = 1, DEVICES_ITEM = 3;  // of the bar
constexpr int TYPES_ITEM = 0;                                         // of "Fractals"
constexpr int JULIA_ITEM = 1, BARNSLEY_ITEM = 6;                      // of the inner "Fractals"

void buildBar() {
    Texts items = {"Fractals", "Palette", zoom_string, "Devices"};
    menu.Initialise(screen_width, screen_height, 0, 0, 5, 5, "Menu Bar", items, 1.0f, 1.0f, true,
                    false);
    menu.DefineKeyboardCallback(selection_callback, nullptr);
    menu.SetBackgroundColour(0.0f, 0.7f, 0.3f, 0.7f);
    menu.Activate();
}

void addFractalTypes(CGlutMenu& parent) {
    parent.AddSubMenu(TYPES_ITEM,
                      {mandelbrot, julia, sin_frac, cos_frac, sinh_frac, cosh_frac, barnsley_frac,
                       dragon_frac, chebyshev_frac, hermite_frac, legendre_frac},
                      selection_callback, nullptr, "");
    CGlutMenu* types = parent.GetSubMenu(TYPES_ITEM);
    if (types == nullptr) return;
    types->AddSubMenu(JULIA_ITEM,
                      {julia_default, julia_dendrite, julia_rabbit, julia_marco, julia_siegel},
                      selection_callback, nullptr, "");
    types->AddSubMenu(BARNSLEY_ITEM, {barnsley_1, barnsley_2, barnsley_3, barnsley_sierpinski},
                      selection_callback, nullptr, "");
}

void buildFractalsMenu() {
    menu.AddSubMenu(FRACTALS_ITEM,
                    {fractals_menu, toggle_timing_logs, previous_fractal, next_fractal,
                     cycle_fractals, fractal_info, load_from_disk, save_to_disk, quit_option},
                    selection_callback, nullptr, "");
    // The bar has no item 6: its check table keeps the entry and nothing shows it.
    menu.SetCheckState(6, bDoublePrecision);
    CGlutMenu* fractalsMenu = menu.GetSubMenu(FRACTALS_ITEM);
    if (fractalsMenu == nullptr) return;
    fractalsMenu->SetCheckState(fractalsMenu->GetMenuPosition(toggle_timing_logs), bLogging);
    addFractalTypes(*fractalsMenu);
}

// The other one of palettes 0 and 1. A file may hold any number, for which nothing shown is meant:
// its difference wraps.
int otherPalette(std::int32_t palette) {
    return static_cast<std::int32_t>(1u - static_cast<std::uint32_t>(palette));
}

void buildPaletteMenu() {
    menu.AddSubMenu(PALETTE_ITEM, {random_colours, rgb_cycle}, selection_callback, nullptr, "");
    CGlutMenu* palettes = menu.GetSubMenu(PALETTE_ITEM);
    if (palettes == nullptr) return;
    palettes->SetCheckState(paletteType, true);
    palettes->SetCheckState(otherPalette(paletteType), false);
}

Texts threadItems() {
    Texts items;
    for (int i = 1; i <= max_threads; ++i) items.push_back(std::to_string(i));
    return items;
}

void addDevicesMenu() {
    Texts items = {cpu_device};
    items.insert(items.end(), device_names.begin(), device_names.end());
    items.insert(items.end(), {double_precision, cpu_threads, system_information});
    menu.AddSubMenu(DEVICES_ITEM, items, devices_callback, nullptr, "");
}

// Checks the device in use. The loop runs over the whole list and one past it, so that no item
// after the devices stays checked on a device, "Double precision" included.
void checkDevice(CGlutMenu& devicesMenu) {
    const int itemCount = static_cast<int>(device_names.size()) + 4;
    for (int i = 0; i < itemCount; ++i) devicesMenu.SetCheckState(i + 1, i == nCudaDevice);
}

// Of a new menu, whose items are all enabled.
void setDeviceStates(CGlutMenu& devicesMenu) {
    const int cpu = devicesMenu.GetMenuPosition(cpu_device);
    devicesMenu.SetCheckState(cpu, bCPU);
    if (bCPU) {
        checkThreadCount(devicesMenu);
    } else if (isDevice(nCudaDevice)) {
        devicesMenu.SetMenuItemState(devicesMenu.GetMenuPosition(cpu_threads), false);
        devicesMenu.SetMenuItemState(devicesMenu.GetMenuPosition(double_precision),
                                     hasDoublePrecision(nCudaDevice));
    }
}

void buildDevicesMenu() {
    addDevicesMenu();
    CGlutMenu* devicesMenu = menu.GetSubMenu(DEVICES_ITEM);
    if (devicesMenu == nullptr) return;
    devicesMenu->SetCheckState(devicesMenu->GetMenuPosition(double_precision), bDoublePrecision);
    if (!bCPU) checkDevice(*devicesMenu);
    devicesMenu->AddSubMenu(devicesMenu->GetMenuPosition(cpu_threads), threadItems(),
                            threads_callback, nullptr, "");
    setDeviceStates(*devicesMenu);
}

}  // namespace

void createMenu() {
    buildBar();
    buildFractalsMenu();
    buildPaletteMenu();
    buildDevicesMenu();
}
