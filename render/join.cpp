#include "render/join.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "frac/input.h"
#include "frac/json_document.h"
#include "render/colour_rows.h"
#include "render/failure.h"
#include "render/settings.h"
#include "render/shard.h"
#include "render/stored_picture.h"

namespace render {
namespace {

// What a band's file says.
struct Piece {
    std::string path;
    Band band;
    Document document;  // without the number of the band
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

Piece readPiece(const std::string& path) {
    Document document = readDocumentFile(path);
    const auto size = settingsIn(document, path).size;
    const auto band = size ? readBand(document.render, *size) : std::nullopt;
    if (!band || document.entries.size() != 1) refuse(path, "no band of a picture");
    document.render["band"].erase("number");
    return {path, *band, std::move(document)};
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
        const Size whole = piece.band.whole;
        const int rows = bandPlace(whole.height, {piece.band.number, piece.band.count}).rows;
        if (rows > 0) parts.push_back({piece.path, {whole.width, rows}});
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

}  // namespace

void joinBands(const std::vector<std::string>& paths, const std::string& output,
               const RunOptions& options) {
    std::vector<Piece> pieces;
    for (const std::string& path : paths) pieces.push_back(readPiece(path));
    pieces = inOrder(std::move(pieces));
    const Band& band = pieces.front().band;
    const PngEncoder encoder(band.small ? Compression::small : Compression::fast, band.metadata);
    // Rows come in order, so one thread reads and packs them; the calling one writes.
    makePictures({jobOf(pieces, output)}, encoder, {1, options.quiet});
}

}  // namespace render
