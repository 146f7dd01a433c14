// The document that a PNG picture carries in its text chunk "tessary".
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

class ByteReader;

// What is wrong with a picture, for one line.
class PictureError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The text of the first chunk tEXt, zTXt or iTXt with the keyword "tessary"; nothing where there is
// none. The reader stands just behind the eight bytes of the signature. The pixels are passed over,
// so memory does not grow with them. Throws PictureError for what is no PNG or is cut short before
// the chunk. Any thread.
std::optional<std::string> readPictureText(ByteReader& reader);
