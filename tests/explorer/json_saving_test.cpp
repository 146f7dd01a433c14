// A catalogue that goes through a JSON document is what loading and saving it in the program gives.
#include <gmock/gmock.h>

#include <random>

#include "explorer/frac_file.h"
#include "frac/catalogue_bytes.h"
#include "frac/input.h"
#include "tests/frac/frac_bytes.h"
#include "tests/support/stand_ins.h"

using frac_bytes::Record;
using stand_ins::readFile;
using stand_ins::writeFile;

namespace {

class ThroughJson : public stand_ins::CommandsTest {
  protected:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    }

    // Some records, now and then with bytes changed or cut off.
    std::string someBytes() {
        std::string bytes;
        for (std::size_t i = below(6); i > 0; --i) {
            bytes += Record::named(std::string(below(9), 'n')).bytes();
        }
        if (bytes.empty()) return bytes;
        for (std::size_t i = below(40); i > 0; --i) {
            bytes[below(bytes.size())] = static_cast<char>(below(256));
        }
        if (below(4) == 0) bytes.resize(below(bytes.size()));
        return bytes;
    }

    std::string savedByTheProgram(const std::string& bytes) {
        writeFile(folder / "a.frac", bytes);
        LoadData(folder / "a.frac");
        SaveData(folder / "b.frac");
        return readFile(folder / "b.frac");
    }

    std::string throughJson(const std::string& bytes) {
        writeFile(folder / "c.frac", bytes);
        const Document exported = readInput(folder / "c.frac").document;
        return encodeCatalogue(readDocument(writeDocument(exported)).entries);
    }

    std::mt19937 random{21};
    stand_ins::TemporaryFolder folder;
};

TEST_F(ThroughJson, FiveHundredCataloguesAreAsTheProgramSavesThem) {
    for (int i = 0; i < 500; ++i) {
        const std::string bytes = someBytes();
        ASSERT_EQ(throughJson(bytes), savedByTheProgram(bytes)) << testing::PrintToString(bytes);
    }
}

}  // namespace
