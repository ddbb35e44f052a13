// SPDX-License-Identifier: Apache-2.0
// Several floats side by side, for the pixel loops. Each loop is compiled once for every LoopVariant, in its own
// namespace and with its own number of lanes. Everything here is internal to the file that includes it, so that no
// instruction of a wide variant gets into code that every machine runs. For the same reason a file that includes this
// header includes no other header with inline functions.
//
// Every operation is one IEEE operation a lane: the results are those of the same expressions on single floats.
#pragma once

// Reasons for the exceptions below: everything is defined again in every file that includes this header, on purpose;
// the C headers have no inline functions; the intrinsics take pointers to vectors.
// NOLINTBEGIN(cert-*,misc-*,modernize-deprecated-headers,cppcoreguidelines-pro-type-*)

#include <math.h>
#include <stdint.h>

#if QUORVEL_LANES == 8
#include <immintrin.h>
#elif QUORVEL_LANES == 4
#include <emmintrin.h>
#endif

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

/// Floats handled at a time. A power of two that divides 64.
constexpr int kLanes = QUORVEL_LANES;

#if QUORVEL_LANES == 8

struct Floats {
    __m256 v;
};
/// Whole lanes of ones or zeros.
struct Mask {
    __m256 v;
};
struct Ints {
    __m256i v;
};

