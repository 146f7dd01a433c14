#include "explorer/picture_texture.h"

#include <GL/gl.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <iostream>
#include <vector>

#include "backends/image.h"

namespace {

constexpr std::size_t PIXEL_BYTES = 4;

// No OpenGL refuses a texture of this side.
constexpr int SMALLEST_SIDE = 64;

// What the first frame found out. GLUT thread only.
enum class Fit { untried, whole, pieces, nothing };
Fit fit = Fit::untried;

// Side of the square texture that each piece is drawn with. GLUT thread only.
int pieceSide = 0;

// Part of the picture, in buffer pixels, and where it lies in its texture, from 0 to 1.
struct Quad {
    float left, top, right, bottom;
    float s0, t0, s1, t1;
};

void drawQuad(const Quad& q) {
    glBegin(GL_QUADS);
    glTexCoord2f(q.s0, q.t0);
    glVertex3f(q.left, q.top, 0.0f);
    glTexCoord2f(q.s1, q.t0);
    glVertex3f(q.right, q.top, 0.0f);
    glTexCoord2f(q.s1, q.t1);
    glVertex3f(q.right, q.bottom, 0.0f);
    glTexCoord2f(q.s0, q.t1);
    glVertex3f(q.left, q.bottom, 0.0f);
    glEnd();
}

void load(int width, int height, const unsigned char* pixels) {
    glTexImage2D(GL_TEXTURE_2D, 0, 4, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
}

void setFilterAndWrapping() {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
}

void forgetErrors() {
    constexpr int AS_MANY_AS_THERE_CAN_BE = 8;
    for (int i = 0; i < AS_MANY_AS_THERE_CAN_BE && glGetError() != GL_NO_ERROR; ++i) {
    }
}

// Whether OpenGL refuses a texture of this size; without pixels it is only tried.
bool isRefused(int width, int height, const unsigned char* pixels) {
    forgetErrors();
    load(width, height, pixels);
    const GLenum error = glGetError();
    return error == GL_INVALID_VALUE || error == GL_OUT_OF_MEMORY;
}

// The largest power of two that is below the picture's size and not refused; 0 for none.
int largestSide() {
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    const auto longer = static_cast<unsigned>(std::max(winX, winY));
    int side = static_cast<int>(std::bit_floor(longer - 1));
    while (side >= SMALLEST_SIDE && (side > limit || isRefused(side, side, nullptr))) side /= 2;
    return side >= SMALLEST_SIDE ? side : 0;
}

void fallBackToPieces() {
    pieceSide = largestSide();
    fit = pieceSide > 0 ? Fit::pieces : Fit::nothing;
    std::cout << "OpenGL refuses a texture of " << winX << " x " << winY << " pixels: the picture ";
    if (fit == Fit::pieces) {
        std::cout << "is drawn in pieces of " << pieceSide << " x " << pieceSide << std::endl;
    } else {
        std::cout << "cannot be shown" << std::endl;
    }
}

// Loads the whole picture. The first time it is asked whether that worked.
void loadPicture(int width, int height) {
    if (fit != Fit::untried) {
        load(width, height, buffer.get());
    } else if (isRefused(width, height, buffer.get())) {
        fallBackToPieces();
    } else {
        fit = Fit::whole;
    }
}

// The ill-formed environment call leaves the texture environment at its default, which shows the
// picture as it is; a well-formed one would change how the menus blend. It raises GL_INVALID_ENUM.
void drawWhole(GLuint texture, int width, int height) {
    glTexEnvi(GL_TEXTURE_ENV_MODE, GL_TEXTURE_ENV_MODE, GL_DECAL);
    setFilterAndWrapping();
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
    const auto right = static_cast<float>(width - 1), bottom = static_cast<float>(height - 1);
    drawQuad({0.0f, 0.0f, right, bottom, 0.0f, 0.0f, 1.0f, 1.0f});
}

// Copies width x height pixels from column `left` and row `top` on, and one more on every side for
// the filter to look at, into a texture of pieceSide. Beyond an edge lies the opposite one, as in a
// texture that repeats.
void copyPiece(std::vector<unsigned char>& texels, int left, int top, int width, int height) {
    const auto columns = static_cast<int>(winX), rows = static_cast<int>(winY);
    for (int y = -1; y <= height; ++y) {
        const auto row = static_cast<std::size_t>((top + y + rows) % rows);
        const auto texelRow = static_cast<std::size_t>((y + 1) * pieceSide);
        for (int x = -1; x <= width; ++x) {
            const auto column = static_cast<std::size_t>((left + x + columns) % columns);
            const unsigned char* from =
                buffer.get() + (row * static_cast<std::size_t>(columns) + column) * PIXEL_BYTES;
            const std::size_t to = (texelRow + static_cast<std::size_t>(x + 1)) * PIXEL_BYTES;
            std::copy_n(from, PIXEL_BYTES, &texels[to]);
        }
    }
}

// Where pixel `at` of `side` of them begins on the quad of the whole picture, which is one pixel
// shorter than the picture.
float quadEdge(int at, int side) {
    return static_cast<float>(at) / static_cast<float>(side) * static_cast<float>(side - 1);
}

void drawPieces(int width, int height) {
    setFilterAndWrapping();
    glEnable(GL_TEXTURE_2D);
    const int inner = pieceSide - 2;
    const auto side = static_cast<float>(pieceSide);
    const auto texelCount =
        static_cast<std::size_t>(pieceSide) * static_cast<std::size_t>(pieceSide);
    std::vector<unsigned char> texels(texelCount * PIXEL_BYTES);
    for (int top = 0; top < height; top += inner) {
        for (int left = 0; left < width; left += inner) {
            const int columns = std::min(inner, width - left), rows = std::min(inner, height - top);
            copyPiece(texels, left, top, columns, rows);
            load(pieceSide, pieceSide, texels.data());
            drawQuad({quadEdge(left, width), quadEdge(top, height), quadEdge(left + columns, width),
                      quadEdge(top + rows, height), 1.0f / side, 1.0f / side,
                      static_cast<float>(1 + columns) / side, static_cast<float>(1 + rows) / side});
        }
    }
}

}  // namespace

void drawPicture() {
    const auto width = static_cast<int>(winX), height = static_cast<int>(winY);
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    if (fit == Fit::untried || fit == Fit::whole) loadPicture(width, height);
    if (fit == Fit::whole) drawWhole(texture, width, height);
    if (fit == Fit::pieces) drawPieces(width, height);
    glDeleteTextures(1, &texture);
}
