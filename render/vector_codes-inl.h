// Codes of 64 bytes at a time: the words of all bytes by looking up the halves of each, then those
// of pairs, fours and eights, each the first one's bits with the other's behind them.
//
// Included once for each instruction set (see render/vector_codes.cpp).
#if defined(TESSARY_RENDER_VECTOR_CODES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef TESSARY_RENDER_VECTOR_CODES_INL_H
#undef TESSARY_RENDER_VECTOR_CODES_INL_H
#else
#define TESSARY_RENDER_VECTOR_CODES_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "render/block_codes.h"

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace tessary_codes {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using render::BitWriter;
using render::CODED_BLOCK;
using render::RowCode;

using Bytes = hn::CappedTag<std::uint8_t, CODED_BLOCK>;
using Shorts = hn::Repartition<std::uint16_t, Bytes>;
using Words = hn::Repartition<std::uint32_t, Bytes>;
using Longs = hn::Repartition<std::uint64_t, Bytes>;

// Bits, the first one lowest, and their number, of each lane of a vector.
template <class D>
struct Bits {
    hn::Vec<D> bits, length;
};

// Of each lane of D what comes first and what follows it.
template <class D>
struct Two {
    Bits<D> first, second;
};

template <class D>
HWY_INLINE Bits<D> append(const Bits<D>& a, const Bits<D>& b) {
    return {hn::Or(a.bits, hn::Shl(b.bits, a.length)), hn::Add(a.length, b.length)};
}

template <class D>
inline constexpr int HALF = 4 * sizeof(hn::TFromD<D>);

template <class D, class V>
HWY_INLINE hn::Vec<D> lower(D d, V v) {
    using T = hn::TFromD<D>;
    return hn::And(hn::BitCast(d, v), hn::Set(d, static_cast<T>((T{1} << HALF<D>)-1)));
}

template <class D, class V>
HWY_INLINE hn::Vec<D> upper(D d, V v) {
    return hn::ShiftRight<HALF<D>>(hn::BitCast(d, v));
}

// What lies in lanes half as wide, two of them joined in each.
template <class D, class Narrow>
HWY_INLINE Two<D> joined(D d, const Two<Narrow>& t) {
    const Bits<D> a{lower(d, t.first.bits), lower(d, t.first.length)},
        b{lower(d, t.second.bits), lower(d, t.second.length)},
        c{upper(d, t.first.bits), upper(d, t.first.length)},
        e{upper(d, t.second.bits), upper(d, t.second.length)};
    return {append(a, b), append(c, e)};
}

// The tables of a code in registers.
struct Tables {
    const hn::Vec<Bytes> nearBits, nearLength, prefix, lowBits, highBits, farLength;

    explicit HWY_INLINE Tables(const RowCode& code)
        : nearBits(hn::LoadDup128(Bytes(), code.nearBits.data())),
          nearLength(hn::LoadDup128(Bytes(), code.nearLength.data())),
          prefix(hn::LoadDup128(Bytes(), code.prefix.data())),
          lowBits(hn::LoadDup128(Bytes(), code.lowBits.data())),
          highBits(hn::LoadDup128(Bytes(), code.highBits.data())),
          farLength(hn::Set(Bytes(), static_cast<std::uint8_t>(code.farLength))) {}

    // The words of bytes: of the even ones, and of the odd ones behind them.
    HWY_INLINE Two<Shorts> wordsOf(hn::Vec<Bytes> bytes) const {
        const Bytes d;
        const Shorts wide;
        const auto half = hn::Set(d, std::uint8_t{15});
        const auto shifted = hn::Add(bytes, hn::Set(d, std::uint8_t{8}));
        const auto low = hn::And(shifted, half);
        const auto group =
            hn::And(hn::BitCast(d, hn::ShiftRight<4>(hn::BitCast(wide, shifted))), half);
        const auto isNear = hn::Eq(group, hn::Zero(d));
        const auto far =
            hn::Or(hn::TableLookupBytes(prefix, group), hn::TableLookupBytes(lowBits, low));
        const auto bits = hn::IfThenElse(isNear, hn::TableLookupBytes(nearBits, low), far);
        const auto above =
            hn::BitCast(wide, hn::IfThenZeroElse(isNear, hn::TableLookupBytes(highBits, low)));
        const auto length =
            hn::IfThenElse(isNear, hn::TableLookupBytes(nearLength, low), farLength);
        const auto odd = hn::AndNot(hn::Set(wide, std::uint16_t{0xff}), above);
        return {{hn::Or(lower(wide, bits), hn::ShiftLeft<8>(above)), lower(wide, length)},
                {hn::Or(upper(wide, bits), odd), upper(wide, length)}};
    }
};

// The bits of fours of bytes, the first and the second of each eight; a writer takes no more than
// 56 at once, and a four has 44 at most.
struct Fours {
    HWY_ALIGN std::uint64_t first[CODED_BLOCK / 8], firstLength[CODED_BLOCK / 8];
    HWY_ALIGN std::uint64_t second[CODED_BLOCK / 8], secondLength[CODED_BLOCK / 8];
};

HWY_NOINLINE void putFours(const Fours& fours, std::size_t count, BitWriter& out) {
    for (std::size_t n = 0; n < count; ++n) {
        out.put(fours.first[n], static_cast<unsigned>(fours.firstLength[n]));
        out.put(fours.second[n], static_cast<unsigned>(fours.secondLength[n]));
    }
}

HWY_NOINLINE void putApart(const Two<Longs>& t, BitWriter& out) {
    const Longs d;
    Fours fours;
    hn::Store(t.first.bits, d, fours.first);
    hn::Store(t.first.length, d, fours.firstLength);
    hn::Store(t.second.bits, d, fours.second);
    hn::Store(t.second.length, d, fours.secondLength);
    putFours(fours, hn::Lanes(d), out);
}

HWY_INLINE bool fitsAWriter(const Bits<Longs>& eights) {
    const hn::RebindToSigned<Words> d;
    return hn::AllFalse(d, hn::Gt(hn::BitCast(d, eights.length), hn::Set(d, 56)));
}

HWY_INLINE void codeBytes(const Tables& tables, const unsigned char* bytes, BitWriter& out) {
    const Longs d;
    const Two<Longs> fours = joined(d, joined(Words(), tables.wordsOf(hn::LoadU(Bytes(), bytes))));
    const Bits<Longs> eights = append(fours.first, fours.second);
    if (!fitsAWriter(eights)) return putApart(fours, out);
    HWY_ALIGN std::uint64_t bits[CODED_BLOCK / 8], length[CODED_BLOCK / 8];
    hn::Store(eights.bits, d, bits);
    hn::Store(eights.length, d, length);
    for (std::size_t n = 0; n < hn::Lanes(d); ++n) {
        out.put(bits[n], static_cast<unsigned>(length[n]));
    }
}

HWY_NOINLINE HWY_FLATTEN void codeBlocks(const RowCode& code, const unsigned char* rows,
                                         std::size_t blocks, BitWriter& out) {
    const Tables tables(code);
    BitWriter writer = out;  // in registers
    const std::size_t length = blocks * CODED_BLOCK;
    for (std::size_t at = 0; at < length; at += hn::Lanes(Bytes())) {
        codeBytes(tables, rows + at, writer);
    }
    out = writer;
}

}  // namespace HWY_NAMESPACE
}  // namespace tessary_codes
HWY_AFTER_NAMESPACE();

#endif  // HWY_TARGET

#endif
