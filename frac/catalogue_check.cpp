#include "frac/catalogue_check.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t LENGTH_OFFSET = 68, NAME_OFFSET = 72, IDENTITY_SIZE = 4;

struct FieldEnd {
    std::size_t end;
    const char* name;
};

// The fields before the name, by the offset just past them.
constexpr std::array<FieldEnd, 11> FIELDS = {{
    {8, "xMax"},
    {16, "xMin"},
    {24, "yMax"},
    {32, "yMin"},
    {40, "the real part of c"},
    {48, "the imaginary part of c"},
    {52, "the iteration limit"},
    {60, "the escape bound"},
    {64, "the palette"},
    {68, "the formula"},
    {72, "the length of the name"},
}};

std::string bytesText(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

// Looks at one record after another.
class Check {
  public:
    explicit Check(std::string_view ofBytes) : bytes(ofBytes) {}

    std::vector<Damage> found;

    void run() {
        while (start < bytes.size()) checkRecord();
    }

  private:
    std::size_t left() const { return bytes.size() - start; }

    void add(std::size_t offset, const std::string& text) {
        found.push_back({offset, "entry " + std::to_string(number) + ": " + text});
    }

    // The rest of the file is no more than the beginning of a record.
    void addCut(const std::string& field) {
        add(bytes.size(), "the file ends before the end of " + field);
        start = bytes.size();
    }

    void checkRecord() {
        ++number;
        for (const FieldEnd& field : FIELDS) {
            if (left() < field.end) return addCutWithin(field);
        }
        checkName(lengthOfName());
    }

    void addCutWithin(const FieldEnd& field) {
        if (field.end > FIELDS[0].end) return addCut(field.name);
        add(start, bytesText(left()) + " at the end of the file, too few for an entry");
        start = bytes.size();
    }

    std::int32_t lengthOfName() const {
        std::int32_t length = 0;
        std::memcpy(&length, bytes.data() + start + LENGTH_OFFSET, sizeof length);
        return length;
    }

    void checkName(std::int32_t stated) {
        if (stated < 1) {
            add(start + LENGTH_OFFSET,
                "the length of the name is " + std::to_string(stated) + ", the smallest is 1");
            return checkIdentity(NAME_OFFSET);
        }
        const auto length = static_cast<std::size_t>(stated);
        if (length > left() - NAME_OFFSET) return addShortName(length);
        checkNameBytes(bytes.substr(start + NAME_OFFSET, length));
        checkIdentity(NAME_OFFSET + length);
    }

    void addShortName(std::size_t length) {
        add(start + LENGTH_OFFSET, "the length of the name is " + std::to_string(length) +
                                       ", but " + bytesText(left() - NAME_OFFSET) + " follow");
        start = bytes.size();
    }

    void checkNameBytes(std::string_view name) {
        const std::size_t nul = name.find('\0');
        const std::size_t last = name.size() - 1;
        if (nul == last) return;
        if (nul == std::string_view::npos) {
            add(start + NAME_OFFSET + last, "the name does not end with a NUL");
        } else {
            add(start + NAME_OFFSET + nul,
                "a NUL ends the name " + bytesText(last - nul) + " before its end");
        }
    }

    // Ends the record, whose identity follows at this offset within it.
    void checkIdentity(std::size_t offset) {
        if (left() < offset + IDENTITY_SIZE) return addCut("the identity");
        start += offset + IDENTITY_SIZE;
    }

    std::string_view bytes;
    std::size_t start = 0;   // of the record looked at
    std::size_t number = 0;  // of that record, from 1
};

}  // namespace

std::vector<Damage> findDamage(std::string_view bytes) {
    Check check(bytes);
    check.run();
    return std::move(check.found);
}