[[maybe_unused]] inline Floats load(const float* from) {
    return {_mm256_loadu_ps(from)};
}
[[maybe_unused]] inline void store(float* to, Floats a) {
    _mm256_storeu_ps(to, a.v);
}
[[maybe_unused]] inline void store(int32_t* to, Ints a) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), a.v);
}
[[maybe_unused]] inline Floats all(float value) {
    return {_mm256_set1_ps(value)};
}
/// 0, 1, 2, ... from the first lane on.
[[maybe_unused]] inline Floats laneNumbers() {
    return {_mm256_setr_ps(0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F)};
}
[[maybe_unused]] inline Floats operator+(Floats a, Floats b) {
    return {_mm256_add_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats operator-(Floats a, Floats b) {
    return {_mm256_sub_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats operator*(Floats a, Floats b) {
    return {_mm256_mul_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats operator/(Floats a, Floats b) {
    return {_mm256_div_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats absolute(Floats a) {
    return {_mm256_andnot_ps(_mm256_set1_ps(-0.0F), a.v)};
}
/// The larger of the two; b where a is NaN.
[[maybe_unused]] inline Floats larger(Floats a, Floats b) {
    return {_mm256_max_ps(a.v, b.v)};
}
/// The smaller of the two; b where a is NaN.
[[maybe_unused]] inline Floats smaller(Floats a, Floats b) {
    return {_mm256_min_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats anyBits(Floats a, Floats b) {
    return {_mm256_or_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator>(Floats a, Floats b) {
    return {_mm256_cmp_ps(a.v, b.v, _CMP_GT_OQ)};
}
[[maybe_unused]] inline Mask operator>=(Floats a, Floats b) {
    return {_mm256_cmp_ps(a.v, b.v, _CMP_GE_OQ)};
}
[[maybe_unused]] inline Mask operator<(Floats a, Floats b) {
    return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)};
}
[[maybe_unused]] inline Mask operator<=(Floats a, Floats b) {
    return {_mm256_cmp_ps(a.v, b.v, _CMP_LE_OQ)};
}
[[maybe_unused]] inline Mask operator==(Floats a, Floats b) {
    return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)};
}
/// Also where one of the two is NaN.
[[maybe_unused]] inline Mask operator!=(Floats a, Floats b) {
    return {_mm256_cmp_ps(a.v, b.v, _CMP_NEQ_UQ)};
}
[[maybe_unused]] inline Mask operator&(Mask a, Mask b) {
    return {_mm256_and_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator|(Mask a, Mask b) {
    return {_mm256_or_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator~(Mask a) {
    return {_mm256_xor_ps(a.v, _mm256_castsi256_ps(_mm256_set1_epi32(-1)))};
}
/// The value where the mask is set, +0 elsewhere.
[[maybe_unused]] inline Floats valueWhere(Mask mask, Floats a) {
    return {_mm256_and_ps(mask.v, a.v)};
}
/// a where the mask is set, b elsewhere.
[[maybe_unused]] inline Floats chosen(Mask mask, Floats a, Floats b) {
    return {_mm256_blendv_ps(b.v, a.v, mask.v)};
}
/// The lanes whose bit is set, the lowest bit for the first lane.
[[maybe_unused]] inline Mask lanesOf(uint32_t bits) {
    const __m256i own = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
    const __m256i found = _mm256_and_si256(_mm256_set1_epi32(static_cast<int32_t>(bits)), own);
    return {_mm256_castsi256_ps(_mm256_cmpeq_epi32(found, own))};
}
/// One bit a lane, the first lane lowest.
[[maybe_unused]] inline uint32_t laneBits(Mask mask) {
    return static_cast<uint32_t>(_mm256_movemask_ps(mask.v));
}
/// Toward zero; the lowest int for NaN and for what int cannot hold.
[[maybe_unused]] inline Ints truncated(Floats a) {
    return {_mm256_cvttps_epi32(a.v)};
}
/// To the nearest int, ties to even; the lowest int for NaN and for what int cannot hold.
[[maybe_unused]] inline Ints rounded(Floats a) {
    return {_mm256_cvtps_epi32(a.v)};
}
[[maybe_unused]] inline Floats toFloats(Ints a) {
    return {_mm256_cvtepi32_ps(a.v)};
}
[[maybe_unused]] inline Floats loadDepths(const uint16_t* from) {
    const __m128i depths = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    return {_mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(depths))};
}
[[maybe_unused]] inline Ints allInts(int32_t value) {
    return {_mm256_set1_epi32(value)};
}
[[maybe_unused]] inline Ints operator&(Ints a, Ints b) {
    return {_mm256_and_si256(a.v, b.v)};
}
[[maybe_unused]] inline Ints operator|(Ints a, Ints b) {
    return {_mm256_or_si256(a.v, b.v)};
}
/// Shifts zeros in from the left.
template <int Bits>
[[maybe_unused]] inline Ints shiftedRight(Ints a) {
    return {_mm256_srli_epi32(a.v, Bits)};
}
/// Takes kLanes points (x, y, z) apart.
[[maybe_unused]] inline void loadPoints(const float* from, Floats& x, Floats& y, Floats& z) {
    const __m256 a = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(from)), _mm_loadu_ps(from + 12), 1);
    const __m256 b = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(from + 4)), _mm_loadu_ps(from + 16), 1);
    const __m256 c = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(from + 8)), _mm_loadu_ps(from + 20), 1);
    const __m256 xy = _mm256_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));
    const __m256 yz = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));
    x.v = _mm256_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0));
    y.v = _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
    z.v = _mm256_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1));
}
/// Writes kLanes points (x, y, z).
[[maybe_unused]] inline void storePoints(float* to, Floats x, Floats y, Floats z) {
    const __m256 xy = _mm256_shuffle_ps(x.v, y.v, _MM_SHUFFLE(2, 0, 2, 0));
    const __m256 yz = _mm256_shuffle_ps(y.v, z.v, _MM_SHUFFLE(3, 1, 3, 1));
    const __m256 zx = _mm256_shuffle_ps(z.v, x.v, _MM_SHUFFLE(3, 1, 2, 0));
    const __m256 a = _mm256_shuffle_ps(xy, zx, _MM_SHUFFLE(2, 0, 2, 0));
    const __m256 b = _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
    const __m256 c = _mm256_shuffle_ps(zx, yz, _MM_SHUFFLE(3, 1, 3, 1));
    _mm256_storeu_ps(to, _mm256_permute2f128_ps(a, b, 0x20));
    _mm256_storeu_ps(to + 8, _mm256_blend_ps(c, a, 0xF0));
    _mm256_storeu_ps(to + 16, _mm256_permute2f128_ps(b, c, 0x31));
}
/// sqrt(x^2 + y^2 + z^2): squares, sums and root in double, rounded to float.
[[maybe_unused]] inline Floats lengthInDouble(Floats x, Floats y, Floats z) {
    const auto half = [](__m128 a, __m128 b, __m128 c) {
        const __m256d p = _mm256_cvtps_pd(a);
        const __m256d q = _mm256_cvtps_pd(b);
        const __m256d r = _mm256_cvtps_pd(c);
        const __m256d sum = _mm256_add_pd(_mm256_add_pd(_mm256_mul_pd(p, p), _mm256_mul_pd(q, q)), _mm256_mul_pd(r, r));
        return _mm256_cvtpd_ps(_mm256_sqrt_pd(sum));
    };
    const __m128 low = half(_mm256_castps256_ps128(x.v), _mm256_castps256_ps128(y.v), _mm256_castps256_ps128(z.v));
    const __m128 high =
        half(_mm256_extractf128_ps(x.v, 1), _mm256_extractf128_ps(y.v, 1), _mm256_extractf128_ps(z.v, 1));
    return {_mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1)};
}

