#include "backends/renderer.h"

bool bCPU = false;
std::atomic<bool> bDoublePrecision{false};
