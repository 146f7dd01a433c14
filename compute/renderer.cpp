#include "compute/renderer.h"

bool bCPU = false;
std::atomic<bool> bDoublePrecision{false};
