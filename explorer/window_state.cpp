#include "explorer/window_state.h"

std::int32_t screen_width = 0, screen_height = 0;
GlutMenu::CGlutMenu menu;
std::int64_t totalTime = 0;
