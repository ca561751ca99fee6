// The prepared transform the preparation primitives write into a prepared block, and the unit roots
// they fill it with. Plain data, shared by every level and the portable variant; a spec is only
// ever run by the level (and kind) that prepared it.
#pragma once

namespace zal::engine {

// Orders 0..kFFTMaxOrder: lengths 1 .. 2^24.
inline constexpr int kFFTMaxOrder = 24;
// The only scaling the engine offers: forward unscaled, inverse divided by the length.
inline constexpr int kFFTDivInvByN = 2;

enum class FFTKind : int { kRealF32, kRealF64, kComplexF32, kComplexF64, kSplitF32, kSplitF64 };

// One radix-16 or -8 pass, or a closing radix-8, -4 or -2 one, of the row transform over vectors of
// lanes: `span` points per sub-transform, sub-transforms `stride` vectors apart, unit roots at
// `twiddles`.
struct FFTPass {
  int radix;
  int span;
  int stride;
  int twiddles;
};

// A core transform of `core_length` complex points runs as a `rows`-point transform whose points
// are vectors of `lanes` independent columns, then one pass that twiddles each row, transposes
// blocks of lanes x lanes and finishes with a lanes-point transform in registers. Real kinds run
// a half-length core and one pass that separates the even and odd halves. Offsets count scalars
// from the unit-root tables, which follow the header.
struct FFTSpec {
  int level;
  int kind;
  int order;
  int core_length;
  int lanes;
  int rows;
  int pass_count;
  // Rows of a core short enough to stay in registers from load to store (no passes, no work
  // buffer); 0 for the general path.
  int short_rows;
  int work_bytes;
  FFTPass passes[kFFTMaxOrder];
  int row_twiddles;
  int lane_twiddles;
  int real_twiddles;
  // 1 when the closing radix-2 step of the rows transform runs in the lanes pass's loads instead
  // of as a pass of its own (not in `passes`).
  int halves_in_lanes_pass;
};

// Bytes from the start of the plan block to its unit-root tables: the header rounded up to whole
// cache lines.
inline constexpr int kFFTSpecHeaderBytes = (sizeof(FFTSpec) + 63) / 64 * 64;

// exp(-2 pi i k / n), correctly rounded to double but for rare ties; 0 <= k < n.
void FFTUnitRoot(long long k, long long n, double* re, double* im);
// The same rounded to float.
void FFTUnitRoot(long long k, long long n, float* re, float* im);

}  // namespace zal::engine
