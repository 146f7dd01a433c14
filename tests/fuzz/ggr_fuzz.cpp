// A GIMP gradient in its file.
#include <cstdint>

#include "tests/fuzz/gradient_check.h"
#include "tests/fuzz/scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("input.ggr");
    file.write({reinterpret_cast<const char*>(data), size});
    checkWhatIsRead([&] { return render::readGradientFile(file.path); });
    return 0;
}
