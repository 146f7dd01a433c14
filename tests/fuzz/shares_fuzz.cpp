// A NumPy file, read as a share of numbers, joined with none but itself, and resumed.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frac/input.h"
#include "render/colouring.h"
#include "render/failure.h"
#include "render/join.h"
#include "render/number_share.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/scratch_file.h"

namespace {

// Whether it is done rather than refused, which takes words.
template <class Action>
bool attempt(Action action) {
    try {
        action();
        return true;
    } catch (const render::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal has words");
    } catch (const InputError& error) {
        require(error.what()[0] != '\0', "a refusal has words");
    }
    return false;
}

// The rows, one after the other: where the checksum holds, those that stand in the file.
void readRows(const std::string& path, std::string_view bytes) {
    const render::NumberShare share = render::readNumberShare(path);
    const std::size_t stride =
        render::numberBytes(share.shape.kind) * static_cast<std::size_t>(share.shape.size.width);
    render::StackedNumbers rows({share});
    std::vector<unsigned char> row(share.shape.size.height > 0 ? stride : 0);
    for (int y = 0; y < share.shape.size.height; ++y) {
        rows.read(y, y + 1, row.data(), stride);
        const std::string_view there =
            bytes.substr(share.shape.length + static_cast<std::size_t>(y) * stride, stride);
        require(there == std::string_view(reinterpret_cast<const char*>(row.data()), stride),
                "rows are those of the file");
    }
}

void resume(const std::string& path) {
    render::Job job;
    job.size = {5, 4};
    job.output = path;
    job.band = render::Band{};
    job.colouring = std::make_shared<const render::Colouring>(render::WantedColours{});
    for (const auto kind : {render::NumberKind::counts, render::NumberKind::values}) {
        render::unfinishedNumbers({job}, kind);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("input.npy"), joined("joined.npy");
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    file.write(bytes);
    require(render::isNumberFile(file.path) == bytes.starts_with("\x93NUMPY"),
            "files for NumPy are told by how they begin");
    attempt([&] { readRows(file.path, bytes); });
    attempt([&] { resume(file.path); });
    if (attempt([&] { render::joinBands({file.path}, joined.path, {1, true}); })) {
        const std::string whole = test_support::readFile(joined.path);
        require(bytes.starts_with(whole), "a share that is all is the file without its record");
    }
    return 0;
}
