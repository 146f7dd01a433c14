// A .frac record written out byte by byte from its description, for tests to hold files against and
// to damage.
#pragma once

#include <cstdint>
#include <string>

namespace frac_bytes {

template <class T>
void put(std::string& bytes, T value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// What a record holds, in the order of the file. `length` is the name length as the file states it,
// `name` the bytes that follow it.
struct Record {
    double xMax = 1.5, xMin = -1.5, yMax = 1.25, yMin = -1.25, cx = 0.5, cy = -0.5;
    std::int32_t maxIters = 100;
    double maxSize = 4.0;
    std::int32_t palette = 1, formula = 2;
    std::int32_t length = 5;
    std::string name = std::string("name\0", 5);
    std::int32_t id = 42;

    static Record named(const std::string& text) {
        Record record;
        record.name = text + '\0';
        record.length = static_cast<std::int32_t>(record.name.size());
        return record;
    }

    std::string bytes() const {
        std::string result;
        for (const double value : {xMax, xMin, yMax, yMin, cx, cy}) put(result, value);
        put(result, maxIters);
        put(result, maxSize);
        for (const std::int32_t value : {palette, formula, length}) put(result, value);
        result += name;
        put(result, id);
        return result;
    }
};

}  // namespace frac_bytes
