// To be preloaded into a shell: a file named "output" then takes a second to come into being, as it
// may on a busy machine.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <string_view>

extern "C" int open(const char* path, int flags, ...) {
    using Open = int (*)(const char*, int, ...);
    static const auto original = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    if ((flags & O_CREAT) == 0) return original(path, flags);
    va_list rest;
    va_start(rest, flags);
    const auto mode = va_arg(rest, mode_t);
    va_end(rest);
    if (std::string_view(path).ends_with("/output") && access(path, F_OK) != 0) sleep(1);
    return original(path, flags, mode);
}
