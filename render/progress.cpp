#include "render/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace render {
namespace {

constexpr int WIDEST_BAR = 40, NARROWEST_BAR = 4;

// Hours, minutes and seconds as a clock shows them.
std::string clockTime(double seconds) {
    if (!(seconds < 3.6e8)) return "?";
    const long all = std::lround(seconds);
    char text[40];
    if (all >= 3600) {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", all / 3600, all / 60 % 60, all % 60);
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld", all / 60, all % 60);
    }
    return text;
}

std::string bar(double share, int cells) {
    std::string text = "[";
    for (int cell = 0; cell < cells; ++cell)
        text += cell < static_cast<int>(share * cells) ? '#' : '.';
    return text += "]";
}

std::string rate(double perSecond) {
    char text[40];
    std::snprintf(text, sizeof text, perSecond < 10 ? "%.2f" : "%.0f", perSecond);
    return text;
}

int terminalColumns() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void put(const std::string& text) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

std::string progressLine(const Done& done, double seconds, int columns) {
    const double share =
        done.allWork == 0 ? 1 : static_cast<double>(done.work) / static_cast<double>(done.allWork);
    const double pictures = share * static_cast<double>(done.allPictures);
    const double left = share > 0 ? seconds * (1 - share) / share : INFINITY;
    std::string text = " ";
    text += std::to_string(done.pictures);
    text += "/";
    text += std::to_string(done.allPictures);
    text += " pictures, ";
    text += rate(seconds > 0 ? pictures / seconds : 0);
    text += " a second, ";
    text += clockTime(left);
    text += " left";
    // The last column stays free: a terminal may wrap when it is written.
    const int cells = std::min(columns - 3 - static_cast<int>(text.size()), WIDEST_BAR);
    return cells < NARROWEST_BAR ? std::string() : bar(share, cells) + text;
}

Progress::Progress(bool wanted) : visible(wanted && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (drawn) put("\r\033[K");
}

void Progress::show(const Done& done) {
    using namespace std::chrono_literals;
    if (!visible || Clock::now() - last < 100ms) return;
    last = Clock::now();
    const double seconds = std::chrono::duration<double>(last - start).count();
    std::string line = "\r";
    line += progressLine(done, seconds, terminalColumns());
    put(line += "\033[K");
    drawn = true;
}

}  // namespace render
