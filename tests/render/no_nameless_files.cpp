// To be preloaded: the file system then knows no files without a name, as some do not.
#include <dlfcn.h>
#include <fcntl.h>

#include <cerrno>
#include <cstdarg>

// Both names of the function; one that is given a mode only where it makes a file.
#define STAND_IN(name)                                                                    \
    extern "C" int name(const char* path, int flags, ...) {                               \
        using Function = int (*)(const char*, int, ...);                                  \
        static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, #name)); \
        if ((flags & O_TMPFILE) == O_TMPFILE) {                                           \
            errno = EOPNOTSUPP;                                                           \
            return -1;                                                                    \
        }                                                                                 \
        va_list rest;                                                                     \
        va_start(rest, flags);                                                            \
        const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;        \
        va_end(rest);                                                                     \
        return original(path, flags, mode);                                               \
    }

STAND_IN(open)
STAND_IN(open64)
