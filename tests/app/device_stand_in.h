// OpenCL devices that only answer queries.
#pragma once

#include <vector>

// One device for each flag, named "Device 0", "Device 1", ...; the flag says whether it can do
// double precision. No flags: there is no platform either.
extern std::vector<bool> standInDevices;
