// OpenCL devices that answer queries and take every call that sets up, launches and releases, but
// compute nothing.
#pragma once

#include <functional>
#include <string>
#include <vector>

// One device for each flag, named "Device 0", "Device 1", ...; the flag says whether it can do
// double precision. No flags: there is no platform either.
extern std::vector<bool> standInDevices;

// What the program's call of this name was, while the program makes it; queries and kernel
// arguments are not told.
extern std::function<void(const std::string& name)> onDeviceCall;

// The bytes last written to a device buffer that was there already.
extern std::vector<unsigned char> uploadedBytes;
