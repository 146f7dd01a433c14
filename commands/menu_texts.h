// The texts of the program's menu items.
#pragma once

#include <string>

// The item texts. The handlers find a command by its text, so each text stands here once. Constant
// after static initialisation; any thread.
extern const std::string fractals_menu;
extern const std::string toggle_timing_logs;
extern const std::string previous_fractal;
extern const std::string next_fractal;
extern const std::string cycle_fractals;
extern const std::string fractal_info;
extern const std::string load_from_disk;
extern const std::string save_to_disk;
extern const std::string quit_option;
extern const std::string mandelbrot;
extern const std::string julia;
extern const std::string sin_frac;
extern const std::string cos_frac;
extern const std::string sinh_frac;
extern const std::string cosh_frac;
extern const std::string barnsley_frac;
extern const std::string dragon_frac;
extern const std::string chebyshev_frac;
extern const std::string hermite_frac;
extern const std::string legendre_frac;
extern const std::string julia_default;
extern const std::string julia_dendrite;
extern const std::string julia_rabbit;
extern const std::string julia_marco;
extern const std::string julia_siegel;
extern const std::string barnsley_1;
extern const std::string barnsley_2;
extern const std::string barnsley_3;
extern const std::string barnsley_sierpinski;
extern const std::string random_colours;
extern const std::string rgb_cycle;
extern const std::string zoom_string;
extern const std::string cpu_device;
extern const std::string double_precision;
extern const std::string cpu_threads;
extern const std::string system_information;
extern const std::string toggle_to_cpu;
extern const std::string toggle_to_gpu;
