// The parameter dialog, from what is typed to the picture: the pixels must be those that the plain
// functions make of the values stored.
#include <algorithm>
#include <vector>

#include "backends/image.h"
#include "backends/palette.h"
#include "backends/renderer.h"
#include "backends/view_state.h"
#include "commands/parameter_dialog.h"
#include "compute/saturate.h"
#include "compute/tile_renderer.h"
#include "explorer/catalogue.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/program.h"
#include "tests/fuzz/require.h"

namespace {

constexpr int MOST_PICTURES = 6;

template <class T>
std::vector<unsigned char> scalarPicture() {
    std::vector<unsigned char> pixels(imageBytes());
    const auto width = static_cast<int>(winX), height = static_cast<int>(winY);
    threadScalar<T>(0, 0, width, height, width, height, static_cast<T>(xMin), static_cast<T>(xMax),
                    static_cast<T>(yMin), static_cast<T>(yMax), static_cast<T>(cx),
                    static_cast<T>(cy), truncateToInt(maxSize), maxIters, pixels.data(), cpuPalette,
                    currentFractalType);
    return pixels;
}

void checkPicture() {
    limitSteps();
    addUpdate();
    renderScene();
    const auto expected = bDoublePrecision ? scalarPicture<double>() : scalarPicture<float>();
    require(std::equal(expected.begin(), expected.end(), buffer.get()),
            "the picture is that of the plain functions");
}

// From 128 on codes are special keys and clicks, below they are typed.
void playKey(InputBytes& in) {
    const int code = in.byte();
    if (code < 0x80) {
        keyboard(static_cast<unsigned char>(code), 0, 0);
    } else if (code < 0xf0) {
        special_keyboard(100 + code % 10, 0, 0);
    } else {
        mouse(0, code & 1, in.byte() * 4, in.byte() * 3);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputBytes in(data, size);
    startProgram();
    const int kind = in.byte();
    bDoublePrecision = (kind & 1) != 0;
    CreateNewFractal(kind >> 1 & 15, 0);
    paletteType = kind >> 5 & 1;
    for (int picture = 0; picture < MOST_PICTURES && !in.isEmpty(); ++picture) {
        showParameterDialog();
        while (GlutMenu::input_field != nullptr && !in.isEmpty()) playKey(in);
        checkPicture();
    }
    return 0;
}
