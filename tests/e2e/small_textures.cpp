// To be preloaded: an OpenGL that takes no texture with a side above $TESSARY_LARGEST_TEXTURE.
#include <GL/gl.h>
#include <dlfcn.h>

#include <cstdlib>

namespace {

GLenum pendingError = GL_NO_ERROR;

int largest() {
    const char* text = std::getenv("TESSARY_LARGEST_TEXTURE");
    return text == nullptr ? 16384 : std::atoi(text);
}

template <class Function>
Function* next(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

void glTexImage2D(GLenum target, GLint level, GLint components, GLsizei width, GLsizei height,
                  GLint border, GLenum format, GLenum type, const GLvoid* pixels) {
    if (width > largest() || height > largest()) {
        if (pendingError == GL_NO_ERROR) pendingError = GL_INVALID_VALUE;
        return;
    }
    next(glTexImage2D, "glTexImage2D")(target, level, components, width, height, border, format,
                                       type, pixels);
}

void glGetIntegerv(GLenum what, GLint* value) {
    next(glGetIntegerv, "glGetIntegerv")(what, value);
    if (what == GL_MAX_TEXTURE_SIZE) *value = largest();
}

GLenum glGetError() {
    const GLenum error = pendingError;
    pendingError = GL_NO_ERROR;
    return error != GL_NO_ERROR ? error : next(glGetError, "glGetError")();
}

}  // extern "C"
