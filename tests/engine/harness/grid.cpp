#include "tests/engine/harness/grid.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "engine/core/fp_support.h"
#include "engine/core/streaming.h"
#include "tests/engine/harness/fp_environment.h"

namespace zal::test::harness {
namespace {

// 3 x 64 + 1: every tail after up to three iterations of the widest unrolled loop (64 bytes
// of vector, unrolled four times, of the narrowest element).
constexpr int kLongestShort = 3 * 64 + 1;
// Long enough for the main loop to run with every misalignment of its head and tail.
constexpr int kOffsetSweepLength = 150;
constexpr int kOffsetLengths[] = {1, 13, 77};
constexpr int kDenormalLengths[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 33, 64, 193};
constexpr int kLongLengths[] = {1000, 4099, 65537};
// Other rounding modes only change how results round, which the lanes and tails of a few lengths
// show as well as the whole grid would.
constexpr int kRoundingLengths[] = {1, 3, 7, 16, 33, 193};

std::uint64_t Fnv1a(const char* text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (; *text; ++text) hash = (hash ^ static_cast<unsigned char>(*text)) * 0x100000001b3;
  return hash;
}

ValueProfile Profile(int index) {
  return kValueProfiles[index % std::size(kValueProfiles)];
}

const char* AliasingName(Aliasing aliasing) {
  switch (aliasing) {
    case Aliasing::kNone:
      return "separate destination";
    case Aliasing::kDstIsFirst:
      return "dst == first";
    case Aliasing::kDstIsSecond:
      return "dst == second";
    case Aliasing::kDstOverlapsBelowFirst:
      return "dst overlapping first from below";
    case Aliasing::kDstOverlapsAboveFirst:
      return "dst overlapping first from above";
  }
  return "?";
}

class GridBuilder {
 public:
  GridBuilder(const GridShape& shape, const char* row_name)
      : shape_(shape),
        steps_(64 / shape.element_bytes),
        row_seed_(Fnv1a(row_name)),
        fill_(std::string_view(row_name).starts_with("Set") ||
              std::string_view(row_name).starts_with("Zero")) {}

  std::vector<Case> Build() && {
    EveryShortLength();
    EveryOffsetPair();
    EveryOffsetAtFewLengths();
    EveryVariant();
    if (shape_.floating) {
      UnderDenormalModes();
      UnderRoundingModes();
    }
    LongLengths();
    StreamingLengths();
    if (fill_) FillStreamingLengths();
    return std::move(cases_);
  }

 private:
  int Bytes(int elements) const { return (elements % steps_) * shape_.element_bytes; }

  void Add(int n, int dst, int first, int second, Aliasing aliasing, ValueProfile profile,
           unsigned modes, int variant) {
    const std::uint64_t seed = Random(row_seed_ + cases_.size())();
    cases_.push_back({n, dst, {first, second}, aliasing, profile, modes, variant, seed});
  }

  void EveryShortLength() {
    for (Aliasing aliasing : shape_.aliasings) {
      for (int n = 1; n <= kLongestShort; ++n) {
        Add(n, 0, 0, 0, aliasing, Profile(n), 0, n);
      }
    }
  }

  // The destination against the first source at every relative misalignment; the second source
  // walks through its offsets alongside.
  void EveryOffsetPair() {
    for (int d = 0; d < steps_; ++d) {
      for (int s = 0; s < steps_; ++s) {
        Add(kOffsetSweepLength, Bytes(d), Bytes(s), Bytes(d + s + 1), Aliasing::kNone,
            Profile(d + s), 0, d * steps_ + s);
      }
    }
  }

  void EveryOffsetAtFewLengths() {
    for (int n : kOffsetLengths) {
      for (Aliasing aliasing : shape_.aliasings) {
        for (int i = 0; i < steps_; ++i) {
          Add(n, Bytes(i), Bytes(7 * i + 3), Bytes(11 * i + 5), aliasing, Profile(i), 0, i);
        }
      }
    }
  }

  void EveryVariant() {
    for (int v = 0; v < shape_.variant_sweep; ++v) {
      Add(kOffsetSweepLength, 0, 0, 0, Aliasing::kNone, Profile(v), 0, v);
    }
  }

  void UnderDenormalModes() {
    unsigned all_modes[] = {kFlushToZero, kDenormalsAreZero, kFlushToZero | kDenormalsAreZero};
    const std::span<unsigned> modes =
        engine::ProcessorHasDenormalsAreZero() ? std::span(all_modes) : std::span(all_modes, 1);
    for (unsigned mode : modes) {
      for (int n : kDenormalLengths) {
        Add(n, 0, 0, 0, Aliasing::kNone, ValueProfile::kWideRange, mode, n);
        Add(n, 0, 0, 0, Aliasing::kNone, ValueProfile::kSpecial, mode, n + 1);
      }
    }
  }

