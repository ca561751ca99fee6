// The direct-form FIR kernels, written once against the vector layer. With the history and the
// input contiguous in b, y[p] = sum over m of g[m] b[p + m], g the reversed taps.
//
// A register of L outputs starting at p is a sum over j of broadcast(b[p + j]) times table row j,
// whose lane i holds g[j - i]: every load of the taps is aligned, every input load a broadcast,
// and each table row feeds several output registers (the register block). Rows whose lanes run
// past the taps (j < L - 1 or j >= taps) hold zeros there; 0 times a finite input leaves an
// accumulator as it is, and a line with an infinite or NaN input masks those broadcasts, so that
// a zero tap never meets it. Blocks of up to four samples read the delay line and src directly.
//
// Each row costs one load and R broadcasts for R fused multiply-adds, so loads, not the
// multiply-add units, bound the block: the broadcasts of the first registers are in-lane permutes
// of four inputs loaded once per four rows instead. Their number is set by what else the shuffle
// unit runs: at 512 bits it also runs the second multiply-add on some processors, so one
// register there; at 256 bits and below no multiply-add shares it.
//
// Each output is four chains, m = 0, 1, 2, 3 mod 4, each summed in increasing m, then combined as
// (c0 + c2) + (c1 + c3). Lane i's accumulator k holds chain (k - i) mod 4, and that combination
// is the same for every rotation of the chains, so an output's bits do not depend on its lane,
// hence not on where a block starts: any split of a stream gives the bits of one long call. The
// one-output path sums in the same order.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/fir/fir_spec.h"
#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr int kLanes = VF32::kLanes;
// Output registers per pass: each keeps four accumulators, within the register file (32
// registers at avx512; 16 below, where three registers' twelve accumulators leave room for the
// row, two quads and a broadcast).
constexpr int kBlock = ZAL_LEVEL_INDEX >= 5 ? 6 : 3;
// Output registers whose broadcasts are permuted out of a quad of inputs rather than loaded.
constexpr int kPermuted = ZAL_LEVEL_INDEX >= 5 ? 1 : 2;

// Table rows: taps + lanes - 1, rounded up to a multiple of 4.
constexpr std::ptrdiff_t RowCount(std::ptrdiff_t taps) {
  return (taps + kLanes - 1 + 3) / 4 * 4;
}

struct Tables {
  const float* reversed;
  const float* table;
  const float* front_mask;
  const float* back_mask;
  std::ptrdiff_t taps;
};

// a * b + c, rounded as the level's MulAdd rounds it.
ZAL_INLINE float ScalarMulAdd(float a, float b, float c) {
#if ZAL_LEVEL_INDEX >= 4
  return _mm_cvtss_f32(_mm_fmadd_ss(_mm_set_ss(a), _mm_set_ss(b), _mm_set_ss(c)));
#else
  return a * b + c;
#endif
}

