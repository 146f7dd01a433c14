// A .map file, as a palette and as a gradient: both take it, or both refuse it.
#include <cstdint>

#include "render/palette.h"
#include "tests/fuzz/gradient_check.h"
#include "tests/fuzz/scratch_file.h"

namespace {

bool isPalette(const std::string& path) {
    try {
        const render::Palette palette = render::readMap(path);
        require(render::paletteOf(palette.colours).table == palette.table,
                "the colours make the table");
        return true;
    } catch (const render::Failure&) {
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("input.map");
    file.write({reinterpret_cast<const char*>(data), size});
    bool isGradient = false;
    checkWhatIsRead([&] {
        const render::Gradient gradient = render::readGradientFile(file.path);
        isGradient = true;
        return gradient;
    });
    require(isPalette(file.path) == isGradient, "what is a palette is a gradient");
    return 0;
}
