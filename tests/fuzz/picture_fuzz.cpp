// A PNG file, read as what it shows, to be rendered again, to be joined with others, and to be
// resumed.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

#include "frac/input.h"
#include "render/colour_rows.h"
#include "render/encoder.h"
#include "render/failure.h"
#include "render/join.h"
#include "render/plan.h"
#include "render/resume.h"
#include "render/rows.h"
#include "render/settings.h"
#include "render/source.h"
#include "render/stored_picture.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/scratch_file.h"

namespace {

// What the input is refused with counts as little as what is made of it.
template <class Action>
void attempt(Action action) {
    try {
        action();
    } catch (const render::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal has words");
    } catch (const render::UsageError& error) {
        require(error.what()[0] != '\0', "a refusal has words");
    } catch (const InputError& error) {
        require(error.what()[0] != '\0', "a refusal has words");
    }
}

void readRows(const std::string& path, bool deep) {
    render::StoredPicture picture(path, deep);
    const render::Size size = picture.size();
    std::vector<unsigned char> row(static_cast<std::size_t>(size.width) * (deep ? 6 : 3));
    for (int y = 0; y < size.height; ++y) picture.readRow(row.data());
    picture.finish();
}

// The picture of an entry again, in a few pixels and steps.
void renderAgain(render::Job job) {
    static const std::atomic<bool> never{false};
    job.view.maxIters = std::min(job.view.maxIters, 50);
    const auto height = static_cast<std::size_t>(job.size.height);
    const std::size_t stride =
        static_cast<std::size_t>(job.size.width) * static_cast<std::size_t>(pixelBytes(job));
    std::vector<unsigned char> rows(stride * height);
    render::RowRenderer(never).render(job, {0, job.size.height}, rows.data(), stride);
}

// What a picture carries makes the same picture.
void checkDescription(const render::Job& job) {
    const Document document = readDocument(render::describe(job));
    render::Source source;
    source.entries = document.entries;
    source.settings = render::readSettings(document.render);
    const auto jobs = render::planStills({}, source);
    require(render::describe(jobs.at(0)) == render::describe(job),
            "what a picture carries makes it again");
}

void planAgain(const std::string& path) {
    constexpr std::size_t SOME = 3;
    render::Source source = render::readSource(path);
    if (source.entries.size() > SOME) source.entries.resize(SOME);
    render::Options options;
    options.size = render::WantedSize{7, 5};
    for (const render::Job& job : render::planStills(options, source)) {
        checkDescription(job);
        renderAgain(job);
    }
}

// A picture resumes where its head is the very one that is wanted: here its own.
void resume(const std::string& path) {
    const render::Source source = render::readSource(path);
    for (const render::Job& job : render::planStills({}, source)) {
        for (const auto how : {render::Compression::fast, render::Compression::small}) {
            render::isWhole(path, render::PngEncoder(how, true).head(job));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("input.png"), joined("joined.png");
    file.write({reinterpret_cast<const char*>(data), size});
    for (const bool deep : {false, true}) attempt([&] { readRows(file.path, deep); });
    attempt([&] { planAgain(file.path); });
    attempt([&] { resume(file.path); });
    attempt([&] { render::joinBands({file.path}, joined.path, {1, true}); });
    return 0;
}
