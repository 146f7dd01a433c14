// A GLUT and an OpenGL without a window: functions of the same names that write down how they were
// called. Link the object library tessary_glut_stand_in into the test; its definitions go before
// those of the real libraries.
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace glut_stand_in {

struct State {
    int windowWidth = 1024, windowHeight = 1024;
    int screenWidth = 1280, screenHeight = 1001;
    bool initialised = true;

    // All calls but queries, in order, each as call() writes it; none while not recording, for whom
    // only the answers matter.
    std::vector<std::string> calls;
    bool recording = true;
    // Print each call as a line of its own as well, to show the order among printed lines.
    bool echo = false;

    int redisplays = 0;
    std::vector<std::string> titles;  // given to glutSetWindowTitle

    // Callbacks as last registered; null when cleared.
    void (*display)() = nullptr;
    void (*reshape)(int, int) = nullptr;
    void (*keyboard)(unsigned char, int, int) = nullptr;
    void (*special)(int, int, int) = nullptr;
    void (*mouse)(int, int, int, int) = nullptr;
    void (*motion)(int, int) = nullptr;
    void (*idle)() = nullptr;

    // The largest texture that is taken, the largest that a query names, and whether the last one
    // was refused.
    int largestTexture = 16384, namedTexture = 16384;
    bool refused = false;

    // The image last given to glTexImage2D, four bytes a pixel.
    std::vector<unsigned char> texture;

    // Runs at each recorded call, to look at the program in the middle of what it does.
    std::function<void(const std::string&)> onCall;
    // Runs in place of the main loop.
    std::function<void()> mainLoop;
};

extern State glut;

// Forgets all calls and callbacks and starts afresh.
void reset();

// "name(argument, argument)", with numbers as the stream prints them.
template <class... Arguments>
std::string call(const std::string& name, Arguments... arguments) {
    std::ostringstream text;
    [[maybe_unused]] const char* separator = "";
    text << name << '(';
    ((text << separator << arguments, separator = ", "), ...);
    text << ')';
    return text.str();
}

// The calls whose name is one of these, in order.
std::vector<std::string> callsNamed(const std::vector<std::string>& names);

// Position of the first such call at or after `from`, or -1.
int indexOf(const std::string& wanted, int from = 0);

}  // namespace glut_stand_in
