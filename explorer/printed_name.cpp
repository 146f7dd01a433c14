#include "explorer/printed_name.h"

#include <unistd.h>

#include "explorer/utf8.h"

std::string printedName(const std::string& name) {
    return isatty(STDOUT_FILENO) ? withoutControls(name) : name;
}
