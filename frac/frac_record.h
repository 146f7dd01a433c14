// One catalogue entry as the bytes of a .frac file: see docs/frac-format.md.
#pragma once

#include <optional>
#include <string>

#include "frac/fractal.h"

class ByteReader;

// The bytes of one record, in the byte order of the host. Any thread.
std::string encodeRecord(const fractal& entry);

// The next record, or nothing when the bytes end before its first field is whole. Fields the file
// no longer has are zero; a name length below 1 means no name; one past the end takes what is
// there. Memory is bounded by the bytes actually read. Any thread.
std::optional<fractal> decodeRecord(ByteReader& reader);