  // The directed modes, and one of them with both denormal modes on.
  void UnderRoundingModes() {
    const unsigned denormals =
        engine::ProcessorHasDenormalsAreZero() ? kFlushToZero | kDenormalsAreZero : kFlushToZero;
    for (unsigned mode : {kRoundDown, kRoundUp, kRoundTowardZero, kRoundUp | denormals}) {
      for (int n : kRoundingLengths) {
        Add(n, 0, 0, 0, Aliasing::kNone, ValueProfile::kModerate, mode, n);
        Add(n, 0, 0, 0, Aliasing::kNone, ValueProfile::kSpecial, mode, n + 1);
      }
    }
  }

  // Aligned and misaligned, and each aliasing once.
  void LongLengths() {
    for (int n : kLongLengths) {
      Add(n, 0, 0, 0, Aliasing::kNone, Profile(n), 0, n);
      Add(n, Bytes(steps_ - 1), Bytes(1), Bytes(steps_ / 2), Aliasing::kNone, Profile(n + 1), 0,
          n + 1);
      for (Aliasing aliasing : shape_.aliasings.subspan(1)) {
        Add(n, Bytes(1), Bytes(2), Bytes(3), aliasing, Profile(n + 2), 0, n + 2);
      }
    }
  }

  // Destinations the kernels stream: exactly at the threshold and past it, aligned and with a
  // head to peel before the aligned streaming stores; and each aliasing at the same length.
  void StreamingLengths() {
    const std::int64_t threshold = engine::StreamingStoreThresholdBytes();
    const int at = static_cast<int>((threshold + shape_.element_bytes - 1) / shape_.element_bytes);
    const int past = at + 3;
    Add(at, Bytes(steps_ - 1), Bytes(1), Bytes(2), Aliasing::kNone, ValueProfile::kSpecial, 0, 1);
    Add(past, 0, Bytes(1), 0, Aliasing::kNone, ValueProfile::kWithZeros, 0, 2);
    Add(past, Bytes(1), 0, Bytes(steps_ - 1), Aliasing::kNone, ValueProfile::kModerate, 0, 3);
    for (Aliasing aliasing : shape_.aliasings.subspan(1)) {
      Add(past, Bytes(1), Bytes(1), Bytes(1), aliasing, ValueProfile::kWideRange, 0, 4);
    }
  }

  // Fills stream from a threshold of their own; below it, from 256 KiB on, they take the string
  // store: both sides of the threshold, and the string store's tail after its quadwords.
  void FillStreamingLengths() {
    const std::int64_t threshold = engine::FillStreamingThresholdBytes();
    const int at = static_cast<int>((threshold + shape_.element_bytes - 1) / shape_.element_bytes);
    const int smallest = static_cast<int>(engine::kStreamingStoreMinBytes / shape_.element_bytes);
    Add(at - 1, Bytes(1), 0, 0, Aliasing::kNone, ValueProfile::kSpecial, 0, 1);
    Add(at + 3, Bytes(steps_ - 1), 0, 0, Aliasing::kNone, ValueProfile::kWideRange, 0, 2);
    Add(smallest + 7, Bytes(3), 0, 0, Aliasing::kNone, ValueProfile::kModerate, 0, 3);
  }

  GridShape shape_;
  int steps_;
  std::uint64_t row_seed_;
  bool fill_;
  std::vector<Case> cases_;
};

std::string ModesName(unsigned modes) {
  static const char* const kRounding[] = {"to nearest", "down", "up", "toward zero"};
  std::string name = std::string("rounding ") + kRounding[(modes & kRoundingControl) >> 13];
  if (modes & kFlushToZero) name += ", FTZ";
  if (modes & kDenormalsAreZero) name += ", DAZ";
  return name;
}

}  // namespace

std::vector<Case> BuildGrid(const GridShape& shape, const char* row_name) {
  return GridBuilder(shape, row_name).Build();
}

std::string Describe(const Case& c) {
  char text[256];
  std::snprintf(text, sizeof text,
                "n %d, byte offsets dst %d first %d second %d, %s, %s values, MXCSR %s, "
                "variant %d, seed 0x%016llx",
                c.n, c.dst_offset, c.source_offsets[0], c.source_offsets[1],
                AliasingName(c.aliasing), ProfileName(c.profile), ModesName(c.fp_modes).c_str(),
                c.variant, static_cast<unsigned long long>(c.seed));
  return text;
}

}  // namespace zal::test::harness
