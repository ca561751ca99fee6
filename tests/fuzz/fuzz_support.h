// What the fuzz targets share: the levels this processor runs and how to force one, the
// floating-point modes a call runs under, operand buffers with canaries, operand values and
// lengths drawn from the fuzz input, the NaN rule, and the report of a broken promise.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "tests/engine/harness/buffers.h"

namespace zal::fuzz {

// ---- Reports ------------------------------------------------------------------------------------

// What the current call is, for the report: function, level, modes, length.
void DescribeCall(std::string description);

// Prints the broken promise with the current call and aborts, so that libFuzzer keeps the input.
[[noreturn]] void Fail(const std::string& what);

inline void Expect(bool holds, const char* what) {
  if (!holds) Fail(what);
}
inline void Expect(bool holds, const std::string& what) {
  if (!holds) Fail(what);
}

// ---- Levels -------------------------------------------------------------------------------------

// The levels this processor can run, lowest first.
const std::vector<int>& SupportedLevels();

// Puts a level in force through the engine's own selection.
void ForceLevel(int level);

// ---- Floating-point modes -----------------------------------------------------------------------

struct FpMode {
  bool flush_to_zero = false;
  bool denormals_are_zero = false;
  unsigned rounding = 0;  // MXCSR rounding control: nearest, down, up, toward zero

  // Round to nearest, denormals as they are: where accuracy bounds hold.
  bool IsDefault() const { return !flush_to_zero && !denormals_are_zero && rounding == 0; }
  std::string Name() const;
};

FpMode DrawMode(FuzzedDataProvider& input);

// Runs `call` with the mode in force on top of the thread's register as found, checks that the
// call left the control bits (modes and exception masks) as they were, and restores the register.
template <class Call>
void RunUnder(const FpMode& mode, Call&& call);

// ---- Values -------------------------------------------------------------------------------------

enum class Lane { kFloat, kDouble, kByte, kShort, kInt };

std::size_t LaneBytes(Lane lane);

// The default quiet NaN, the only NaN a primitive may compute.
inline constexpr std::uint32_t kDefaultNanF32 = 0xFFC00000u;
inline constexpr std::uint64_t kDefaultNanF64 = 0xFFF8000000000000u;

// A value: one of the interesting ones (signed zeros, infinities, NaNs with payloads, signalling
// NaNs, subnormals, the range's extremes, ties), a small integer or half, a moderate magnitude of
// either sign, or raw bits.
float DrawFloat(FuzzedDataProvider& input);
double DrawDouble(FuzzedDataProvider& input);

// ---- Lengths ------------------------------------------------------------------------------------

struct Length {
  std::uint32_t len = 0;     // what the call is given
  std::size_t elements = 0;  // what the buffers hold: len, or a few for a huge len
  bool huge = false;         // 2^31 or more: the promise is a no-op
};

// 0; short lengths around the vector widths and unrolls; a few thousand; long ones past the
// streaming-store threshold (up to `long_elements`); or huge, 2^31 + k or 2^32 - 1 - k.
Length DrawLength(FuzzedDataProvider& input, std::size_t long_elements);

// ---- Operand buffers ----------------------------------------------------------------------------

// A caller's buffer: its bytes at an element-aligned offset from a 64-byte boundary in a heap
// block of exactly its size (AddressSanitizer sees reads past the end), with canaries on both
// sides (writes outside it are seen in every build).
class Buffer {
 public:
  Buffer(Lane lane, std::size_t lanes, int offset_bytes);

  Lane lane() const { return lane_; }
  std::size_t lanes() const { return lanes_; }
  std::size_t bytes() const { return lanes_ * LaneBytes(lane_); }
  unsigned char* data() const { return block_.Data(); }
  template <class T>
  T* As() const {
    return reinterpret_cast<T*>(data());
  }

  void Load(std::span<const unsigned char> contents);
  std::vector<unsigned char> Contents() const { return {data(), data() + bytes()}; }
  bool CanariesIntact() const { return block_.CanariesIntact(); }

 private:
  Lane lane_;
  std::size_t lanes_;
  test::harness::Vector<unsigned char> block_;
};

// An element-aligned offset below 64 bytes for elements of `element_bytes`.
int DrawOffset(FuzzedDataProvider& input, std::size_t element_bytes);

// Lanes of a buffer: a pattern of 1 .. 64 drawn values, repeated (long buffers cost a few draws).
std::vector<unsigned char> DrawContents(FuzzedDataProvider& input, Lane lane, std::size_t lanes);

// ---- Outputs and their comparison ---------------------------------------------------------------

// What a call produced at one level: its destinations and returned values, lane-typed.
struct Output {
  Lane lane;
  std::vector<unsigned char> bytes;
};

enum class Agreement {
  kBits,    // the same bits at every level
  kUlps,    // each within 1 ulp of the exact value: at most 2 ulps apart
  kPrec11,  // _PrecN: each within 2^(1-N) relative: at most 2^(2-N) apart
  kPrec21,
  kPrec24,
  kPrec26,
};

// Whether `got` agrees with `reference` as the agreement says (lanes other than float and double
// always bit for bit). NaNs compare as bits, which the NaN rule makes the same at every level.
bool Agree(Agreement agreement, const Output& reference, const Output& got);

enum class NanRule {
  kComputed,   // every NaN produced is the default quiet NaN
  kPassed,     // a NaN produced is one of the inputs' NaNs, unchanged (or with its sign cleared)
  kQuietened,  // the default quiet NaN, or one of the inputs' NaNs with its quiet bit set
};

// Whether every NaN lane of `output` keeps the rule; `inputs` holds the float and double
// operands' bits (for kPassed).
bool KeepsNanRule(NanRule rule, const Output& output, std::span<const Output> inputs);

// ---- Template definitions -----------------------------------------------------------------------

unsigned ModeBits(const FpMode& mode);
unsigned ControlBits(unsigned mxcsr);
unsigned ReadMxcsr();
void WriteMxcsr(unsigned mxcsr);

template <class Call>
void RunUnder(const FpMode& mode, Call&& call) {
  const unsigned saved = ReadMxcsr();
  const unsigned before = (saved & ~ModeBits(FpMode{true, true, 3})) | ModeBits(mode);
  WriteMxcsr(before);
  call();
  const unsigned after = ReadMxcsr();
  WriteMxcsr(saved);
  Expect(ControlBits(after) == ControlBits(before), "changed the MXCSR control bits");
}

}  // namespace zal::fuzz
