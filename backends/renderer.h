// Which renderer and which precision the next frame uses.
#pragma once

#include <atomic>

// True: CPU worker pool; false: OpenCL device. Written by start-up and menu handlers, read by the
// frame loop; GLUT thread only.
extern bool bCPU;

// True: double precision. Written by the GLUT thread between frames (start-up, menu handlers), read
// by it and by workers, no lock.
extern std::atomic<bool> bDoublePrecision;
