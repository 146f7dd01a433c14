// To be preloaded: keeps count of what the program makes in OpenGL and of what OpenGL and the X
// server object to, in the file $TESSARY_COUNTS of at least eight 64-bit numbers. In this order:
// frames shown, textures alive, display lists alive, contexts alive, OpenGL errors, X errors.
#include <GL/gl.h>
#include <GL/glx.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using Count = std::atomic<std::int64_t>;

struct Counts {
    Count frames, textures, lists, contexts, glErrors, xErrors;
};

// The counts in the file; without one, counts that nobody reads.
Counts& counts() {
    static Counts unread;
    static Counts* const shared = [] {
        const char* path = std::getenv("TESSARY_COUNTS");
        const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
        if (file < 0) return &unread;
        void* memory = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        return memory == MAP_FAILED ? &unread : static_cast<Counts*>(memory);
    }();
    return *shared;
}

template <class Function>
Function* next(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The error that OpenGL holds, counted.
GLenum takeError() {
    const GLenum error = next(glGetError, "glGetError")();
    if (error == GL_NO_ERROR) return error;
    ++counts().glErrors;
    std::fprintf(stderr, "OpenGL error 0x%x\n", error);
    return error;
}

// Of several errors OpenGL may hold one for each of its parts.
void takeErrors() {
    constexpr int MOST = 8;
    for (int i = 0; i < MOST && takeError() != GL_NO_ERROR; ++i) {
    }
}

// The handler that the program believes to be in force.
XErrorHandler handler = nullptr;

// The desktop toolkit provokes errors now and then, to learn that a window is gone.
bool belongsToToolkit(XErrorHandler function) {
    Dl_info owner{};
    return dladdr(reinterpret_cast<void*>(function), &owner) != 0 &&
           std::strstr(owner.dli_fname, "libgdk") != nullptr;
}

int countError(Display* display, XErrorEvent* event) {
    if (!belongsToToolkit(handler)) {
        ++counts().xErrors;
        std::fprintf(stderr, "X error %d in request %d\n", event->error_code, event->request_code);
    }
    return handler == nullptr ? 0 : handler(display, event);
}

}  // namespace

extern "C" {

void glGenTextures(GLsizei count, GLuint* names) {
    counts().textures += count;
    next(glGenTextures, "glGenTextures")(count, names);
}

void glDeleteTextures(GLsizei count, const GLuint* names) {
    counts().textures -= count;
    next(glDeleteTextures, "glDeleteTextures")(count, names);
}

GLuint glGenLists(GLsizei range) {
    counts().lists += range;
    return next(glGenLists, "glGenLists")(range);
}

void glDeleteLists(GLuint list, GLsizei range) {
    counts().lists -= range;
    next(glDeleteLists, "glDeleteLists")(list, range);
}

GLXContext glXCreateNewContext(Display* display, GLXFBConfig config, int type, GLXContext share,
                               Bool direct) {
    ++counts().contexts;
    return next(glXCreateNewContext, "glXCreateNewContext")(display, config, type, share, direct);
}

void glXDestroyContext(Display* display, GLXContext context) {
    --counts().contexts;
    next(glXDestroyContext, "glXDestroyContext")(display, context);
}

// The program makes one ill-formed call on purpose; its error alone is expected.
void glTexEnvi(GLenum target, GLenum name, GLint value) {
    takeErrors();
    next(glTexEnvi, "glTexEnvi")(target, name, value);
    if (target != name) return;
    const GLenum error = next(glGetError, "glGetError")();
    if (error != GL_INVALID_ENUM) ++counts().glErrors;
}

GLenum glGetError() {
    return takeError();
}

void glXSwapBuffers(Display* display, GLXDrawable drawable) {
    takeErrors();
    ++counts().frames;
    next(glXSwapBuffers, "glXSwapBuffers")(display, drawable);
}

XErrorHandler XSetErrorHandler(XErrorHandler wanted) {
    const auto original = next(XSetErrorHandler, "XSetErrorHandler");
    const XErrorHandler before = original(countError);
    const XErrorHandler believed = handler == nullptr ? before : handler;
    // Without a handler of its own the program means Xlib's, which it is told once.
    static const XErrorHandler byXlib = before;
    handler = wanted == nullptr ? byXlib : wanted;
    return believed;
}

Display* XOpenDisplay(const char* name) {
    if (handler == nullptr) XSetErrorHandler(nullptr);
    return next(XOpenDisplay, "XOpenDisplay")(name);
}

}  // extern "C"
