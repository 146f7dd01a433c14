// How a picture was made, beside what it shows: the object "render" of the document that it
// carries.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "frac/fractal.h"
#include "render/job.h"

namespace render {

// What a document may say of its pictures; what it leaves out is empty.
struct Settings {
    std::optional<Size> size;
    std::optional<Precision> precision;
    std::optional<int> supersample;
    std::vector<Colour> colours;  // of a .map file
    WantedColours colouring;
};

// What a precision is called: "single", "double", "exact" or "auto".
const char* wordOf(Precision which);

// {"size": [W, H], "precision": "double", "supersample": N, "colours": [[R, G, B], ...]}, colours
// only where there are some, and with a colouring what render/colour_settings.h says. A band adds
// "band" (see render/shard.h), a frame of a cross-fade "fade": [step, steps] and "from", the entry
// that fades.
nlohmann::json settingsOf(const Job& job);

// The settings that such an object holds, or none of null. Other keys are skipped. A value that is
// no setting is a Failure.
Settings readSettings(const nlohmann::json& object);

// The text of the chunk `tessary`: a document, in ASCII, with this picture's entry and settings.
std::string describe(const Job& job);

}  // namespace render