// One output, the four chains summed as a register's lanes sum them.
ZAL_INLINE float OneOutput(const Tables& t, const float* b) {
  const float* g = t.reversed;
  float c[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  std::ptrdiff_t m = 0;
  for (; m + 4 <= t.taps; m += 4) {
    c[0] = ScalarMulAdd(g[m], b[m], c[0]);
    c[1] = ScalarMulAdd(g[m + 1], b[m + 1], c[1]);
    c[2] = ScalarMulAdd(g[m + 2], b[m + 2], c[2]);
    c[3] = ScalarMulAdd(g[m + 3], b[m + 3], c[3]);
  }
  for (int k = 0; m < t.taps; ++m, ++k) c[k] = ScalarMulAdd(g[m], b[m], c[k]);
  return (c[0] + c[2]) + (c[1] + c[3]);
}

// The four chains as the four lanes of one 128-bit register: lane k sums the terms m = k mod 4
// in increasing m, fused where the level fuses, so each lane is the block path's chain k.
ZAL_INLINE __m128 ChainStep(__m128 g, __m128 b, __m128 chains) {
#if ZAL_LEVEL_INDEX >= 4
  return _mm_fmadd_ps(g, b, chains);
#else
  return _mm_add_ps(_mm_mul_ps(g, b), chains);
#endif
}

// The last group of four terms, from m = 4 floor((taps - 1) / 4) on: the history samples left,
// then x, then zeros (the reversed taps are zero past taps, so those lanes add +0). A null
// history is silence.
ZAL_INLINE __m128 LastGroup(const float* dly, std::ptrdiff_t taps, float x) {
  const std::ptrdiff_t held = (taps - 1) % 4;
  const __m128 only_x = _mm_set_ss(x);
  if (held == 0) return only_x;
  if (!dly) {
    if (held == 1) return _mm_castsi128_ps(_mm_slli_si128(_mm_castps_si128(only_x), 4));
    if (held == 2) return _mm_castsi128_ps(_mm_slli_si128(_mm_castps_si128(only_x), 8));
    return _mm_castsi128_ps(_mm_slli_si128(_mm_castps_si128(only_x), 12));
  }
  if (taps >= 5) {
    // The four terms that end at x, then shifted down to the group's start.
    const __m128 before = _mm_loadu_ps(dly + taps - 5);
    const __m128 x_first = _mm_move_ss(before, only_x);
    const __m128i ending = _mm_castps_si128(_mm_shuffle_ps(x_first, x_first, 0x39));
    if (held == 1) return _mm_castsi128_ps(_mm_srli_si128(ending, 8));
    if (held == 2) return _mm_castsi128_ps(_mm_srli_si128(ending, 4));
    return _mm_castsi128_ps(ending);
  }
  if (held == 1) return _mm_setr_ps(dly[0], x, 0.0f, 0.0f);
  if (held == 2) return _mm_setr_ps(dly[0], dly[1], x, 0.0f);
  return _mm_setr_ps(dly[0], dly[1], dly[2], x);
}

// The output of x after the history dly (taps - 1 samples, or silence when null): taps / 4
// dependent steps of one register, summed as (c0 + c2) + (c1 + c3) like every other path.
ZAL_INLINE float FirstOutput(const float* g, std::ptrdiff_t taps, const float* dly, float x) {
  const std::ptrdiff_t whole = (taps - 1) / 4 * 4;
  __m128 chains = _mm_setzero_ps();
  if (dly) {
    for (std::ptrdiff_t m = 0; m < whole; m += 4) {
      chains = ChainStep(_mm_loadu_ps(g + m), _mm_loadu_ps(dly + m), chains);
    }
  } else {
    for (std::ptrdiff_t m = 0; m < whole; m += 4) {
      chains = ChainStep(_mm_loadu_ps(g + m), _mm_setzero_ps(), chains);
    }
  }
  chains = ChainStep(_mm_loadu_ps(g + whole), LastGroup(dly, taps, x), chains);
  const __m128 pairs = _mm_add_ps(chains, _mm_movehl_ps(chains, chains));
  return _mm_cvtss_f32(_mm_add_ss(pairs, _mm_shuffle_ps(pairs, pairs, 1)));
}

// Row j of the table into the four accumulators k = j mod 4 of R output registers.
template <int R, int k, bool kMasked, std::size_t... r>
ZAL_INLINE void Row(VF32 (&acc)[R][4], const Tables& t, const float* b, std::ptrdiff_t j,
                    std::index_sequence<r...>) {
  const VF32 row = Load(t.table + j * kLanes);
  if constexpr (kMasked) {
    const std::ptrdiff_t front = j < kLanes - 1 ? j : kLanes - 1;
    const std::ptrdiff_t past = j - t.taps + 1;
    const std::ptrdiff_t back = past < 0 ? 0 : (past > kLanes ? kLanes : past);
    const VF32 mask = And(Load(t.front_mask + front * kLanes), Load(t.back_mask + back * kLanes));
    ((acc[r][k] = MulAdd(And(Broadcast(b[j + r * kLanes]), mask), row, acc[r][k])), ...);
  } else {
    ((acc[r][k] = MulAdd(Broadcast(b[j + r * kLanes]), row, acc[r][k])), ...);
  }
}

// b[0, 4) in every 128-bit lane of a register. At 512 bits a zero-masked broadcast and a
// two-source shuffle (below) stand in for the plain broadcast and the one-source permute, whose
// intrinsics trip GCC's maybe-uninitialized warning; they cost the same.
ZAL_INLINE VF32 Quad(const float* b) {
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_maskz_broadcast_f32x4(0xFFFF, _mm_loadu_ps(b))};
#elif ZAL_LEVEL_INDEX >= 3
  return {_mm256_broadcast_ps(reinterpret_cast<const __m128*>(b))};
#else
  return {_mm_loadu_ps(b)};
#endif
}

