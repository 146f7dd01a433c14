// Shares of numbers: what their files end with, and reading them back.
//
// A share of a NumPy file is a NumPy file of some rows, of no row where none is left for it. Behind
// its last row, where NumPy does not look, stands its record: a JSON document in ASCII that tells
// all that the numbers depend on, and which rows of what they are, then a line of eight hexadecimal
// digits, the Adler-32 of the rows and the document.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "frac/json_document.h"
#include "render/job.h"
#include "render/npy_head.h"

namespace render {

// The size of what a job makes of the numbers: that of its band, which may have no row.
Size sizeOfNumbers(const Job& job);

// The record of a job that has a band; rows: the Adler-32 of them.
std::string numberRecord(const Job& job, NumberKind kind, std::uint32_t rows);

// What the file of a share says.
// NOLINTNEXTLINE(bugprone-exception-escape): as of Document
struct NumberShare {
    std::string path;
    // Without a name, a palette and an identity, which no number depends on. Under "render" stand
    // "size", "precision" and "band" as in a picture's, the bound as "escape", and "numbers", which
    // is "counts" or "values".
    Document document;
    NpyShape shape;           // of its rows
    std::uint32_t adler = 1;  // of the document, as if it were all
    std::uint64_t length = 0;
    std::uint32_t checksum = 1;  // of both, as the record says
};

// Whether the file at path begins as NumPy files do.
bool isNumberFile(const std::string& path);

// Reads all but the rows. Failure, with the name of the file, when it cannot be read, is no share,
// or is longer or shorter than it says.
NumberShare readNumberShare(const std::string& path);

// The jobs whose files are not there as whole shares of these very numbers. What is no share does
// not tell what numbers it holds, and is made anew.
std::vector<Job> unfinishedNumbers(const std::vector<Job>& jobs, NumberKind kind);

// The rows of shares, one below the other. Failure, with the name of the file, when a checksum is
// not that of what is read.
class StackedNumbers : public RowSource {
  public:
    // shares: from the top down, all of them.
    explicit StackedNumbers(std::vector<NumberShare> parts);

    void read(int first, int end, unsigned char* out, std::size_t stride) override;

  private:
    void open();
    void finish();

    const std::vector<NumberShare> shares;
    std::size_t current = 0;  // the share that is read
    std::ifstream file;
    int left = 0;             // its rows still to come
    std::uint32_t adler = 1;  // of those before
};

}  // namespace render
