// The values of CTextInput::kind.

#pragma once

#include <cstdint>

namespace GlutMenu {

constexpr int32_t single_field = 1;
constexpr int32_t message = 2;
constexpr int32_t form = 3;

}  // namespace GlutMenu