/// Eight running sums.
struct EightSums {
    __m256 v;
};
[[maybe_unused]] inline EightSums loadSums(const float* from) {
    return {_mm256_loadu_ps(from)};
}
[[maybe_unused]] inline void storeSums(float* to, EightSums sums) {
    _mm256_storeu_ps(to, sums.v);
}
/// Adds the lanes of eight terms to their sums, one lane after the other, beginning with the first lane.
[[maybe_unused]] inline void addInTurn(EightSums& sums, const Floats (&terms)[8]) {
    __m256 pairs[8];
    for (int i = 0; i < 8; i += 2) {
        pairs[i] = _mm256_unpacklo_ps(terms[i].v, terms[i + 1].v);
        pairs[i + 1] = _mm256_unpackhi_ps(terms[i].v, terms[i + 1].v);
    }
    // Element n of each half: lane n and lane n + 4 of the first or the last four terms.
    __m256 first[4];
    __m256 last[4];
    for (int i = 0; i < 2; ++i) {
        first[2 * i] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], _MM_SHUFFLE(1, 0, 1, 0));
        first[2 * i + 1] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], _MM_SHUFFLE(3, 2, 3, 2));
        last[2 * i] = _mm256_shuffle_ps(pairs[i + 4], pairs[i + 6], _MM_SHUFFLE(1, 0, 1, 0));
        last[2 * i + 1] = _mm256_shuffle_ps(pairs[i + 4], pairs[i + 6], _MM_SHUFFLE(3, 2, 3, 2));
    }
    for (int i = 0; i < 4; ++i) {
        sums.v = _mm256_add_ps(sums.v, _mm256_permute2f128_ps(first[i], last[i], 0x20));
    }
    for (int i = 0; i < 4; ++i) {
        sums.v = _mm256_add_ps(sums.v, _mm256_permute2f128_ps(first[i], last[i], 0x31));
    }
}

#elif QUORVEL_LANES == 4

struct Floats {
    __m128 v;
};
/// Whole lanes of ones or zeros.
struct Mask {
    __m128 v;
};
struct Ints {
    __m128i v;
};

