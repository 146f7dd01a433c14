// The OpenCL objects in use and the settings that go with them. They stand apart from
// backends/opencl_backend.h so that their short names stay out of everybody else's sight: only the
// back-end and its tests include this header. Main thread only, all of it.
#pragma once

#include <cstdint>

#include "backends/opencl.h"

// Context of the device in use. Written by set-up and release, read by set-up.
extern cl_context context;

// In-order queue on that device. Written by set-up and release, read by launch and upload.
extern cl_command_queue command_queue;

// Device image [0] and device palette [1]. Written by set-up and release, read by launch and
// upload.
extern cl_mem memobj[2];

// Program built from the chosen text. Written by set-up and release.
extern cl_program program;

// do_work in double [0] and in single precision [1]. Written by set-up and release, read by launch.
extern cl_kernel kernels[2];

// Index into kernels of the kernel in use. Written by set-up, read by launch.
extern unsigned char running_kernel;

// Status of the last OpenCL call. Written by every step of the back-end, read by the next check.
extern cl_int ret;

// Work-group hint; 1 forces groups of 1 x 1. Written by set-up, read by launch.
extern std::int32_t max_items;