// Element e of a quad across the register: a broadcast by an in-lane permute, not a load.
template <int e>
ZAL_INLINE VF32 Splat(VF32 quad) {
  constexpr int kPick = e * 0x55;
#if ZAL_LEVEL_INDEX >= 5
  return {_mm512_shuffle_ps(quad.raw, quad.raw, kPick)};
#elif ZAL_LEVEL_INDEX >= 3
  return {_mm256_permute_ps(quad.raw, kPick)};
#else
  return {_mm_shuffle_ps(quad.raw, quad.raw, kPick)};
#endif
}

// Register r's input of row j + k: permuted out of its quad, or loaded.
template <int k, std::size_t r, int P>
ZAL_INLINE VF32 Input(const VF32 (&quads)[P], const float* b, std::ptrdiff_t j) {
  if constexpr (r < static_cast<std::size_t>(P)) {
    return Splat<k>(quads[r]);
  } else {
    return Broadcast(b[j + k + static_cast<std::ptrdiff_t>(r) * kLanes]);
  }
}

// Row j + k of the unmasked rows j .. j + 3 (j a multiple of 4), the first P registers' inputs
// permuted out of one quad each.
template <int R, int k, int P, std::size_t... r>
ZAL_INLINE void QuadRow(VF32 (&acc)[R][4], const VF32 (&quads)[P], const Tables& t, const float* b,
                        std::ptrdiff_t j, std::index_sequence<r...>) {
  const VF32 row = Load(t.table + (j + k) * kLanes);
  ((acc[r][k] = MulAdd(Input<k, r>(quads, b, j), row, acc[r][k])), ...);
}

// Rows [j, end), j a multiple of 4.
template <int R, bool kMasked>
ZAL_INLINE void Rows(VF32 (&acc)[R][4], const Tables& t, const float* b, std::ptrdiff_t j,
                     std::ptrdiff_t end) {
  constexpr auto kRegisters = std::make_index_sequence<R>{};
  for (; j + 4 <= end; j += 4) {
    if constexpr (!kMasked) {
      // Only the inputs the rows' broadcasts would read: no quad for a register not in the block.
      constexpr int kQuads = R < kPermuted ? R : kPermuted;
      VF32 quads[kQuads];
      for (int r = 0; r < kQuads; ++r) quads[r] = Quad(b + j + r * kLanes);
      QuadRow<R, 0>(acc, quads, t, b, j, kRegisters);
      QuadRow<R, 1>(acc, quads, t, b, j, kRegisters);
      QuadRow<R, 2>(acc, quads, t, b, j, kRegisters);
      QuadRow<R, 3>(acc, quads, t, b, j, kRegisters);
    } else {
      Row<R, 0, kMasked>(acc, t, b, j, kRegisters);
      Row<R, 1, kMasked>(acc, t, b, j + 1, kRegisters);
      Row<R, 2, kMasked>(acc, t, b, j + 2, kRegisters);
      Row<R, 3, kMasked>(acc, t, b, j + 3, kRegisters);
    }
  }
  if (j < end) Row<R, 0, kMasked>(acc, t, b, j, kRegisters);
  if (j + 1 < end) Row<R, 1, kMasked>(acc, t, b, j + 1, kRegisters);
  if (j + 2 < end) Row<R, 2, kMasked>(acc, t, b, j + 2, kRegisters);
}

// Element by element: a loop over the array is compiled to a fill through memory.
template <int R, std::size_t... r>
ZAL_INLINE void Clear(VF32 (&acc)[R][4], std::index_sequence<r...>) {
  const VF32 zero = Broadcast(0.0f);
  ((acc[r][0] = zero, acc[r][1] = zero, acc[r][2] = zero, acc[r][3] = zero), ...);
}

// Each register's chains combined and stored, register by register as the fold unrolls: a loop
// here sends the accumulators through the stack.
template <int R, std::size_t... r>
ZAL_INLINE void Finish(const VF32 (&acc)[R][4], float* out, std::index_sequence<r...>) {
  (Store(out + r * kLanes, (acc[r][0] + acc[r][2]) + (acc[r][1] + acc[r][3])), ...);
}

