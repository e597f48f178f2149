#include "picture/row_kernels.h"

#include <algorithm>
#include <cstring>

#include "platform/compiler.h"

#if defined(GIF_X86_KERNELS)
#include <immintrin.h>
#elif defined(GIF_NEON_KERNELS)
#include <arm_neon.h>
#endif

// Two pixels make one 64-bit store, eight indexes one load.
void RenderPlain(const RowLookup& lookup, const uint8_t* indexes, int64_t count, uint8_t* pixels) {
  const PixelTable& table = lookup.pixels;
  int64_t x = 0;
  for (; x + 8 <= count; x += 8) {
    uint64_t eight;
    std::memcpy(&eight, indexes + x, sizeof eight);
    for (int pair = 0; pair < 4; ++pair, eight >>= 16) {
      const uint64_t two = table[eight & 0xFF] | static_cast<uint64_t>(table[eight >> 8 & 0xFF]) << 32;
      std::memcpy(pixels + 4 * x + 8 * pair, &two, sizeof two);
    }
  }
  for (; x < count; ++x) std::memcpy(pixels + 4 * x, &table[indexes[x]], 4);
}

namespace {

bool SuitsAll(RowLookup&) { return true; }

#if defined(GIF_X86_KERNELS) || defined(GIF_NEON_KERNELS)

// Every vector kernel walks a row in steps of its own width; a last step that would run past the end of the
// row starts earlier instead and renders some pixels twice.
int64_t NextStart(int64_t x, int64_t step, int64_t count) {
  return x + step == count ? count : std::min(x + step, count - step);
}

// Finds where the 16 pixels that may differ from `others` begin; false when more than 16 neighbours differ.
bool FindWindow(const PixelTable& table, uint32_t others, uint8_t& first) {
  const auto differs = [others](uint32_t pixel) { return pixel != others; };
  const auto begin = std::find_if(table.begin(), table.end(), differs);
  const auto end = std::find_if(table.rbegin(), table.rend(), differs).base();
  first = static_cast<uint8_t>(begin - table.begin());
  return end - begin <= 16;
}

// Cuts up to 16 colours into planes. A palette of few colours leaves the table's end alike, a mask that is white at a
// high index its front.
bool CutWindow(RowLookup& lookup) {
  const PixelTable& table = lookup.pixels;
  lookup.others = table[255];
  if (!FindWindow(table, lookup.others, lookup.first)) {
    lookup.others = table[0];
    if (!FindWindow(table, lookup.others, lookup.first)) return false;
  }
  for (size_t i = 0; i < 16; ++i) {
    const uint32_t pixel = table[(lookup.first + i) % table.size()] ^ lookup.others;
    for (size_t b = 0; b < 4; ++b) lookup.planes[b][i] = static_cast<uint8_t>(pixel >> 8 * b);
  }
  return true;
}

#endif

#if defined(GIF_X86_KERNELS)

const __m256i_u* Vector256(const uint8_t* bytes) {
  return static_cast<const __m256i_u*>(static_cast<const void*>(bytes));
}
__m256i_u* Vector256(uint8_t* bytes) { return static_cast<__m256i_u*>(static_cast<void*>(bytes)); }

// --- AVX-512 VBMI: all 256 entries of a plane sit in four registers; 64 look-ups in each of the four planes
// at once ---

constexpr int64_t kPlanesStep = 64;

// Of the lowest bytes of 32 entries in two registers, then of the next ones.
constexpr auto kPlaces = [] {
  std::array<uint8_t, 64> places{};
  for (size_t i = 0; i < 64; ++i) places[i] = static_cast<uint8_t>(i % 32 * 4 + i / 32);
  return places;
}();

// From one quarter of the table at a time, 16 entries in each of four registers.
GIF_TARGET("avx512f,avx512bw,avx512vbmi")
void CutPlanes(RowLookup& lookup) {
  const __m512i low = _mm512_loadu_si512(kPlaces.data()), high = _mm512_add_epi8(low, _mm512_set1_epi8(2));
  for (size_t at = 0; at < lookup.pixels.size(); at += 64) {
    __m512i entries[4];
    for (size_t i = 0; i < 4; ++i) entries[i] = _mm512_loadu_si512(lookup.pixels.data() + at + 16 * i);
    for (size_t b = 0; b < 4; b += 2) {
      const __m512i place = b == 0 ? low : high, front = _mm512_permutex2var_epi8(entries[0], place, entries[1]),
                    back = _mm512_permutex2var_epi8(entries[2], place, entries[3]);
      _mm512_store_si512(lookup.planes[b].data() + at, _mm512_maskz_shuffle_i64x2(0xFF, front, back, 0x44));
      _mm512_store_si512(lookup.planes[b + 1].data() + at, _mm512_maskz_shuffle_i64x2(0xFF, front, back, 0xEE));
    }
  }
}

bool PreparePlanes(RowLookup& lookup) {
  if (!GIF_PROCESSOR_HAS("avx512bw") || !GIF_PROCESSOR_HAS("avx512vbmi")) return false;
  CutPlanes(lookup);
  return true;
}

struct Planes {
  __m512i plane[4][4];
};

GIF_TARGET("avx512f,avx512bw,avx512vbmi")
inline Planes LoadPlanes(const RowLookup& lookup) {
  Planes planes;
  for (int b = 0; b < 4; ++b) {
    for (int quarter = 0; quarter < 4; ++quarter) {
      planes.plane[b][quarter] = _mm512_load_si512(lookup.planes[b].data() + 64 * quarter);
    }
  }
  return planes;
}

// The pixels of 64 indexes, in order.
GIF_TARGET("avx512f,avx512bw,avx512vbmi")
inline void LookUp(const Planes& planes, __m512i indexes, __m512i (&out)[4]) {
  // Unpacking works inside each 16 bytes: this order of the indexes makes the pixels come out in sequence.
  const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  // Masked, with nothing masked out: g++ 12 takes the plain form for one that reads an unset register.
  const __m512i index = _mm512_maskz_permutexvar_epi32(0xFFFF, order, indexes);
  const __mmask64 upper_half = _mm512_movepi8_mask(index);
  __m512i byte[4];
  for (int b = 0; b < 4; ++b) {
    const __m512i(&plane)[4] = planes.plane[b];
    byte[b] = _mm512_mask_blend_epi8(upper_half, _mm512_permutex2var_epi8(plane[0], index, plane[1]),
                                     _mm512_permutex2var_epi8(plane[2], index, plane[3]));
  }
  const __m512i low01 = _mm512_unpacklo_epi8(byte[0], byte[1]), high01 = _mm512_unpackhi_epi8(byte[0], byte[1]);
  const __m512i low23 = _mm512_unpacklo_epi8(byte[2], byte[3]), high23 = _mm512_unpackhi_epi8(byte[2], byte[3]);
  out[0] = _mm512_unpacklo_epi16(low01, low23);
  out[1] = _mm512_unpackhi_epi16(low01, low23);
  out[2] = _mm512_unpacklo_epi16(high01, high23);
  out[3] = _mm512_unpackhi_epi16(high01, high23);
}

GIF_TARGET("avx512f,avx512bw,avx512vbmi")
void RenderPlanes(const RowLookup& lookup, const uint8_t* indexes, int64_t count, uint8_t* pixels) {
  const Planes planes = LoadPlanes(lookup);
  for (int64_t x = 0; x < count; x = NextStart(x, kPlanesStep, count)) {
    __m512i out[4];
    LookUp(planes, _mm512_loadu_si512(indexes + x), out);
    for (int i = 0; i < 4; ++i) _mm512_storeu_si512(pixels + 4 * x + 64 * i, out[i]);
  }
}

// Rows of a step at most. The planes are loaded once for all, and two rows of up to 32 pixels make one step: an icon
// is rendered three to four times as fast.
GIF_TARGET("avx512f,avx512bw,avx512vbmi")
void RenderNarrowByPlanes(const RowLookup& lookup, std::span<const uint8_t* const> rows, int64_t count,
                          uint8_t* const* pixels) {
  const Planes planes = LoadPlanes(lookup);
  const uint64_t mask = ~uint64_t{0} >> (kPlanesStep - count);
  const auto store = [](uint8_t* to, uint64_t wanted, __m512i sixteen) GIF_TARGET("avx512f") {
    _mm512_mask_storeu_epi32(to, static_cast<__mmask16>(wanted), sixteen);
  };
  const bool pairs = 2 * count <= kPlanesStep;
  for (size_t y = 0; y < rows.size(); y += pairs ? 2 : 1) {
    const size_t other = pairs && y + 1 < rows.size() ? y + 1 : y;
    __m512i indexes = _mm512_maskz_loadu_epi8(mask, rows[y]), out[4];
    if (pairs) indexes = _mm512_maskz_shuffle_i64x2(0xFF, indexes, _mm512_maskz_loadu_epi8(mask, rows[other]), 0x44);
    LookUp(planes, indexes, out);
    uint8_t* const second = pairs ? pixels[other] : pixels[y] + 128;
    store(pixels[y], mask, out[0]);
    store(pixels[y] + 64, mask >> 16, out[1]);
    store(second, pairs ? mask : mask >> 32, out[2]);
    store(second + 64, pairs ? mask >> 16 : mask >> 48, out[3]);
  }
}

// --- AVX2, up to 16 colours: a plane is 16 bytes, and one instruction looks 32 indexes up in it ---

bool PrepareWindow(RowLookup& lookup) { return GIF_PROCESSOR_HAS("avx2") && CutWindow(lookup); }

GIF_TARGET("avx2")
void RenderWindow(const RowLookup& lookup, const uint8_t* indexes, int64_t count, uint8_t* pixels) {
  __m256i plane[4];
  for (int b = 0; b < 4; ++b) {
    plane[b] = _mm256_permute4x64_epi64(*Vector256(lookup.planes[b].data()), 0x44);  // the 16 bytes twice
  }
  const __m256i first = _mm256_set1_epi8(static_cast<char>(lookup.first));
  const __m256i others = _mm256_set1_epi32(static_cast<int>(lookup.others));
  // The byte shuffle gives 0 for an index with its top bit set: adding this with saturation sets that bit for
  // all indexes outside the window and leaves the low four bits of those inside as they are.
  const __m256i outside = _mm256_set1_epi8(0x70);

  for (int64_t x = 0; x < count; x = NextStart(x, 32, count)) {
    // Unpacking works inside each 16 bytes: this order of the indexes makes the pixels come out in sequence.
    __m256i index = _mm256_permute4x64_epi64(_mm256_loadu_si256(Vector256(indexes + x)), 0xD8);
    index = _mm256_adds_epu8(_mm256_sub_epi8(index, first), outside);
    __m256i byte[4];
    for (int b = 0; b < 4; ++b) byte[b] = _mm256_shuffle_epi8(plane[b], index);
    const __m256i low01 = _mm256_unpacklo_epi8(byte[0], byte[1]), high01 = _mm256_unpackhi_epi8(byte[0], byte[1]);
    const __m256i low23 = _mm256_unpacklo_epi8(byte[2], byte[3]), high23 = _mm256_unpackhi_epi8(byte[2], byte[3]);
    const __m256i a = _mm256_unpacklo_epi16(low01, low23), b = _mm256_unpackhi_epi16(low01, low23);
    const __m256i c = _mm256_unpacklo_epi16(high01, high23), d = _mm256_unpackhi_epi16(high01, high23);
    uint8_t* out = pixels + 4 * x;
    _mm256_storeu_si256(Vector256(out), _mm256_xor_si256(others, _mm256_permute2x128_si256(a, b, 0x20)));
    _mm256_storeu_si256(Vector256(out + 32), _mm256_xor_si256(others, _mm256_permute2x128_si256(a, b, 0x31)));
    _mm256_storeu_si256(Vector256(out + 64), _mm256_xor_si256(others, _mm256_permute2x128_si256(c, d, 0x20)));
    _mm256_storeu_si256(Vector256(out + 96), _mm256_xor_si256(others, _mm256_permute2x128_si256(c, d, 0x31)));
  }
}

// --- AVX2, any table: eight single look-ups, one store ---

bool PrepareEights(RowLookup&) { return GIF_PROCESSOR_HAS("avx2"); }

GIF_TARGET("avx2")
void RenderEights(const RowLookup& lookup, const uint8_t* indexes, int64_t count, uint8_t* pixels) {
  const auto* table = static_cast<const int*>(static_cast<const void*>(lookup.pixels.data()));
  for (int64_t x = 0; x < count; x = NextStart(x, 8, count)) {
    uint32_t i, j;
    std::memcpy(&i, indexes + x, sizeof i);
    std::memcpy(&j, indexes + x + 4, sizeof j);
    _mm256_storeu_si256(
        Vector256(pixels + 4 * x),
        _mm256_setr_epi32(table[i & 0xFF], table[i >> 8 & 0xFF], table[i >> 16 & 0xFF], table[i >> 24],
                          table[j & 0xFF], table[j >> 8 & 0xFF], table[j >> 16 & 0xFF], table[j >> 24]));
  }
}

#elif defined(GIF_NEON_KERNELS)

// --- NEON, up to 16 colours: a plane is 16 bytes, one instruction looks 16 indexes up in it and gives 0 for those
// beyond, and one store puts four planes together ---

void RenderWindow(const RowLookup& lookup, const uint8_t* indexes, int64_t count, uint8_t* pixels) {
  uint8x16_t plane[4], others[4];
  for (int b = 0; b < 4; ++b) {
    plane[b] = vld1q_u8(lookup.planes[b].data());
    others[b] = vdupq_n_u8(static_cast<uint8_t>(lookup.others >> 8 * b));
  }
  const uint8x16_t first = vdupq_n_u8(lookup.first);

  for (int64_t x = 0; x < count; x = NextStart(x, 16, count)) {
    const uint8x16_t index = vsubq_u8(vld1q_u8(indexes + x), first);
    uint8x16x4_t out;
    for (int b = 0; b < 4; ++b) out.val[b] = veorq_u8(others[b], vqtbl1q_u8(plane[b], index));
    vst4q_u8(pixels + 4 * x, out);
  }
}

#endif

constexpr RowKernel kKernels[] = {
#if defined(GIF_X86_KERNELS)
    {"planes of 256, AVX-512 VBMI", kPlanesStep, PreparePlanes, RenderPlanes, RenderNarrowByPlanes},
    {"planes of 16, AVX2", 32, PrepareWindow, RenderWindow},
    {"eight a step, AVX2", 8, PrepareEights, RenderEights},
#elif defined(GIF_NEON_KERNELS)
    {"planes of 16, NEON", 16, CutWindow, RenderWindow},
#endif
    {"eight a step", 0, SuitsAll, RenderPlain},
};

}  // namespace

std::span<const RowKernel> RowKernels() { return kKernels; }
