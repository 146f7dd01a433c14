// To be preloaded: writes down when the program draws, shows a frame, sleeps and takes an event, in
// the file $TESSARY_TRACE: a 64-bit count, then so many records, as far as the file is long.
// bench/glide.py makes the file and reads it.
#include <GL/gl.h>
#include <GL/glx.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace {

enum class Kind : std::int32_t { clear, upload, swap, sleep, event };

// Times in nanoseconds of the monotonic clock. Value: the length asked for of a sleep; the type of
// an event, times 2^32, and the server's time of it in milliseconds, 0 if it has none.
struct Record {
    std::int64_t begin, end, value;
    std::int32_t thread;
    Kind kind;
};

struct Trace {
    std::atomic<std::int64_t>* count = nullptr;
    Record* records = nullptr;
    std::int64_t room = 0;
};

const Trace& trace() {
    static const Trace mapped = [] {
        const char* path = std::getenv("TESSARY_TRACE");
        const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
        struct stat facts {};
        if (file < 0 || fstat(file, &facts) != 0) return Trace{};
        const auto size = static_cast<std::size_t>(facts.st_size);
        void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        if (memory == MAP_FAILED) return Trace{};
        auto* count = static_cast<std::atomic<std::int64_t>*>(memory);
        return Trace{count, reinterpret_cast<Record*>(count + 1),
                     static_cast<std::int64_t>((size - sizeof *count) / sizeof(Record))};
    }();
    return mapped;
}

std::int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

// Writes down what happens from here to the end of the block.
class Span {
  public:
    explicit Span(Kind kind, std::int64_t value = 0) : record{now(), 0, value, gettid(), kind} {}
    ~Span() {
        record.end = now();
        if (trace().count == nullptr) return;
        const std::int64_t place = (*trace().count)++;
        if (place < trace().room) trace().records[place] = record;
    }
    Span(const Span&) = delete;
    Span& operator=(const Span&) = delete;

    Record record;
};

template <class Function>
Function* next(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::int64_t typeAndTime(const XEvent& event) {
    std::int64_t milliseconds = 0;
    if (event.type == MotionNotify) milliseconds = static_cast<std::int64_t>(event.xmotion.time);
    return (std::int64_t{event.type} << 32) | (milliseconds & 0xFFFFFFFF);
}

}  // namespace

extern "C" {

void glClear(GLbitfield mask) {
    const Span span(Kind::clear);
    next(glClear, "glClear")(mask);
}

void glTexImage2D(GLenum target, GLint level, GLint components, GLsizei width, GLsizei height,
                  GLint border, GLenum format, GLenum type, const GLvoid* pixels) {
    const Span span(Kind::upload);
    next(glTexImage2D, "glTexImage2D")(target, level, components, width, height, border, format,
                                       type, pixels);
}

void glXSwapBuffers(Display* display, GLXDrawable drawable) {
    const Span span(Kind::swap);
    next(glXSwapBuffers, "glXSwapBuffers")(display, drawable);
}

int nanosleep(const timespec* length, timespec* left) {
    static const auto original = next(nanosleep, "nanosleep");
    const Span span(Kind::sleep, length->tv_sec * 1'000'000'000 + length->tv_nsec);
    return original(length, left);
}

int XNextEvent(Display* display, XEvent* event) {
    Span span(Kind::event);
    const int result = next(XNextEvent, "XNextEvent")(display, event);
    span.record.value = typeAndTime(*event);
    return result;
}

}  // extern "C"
