// To be preloaded: a system that runs out of something once. $TESSARY_SCARCE says of what, as
//   memory=N   the N-th allocation of at least a megabyte fails
//   new=N      the N-th of those by operator new, which the drivers' are not
//   thread=N   the N-th thread does not start
//   shm=0      there is no /dev/shm
// and $TESSARY_SCARCE_FILE names a file that is made when it comes to that.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {

constexpr std::size_t LARGE = std::size_t{1} << 20;

std::atomic<long> allocations{0}, threads{0};

// The number of the one that fails; -1: none. Looks at the variable itself, for allocations come
// before anything is set up.
long wanted(const char* what) {
    const char* text = getenv("TESSARY_SCARCE");
    const std::size_t length = std::strlen(what);
    if (text == nullptr || std::strncmp(text, what, length) != 0 || text[length] != '=') return -1;
    return std::atol(text + length + 1);
}

void tell() {
    const char* path = getenv("TESSARY_SCARCE_FILE");
    if (path == nullptr) return;
    const int file = open(path, O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    if (file >= 0) close(file);
}

bool fails(std::size_t size, const char* what = "memory") {
    if (size < LARGE || wanted(what) < 0 || ++allocations != wanted(what)) return false;
    tell();
    errno = ENOMEM;
    return true;
}

bool isShared(const char* path) {
    if (wanted("shm") < 0 || std::strncmp(path, "/dev/shm", 8) != 0) return false;
    tell();
    errno = ENOENT;
    return true;
}

template <class Function>
Function* next(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int openNext(const char* name, const char* path, int flags, mode_t mode) {
    using Open = int (*)(const char*, int, ...);
    return isShared(path) ? -1 : reinterpret_cast<Open>(dlsym(RTLD_NEXT, name))(path, flags, mode);
}

}  // namespace

void* operator new(std::size_t size) {
    void* memory = fails(size, "new") ? nullptr : malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    void* memory =
        fails(size, "new") ? nullptr : aligned_alloc(static_cast<std::size_t>(alignment), size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* operator new[](std::size_t size, std::align_val_t alignment) {
    return operator new(size, alignment);
}

extern "C" {

void* malloc(std::size_t size) {
    return fails(size) ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    return fails(count * size) ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* old, std::size_t size) {
    return fails(size) ? nullptr : __libc_realloc(old, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    return fails(size) ? nullptr : __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size) {
    void* memory = memalign(alignment, size);
    if (memory == nullptr) return ENOMEM;
    *result = memory;
    return 0;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
    if (wanted("thread") > 0 && ++threads == wanted("thread")) {
        tell();
        return EAGAIN;
    }
    return next(pthread_create, "pthread_create")(thread, attributes, body, argument);
}

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return openNext("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return openNext("open64", path, flags, mode);
}

int shm_open(const char* name, int flags, mode_t mode) {
    return isShared("/dev/shm") ? -1 : next(shm_open, "shm_open")(name, flags, mode);
}

}  // extern "C"
