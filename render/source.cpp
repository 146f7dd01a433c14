#include "render/source.h"

#include <filesystem>

#include "frac/input.h"
#include "render/failure.h"

namespace render {
namespace {

std::string stemOf(const std::string& path) {
    return path == "-" ? "stdin" : std::filesystem::path(path).stem().string();
}

std::string warningAbout(const std::string& name, std::size_t entries) {
    return name + ": damaged; rendering what the program would load: " + std::to_string(entries) +
           (entries == 1 ? " entry" : " entries");
}

}  // namespace

Source readSource(const std::string& path) {
    Input input = readInput(path);
    const std::string name = inputName(path);
    if (input.document.entries.empty()) throw Failure(name + ": no entries");
    Source source{std::move(input.document.entries), {}, stemOf(path), {}};
    try {
        source.settings = readSettings(input.document.render);
    } catch (const Failure& failure) {
        throw Failure(name + ": " + failure.what());
    }
    if (!input.damage.empty()) source.warning = warningAbout(name, source.entries.size());
    return source;
}

}  // namespace render
