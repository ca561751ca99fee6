// Runs one conversion row's kernel at one level against the portable variant: lengths, buffer
// offsets, rounding codes, scales or factors, channel counts, value profiles and denormal modes,
// with canaries around every destination and the MXCSR control bits compared around each call.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/engine/harness/buffers.h"
#include "tests/engine/harness/conversion_drivers.h"
#include "tests/engine/harness/elements.h"
#include "tests/engine/harness/fp_environment.h"
#include "tests/engine/harness/values.h"

namespace zal::test::harness {

struct ConversionCase {
  int n;  // elements, or frames for the channel shapes
  int dst_offset;
  int src_offset;
  ValueProfile profile;
  unsigned denormal_modes;
  ConversionParameters parameters;
  std::uint64_t seed;
};

std::string Describe(const ConversionCase& c);

// Source values: the profile's, mixed with the boundaries of every target (scaled by the case's
// scale where that keeps them finite): the ends of each integer range and their neighbours,
// ties, the limits of binary16, NaN, infinities and denormals.
void FillSource(std::span<float> values, ValueProfile profile, int scale, Random& random);
void FillSource(std::span<double> values, ValueProfile profile, int scale, Random& random);
void FillSource(std::span<short> values, ValueProfile profile, int scale, Random& random);
void FillSource(std::span<int> values, ValueProfile profile, int scale, Random& random);
void FillSource(std::span<unsigned char> values, ValueProfile profile, int scale, Random& random);
void FillSource(std::span<unsigned short> values, ValueProfile profile, int scale, Random& random);
void FillSource(std::span<engine::Int24> values, ValueProfile profile, int scale, Random& random);

// The cases of a row, from the driver's parameter lists; seeds derive from the row's name.
std::vector<ConversionCase> BuildConversionGrid(std::span<const int> modes,
                                                std::span<const int> scales,
                                                std::span<const float> factors, bool channels,
                                                int source_bytes, int result_bytes,
                                                const char* row_name);

template <class T>
bool SameResult(T a, T b) {
  if constexpr (std::is_floating_point_v<T>) {
    return SameBits(a, b);
  } else {
    return std::memcmp(&a, &b, sizeof(T)) == 0;
  }
}

template <class T>
std::string ShowResult(T x) {
  if constexpr (std::is_floating_point_v<T>) {
    return Show(x);
  } else if constexpr (std::is_same_v<T, engine::Int24>) {
    const int value =
        static_cast<int>((x.bytes[0] | (x.bytes[1] << 8) | (x.bytes[2] << 16)) ^ 0x800000) -
        0x800000;
    return std::to_string(value);
  } else {
    return std::to_string(x);
  }
}

template <class Driver>
class ConversionRunner {
  using From = typename Driver::Source;
  using To = typename Driver::Result;
  using Function = typename Driver::Function;

 public:
  static void MatchPortable(Function* kernel, Function* portable, const char* row_name) {
    const std::vector<ConversionCase> grid =
        BuildConversionGrid(Driver::kModes, Driver::kScales, Driver::kFactorList, Driver::kChannels,
                            sizeof(From), sizeof(To), row_name);
    int failures = 0;
    for (const ConversionCase& c : grid) {
      const std::string failure = Run(kernel, portable, c);
      if (failure.empty()) continue;
      ADD_FAILURE() << Describe(c) << ": " << failure;
      if (++failures == 3) {
        ADD_FAILURE() << "the rest of the grid skipped";
        return;
      }
    }
  }

  // Null pointers give -8, then non-positive counts -6, and nothing is written. Channel pointers
  // are read once the channel count is known to be positive: before the frame count.
  static void RefuseBadArguments(Function* kernel) {
    constexpr int kLength = 17;
    Setup setup({kLength, 0, 0, ValueProfile::kModerate, 0, {0, 0, 1.0f, 3}, 1});
    const std::vector<To> before = setup.Results();
    const auto untouched = [&] { return setup.Intact() && SameBytes(setup.Results(), before); };
    for (int null_operand = 0; null_operand < (Driver::kChannels ? 3 : 2); ++null_operand) {
      for (int n : {kLength, 0, -1}) {
        EXPECT_EQ(setup.Call(kernel, n, 3, null_operand), engStsNullPtrErr)
            << "null operand " << null_operand << ", n " << n;
        EXPECT_TRUE(untouched()) << "null operand " << null_operand << ", n " << n;
      }
    }
    for (int n : {0, -1, INT_MIN}) {
      EXPECT_EQ(setup.Call(kernel, n, 3, -1), engStsSizeErr) << "n " << n;
      EXPECT_TRUE(untouched()) << "n " << n;
      if constexpr (Driver::kChannels) {
        EXPECT_EQ(setup.Call(kernel, kLength, n, -1), engStsSizeErr) << "channels " << n;
        EXPECT_TRUE(untouched()) << "channels " << n;
      }
    }
  }

 private:
  static bool SameBytes(const std::vector<To>& a, const std::vector<To>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(To)) == 0;
  }

