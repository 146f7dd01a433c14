// The OpenCL program in its three texts, put together at build time from the sources beside this
// header. Constants; any thread.
#pragma once

// Single precision. Enables cl_khr_fp64 too, so that its double literals compile.
extern const char kernel_single_embedded[];

// Double precision through Apple's extension; the double-precision text in use on every system.
extern const char kernel_double_mac_embedded[];

// Double precision through cl_khr_fp64; carried along, not selected.
extern const char kernel_double_embedded[];
