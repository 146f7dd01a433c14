// Renders places with the yardstick alone and prints a line of pictures.txt for each.
//
//     deep_yardstick_pictures [PLACE...]
//
// All of them take most of an hour of one processor.
#include <algorithm>
#include <iostream>

#include "places.h"

namespace {

std::vector<std::int32_t> render(const oracle::View& view) {
    const oracle::Oracle here(view);
    std::vector<std::int32_t> counts;
    for (int k = 0; k < oracle::SIDE * oracle::SIDE; ++k) {
        counts.push_back(here.pixel(k % oracle::SIDE, k / oracle::SIDE).count);
    }
    return counts;
}

void print(const oracle::Place& place) {
    const auto counts = render(place.view);
    const oracle::Picture p = oracle::summary(counts, place.view.maxIters);
    std::cout << place.name << ' ' << std::hex << p.hash << std::dec << ' ' << p.least << ' '
              << p.most << ' ' << p.inside << ' ' << p.different << ' ' << p.steps << std::endl;
    const auto undecided = std::count(counts.begin(), counts.end(), oracle::UNDECIDED);
    if (undecided > 0) std::cerr << place.name << ": " << undecided << " undecided\n";
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> names(arguments + 1, arguments + count);
    for (const oracle::Place& place : oracle::places()) {
        const bool wanted = std::count(names.begin(), names.end(), place.name) > 0;
        if (names.empty() || wanted) print(place);
    }
}
