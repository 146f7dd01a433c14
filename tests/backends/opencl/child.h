// A run of opencl_driver, seen from outside.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace child {

using Environment = std::map<std::string, std::string>;

struct Result {
    int status = -1;      // exit status; 128 + signal when a signal ended it
    std::string out;      // standard output
    std::string err;      // standard error
    std::string callLog;  // what the layer wrote down, one line a call; empty without the layer
};

// Runs opencl_driver with these commands (split at blanks) in this environment on top of the tests'
// own. Blocks until it ends.
Result run(const std::string& commands, const Environment& environment = {});

// The environment that puts the test layer, so set, between the loader and the runtime.
Environment layer(const std::string& settings = "");

// The lines of a text that begin with `start`.
std::vector<std::string> linesThatStart(const std::string& text, const std::string& start);

// A file name for this test alone in the build folder; nothing is created.
std::string scratchFile(const std::string& name);

// The lines of a text, without their ends.
std::vector<std::string> lines(const std::string& text);

}  // namespace child