// R registers of outputs starting at b. Unmasked, the lanes outside the taps add 0 times a
// finite input, +-0, which leaves every accumulator as it is: the same bits as masked.
template <int R, bool kMasked>
ZAL_INLINE void Outputs(const Tables& t, const float* b, float* out) {
  VF32 acc[R][4];
  Clear(acc, std::make_index_sequence<R>{});
  // The rows run on to a multiple of 4 (zero rows past taps + lanes - 1), so that each region
  // is whole groups of four and the accumulators stay in registers.
  const std::ptrdiff_t end = RowCount(t.taps);
  if constexpr (kMasked) {
    // Unmasked rows: every lane's tap index in range; both bounds on multiples of 4.
    std::ptrdiff_t plain_begin = (kLanes - 1 + 3) / 4 * 4;
    if (plain_begin > end) plain_begin = end;
    std::ptrdiff_t plain_end = t.taps / 4 * 4;
    if (plain_end < plain_begin) plain_end = plain_begin;
    Rows<R, true>(acc, t, b, 0, plain_begin);
    Rows<R, false>(acc, t, b, plain_begin, plain_end);
    Rows<R, true>(acc, t, b, plain_end, end);
  } else {
    Rows<R, false>(acc, t, b, 0, end);
  }
  Finish(acc, out, std::make_index_sequence<R>{});
}

// Whether b[0, n) holds only finite values: x - x is 0 for them and NaN for the others.
ZAL_INLINE bool AllFinite(const float* b, std::ptrdiff_t n) {
  // Four sums, so that the pass is not one chain of dependent additions.
  VF32 sum = Broadcast(0.0f);
  VF32 sum1 = sum;
  VF32 sum2 = sum;
  VF32 sum3 = sum;
  std::ptrdiff_t i = 0;
  for (; i + 4 * kLanes <= n; i += 4 * kLanes) {
    const VF32 x0 = Load(b + i);
    const VF32 x1 = Load(b + i + kLanes);
    const VF32 x2 = Load(b + i + 2 * kLanes);
    const VF32 x3 = Load(b + i + 3 * kLanes);
    sum = sum + (x0 - x0);
    sum1 = sum1 + (x1 - x1);
    sum2 = sum2 + (x2 - x2);
    sum3 = sum3 + (x3 - x3);
  }
  sum = (sum + sum1) + (sum2 + sum3);
  for (; i + kLanes <= n; i += kLanes) {
    const VF32 x = Load(b + i);
    sum = sum + (x - x);
  }
  if (i < n) {
    const VF32 x = LoadN(b + i, static_cast<int>(n - i));
    sum = sum + (x - x);
  }
  return !AnyLane(Unordered(sum, sum));
}

// The registers left after the full blocks, as one block of that many: a lone register's four
// chains would keep the fused multiply-add units half idle.
template <int R, bool kMasked>
ZAL_INLINE void FewerRegisters(const Tables& t, const float* b, float* out,
                               std::ptrdiff_t registers) {
  if constexpr (R >= 1) {
    if (registers == R) {
      Outputs<R, kMasked>(t, b, out);
    } else {
      FewerRegisters<R - 1, kMasked>(t, b, out, registers);
    }
  }
}

// out[p] = sum over m of g[m] b[p + m] for p < count; reads b[0, count + taps - 1) and up to
// kFIRLineSlack zeros after it.
template <bool kMasked>
void FilterRangeAs(const Tables& t, const float* b, float* out, std::ptrdiff_t count) {
  std::ptrdiff_t p = 0;
  for (; p + kBlock * kLanes <= count; p += kBlock * kLanes) {
    Outputs<kBlock, kMasked>(t, b + p, out + p);
  }
  const std::ptrdiff_t registers = (count - p) / kLanes;
  FewerRegisters<kBlock - 1, kMasked>(t, b + p, out + p, registers);
  p += registers * kLanes;
  for (; p < count; ++p) out[p] = OneOutput(t, b + p);
}

// Masks cost loads and operations on a tenth to a half of the rows: only a line with an infinite
// or NaN input needs them.
void FilterRange(const Tables& t, const float* b, float* out, std::ptrdiff_t count) {
  if (AllFinite(b, count + t.taps - 1)) {
    FilterRangeAs<false>(t, b, out, count);
  } else {
    FilterRangeAs<true>(t, b, out, count);
  }
}

// Blocks this short go without the line: each output from the delay line and src directly.
constexpr int kShortBlock = 4;

