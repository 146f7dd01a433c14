// A whole catalogue as the bytes of a .frac file: see docs/frac-format.md. Plain functions; any
// thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frac/fractal.h"

// Told of each record as soon as it is read.
using RecordListener = std::function<void(const fractal&)>;

// The records of the file at path. Any bytes are accepted: a record cut short counts, with zeros
// for what is missing. Nothing when the file cannot be opened, or fails before its first record.
std::optional<std::vector<fractal>> readCatalogue(const std::string& path,
                                                  const RecordListener& listener = {});

// The same for bytes at hand.
std::vector<fractal> decodeCatalogue(std::string_view bytes);

// The bytes of a file with these records, in this order.
std::string encodeCatalogue(const std::vector<fractal>& entries);
