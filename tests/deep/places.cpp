#include "places.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace oracle {
namespace {

const std::string FOLDER = TESSARY_DEEP_PLACES;

std::ifstream opened(const std::string& name) {
    std::ifstream file(FOLDER + "/" + name);
    if (!file) throw std::runtime_error(name + " cannot be read");
    return file;
}

Place read(const std::string& line) {
    Place place;
    std::string formula;
    View& v = place.view;
    std::istringstream words(line);
    words >> place.name >> formula >> v.re >> v.im >> v.width >> v.cRe >> v.cIm >> v.limit >>
        v.maxIters;
    if (!words) throw std::runtime_error("damaged: " + line.substr(0, 40));
    if (formula == "-") v.cRe = v.cIm = std::string();
    v.pixelsWide = v.pixelsHigh = SIDE;
    return place;
}

std::vector<Place> readAll(const std::string& name) {
    std::vector<Place> all;
    std::ifstream file = opened(name);
    for (std::string line; std::getline(file, line);) all.push_back(read(line));
    return all;
}

}  // namespace

const std::vector<Place>& places() {
    static const std::vector<Place> all = readAll("places.txt");
    return all;
}

std::vector<Edge> edges() {
    std::vector<Edge> all;
    for (const Place& place : readAll("edges.txt")) {
        const std::size_t comma = place.name.find(',');
        all.push_back({place.view, std::stoi(place.name), std::stoi(place.name.substr(comma + 1))});
    }
    return all;
}

Picture summary(const std::vector<std::int32_t>& counts, int maxIters) {
    Picture p;
    p.hash = 14695981039346656037ULL;  // FNV-1a, by whole counts
    p.least = maxIters;
    for (const std::int32_t count : counts) {
        p.hash = (p.hash ^ static_cast<std::uint32_t>(count)) * 1099511628211ULL;
        p.steps += count;
        if (count == maxIters) ++p.inside;
        if (count == maxIters) continue;
        p.least = std::min(p.least, count);
        p.most = std::max(p.most, count);
    }
    p.different = static_cast<int>(std::set<std::int32_t>(counts.begin(), counts.end()).size());
    return p;
}

std::map<std::string, Picture> knownPictures() {
    std::map<std::string, Picture> known;
    std::ifstream file = opened("pictures.txt");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string name;
        Picture p;
        words >> name >> std::hex >> p.hash >> std::dec >> p.least >> p.most >> p.inside >>
            p.different >> p.steps;
        if (!words) throw std::runtime_error("pictures.txt: " + line);
        known[name] = p;
    }
    return known;
}

}  // namespace oracle