// Chains c[k] += g[m] x[m - shift] for m in [begin, end), k = m mod 4, four at a time where m
// allows.
ZAL_INLINE void AddTerms(float (&c)[4], const float* g, const float* src, std::ptrdiff_t shift,
                         std::ptrdiff_t begin, std::ptrdiff_t end) {
  const auto x = [src, shift](std::ptrdiff_t m) { return src[m - shift]; };
  std::ptrdiff_t m = begin;
  for (; m < end && m % 4 != 0; ++m) {
    const int k = static_cast<int>(m % 4);
    if (k == 1) c[1] = ScalarMulAdd(g[m], x(m), c[1]);
    if (k == 2) c[2] = ScalarMulAdd(g[m], x(m), c[2]);
    if (k == 3) c[3] = ScalarMulAdd(g[m], x(m), c[3]);
  }
  for (; m + 4 <= end; m += 4) {
    c[0] = ScalarMulAdd(g[m], x(m), c[0]);
    c[1] = ScalarMulAdd(g[m + 1], x(m + 1), c[1]);
    c[2] = ScalarMulAdd(g[m + 2], x(m + 2), c[2]);
    c[3] = ScalarMulAdd(g[m + 3], x(m + 3), c[3]);
  }
  if (m < end) c[0] = ScalarMulAdd(g[m], x(m), c[0]);
  if (m + 1 < end) c[1] = ScalarMulAdd(g[m + 1], x(m + 1), c[1]);
  if (m + 2 < end) c[2] = ScalarMulAdd(g[m + 2], x(m + 2), c[2]);
}

// Output p of a short block: b[m] is dly[p + m] below taps - 1 - p, src[p + m - (taps - 1)] on.
// Silence before the block is a line of zeros: 0 times a tap, as the line would give.
ZAL_INLINE float ShortOutput(const Tables& t, const float* dly, const float* src,
                             std::ptrdiff_t p) {
  const std::ptrdiff_t split = t.taps - 1 - p > 0 ? t.taps - 1 - p : 0;
  float c[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  if (dly) {
    AddTerms(c, t.reversed, dly, -p, 0, split);
  } else {
    for (std::ptrdiff_t m = 0; m < split; ++m) {
      c[m % 4] = ScalarMulAdd(t.reversed[m], 0.0f, c[m % 4]);
    }
  }
  AddTerms(c, t.reversed, src, t.taps - 1 - p, split, t.taps);
  return (c[0] + c[2]) + (c[1] + c[3]);
}

// A block of at most kShortBlock samples. The inputs are read before anything is written, so
// src may be dst. Kept out of FIRF32 like FilterLong, so that a lone output pays for no frame.
ZAL_NOINLINE void FilterShort(const Tables& t, const float* src, float* dst, int n,
                              const float* dly_src, float* dly_dst) {
  float in[kShortBlock];
  float out[kShortBlock];
  for (int p = 0; p < n; ++p) in[p] = src[p];
  out[0] = FirstOutput(t.reversed, t.taps, dly_src, in[0]);
  for (int p = 1; p < n; ++p) out[p] = ShortOutput(t, dly_src, in, p);
  if (dly_dst) {
    const std::ptrdiff_t history = t.taps - 1;
    const std::ptrdiff_t kept = history > n ? history - n : 0;
    if (dly_src) {
      std::memmove(dly_dst, dly_src + (history - kept), static_cast<std::size_t>(kept) * 4);
    } else {
      std::memset(dly_dst, 0, static_cast<std::size_t>(kept) * 4);
    }
    for (std::ptrdiff_t j = kept; j < history; ++j) dly_dst[j] = in[n - (history - j)];
  }
  for (int p = 0; p < n; ++p) dst[p] = out[p];
}

// A block through the line. Kept out of FIRF32, so that a short block does not pay for this
// frame.
ZAL_NOINLINE void FilterLong(const Tables& t, const float* src, float* dst, int n,
                             const float* dly_src, float* dly_dst, unsigned char* work) {
  const std::size_t history = static_cast<std::size_t>(t.taps - 1);
  auto* line = reinterpret_cast<float*>(work);
  if (dly_src) {
    std::memmove(line, dly_src, history * sizeof(float));
  } else {
    std::memset(line, 0, history * sizeof(float));
  }
  // Each chunk is copied behind the history before any output is written, so src may be dst.
  for (std::ptrdiff_t done = 0; done < n;) {
    const std::ptrdiff_t chunk = n - done < kFIRChunk ? n - done : kFIRChunk;
    std::memcpy(line + history, src + done, static_cast<std::size_t>(chunk) * sizeof(float));
    std::memset(line + history + chunk, 0, kFIRLineSlack * sizeof(float));
    FilterRange(t, line, dst + done, chunk);
    std::memmove(line, line + chunk, history * sizeof(float));
    done += chunk;
  }
  if (dly_dst) std::memmove(dly_dst, line, history * sizeof(float));
}

// One field of the header where it lies, without copying the whole header through the stack.
ZAL_INLINE std::int32_t HeaderField(const unsigned char* spec, std::size_t offset) {
  std::int32_t field;
  std::memcpy(&field, spec + offset, sizeof field);
  return field;
}

Tables TablesOf(const unsigned char* spec) {
  FIRSpecHeader header;
  std::memcpy(&header, spec, sizeof header);
  const auto* floats = reinterpret_cast<const float*>(spec);
  return {floats + header.reversed, floats + header.table, floats + header.front_mask,
          floats + header.back_mask, header.taps_len};
}

}  // namespace

