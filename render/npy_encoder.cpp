#include "render/npy_encoder.h"

#include "render/colour_rows.h"
#include "render/number_share.h"

namespace render {
namespace {

template <class Number>
std::string bytesOf(const std::vector<Number>& numbers) {
    return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number)};
}

}  // namespace

std::string NpyEncoder::head(const Job& job) const {
    return npyHead(sizeOfNumbers(job), kind);
}

EncodedBand NpyEncoder::band(const Job& job, RowRange range, Workshop& workshop) const {
    if (job.stored) return stored(job, range);
    EncodedBand made;
    if (sizeOfNumbers(job).height == 0) return made;
    const bool values = kind == NumberKind::values;
    const int first = job.band ? job.band->first : 0;
    NumberRows& numbers = workshop.numbers;
    computeNumbers(job, {first + range.first, first + range.end}, values, workshop.stop, numbers);
    made.bytes = values ? bytesOf(numbers.values) : bytesOf(numbers.counts);
    if (!job.band) return made;  // only a record tells a checksum
    made.adler = adlerOf(1, made.bytes);
    made.length = made.bytes.size();
    return made;
}

EncodedBand NpyEncoder::stored(const Job& job, RowRange range) const {
    const std::size_t rowBytes = numberBytes(kind) * static_cast<std::size_t>(job.size.width);
    EncodedBand made;
    made.bytes.resize(rowBytes * static_cast<std::size_t>(range.count()));
    job.stored->read(range.first, range.end, reinterpret_cast<unsigned char*>(made.bytes.data()),
                     rowBytes);
    return made;
}

std::string NpyEncoder::tail(const Job& job, std::uint32_t adler) const {
    return job.band ? numberRecord(job, kind, adler) : std::string();
}

}  // namespace render
