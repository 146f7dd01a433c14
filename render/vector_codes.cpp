#include "render/block_codes.h"

// Compiled once for each instruction set, as compute/vector_renderer.cpp is.
#ifndef TESSARY_SKIPPED_TARGETS
#define TESSARY_SKIPPED_TARGETS 0
#endif
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS \
    (TESSARY_SKIPPED_TARGETS | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "render/vector_codes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "compute/vector_renderer.h"
#include "render/vector_codes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace tessary_codes {
namespace HWY_NAMESPACE {

void blockCodes(const render::RowCode& code, const unsigned char* rows, std::size_t blocks,
                render::BitWriter& out) {
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
    render::putBytes(code, rows, blocks * render::CODED_BLOCK, out);
#else
    codeBlocks(code, rows, blocks, out);
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_codes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tessary_codes {
namespace {

HWY_EXPORT(blockCodes);

}  // namespace

void dispatchedCodes(const render::RowCode& code, const unsigned char* rows, std::size_t blocks,
                     render::BitWriter& out) {
    HWY_DYNAMIC_DISPATCH(blockCodes)(code, rows, blocks, out);
}

}  // namespace tessary_codes

namespace render {

void putBytes(const RowCode& code, const unsigned char* bytes, std::size_t count, BitWriter& out) {
    for (std::size_t n = 0; n < count; ++n) {
        const Codeword& word = code.words[bytes[n]];
        out.put(word.bits, word.length);
    }
}

void putBlocks(const RowCode& code, const unsigned char* rows, std::size_t blocks, BitWriter& out) {
    if (vector_control::usesVectors()) {
        return tessary_codes::dispatchedCodes(code, rows, blocks, out);
    }
    putBytes(code, rows, blocks * CODED_BLOCK, out);
}

}  // namespace render

#endif  // HWY_ONCE
