#include "render/join.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "frac/input.h"
#include "frac/json_document.h"
#include "render/colour_rows.h"
#include "render/failure.h"
#include "render/npy_encoder.h"
#include "render/number_share.h"
#include "render/settings.h"
#include "render/shard.h"
#include "render/stored_picture.h"

namespace render {
namespace {

// What a band's file says.
// NOLINTNEXTLINE(bugprone-exception-escape): as of Document
struct Piece {
    std::string path;
    Band band;
    Document document;  // without the number of the band
    std::optional<NumberShare> numbers;
};

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw Failure(path + ": " + reason);
}

Settings settingsIn(const Document& document, const std::string& path) {
    try {
        return readSettings(document.render);
    } catch (const Failure& failure) {
        refuse(path, failure.what());
    }
}

Piece pieceOf(const std::string& path, Document document) {
    const auto size = settingsIn(document, path).size;
    const auto band = size ? readBand(document.render, *size) : std::nullopt;
    if (!band || document.entries.size() != 1) refuse(path, "no band of a picture");
    document.render["band"].erase("number");
    return {path, *band, std::move(document), std::nullopt};
}

Size sizeOf(const Band& band) {
    return {band.whole.width, bandPlace(band.whole.height, {band.number, band.count}).rows};
}

Piece readNumbers(const std::string& path) {
    NumberShare share = readNumberShare(path);
    Piece piece = pieceOf(path, share.document);
    if (sizeOf(piece.band) != share.shape.size) refuse(path, "not of the size that it tells of");
    piece.numbers = std::move(share);
    return piece;
}

Piece readPiece(const std::string& path) {
    return isNumberFile(path) ? readNumbers(path) : pieceOf(path, readDocumentFile(path));
}

std::string place(const Band& band) {
    return "band " + std::to_string(band.number) + " of " + std::to_string(band.count);
}

// The pieces in the order of their bands.
std::vector<Piece> inOrder(std::vector<Piece> pieces) {
    const std::string document = writeDocument(pieces.front().document);
    const Band any = pieces.front().band;
    std::vector<Piece> ordered(static_cast<std::size_t>(any.count));
    const std::string first = pieces.front().path;
    for (Piece& piece : pieces) {
        if (writeDocument(piece.document) != document) {
            refuse(piece.path, "of another picture than " + first);
        }
        Piece& slot = ordered[static_cast<std::size_t>(piece.band.number - 1)];
        if (!slot.path.empty()) refuse(piece.path, place(piece.band) + ", as " + slot.path);
        slot = std::move(piece);
    }
    for (std::size_t n = 0; n < ordered.size(); ++n) {
        Band missing = any;
        missing.number = static_cast<int>(n + 1);
        if (ordered[n].path.empty()) throw Failure(place(missing) + " is missing");
    }
    return ordered;
}

std::shared_ptr<RowSource> rowsOf(const std::vector<Piece>& pieces, bool deep) {
    std::vector<StackedRows::Part> parts;
    for (const Piece& piece : pieces) {
        const Size size = sizeOf(piece.band);
        if (size.height > 0) parts.push_back({piece.path, size});
    }
    return std::make_shared<StackedRows>(std::move(parts), deep);
}

Job jobOf(const std::vector<Piece>& pieces, const std::string& output) {
    const Piece& any = pieces.front();
    const Settings settings = settingsIn(any.document, any.path);
    Job job;
    job.view = any.document.entries.front();
    job.size = any.band.whole;
    job.precision = settings.precision.value_or(job.precision);
    job.supersample = settings.supersample.value_or(job.supersample);
    job.palette = std::make_shared<const Palette>(settings.colours.empty()
                                                      ? builtInPalette(job.view.paletteType)
                                                      : paletteOf(settings.colours));
    job.output = output;
    if (settings.colouring.isAny()) {
        job.colouring = std::make_shared<const Colouring>(settings.colouring);
    }
    job.stored = rowsOf(pieces, pixelBytes(job) == 6);
    return job;
}

void joinPictures(const std::vector<Piece>& pieces, const std::string& output,
                  const RunOptions& how) {
    const Band& band = pieces.front().band;
    const PngEncoder encoder(band.small ? Compression::small : Compression::fast, band.metadata);
    makePictures({jobOf(pieces, output)}, encoder, how);
}

void joinNumbers(std::vector<Piece> pieces, const std::string& output, const RunOptions& how) {
    std::vector<NumberShare> shares;
    shares.reserve(pieces.size());
    for (Piece& piece : pieces) shares.push_back(std::move(*piece.numbers));
    const NpyEncoder encoder(shares.front().shape.kind);
    Job job;
    job.size = pieces.front().band.whole;
    job.output = output;
    job.stored = std::make_shared<StackedNumbers>(std::move(shares));
    makePictures({job}, encoder, how);
}

}  // namespace

void joinBands(const std::vector<std::string>& paths, const std::string& output,
               const RunOptions& options) {
    std::vector<Piece> pieces;
    pieces.reserve(paths.size());
    for (const std::string& path : paths) pieces.push_back(readPiece(path));
    pieces = inOrder(std::move(pieces));
    // Rows come in order, so one thread reads and packs them; the calling one writes.
    const RunOptions how{1, options.quiet};
    if (pieces.front().numbers) {
        joinNumbers(std::move(pieces), output, how);
    } else {
        joinPictures(pieces, output, how);
    }
}

}  // namespace render
