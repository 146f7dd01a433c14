// A gradient as text: a name, stops, or the text of a GIMP gradient.
#include <cstdint>

#include "tests/fuzz/gradient_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkWhatIsRead([&] { return render::readGradient(text); });
    if (const auto colour = render::readColourText(text)) {
        require(render::readColourText(render::colourText(*colour)) == colour,
                "a colour's text is read as itself");
    }
    return 0;
}
