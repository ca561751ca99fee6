#include "tests/fuzz/fuzz_support.h"

#include <xmmintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <unordered_set>

#include "engine/core/level.h"
#include "tests/engine/harness/fp_environment.h"
#include "zalaccelerate/core.h"

namespace zal::fuzz {
namespace {

std::string g_call;

constexpr unsigned kRoundingShift = 13;

// The interesting values, as bits.
constexpr std::uint32_t kSpecialF32[] = {
    0x00000000, 0x80000000,              // +-0
    0x3F800000, 0xBF800000,              // +-1
    0x3F000000, 0x3FC00000, 0x40200000,  // 0.5, 1.5, 2.5
    0xC0200000, 0xBECCCCCD,              // -2.5, -0.4
    0x7F800000, 0xFF800000,              // +-inf
    0xFFC00000, 0x7FC00000,              // default NaN, positive quiet NaN
    0x7FC12345, 0xFFD00001,              // quiet NaNs with payloads
    0x7F800001, 0xFF8ABCDE,              // signalling NaNs
    0x00000001, 0x007FFFFF, 0x80000001,  // subnormals
    0x00800000, 0x80800000,              // +-smallest normal
    0x7F7FFFFF, 0xFF7FFFFF,              // +-largest finite
    0x34000000,                          // epsilon
    0x4B000000, 0x4AFFFFFF, 0x4B7FFFFF,  // 2^23, 2^23 - 0.5, 2^24 - 1
    0x42B17218, 0xC2CFF1B5,              // exp overflow and underflow edges
    0x5F800000, 0x1F800000,              // 2^64 and 2^-64: squares overflow and underflow
    0x40490FDB, 0xC0490FDB,              // +-pi
};

constexpr std::uint64_t kSpecialF64[] = {
    0x0000000000000000, 0x8000000000000000,  // +-0
    0x3FF0000000000000, 0xBFF0000000000000,  // +-1
    0x3FE0000000000000, 0x3FF8000000000000,  // 0.5, 1.5
    0x4004000000000000, 0xC004000000000000,  // +-2.5
    0xBFD999999999999A,                      // -0.4
    0x7FF0000000000000, 0xFFF0000000000000,  // +-inf
    0xFFF8000000000000, 0x7FF8000000000000,  // default NaN, positive quiet NaN
    0x7FF8000012345678, 0xFFFC000000000001,  // quiet NaNs with payloads
    0x7FF0000000000001, 0xFFF00000ABCDEF00,  // signalling NaNs
    0x0000000000000001, 0x000FFFFFFFFFFFFF,  // subnormals
    0x8000000000000001,                      //
    0x0010000000000000, 0x8010000000000000,  // +-smallest normal
    0x7FEFFFFFFFFFFFFF, 0xFFEFFFFFFFFFFFFF,  // +-largest finite
    0x3CB0000000000000,                      // epsilon
    0x4330000000000000, 0x432FFFFFFFFFFFFF,  // 2^52, 2^52 - 0.5
    0x40862E42FEFA39EF, 0xC0874910D52D3051,  // exp overflow and underflow edges
    0x5FF0000000000000, 0x2000000000000000,  // 2^512 and 2^-511
    0x400921FB54442D18, 0xC00921FB54442D18,  // +-pi
    0x3E80000000000000,                      // 1.1920928955078125e-7 (float epsilon)
};

template <class Bits, class F, std::size_t kCount>
F DrawValue(FuzzedDataProvider& input, const Bits (&specials)[kCount]) {
  switch (input.ConsumeIntegralInRange<int>(0, 3)) {
    case 0:
      return std::bit_cast<F>(specials[input.ConsumeIntegralInRange<std::size_t>(0, kCount - 1)]);
    case 1:
      return static_cast<F>(input.ConsumeIntegral<std::int8_t>()) / 2;
    case 2: {
      // Magnitudes 2^-8 .. 2^8 of either sign.
      const F mantissa = static_cast<F>(input.ConsumeIntegral<std::uint16_t>()) / 65536 + 1;
      const int exponent = input.ConsumeIntegralInRange<int>(-8, 8);
      const F value = std::ldexp(mantissa, exponent);
      return input.ConsumeBool() ? -value : value;
    }
    default:
      return std::bit_cast<F>(input.ConsumeIntegral<Bits>());
  }
}

template <class Bits>
bool IsNanBits(Bits bits) {
  constexpr Bits kSign = Bits{1} << (sizeof(Bits) * 8 - 1);
  constexpr Bits kExponent =
      static_cast<Bits>(sizeof(Bits) == 4 ? 0x7F800000u : 0x7FF0000000000000u);
  return (bits & kExponent) == kExponent && (bits & ~(kSign | kExponent)) != 0;
}

template <class Bits>
Bits LaneBits(const Output& output, std::size_t i) {
  Bits bits;
  std::memcpy(&bits, output.bytes.data() + i * sizeof(Bits), sizeof(Bits));
  return bits;
}

// Distance in representable values, with -0 and +0 adjacent.
template <class Bits>
std::uint64_t UlpDistance(Bits a, Bits b) {
  constexpr Bits kSign = Bits{1} << (sizeof(Bits) * 8 - 1);
  const auto ordered = [](Bits x) -> __int128 {
    return (x & kSign) ? -static_cast<__int128>(x & ~kSign) - 1 : static_cast<__int128>(x);
  };
  const __int128 d = ordered(a) - ordered(b);
  return static_cast<std::uint64_t>(d < 0 ? -d : d);
}

template <class F, class Bits>
bool LanesAgree(Agreement agreement, const Output& reference, const Output& got) {
  const std::size_t lanes = reference.bytes.size() / sizeof(Bits);
  for (std::size_t i = 0; i < lanes; ++i) {
    const Bits a = LaneBits<Bits>(reference, i);
    const Bits b = LaneBits<Bits>(got, i);
    if (a == b) continue;
    if (IsNanBits(a) || IsNanBits(b)) return false;
    const F x = std::bit_cast<F>(a);
    const F y = std::bit_cast<F>(b);
    switch (agreement) {
      case Agreement::kBits:
        return false;
      case Agreement::kUlps:
        if (UlpDistance(a, b) > 2) return false;
        break;
      default: {
        const int bits = agreement == Agreement::kPrec11   ? 11
                         : agreement == Agreement::kPrec21 ? 21
                         : agreement == Agreement::kPrec24 ? 24
                                                           : 26;
        if (std::isinf(x) || std::isinf(y)) {
          if (UlpDistance(a, b) > 2) return false;
          break;
        }
        const long double bound =
            std::ldexp(1.0L, 2 - bits) * std::max(std::fabs(static_cast<long double>(x)),
                                                  std::fabs(static_cast<long double>(y)));
        if (std::fabs(static_cast<long double>(x) - static_cast<long double>(y)) > bound) {
          return false;
        }
      }
    }
  }
  return true;
}

template <class Bits>
bool KeepsNanRuleIn(NanRule rule, const Output& output, std::span<const Output> inputs, Lane lane,
                    Bits default_nan) {
  constexpr Bits kSign = Bits{1} << (sizeof(Bits) * 8 - 1);
  constexpr Bits kQuiet = Bits{1} << (sizeof(Bits) == 4 ? 22 : 51);
  const std::size_t lanes = output.bytes.size() / sizeof(Bits);
  std::optional<std::unordered_set<Bits>> handed_on;
  for (std::size_t i = 0; i < lanes; ++i) {
    const Bits bits = LaneBits<Bits>(output, i);
    if (!IsNanBits(bits)) continue;
    if (rule == NanRule::kComputed || (rule == NanRule::kQuietened && bits == default_nan)) {
      if (bits != default_nan) return false;
      continue;
    }
    if (!handed_on) {
      // The inputs' NaNs, as they are and with the sign cleared; gathered once, since long
      // operands full of NaNs would make a search per output lane quadratic.
      handed_on.emplace();
      for (const Output& in : inputs) {
        if (in.lane != lane) continue;
        for (std::size_t j = 0; j < in.bytes.size() / sizeof(Bits); ++j) {
          const Bits candidate = LaneBits<Bits>(in, j);
          if (!IsNanBits(candidate)) continue;
          if (rule == NanRule::kQuietened) {
            handed_on->insert(candidate | kQuiet);
          } else {
            handed_on->insert(candidate);
            handed_on->insert(candidate & ~kSign);
          }
        }
      }
    }
    if (!handed_on->contains(bits)) return false;
  }
  return true;
}

}  // namespace

void DescribeCall(std::string description) {
  g_call = std::move(description);
}

void Fail(const std::string& what) {
  std::fprintf(stderr, "\n==== broken promise: %s\n     in %s\n", what.c_str(), g_call.c_str());
  std::abort();
}

const std::vector<int>& SupportedLevels() {
  static const std::vector<int> levels = [] {
    engStartDispatch();
    std::uint64_t features = 0;
    engGetCpuFeatures(&features, nullptr);
    std::vector<int> supported;
    for (int level = 0; level < engine::kLevelCount; ++level) {
      if ((features & engine::kLevelNeeds[level]) == engine::kLevelNeeds[level]) {
        supported.push_back(level);
      }
    }
    return supported;
  }();
  return levels;
}

void ForceLevel(int level) {
  int selected = -1;
  engSelectCpuFeatures(engine::kLevelNeeds[level] | engCpuBypassChecks, &selected);
  engSetDispatchIndex(selected);
  if (engGetDispatchIndex() != level) Fail("could not force level " + std::to_string(level));
}

std::string FpMode::Name() const {
  static constexpr const char* kRounding[] = {"nearest", "down", "up", "toward zero"};
  std::string name = kRounding[rounding & 3];
  if (flush_to_zero) name += ", FTZ";
  if (denormals_are_zero) name += ", DAZ";
  return name;
}

FpMode DrawMode(FuzzedDataProvider& input) {
  // Half of the calls run in the default mode, where every check applies.
  const auto bits = input.ConsumeIntegral<std::uint8_t>();
  if (bits < 128) return {};
  return {(bits & 1) != 0, (bits & 2) != 0, (bits >> 2) & 3u};
}

unsigned ModeBits(const FpMode& mode) {
  return (mode.flush_to_zero ? test::harness::kFlushToZero : 0) |
         (mode.denormals_are_zero ? test::harness::kDenormalsAreZero : 0) |
         ((mode.rounding & 3) << kRoundingShift);
}

unsigned ControlBits(unsigned mxcsr) {
  return mxcsr & test::harness::kMxcsrControl;
}

unsigned ReadMxcsr() {
  return _mm_getcsr();
}

void WriteMxcsr(unsigned mxcsr) {
  _mm_setcsr(mxcsr);
}

std::size_t LaneBytes(Lane lane) {
  switch (lane) {
    case Lane::kFloat:
    case Lane::kInt:
      return 4;
    case Lane::kDouble:
      return 8;
    case Lane::kShort:
      return 2;
    case Lane::kByte:
      return 1;
  }
  return 1;
}

float DrawFloat(FuzzedDataProvider& input) {
  return DrawValue<std::uint32_t, float>(input, kSpecialF32);
}

double DrawDouble(FuzzedDataProvider& input) {
  return DrawValue<std::uint64_t, double>(input, kSpecialF64);
}

Length DrawLength(FuzzedDataProvider& input, std::size_t long_elements) {
  constexpr std::size_t kHugeBufferElements = 16;
  const int kind = input.ConsumeIntegralInRange<int>(0, 15);
  if (kind == 0) return {};
  if (kind <= 11) {
    const auto n = input.ConsumeIntegralInRange<std::uint32_t>(1, kind <= 7 ? 200 : 5000);
    return {n, n, false};
  }
  if (kind == 12) {
    const auto n = static_cast<std::uint32_t>(
        input.ConsumeIntegralInRange<std::size_t>(long_elements / 2, long_elements));
    return {n, n, false};
  }
  const auto k = input.ConsumeIntegral<std::uint16_t>();
  const std::uint32_t n = input.ConsumeBool() ? 0x80000000u + k : 0xFFFFFFFFu - k;
  return {n, kHugeBufferElements, true};
}

Buffer::Buffer(Lane lane, std::size_t lanes, int offset_bytes)
    : lane_(lane),
      lanes_(lanes),
      block_(static_cast<int>(lanes * LaneBytes(lane)), offset_bytes, true) {}

void Buffer::Load(std::span<const unsigned char> contents) {
  if (contents.empty()) return;
  std::memcpy(data(), contents.data(), std::min(contents.size(), bytes()));
}

int DrawOffset(FuzzedDataProvider& input, std::size_t element_bytes) {
  const int steps = static_cast<int>(64 / element_bytes);
  return input.ConsumeIntegralInRange<int>(0, steps - 1) * static_cast<int>(element_bytes);
}

std::vector<unsigned char> DrawContents(FuzzedDataProvider& input, Lane lane, std::size_t lanes) {
  const std::size_t width = LaneBytes(lane);
  const std::size_t period = std::min<std::size_t>(
      std::max<std::size_t>(lanes, 1), input.ConsumeIntegralInRange<std::size_t>(1, 64));
  std::vector<unsigned char> bytes(lanes * width);
  std::vector<unsigned char> pattern(period * width);
  for (std::size_t i = 0; i < period; ++i) {
    unsigned char* at = pattern.data() + i * width;
    if (lane == Lane::kFloat) {
      const float value = DrawFloat(input);
      std::memcpy(at, &value, width);
    } else if (lane == Lane::kDouble) {
      const double value = DrawDouble(input);
      std::memcpy(at, &value, width);
    } else {
      for (std::size_t b = 0; b < width; ++b) at[b] = input.ConsumeIntegral<unsigned char>();
    }
  }
  for (std::size_t i = 0; i < bytes.size(); i += pattern.size()) {
    std::memcpy(bytes.data() + i, pattern.data(), std::min(pattern.size(), bytes.size() - i));
  }
  return bytes;
}

bool Agree(Agreement agreement, const Output& reference, const Output& got) {
  if (reference.lane != got.lane || reference.bytes.size() != got.bytes.size()) return false;
  if (reference.bytes == got.bytes) return true;
  switch (reference.lane) {
    case Lane::kFloat:
      return LanesAgree<float, std::uint32_t>(agreement, reference, got);
    case Lane::kDouble:
      return LanesAgree<double, std::uint64_t>(agreement, reference, got);
    default:
      return false;
  }
}

bool KeepsNanRule(NanRule rule, const Output& output, std::span<const Output> inputs) {
  switch (output.lane) {
    case Lane::kFloat:
      return KeepsNanRuleIn<std::uint32_t>(rule, output, inputs, Lane::kFloat, kDefaultNanF32);
    case Lane::kDouble:
      return KeepsNanRuleIn<std::uint64_t>(rule, output, inputs, Lane::kDouble, kDefaultNanF64);
    default:
      return true;
  }
}

}  // namespace zal::fuzz