[[maybe_unused]] inline Floats load(const float* from) {
    return {_mm_loadu_ps(from)};
}
[[maybe_unused]] inline void store(float* to, Floats a) {
    _mm_storeu_ps(to, a.v);
}
[[maybe_unused]] inline void store(int32_t* to, Ints a) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), a.v);
}
[[maybe_unused]] inline Floats all(float value) {
    return {_mm_set1_ps(value)};
}
[[maybe_unused]] inline Floats laneNumbers() {
    return {_mm_setr_ps(0.0F, 1.0F, 2.0F, 3.0F)};
}
[[maybe_unused]] inline Floats operator+(Floats a, Floats b) {
    return {_mm_add_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats operator-(Floats a, Floats b) {
    return {_mm_sub_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats operator*(Floats a, Floats b) {
    return {_mm_mul_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats operator/(Floats a, Floats b) {
    return {_mm_div_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats absolute(Floats a) {
    return {_mm_andnot_ps(_mm_set1_ps(-0.0F), a.v)};
}
[[maybe_unused]] inline Floats larger(Floats a, Floats b) {
    return {_mm_max_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats smaller(Floats a, Floats b) {
    return {_mm_min_ps(a.v, b.v)};
}
[[maybe_unused]] inline Floats anyBits(Floats a, Floats b) {
    return {_mm_or_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator>(Floats a, Floats b) {
    return {_mm_cmpgt_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator>=(Floats a, Floats b) {
    return {_mm_cmpge_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator<(Floats a, Floats b) {
    return {_mm_cmplt_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator<=(Floats a, Floats b) {
    return {_mm_cmple_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator==(Floats a, Floats b) {
    return {_mm_cmpeq_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator!=(Floats a, Floats b) {
    return {_mm_cmpneq_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator&(Mask a, Mask b) {
    return {_mm_and_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator|(Mask a, Mask b) {
    return {_mm_or_ps(a.v, b.v)};
}
[[maybe_unused]] inline Mask operator~(Mask a) {
    return {_mm_xor_ps(a.v, _mm_castsi128_ps(_mm_set1_epi32(-1)))};
}
[[maybe_unused]] inline Floats valueWhere(Mask mask, Floats a) {
    return {_mm_and_ps(mask.v, a.v)};
}
[[maybe_unused]] inline Floats chosen(Mask mask, Floats a, Floats b) {
    return {_mm_or_ps(_mm_and_ps(mask.v, a.v), _mm_andnot_ps(mask.v, b.v))};
}
[[maybe_unused]] inline Mask lanesOf(uint32_t bits) {
    const __m128i own = _mm_setr_epi32(1, 2, 4, 8);
    const __m128i found = _mm_and_si128(_mm_set1_epi32(static_cast<int32_t>(bits)), own);
    return {_mm_castsi128_ps(_mm_cmpeq_epi32(found, own))};
}
[[maybe_unused]] inline uint32_t laneBits(Mask mask) {
    return static_cast<uint32_t>(_mm_movemask_ps(mask.v));
}
[[maybe_unused]] inline Ints truncated(Floats a) {
    return {_mm_cvttps_epi32(a.v)};
}
[[maybe_unused]] inline Ints rounded(Floats a) {
    return {_mm_cvtps_epi32(a.v)};
}
[[maybe_unused]] inline Floats toFloats(Ints a) {
    return {_mm_cvtepi32_ps(a.v)};
}
[[maybe_unused]] inline Floats loadDepths(const uint16_t* from) {
    const __m128i depths = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    return {_mm_cvtepi32_ps(_mm_unpacklo_epi16(depths, _mm_setzero_si128()))};
}
[[maybe_unused]] inline Ints allInts(int32_t value) {
    return {_mm_set1_epi32(value)};
}
[[maybe_unused]] inline Ints operator&(Ints a, Ints b) {
    return {_mm_and_si128(a.v, b.v)};
}
[[maybe_unused]] inline Ints operator|(Ints a, Ints b) {
    return {_mm_or_si128(a.v, b.v)};
}
template <int Bits>
[[maybe_unused]] inline Ints shiftedRight(Ints a) {
    return {_mm_srli_epi32(a.v, Bits)};
}
[[maybe_unused]] inline void loadPoints(const float* from, Floats& x, Floats& y, Floats& z) {
    const __m128 a = _mm_loadu_ps(from);
    const __m128 b = _mm_loadu_ps(from + 4);
    const __m128 c = _mm_loadu_ps(from + 8);
    const __m128 xy = _mm_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));
    const __m128 yz = _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));
    x.v = _mm_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0));
    y.v = _mm_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
    z.v = _mm_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1));
}
[[maybe_unused]] inline void storePoints(float* to, Floats x, Floats y, Floats z) {
    const __m128 xy = _mm_shuffle_ps(x.v, y.v, _MM_SHUFFLE(2, 0, 2, 0));
    const __m128 yz = _mm_shuffle_ps(y.v, z.v, _MM_SHUFFLE(3, 1, 3, 1));
    const __m128 zx = _mm_shuffle_ps(z.v, x.v, _MM_SHUFFLE(3, 1, 2, 0));
    _mm_storeu_ps(to, _mm_shuffle_ps(xy, zx, _MM_SHUFFLE(2, 0, 2, 0)));
    _mm_storeu_ps(to + 4, _mm_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0)));
    _mm_storeu_ps(to + 8, _mm_shuffle_ps(zx, yz, _MM_SHUFFLE(3, 1, 3, 1)));
}
[[maybe_unused]] inline Floats lengthInDouble(Floats x, Floats y, Floats z) {
    const auto half = [](__m128 a, __m128 b, __m128 c) {
        const __m128d p = _mm_cvtps_pd(a);
        const __m128d q = _mm_cvtps_pd(b);
        const __m128d r = _mm_cvtps_pd(c);
        const __m128d sum = _mm_add_pd(_mm_add_pd(_mm_mul_pd(p, p), _mm_mul_pd(q, q)), _mm_mul_pd(r, r));
        return _mm_cvtpd_ps(_mm_sqrt_pd(sum));
    };
    const __m128 low = half(x.v, y.v, z.v);
    const __m128 high = half(_mm_movehl_ps(x.v, x.v), _mm_movehl_ps(y.v, y.v), _mm_movehl_ps(z.v, z.v));
    return {_mm_movelh_ps(low, high)};
}

struct EightSums {
    __m128 first;
    __m128 last;
};
[[maybe_unused]] inline EightSums loadSums(const float* from) {
    return {_mm_loadu_ps(from), _mm_loadu_ps(from + 4)};
}
[[maybe_unused]] inline void storeSums(float* to, EightSums sums) {
    _mm_storeu_ps(to, sums.first);
    _mm_storeu_ps(to + 4, sums.last);
}
[[maybe_unused]] inline void addInTurn(EightSums& sums, const Floats (&terms)[8]) {
    __m128 first[4] = {terms[0].v, terms[1].v, terms[2].v, terms[3].v};
    __m128 last[4] = {terms[4].v, terms[5].v, terms[6].v, terms[7].v};
    _MM_TRANSPOSE4_PS(first[0], first[1], first[2], first[3]);
    _MM_TRANSPOSE4_PS(last[0], last[1], last[2], last[3]);
    for (int i = 0; i < 4; ++i) {
        sums.first = _mm_add_ps(sums.first, first[i]);
        sums.last = _mm_add_ps(sums.last, last[i]);
    }
}

#else

struct Floats {
    float v;
};
struct Mask {
    bool v;
};
struct Ints {
    int32_t v;
};

/// A float from the lower bound up to, but not including, the upper bound fits int.
constexpr float kIntLowest = -2147483648.0F;
constexpr float kIntBeyond = 2147483648.0F;

[[maybe_unused]] inline Floats load(const float* from) {
    return {*from};
}
[[maybe_unused]] inline void store(float* to, Floats a) {
    *to = a.v;
}
[[maybe_unused]] inline void store(int32_t* to, Ints a) {
    *to = a.v;
}
[[maybe_unused]] inline Floats all(float value) {
    return {value};
}
[[maybe_unused]] inline Floats laneNumbers() {
    return {0.0F};
}
[[maybe_unused]] inline Floats operator+(Floats a, Floats b) {
    return {a.v + b.v};
}
[[maybe_unused]] inline Floats operator-(Floats a, Floats b) {
    return {a.v - b.v};
}
[[maybe_unused]] inline Floats operator*(Floats a, Floats b) {
    return {a.v * b.v};
}
[[maybe_unused]] inline Floats operator/(Floats a, Floats b) {
    return {a.v / b.v};
}
[[maybe_unused]] inline Floats absolute(Floats a) {
    return {fabsf(a.v)};
}
[[maybe_unused]] inline Floats larger(Floats a, Floats b) {
    return {a.v > b.v ? a.v : b.v};
}
[[maybe_unused]] inline Floats smaller(Floats a, Floats b) {
    return {a.v < b.v ? a.v : b.v};
}
/// Not 0 where one of the two is not 0.
[[maybe_unused]] inline Floats anyBits(Floats a, Floats b) {
    return {a.v != 0.0F ? a.v : b.v};
}
[[maybe_unused]] inline Mask operator>(Floats a, Floats b) {
    return {a.v > b.v};
}
[[maybe_unused]] inline Mask operator>=(Floats a, Floats b) {
    return {a.v >= b.v};
}
[[maybe_unused]] inline Mask operator<(Floats a, Floats b) {
    return {a.v < b.v};
}
[[maybe_unused]] inline Mask operator<=(Floats a, Floats b) {
    return {a.v <= b.v};
}
[[maybe_unused]] inline Mask operator==(Floats a, Floats b) {
    return {a.v == b.v};
}
[[maybe_unused]] inline Mask operator!=(Floats a, Floats b) {
    return {a.v != b.v};
}
[[maybe_unused]] inline Mask operator&(Mask a, Mask b) {
    return {a.v && b.v};
}
[[maybe_unused]] inline Mask operator|(Mask a, Mask b) {
    return {a.v || b.v};
}
[[maybe_unused]] inline Mask operator~(Mask a) {
    return {!a.v};
}
[[maybe_unused]] inline Floats valueWhere(Mask mask, Floats a) {
    return {mask.v ? a.v : 0.0F};
}
[[maybe_unused]] inline Floats chosen(Mask mask, Floats a, Floats b) {
    return mask.v ? a : b;
}
[[maybe_unused]] inline Mask lanesOf(uint32_t bits) {
    return {(bits & 1U) != 0};
}
[[maybe_unused]] inline uint32_t laneBits(Mask mask) {
    return mask.v ? 1U : 0U;
}
[[maybe_unused]] inline Ints truncated(Floats a) {
    return {a.v >= kIntLowest && a.v < kIntBeyond ? static_cast<int32_t>(a.v) : INT32_MIN};
}
[[maybe_unused]] inline Ints rounded(Floats a) {
    return truncated({nearbyintf(a.v)});
}
[[maybe_unused]] inline Floats toFloats(Ints a) {
    return {static_cast<float>(a.v)};
}
[[maybe_unused]] inline Floats loadDepths(const uint16_t* from) {
    return {static_cast<float>(*from)};
}
[[maybe_unused]] inline Ints allInts(int32_t value) {
    return {value};
}
[[maybe_unused]] inline Ints operator&(Ints a, Ints b) {
    return {a.v & b.v};
}
[[maybe_unused]] inline Ints operator|(Ints a, Ints b) {
    return {a.v | b.v};
}
template <int Bits>
[[maybe_unused]] inline Ints shiftedRight(Ints a) {
    return {static_cast<int32_t>(static_cast<uint32_t>(a.v) >> Bits)};
}
[[maybe_unused]] inline void loadPoints(const float* from, Floats& x, Floats& y, Floats& z) {
    x.v = from[0];
    y.v = from[1];
    z.v = from[2];
}
[[maybe_unused]] inline void storePoints(float* to, Floats x, Floats y, Floats z) {
    to[0] = x.v;
    to[1] = y.v;
    to[2] = z.v;
}
[[maybe_unused]] inline Floats lengthInDouble(Floats x, Floats y, Floats z) {
    const auto p = static_cast<double>(x.v);
    const auto q = static_cast<double>(y.v);
    const auto r = static_cast<double>(z.v);
    return {static_cast<float>(sqrt(p * p + q * q + r * r))};
}

struct EightSums {
    float v[8];
};
[[maybe_unused]] inline EightSums loadSums(const float* from) {
    EightSums sums;
    for (int i = 0; i < 8; ++i) {
        sums.v[i] = from[i];
    }
    return sums;
}
[[maybe_unused]] inline void storeSums(float* to, EightSums sums) {
    for (int i = 0; i < 8; ++i) {
        to[i] = sums.v[i];
    }
}
[[maybe_unused]] inline void addInTurn(EightSums& sums, const Floats (&terms)[8]) {
    for (int i = 0; i < 8; ++i) {
        sums.v[i] += terms[i].v;
    }
}

#endif

/// Points, directions or normal colours side by side.
struct Vectors {
    Floats x;
    Floats y;
    Floats z;
};

[[maybe_unused]] inline Vectors loadVectors(const float* from) {
    Vectors vectors;
    loadPoints(from, vectors.x, vectors.y, vectors.z);
    return vectors;
}

/// An entry shorter than 1e-9 mm is not a point. With a coordinate of at least this size (mm) an entry is longer than
/// that, also after the rounding of its length.
constexpr float kSurelyAPoint = 1e-8F;

using Points = Vectors;

[[maybe_unused]] inline Points allOf(Direction direction) {
    return {all(direction.x), all(direction.y), all(direction.z)};
}

/// Takes up to kLanes points; what is missing is (0, 0, 0).
[[maybe_unused]] inline Points loadSome(const float* from, int count) {
    if (count >= kLanes) {
        return loadVectors(from);
    }
    float rest[3 * kLanes] = {};
    for (int i = 0; i < 3 * count; ++i) {
        rest[i] = from[i];
    }
    return loadVectors(rest);
}

/// Whether not all three coordinates are 0; NaN is not 0.
[[maybe_unused]] inline Mask isPresent(const Points& p) {
    return anyBits(anyBits(p.x, p.y), p.z) != all(0.0F);
}

/// Whether the entry is certainly a point. For another entry that is present its exact length decides.
[[maybe_unused]] inline Mask isSurelyValid(const Points& p) {
    const Floats limit = all(kSurelyAPoint);
    return (absolute(p.x) >= limit) | (absolute(p.y) >= limit) | (absolute(p.z) >= limit);
}

/// n . p - offset, left to right.
[[maybe_unused]] inline Floats signedDistance(const Points& p, const Points& normal, Floats offset) {
    return normal.x * p.x + normal.y * p.y + normal.z * p.z - offset;
}

/// Sets the bits of kLanes pixels from `column` on, a multiple of kLanes. The bits must be 0 before.
[[maybe_unused]] inline void putBits(uint64_t* words, int column, uint32_t bits) {
    words[column / 64] |= static_cast<uint64_t>(bits) << (column % 64);
}

}  // namespace

}  // namespace quorvel::internal::QUORVEL_VARIANT

// NOLINTEND(cert-*,misc-*,modernize-deprecated-headers,cppcoreguidelines-pro-type-*)
