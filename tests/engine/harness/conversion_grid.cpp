#include <cmath>
#include <cstdio>
#include <limits>

#include "engine/core/fp_support.h"
#include "tests/engine/harness/conversion_runner.h"

namespace zal::test::harness {
namespace {

std::uint64_t Fnv1a(const char* text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (; *text; ++text) hash = (hash ^ static_cast<unsigned char>(*text)) * 0x100000001b3;
  return hash;
}

// Where the targets' rules change: integer range ends and their neighbours, ties, the +-1.0 limit,
// binary16's largest, smallest normal and smallest denormal values and their rounding points.
constexpr double kBoundaries[] = {0.5,
                                  1.5,
                                  2.5,
                                  3.5,
                                  0.49999997019767761,
                                  0.99999994039535522,
                                  1.0,
                                  1.0000001192092896,
                                  255.0,
                                  255.5,
                                  256.0,
                                  32767.0,
                                  32767.5,
                                  32768.0,
                                  32768.5,
                                  8388607.0,
                                  8388607.5,
                                  8388608.0,
                                  8388609.0,
                                  2147483520.0,
                                  2147483647.0,
                                  2147483647.5,
                                  2147483648.0,
                                  2147483904.0,
                                  65504.0,
                                  65519.0,
                                  65520.0,
                                  65536.0,
                                  6.103515625e-05,
                                  6.0975551605224609e-05,
                                  5.9604644775390625e-08,
                                  2.98023223876953125e-08,
                                  8.9406967163085938e-08,
                                  1.0009,
                                  70000.0,
                                  0.0};

template <class F>
F Boundary(Random& random, int scale) {
  F x = static_cast<F>(kBoundaries[random() % std::size(kBoundaries)]);
  if (random() % 2) x = -x;
  // Moved by the scale, so that the scaled value sits on the boundary, where that stays finite.
  const int shift = scale < -100 || scale > 100 ? 0 : scale;
  return std::ldexp(x, shift);
}

template <class F>
void FillFloating(std::span<F> values, ValueProfile profile, int scale, Random& random) {
  Fill(values, profile, random);
  for (F& x : values) {
    if (random() % 2) x = Boundary<F>(random, scale);
  }
}

template <class T, class Draw>
void FillWith(std::span<T> values, Draw draw) {
  for (T& x : values) x = draw();
}

}  // namespace

void FillSource(std::span<float> values, ValueProfile profile, int scale, Random& random) {
  FillFloating(values, profile, scale, random);
}
void FillSource(std::span<double> values, ValueProfile profile, int scale, Random& random) {
  FillFloating(values, profile, scale, random);
}
void FillSource(std::span<short> values, ValueProfile profile, int, Random& random) {
  Fill(values, profile, random);
}
void FillSource(std::span<int> values, ValueProfile, int, Random& random) {
  constexpr int kExtremes[] = {INT_MIN,  INT_MIN + 1, INT_MAX, INT_MAX - 1, 0,        1,       -1,
                               16777217, -16777217,   8388607, 8388608,     -8388608, -8388609};
  FillWith(values, [&random, &kExtremes] {
    const std::uint64_t draw = random();
    if (draw % 4 == 0) return kExtremes[(draw >> 8) % std::size(kExtremes)];
    const int bits = static_cast<int>((draw >> 16) % 32);
    return static_cast<int>(static_cast<std::uint32_t>(draw >> 32)) >> bits;
  });
}
void FillSource(std::span<unsigned char> values, ValueProfile, int, Random& random) {
  FillWith(values, [&random] { return static_cast<unsigned char>(random()); });
}
void FillSource(std::span<unsigned short> values, ValueProfile, int, Random& random) {
  FillWith(values, [&random] { return static_cast<unsigned short>(random()); });
}
void FillSource(std::span<engine::Int24> values, ValueProfile, int, Random& random) {
  FillWith(values, [&random] {
    const std::uint64_t draw = random();
    const auto top = static_cast<unsigned char>(draw % 8 == 0 ? (draw % 16 ? 0x80 : 0x7F) : draw);
    return engine::Int24{
        {static_cast<unsigned char>(draw >> 8), static_cast<unsigned char>(draw >> 16), top}};
  });
}

std::vector<ConversionCase> BuildConversionGrid(std::span<const int> modes,
                                                std::span<const int> scales,
                                                std::span<const float> factors, bool channels,
                                                int source_bytes, int result_bytes,
                                                const char* row_name) {
  std::vector<ConversionCase> cases;
  const std::uint64_t row_seed = Fnv1a(row_name);
  const std::size_t combinations = modes.size() * scales.size() * factors.size();
  const auto parameters = [&](std::size_t variant, int channel_count) {
    const std::size_t m = variant % modes.size();
    const std::size_t s = (variant / modes.size()) % scales.size();
    const std::size_t f = (variant / modes.size() / scales.size()) % factors.size();
    return ConversionParameters{modes[m], scales[s], factors[f], channel_count};
  };
  const auto add = [&](int n, int dst, int src, ValueProfile profile, unsigned denormals,
                       ConversionParameters p) {
    const std::uint64_t seed = Random(row_seed + cases.size())();
    cases.push_back({n, dst, src, profile, denormals, p, seed});
  };
  const int max_channels = channels ? 8 : 1;
  const int longest_short = channels ? 40 : 3 * 64 + 1;
  // Every short length (frames, at every channel count), parameters walking along.
  for (int c = 1; c <= max_channels; ++c) {
    for (int n = 1; n <= longest_short; ++n) {
      add(n, 0, 0, kValueProfiles[n % 4], 0, parameters(n * 7 + c, c));
    }
  }
  // Every parameter combination, on the value profiles in turn.
  for (std::size_t v = 0; v < combinations; ++v) {
    for (ValueProfile profile : kValueProfiles) {
      add(channels ? 37 : 150, 0, 0, profile, 0, parameters(v, channels ? 1 + v % 8 : 1));
    }
  }
  // Misaligned buffers.
  for (int d = 0; d < 64; d += result_bytes) {
    for (int s = 0; s < 64; s += source_bytes) {
      add(channels ? 21 : 150, d, s, kValueProfiles[(d + s) % 4], 0,
          parameters(static_cast<std::size_t>(d + s), channels ? 2 + (d + s) % 5 : 1));
    }
  }
  // The denormal modes, with every parameter combination.
  unsigned all_modes[] = {kFlushToZero, kDenormalsAreZero, kFlushToZero | kDenormalsAreZero};
  const std::size_t mode_count = engine::ProcessorHasDenormalsAreZero() ? 3 : 1;
  for (std::size_t m = 0; m < mode_count; ++m) {
    for (std::size_t v = 0; v < combinations; ++v) {
      add(channels ? 19 : 67, 0, 0, v % 2 ? ValueProfile::kSpecial : ValueProfile::kWideRange,
          all_modes[m], parameters(v, channels ? 1 + v % 8 : 1));
    }
  }
  // Long ones, aligned and not.
  for (int n : {1000, 4099, 65537}) {
    const int frames = channels ? n / 4 : n;
    add(frames, 0, 0, kValueProfiles[n % 4], 0,
        parameters(static_cast<std::size_t>(n), channels ? 2 : 1));
    add(frames, result_bytes, source_bytes, ValueProfile::kSpecial, 0,
        parameters(static_cast<std::size_t>(n) + 1, channels ? 6 : 1));
  }
  return cases;
}

std::string Describe(const ConversionCase& c) {
  char text[256];
  std::snprintf(text, sizeof text,
                "n %d, channels %d, mode %d, scale %d, factor %a, dst offset %d, src offset %d, "
                "profile %s, MXCSR modes 0x%x, seed 0x%llx",
                c.n, c.parameters.channels, c.parameters.mode, c.parameters.scale,
                static_cast<double>(c.parameters.factor), c.dst_offset, c.src_offset,
                ProfileName(c.profile), c.denormal_modes, static_cast<unsigned long long>(c.seed));
  return text;
}

}  // namespace zal::test::harness
