// The direct-form FIR kernels, written once against the vector layer. With the history and the
// input contiguous in b, y[p] = sum over m of g[m] b[p + m], g the reversed taps.
//
// A register of L outputs starting at p is a sum over j of broadcast(b[p + j]) times table row j,
// whose lane i holds g[j - i]: every load of the taps is aligned, every input load a broadcast,
// and each table row feeds several output registers (the register block). Rows whose lanes run
// past the taps (j < L - 1 or j >= taps) mask the broadcast, so that a zero tap never meets an
// infinite input.
//
// Each output is four chains, m = 0, 1, 2, 3 mod 4, each summed in increasing m, then combined as
// (c0 + c2) + (c1 + c3). Lane i's accumulator k holds chain (k - i) mod 4, and that combination
// is the same for every rotation of the chains, so an output's bits do not depend on its lane,
// hence not on where a block starts: any split of a stream gives the bits of one long call. The
// one-output path sums in the same order.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstddef>
#include <cstring>
#include <utility>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/fir/fir_spec.h"
#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr int kLanes = VF32::kLanes;
// Output registers per pass: each keeps four accumulators, within the register file.
constexpr int kBlock = ZAL_LEVEL_INDEX >= 5 ? 4 : 2;

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

// Row j of the table into the four accumulators k = j mod 4 of R output registers.
template <int R, int k, bool kMasked, std::size_t... r>
ZAL_INLINE void Row(VF32 (&acc)[R][4], const Tables& t, const float* b, std::ptrdiff_t j,
                    std::index_sequence<r...>) {
  const VF32 row = Load(t.table + j * kLanes);
  if constexpr (kMasked) {
    const std::ptrdiff_t front = j < kLanes - 1 ? j : kLanes - 1;
    const std::ptrdiff_t past = j - t.taps + 1;
    const std::ptrdiff_t back = past < 0 ? 0 : past;
    const VF32 mask = And(Load(t.front_mask + front * kLanes), Load(t.back_mask + back * kLanes));
    ((acc[r][k] = MulAdd(And(Broadcast(b[j + r * kLanes]), mask), row, acc[r][k])), ...);
  } else {
    ((acc[r][k] = MulAdd(Broadcast(b[j + r * kLanes]), row, acc[r][k])), ...);
  }
}

// Rows [j, end), j a multiple of 4.
template <int R, bool kMasked>
ZAL_INLINE void Rows(VF32 (&acc)[R][4], const Tables& t, const float* b, std::ptrdiff_t j,
                     std::ptrdiff_t end) {
  constexpr auto kRegisters = std::make_index_sequence<R>{};
  for (; j + 4 <= end; j += 4) {
    Row<R, 0, kMasked>(acc, t, b, j, kRegisters);
    Row<R, 1, kMasked>(acc, t, b, j + 1, kRegisters);
    Row<R, 2, kMasked>(acc, t, b, j + 2, kRegisters);
    Row<R, 3, kMasked>(acc, t, b, j + 3, kRegisters);
  }
  if (j < end) Row<R, 0, kMasked>(acc, t, b, j, kRegisters);
  if (j + 1 < end) Row<R, 1, kMasked>(acc, t, b, j + 1, kRegisters);
  if (j + 2 < end) Row<R, 2, kMasked>(acc, t, b, j + 2, kRegisters);
}

// R registers of outputs starting at b.
template <int R>
ZAL_INLINE void Outputs(const Tables& t, const float* b, float* out) {
  VF32 acc[R][4];
  for (auto& chains : acc) {
    for (auto& chain : chains) chain = Broadcast(0.0f);
  }
  const std::ptrdiff_t end = t.taps + kLanes - 1;
  // Unmasked rows: every lane's tap index in range; both bounds on multiples of 4.
  std::ptrdiff_t plain_begin = (kLanes - 1 + 3) / 4 * 4;
  if (plain_begin > end) plain_begin = end;
  std::ptrdiff_t plain_end = t.taps / 4 * 4;
  if (plain_end < plain_begin) plain_end = plain_begin;
  Rows<R, true>(acc, t, b, 0, plain_begin);
  Rows<R, false>(acc, t, b, plain_begin, plain_end);
  Rows<R, true>(acc, t, b, plain_end, end);
  for (int r = 0; r < R; ++r) {
    Store(out + r * kLanes, (acc[r][0] + acc[r][2]) + (acc[r][1] + acc[r][3]));
  }
}

// out[p] = sum over m of g[m] b[p + m] for p < count; reads b[0, count + taps - 1).
void FilterRange(const Tables& t, const float* b, float* out, std::ptrdiff_t count) {
  std::ptrdiff_t p = 0;
  for (; p + kBlock * kLanes <= count; p += kBlock * kLanes) Outputs<kBlock>(t, b + p, out + p);
  for (; p + kLanes <= count; p += kLanes) Outputs<1>(t, b + p, out + p);
  for (; p < count; ++p) out[p] = OneOutput(t, b + p);
}

Tables TablesOf(const unsigned char* spec) {
  FIRSpecHeader header;
  std::memcpy(&header, spec, sizeof header);
  const auto* floats = reinterpret_cast<const float*>(spec);
  return {floats + header.reversed, floats + header.table, floats + header.front_mask,
          floats + header.back_mask, header.taps_len};
}

}  // namespace

EngStatus FIRGetSizeF32(int taps_len, int data_type, int* spec_size, int* work_size) {
  if (!spec_size || !work_size) return engStsNullPtrErr;
  if (data_type != kFIRDataTypeF32) return engStsDataTypeErr;
  return FIRSizes(taps_len, spec_size, work_size);
}

EngStatus FIRInitF32(const float* taps, int taps_len, int algorithm, unsigned char* spec) {
  if (!taps || !spec) return engStsNullPtrErr;
  if (taps_len <= 0) return engStsSizeErr;
  if (algorithm != kFIRAlgorithmDirect) return engStsNotSupportedModeErr;
  const std::ptrdiff_t n = taps_len;
  const std::ptrdiff_t rows = n + kLanes - 1;
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
  FIRSpecHeader header;
  std::memcpy(&header, spec, sizeof header);
  if (header.lanes != kLanes) return engStsContextMatchErr;
  const Tables t = TablesOf(spec);
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
    FilterRange(t, line, dst + done, chunk);
    std::memmove(line, line + chunk, history * sizeof(float));
    done += chunk;
  }
  if (dly_dst) std::memmove(dly_dst, line, history * sizeof(float));
  return engStsNoErr;
}

EngStatus FIRGenLowpassGetBufferSize(int taps_len, int* buffer_size) {
  return LowpassBufferBytes(taps_len, buffer_size);
}

EngStatus FIRGenLowpassF64(double rfreq, double* taps, int taps_len, int window, int normalize,
                           unsigned char* buffer) {
  return DesignLowpass(rfreq, taps, taps_len, window, normalize, buffer);
}

}  // namespace zal::engine::ZAL_LEVEL
