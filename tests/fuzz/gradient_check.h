// What every gradient must be like, wherever it came from.
#pragma once

#include <string>
#include <string_view>

#include "render/failure.h"
#include "render/gradient.h"
#include "tests/fuzz/require.h"

// Its colours are levels from 0 to 1 at every kind of place, and its own text makes the same
// gradient again.
void checkGradient(const render::Gradient& gradient);

// Checks what `read` makes of an input; that it refuses it with some words is as good.
template <class Read>
void checkWhatIsRead(Read read) {
    try {
        checkGradient(read());
    } catch (const render::Failure& failure) {
        require(!std::string_view(failure.what()).empty(), "a refusal has words");
    }
}
