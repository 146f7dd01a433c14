// Key codes as GLUT's keyboard callback delivers them.

#pragma once

namespace GlutMenu {

constexpr int key_backspace = 8;
constexpr int key_tab = 9;
constexpr int key_return = 13;
constexpr int key_back_tab = 25;
constexpr int key_escape = 27;
constexpr int key_delete = 127;

// The first and last code that types a character.
constexpr int first_printable = 32;
constexpr int last_printable = 126;

// GLUT's left button and its press.
constexpr int left_button = 0;
constexpr int pressed = 0;

}  // namespace GlutMenu