  // The buffers of one case: interleaved ones as one vector, planar ones as one vector per
  // channel, each placed at the case's offsets.
  class Setup {
   public:
    explicit Setup(const ConversionCase& c) : case_(c) {
      const int channels = Driver::kChannels ? c.parameters.channels : 1;
      const bool planar_source = Driver::kChannels && !PlanarResult();
      const bool planar_result = Driver::kChannels && PlanarResult();
      Random random(c.seed);
      const int source_count = planar_source ? channels : 1;
      const int source_length = planar_source ? c.n : c.n * channels;
      for (int i = 0; i < source_count; ++i) {
        sources_.push_back(std::make_unique<Vector<From>>(source_length, c.src_offset, false));
        FillSource(sources_.back()->Elements(), c.profile, c.parameters.scale, random);
        source_pointers_.push_back(sources_.back()->Data());
        originals_.emplace_back(sources_.back()->Elements().begin(),
                                sources_.back()->Elements().end());
      }
      const int result_count = planar_result ? channels : 1;
      const int result_length = planar_result ? c.n : c.n * channels;
      for (int copy = 0; copy < 2; ++copy) {
        for (int i = 0; i < result_count; ++i) {
          results_[copy].push_back(std::make_unique<Vector<To>>(result_length, c.dst_offset, true));
          std::memset(results_[copy].back()->Data(), 0x5A, sizeof(To) * result_length);
          result_pointers_[copy].push_back(results_[copy].back()->Data());
        }
      }
    }

    // Calls f on copy 0 (kernel) or 1 (portable). null_operand: 0 the source, 1 the
    // destination, 2 one channel pointer; -1 none.
    EngStatus Call(Function* f, int n, int channels, int null_operand, int copy = 0) const {
      ConversionParameters p = case_.parameters;
      p.channels = channels;
      std::vector<const From*> sources = source_pointers_;
      std::vector<To*> results = result_pointers_[copy];
      if (null_operand == 2) {
        if (PlanarResult()) {
          results[0] = nullptr;
        } else {
          sources[0] = nullptr;
        }
      }
      if constexpr (Driver::kChannels) {
        if constexpr (Driver::kPlanarResult) {
          return Driver::Call(f, null_operand == 0 ? nullptr : sources[0],
                              null_operand == 1 ? nullptr : results.data(), n, p);
        } else {
          return Driver::Call(f, null_operand == 0 ? nullptr : sources.data(),
                              null_operand == 1 ? nullptr : results[0], n, p);
        }
      } else {
        return Driver::Call(f, null_operand == 0 ? nullptr : sources[0],
                            null_operand == 1 ? nullptr : results[0], n, p);
      }
    }

    std::vector<To> Results(int copy = 0) const {
      std::vector<To> all;
      for (const auto& v : results_[copy])
        all.insert(all.end(), v->Elements().begin(), v->Elements().end());
      return all;
    }

    bool Intact() const {
      for (std::size_t i = 0; i < sources_.size(); ++i) {
        const auto elements = sources_[i]->Elements();
        if (!elements.empty() &&
            std::memcmp(elements.data(), originals_[i].data(), elements.size_bytes()) != 0) {
          return false;
        }
      }
      for (const auto& copy : results_) {
        for (const auto& v : copy) {
          if (!v->CanariesIntact()) return false;
        }
      }
      return true;
    }

   private:
    static constexpr bool PlanarResult() {
      if constexpr (Driver::kChannels) {
        return Driver::kPlanarResult;
      } else {
        return false;
      }
    }

    ConversionCase case_;
    std::vector<std::unique_ptr<Vector<From>>> sources_;
    std::vector<const From*> source_pointers_;
    std::vector<std::vector<From>> originals_;
    std::vector<std::unique_ptr<Vector<To>>> results_[2];
    std::vector<To*> result_pointers_[2];
  };

  static std::string Run(Function* kernel, Function* portable, const ConversionCase& c) {
    const Setup setup(c);
    const int channels = c.parameters.channels;
    EngStatus expected_status;
    EngStatus got_status;
    unsigned control_before;
    unsigned control_after;
    {
      DenormalModes modes(c.denormal_modes);
      expected_status = setup.Call(portable, c.n, channels, -1, 1);
      control_before = MxcsrControl();
      got_status = setup.Call(kernel, c.n, channels, -1, 0);
      control_after = MxcsrControl();
    }
    if (control_after != control_before) return "MXCSR control bits changed";
    if (!setup.Intact()) return "changed a source or wrote outside the destination";
    if (got_status != expected_status) {
      return "status " + std::to_string(got_status) + ", portable " +
             std::to_string(expected_status);
    }
    const std::vector<To> got = setup.Results(0);
    const std::vector<To> expected = setup.Results(1);
    for (std::size_t i = 0; i < got.size(); ++i) {
      if (!SameResult(got[i], expected[i])) {
        return "element " + std::to_string(i) + ": portable " + ShowResult(expected[i]) + ", got " +
               ShowResult(got[i]);
      }
    }
    return {};
  }
};

}  // namespace zal::test::harness