EngStatus FIRInitF32(const float* taps, int taps_len, int algorithm, unsigned char* spec) {
  if (!taps || !spec) return engStsNullPtrErr;
  if (taps_len <= 0) return engStsSizeErr;
  if (algorithm != kFIRAlgorithmDirect) return engStsNotSupportedModeErr;
  const std::ptrdiff_t n = taps_len;
  const std::ptrdiff_t rows = RowCount(n);
  FIRSpecHeader header{};
  header.lanes = kLanes;
  header.taps_len = taps_len;
  header.front_mask = kFIRHeaderFloats;
  header.back_mask = header.front_mask + kLanes * kLanes;
  const std::ptrdiff_t reversed = header.back_mask + (kLanes + 1) * kLanes;
  const std::ptrdiff_t table = reversed + (n + kFIRMaxLanes - 1) / kFIRMaxLanes * kFIRMaxLanes;
  header.reversed = static_cast<std::int32_t>(reversed);
  header.table = static_cast<std::int32_t>(table);
  std::memcpy(spec, &header, sizeof header);
  auto* floats = reinterpret_cast<float*>(spec);
  float* front = floats + header.front_mask;
  float* back = floats + header.back_mask;
  float all_ones;
  const std::uint32_t ones = 0xFFFFFFFFu;
  std::memcpy(&all_ones, &ones, sizeof all_ones);
  for (int k = 0; k < kLanes; ++k) {
    for (int i = 0; i < kLanes; ++i) front[k * kLanes + i] = i <= k ? all_ones : 0.0f;
  }
  for (int k = 0; k <= kLanes; ++k) {
    for (int i = 0; i < kLanes; ++i) back[k * kLanes + i] = i >= k ? all_ones : 0.0f;
  }
  float* g = floats + reversed;
  for (std::ptrdiff_t m = 0; m < n; ++m) g[m] = taps[n - 1 - m];
  // The one-output path reads the reversed taps in groups of four, past taps as zeros.
  for (std::ptrdiff_t m = n; m < table - reversed; ++m) g[m] = 0.0f;
  float* rows_out = floats + table;
  for (std::ptrdiff_t j = 0; j < rows; ++j) {
    for (std::ptrdiff_t i = 0; i < kLanes; ++i) {
      const std::ptrdiff_t m = j - i;
      rows_out[j * kLanes + i] = m >= 0 && m < n ? g[m] : 0.0f;
    }
  }
  return engStsNoErr;
}

EngStatus FIRF32(const float* src, float* dst, int n, const unsigned char* spec,
                 const float* dly_src, float* dly_dst, unsigned char* work) {
  if (!src || !dst || !spec || !work) return engStsNullPtrErr;
  if (n <= 0) return engStsSizeErr;
  if (HeaderField(spec, offsetof(FIRSpecHeader, lanes)) != kLanes) return engStsContextMatchErr;
  if (n == 1 && !dly_dst) {
    // The lone output of the single-sample filter, which leaves the history as it is.
    const auto* g =
        reinterpret_cast<const float*>(spec) + HeaderField(spec, offsetof(FIRSpecHeader, reversed));
    *dst = FirstOutput(g, HeaderField(spec, offsetof(FIRSpecHeader, taps_len)), dly_src, *src);
    return engStsNoErr;
  }
  const Tables t = TablesOf(spec);
  if (n <= kShortBlock) {
    FilterShort(t, src, dst, n, dly_src, dly_dst);
    return engStsNoErr;
  }
  FilterLong(t, src, dst, n, dly_src, dly_dst, work);
  return engStsNoErr;
}

#include "engine/primitives/fir/fir_entries-inl.h"

}  // namespace zal::engine::ZAL_LEVEL
