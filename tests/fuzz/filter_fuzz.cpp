// Fuzz target for the filters: the FIR filter, the IIR filter (direct form and cascades) and the
// multirate FIR filter. The input draws the filter's shape (valid or not), its taps and delay line,
// the stream's length, how it is split into calls, null pointers, in-place operation and the
// floating-point modes. Each filter runs at every level this processor has; see docs/fuzzing.md.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/fuzz/typed_array.h"
#include "zalaccelerate/filter.h"

namespace zal::fuzz {
namespace {

namespace f = zalaccelerate::filter;
using zalaccelerate::FIRState_Float;

// Equal as a stream's outputs must be whatever the split: the same values, NaN where NaN; the
// sign of a zero and a NaN's sign and payload may depend on where in a register a sample falls.
template <class T>
bool SameOutputs(const std::vector<T>& a, const std::vector<T>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::isnan(a[i]) != std::isnan(b[i]) || (!std::isnan(a[i]) && a[i] != b[i])) return false;
  }
  return true;
}

// Whether `got` is within `bound` of the double-precision `exact`.
bool Within(double got, double exact, double bound) {
  return std::fabs(got - exact) <= bound * (1 + 0x1p-20) + 0x1p-126;
}

// ---- FIR ----------------------------------------------------------------------------------------

struct FirPlan {
  FpMode mode;
  std::uint32_t taps_len = 0;
  std::uint32_t len = 0;
  std::uint32_t split = 0;
  bool moderate = false;
  bool null_taps = false;
  bool null_delay = false;
  bool null_stream = false;
  bool in_place = false;
  float sample = 0;
  std::vector<float> taps, delay, src;
};

// FIR output n of the stream `history` (delay line, then inputs) in double, and sum |h x|.
void FirExact(const FirPlan& plan, const std::vector<float>& history, std::size_t n, double* exact,
              double* magnitude) {
  const std::size_t newest = plan.taps_len - 1 + n;
  *exact = 0;
  *magnitude = 0;
  for (std::size_t k = 0; k < plan.taps_len; ++k) {
    const double term = static_cast<double>(plan.taps[k]) * history[newest - k];
    *exact += term;
    *magnitude += std::fabs(term);
  }
}

void FirCall(FuzzedDataProvider& input) {
  FirPlan plan;
  plan.mode = DrawMode(input);
  plan.taps_len = DrawCount(input, 70, 700);
  plan.len = DrawCount(input, 300, 3000);
  plan.split = IsHuge(plan.len) ? 0 : input.ConsumeIntegralInRange<std::uint32_t>(0, plan.len);
  plan.moderate = input.ConsumeBool();
  plan.null_taps = input.ConsumeIntegral<std::uint8_t>() < 12;
  plan.null_delay = input.ConsumeBool();
  plan.null_stream = input.ConsumeIntegral<std::uint8_t>() < 12;
  plan.in_place = input.ConsumeBool();
  plan.sample = plan.moderate ? static_cast<float>(input.ConsumeIntegral<std::int16_t>()) / 32768
                              : DrawFloat(input);
  const std::size_t taps = HeldFor(plan.taps_len);
  plan.taps = DrawValues<float>(input, taps, plan.moderate);
  plan.delay = DrawValues<float>(input, taps > 0 ? taps - 1 : 0, plan.moderate);
  plan.src = DrawValues<float>(input, HeldFor(plan.len), plan.moderate);
  const int offset = DrawOffset(input, sizeof(float));
  const bool made = plan.taps_len > 0 && !IsHuge(plan.taps_len) && !plan.null_taps;

  std::vector<float> history = plan.null_delay ? std::vector<float>(plan.delay.size()) : plan.delay;
  history.insert(history.end(), plan.src.begin(), plan.src.end());
  const bool refused = IsHuge(plan.len) || plan.len == 0 || plan.null_stream;
  const bool check_accuracy = plan.moderate && plan.mode.IsDefault() && made && !refused;

  for (int level : SupportedLevels()) {
    DescribeCall("FIR at level " + std::to_string(level) + ", " + plan.mode.Name() + ", " +
                 std::to_string(plan.taps_len) + " taps, len " + std::to_string(plan.len) +
                 ", split at " + std::to_string(plan.split) + (plan.in_place ? ", in place" : ""));
    ForceLevel(level);
    Array<float> taps(plan.taps, 0);
    Array<float> delay(plan.delay, 0);
    FIRState_Float* whole = reinterpret_cast<FIRState_Float*>(&history);
    FIRState_Float* pieces = nullptr;
    RunUnder(FpMode{}, [&] {
      f::FIRInit(&whole, plan.null_taps ? nullptr : taps.data(), plan.taps_len,
                 plan.null_delay ? nullptr : delay.data());
      f::FIRInit(&pieces, plan.null_taps ? nullptr : taps.data(), plan.taps_len,
                 plan.null_delay ? nullptr : delay.data());
    });
    Expect(taps.Intact() && taps.Unchanged() && delay.Intact() && delay.Unchanged(),
           "FIRInit wrote to its taps or delay line");
    Expect((whole != nullptr) == made && (pieces != nullptr) == made,
           made ? "FIRInit failed for valid taps" : "FIRInit made a filter of refused taps");
    if (!made) continue;

    Array<float> src(plan.src, offset);
    Array<float> dst_whole(std::vector<float>(plan.src.size()), offset);
    Array<float> dst_pieces(std::vector<float>(plan.src.size()), 0);
    Array<float> src_pieces(plan.src, 0);
    float* const in = plan.null_stream ? nullptr : src.data();
    float* const out = plan.in_place ? src.data() : dst_whole.data();
    float single[2] = {};
    RunUnder(plan.mode, [&] {
      f::FIR(whole, plan.len, in, out);
      if (IsHuge(plan.len) || refused) return;
      float* const piece_out = plan.in_place ? src_pieces.data() : dst_pieces.data();
      f::FIR(pieces, plan.split, src_pieces.data(), piece_out);
      f::FIR(pieces, plan.len - plan.split, src_pieces.data() + plan.split, piece_out + plan.split);
      single[0] = f::FIR(whole, plan.sample);
      single[1] = f::FIR(whole, plan.sample);
    });
    Expect(src.Intact() && dst_whole.Intact() && dst_pieces.Intact() && src_pieces.Intact(),
           "wrote outside an array");
    if (!plan.in_place) Expect(src.Unchanged(), "changed the source");
    if (refused) {
      Expect((plan.in_place ? src : dst_whole).Unchanged(), "a refused call wrote its destination");
    } else {
      const auto outputs = (plan.in_place ? src : dst_whole).Values();
      const auto split = (plan.in_place ? src_pieces : dst_pieces).Values();
      Expect(SameOutputs(outputs, split), "a stream split in two calls differs from one call");
      Expect(std::memcmp(&single[0], &single[1], sizeof(float)) == 0,
             "two single-sample calls with the same input differ");
      if (check_accuracy) {
        const double bound = 2.0 * (plan.taps_len + 2) * 0x1p-24;
        for (std::size_t n = 0; n < plan.len; ++n) {
          double exact, magnitude;
          FirExact(plan, history, n, &exact, &magnitude);
          Expect(Within(outputs[n], exact, bound * magnitude),
                 "output " + std::to_string(n) + " beyond the stated bound");
        }
      }
      std::vector<float> kept(plan.taps_len > 1 ? plan.taps_len - 1 : 1, 7.0f);
      Array<float> read(kept, 0);
      f::FIRGetDlyLine(whole, read.data());
      Expect(read.Intact(), "FIRGetDlyLine wrote outside its array");
      const auto line = read.Values();
      for (std::size_t j = 0; j + 1 < plan.taps_len; ++j) {
        Expect(std::memcmp(&line[j], &history[plan.len + j], sizeof(float)) == 0,
               "the delay line does not hold the stream's last inputs");
      }
    }
    f::FIRFree(whole);
    f::FIRFree(pieces);
  }
  f::FIRFree(nullptr);
}

// ---- IIR ----------------------------------------------------------------------------------------

template <class T>
using IirState = std::conditional_t<std::is_same_v<T, float>, zalaccelerate::IIRState_Float,
                                    zalaccelerate::IIRState_Double>;

template <class T>
void IirCall(FuzzedDataProvider& input) {
  using State = IirState<T>;
  const FpMode mode = DrawMode(input);
  const bool cascade = input.ConsumeBool();
  std::uint32_t size = 0;  // order, or sections
  switch (input.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      size = input.ConsumeBool() ? (cascade ? 1025 : 33) : 0x80000000u;
      break;
    case 1:
      size = cascade ? input.ConsumeIntegralInRange<std::uint32_t>(9, 1024)
                     : input.ConsumeIntegralInRange<std::uint32_t>(9, 34);
      break;
    default:
      size = input.ConsumeIntegralInRange<std::uint32_t>(0, 8);
  }
  const bool valid_size = cascade ? size >= 1 && size <= 1024 : size <= 32;
  const std::size_t tap_count = !valid_size ? 16 : cascade ? 6 * size : 2 * (size + 1);
  const std::size_t states = !valid_size ? 16 : cascade ? 2 * size : size;
  const bool moderate = input.ConsumeBool();
  auto taps = DrawValues<T>(input, tap_count, moderate);
  const bool zero_a0 = input.ConsumeIntegral<std::uint8_t>() < 16;
  const std::size_t group = cascade ? 6 : tap_count;
  const std::size_t a0 = cascade ? 3 : tap_count / 2;
  bool valid = valid_size;
  for (std::size_t g = 0; valid_size && g + group <= tap_count; g += group) {
    if (zero_a0 && g == 0) taps[g + a0] = 0;
    valid = valid && taps[g + a0] != 0;
  }
  const bool null_taps = input.ConsumeIntegral<std::uint8_t>() < 12;
  valid = valid && !null_taps;
  const bool null_delay = input.ConsumeBool();
  const auto delay = DrawValues<T>(input, states, moderate);
  std::uint32_t len = DrawCount(input, 300, 3000);
  // Long cascades run short streams: each sample costs every section.
  if (cascade && size > 64 && !IsHuge(len)) len = std::min(len, 32u);
  const std::uint32_t split = IsHuge(len) ? 0 : input.ConsumeIntegralInRange<std::uint32_t>(0, len);
  const std::uint32_t singles =
      IsHuge(len) ? 0 : input.ConsumeIntegralInRange<std::uint32_t>(0, std::min(len - split, 20u));
  const bool null_stream = input.ConsumeIntegral<std::uint8_t>() < 12;
  const auto src = DrawValues<T>(input, HeldFor(len), moderate);
  const int offset = DrawOffset(input, sizeof(T));
  const bool refused = len == 0 || IsHuge(len) || null_stream;

  for (int level : SupportedLevels()) {
    DescribeCall(std::string(sizeof(T) == 4 ? "IIR<float>" : "IIR<double>") + " at level " +
                 std::to_string(level) + ", " + mode.Name() +
                 (cascade ? ", sections " : ", order ") + std::to_string(size) + ", len " +
                 std::to_string(len) + ", split at " + std::to_string(split) + " and " +
                 std::to_string(singles) + " single samples");
    ForceLevel(level);
    Array<T> tap_array(taps, 0);
    Array<T> delay_array(delay, 0);
    State* whole = nullptr;
    State* pieces = nullptr;
    const T* t = null_taps ? nullptr : tap_array.data();
    const T* d = null_delay ? nullptr : delay_array.data();
    RunUnder(FpMode{}, [&] {
      if (cascade) {
        f::IIRInit_BiQuad(&whole, t, size, d);
        f::IIRInit_BiQuad(&pieces, t, size, d);
      } else {
        f::IIRInit(&whole, t, size, d);
        f::IIRInit(&pieces, t, size, d);
      }
    });
    Expect(tap_array.Unchanged() && delay_array.Unchanged(), "IIRInit wrote to its arguments");
    Expect((whole != nullptr) == valid && (pieces != nullptr) == valid,
           valid ? "IIRInit failed for valid taps" : "IIRInit made a filter of refused taps");
    if (!valid) continue;

    Array<T> in(src, offset);
    Array<T> out(std::vector<T>(src.size()), offset);
    Array<T> piecewise(src, 0);
    T from_null = 1;
    RunUnder(mode, [&] {
      f::IIR(len, null_stream ? nullptr : in.data(), out.data(), whole);
      from_null = f::IIR(T{1}, static_cast<State*>(nullptr));
      if (refused) return;
      T* p = piecewise.data();
      f::IIR_InPlace(split, p, pieces);
      for (std::uint32_t i = split; i < split + singles; ++i) p[i] = f::IIR(p[i], pieces);
      f::IIR(len - split - singles, in.data() + split + singles, p + split + singles, pieces);
      f::IIRSetTaps(pieces, nullptr);
    });
    Expect(from_null == 0, "IIR of one sample with a null state returned other than 0");
    Expect(in.Intact() && out.Intact() && piecewise.Intact(), "wrote outside an array");
    Expect(in.Unchanged(), "changed the source");
    if (refused) {
      Expect(out.Unchanged(), "a refused call wrote its destination");
    } else {
      Expect(SameOutputs(out.Values(), piecewise.Values()),
             "a stream split into calls differs from one call");
      Array<T> line_whole(std::vector<T>(states), 0);
      Array<T> line_pieces(std::vector<T>(states), 0);
      f::IIRGetDlyLine(whole, line_whole.data());
      f::IIRGetDlyLine(pieces, line_pieces.data());
      f::IIRGetDlyLine(whole, nullptr);
      Expect(line_whole.Intact() && line_pieces.Intact(), "IIRGetDlyLine wrote outside its array");
      Expect(SameOutputs(line_whole.Values(), line_pieces.Values()),
             "the delay line differs between one call and the split stream");
    }
    f::IIRFree(whole);
    f::IIRFree(pieces);
  }
  f::IIRFree(static_cast<State*>(nullptr));
}

// ---- Multirate FIR ------------------------------------------------------------------------------

template <class T>
using MrfState = std::conditional_t<std::is_same_v<T, float>, zalaccelerate::MRFState_Float,
                                    zalaccelerate::MRFState_Double>;

std::uint32_t DrawFactor(FuzzedDataProvider& input) {
  switch (input.ConsumeIntegralInRange<int>(0, 15)) {
    case 0:
      return 0;
    case 1:
      return 0x80000000u + input.ConsumeIntegral<std::uint8_t>();
    case 2:
      return input.ConsumeIntegralInRange<std::uint32_t>(9, 160);
    default:
      return input.ConsumeIntegralInRange<std::uint32_t>(1, 8);
  }
}

// Each output of a multirate filter in double, and its sum |h u|: u[j up + upPhase] = x[j], x the
// delay line (the history's first delayLen values, zeros where it is shorter) then the inputs.
struct Exact {
  std::vector<double> value;
  std::vector<double> magnitude;
};

template <class T, class History>
Exact MrfExact(const std::vector<T>& taps, const History& history, std::size_t delay_len,
               const std::vector<T>& src, std::size_t outputs, std::uint32_t up, std::uint32_t down,
               std::uint32_t up_phase, std::uint32_t down_phase) {
  const auto x = [&](long long j) -> double {
    if (j >= 0) return static_cast<double>(src[static_cast<std::size_t>(j)]);
    const long long h = static_cast<long long>(delay_len) + j;
    return h >= 0 && static_cast<std::size_t>(h) < history.size() ? history[h] : 0.0;
  };
  Exact exact{std::vector<double>(outputs), std::vector<double>(outputs)};
  const long long u = up;
  for (std::size_t m = 0; m < outputs; ++m) {
    const long long t = static_cast<long long>(m) * down + down_phase;
    for (long long k = ((t - up_phase) % u + u) % u; k < static_cast<long long>(taps.size());
         k += u) {
      const double term = static_cast<double>(taps[k]) * x((t - k - up_phase) / u);
      exact.value[m] += term;
      exact.magnitude[m] += std::fabs(term);
    }
  }
  return exact;
}

template <class T>
void MrfCall(FuzzedDataProvider& input) {
  using State = MrfState<T>;
  using History = std::vector<T, zalcore::STLAllocator<T>>;
  const FpMode mode = DrawMode(input);
  const std::uint32_t up = DrawFactor(input);
  const std::uint32_t down = DrawFactor(input);
  const auto up_phase = input.ConsumeIntegralInRange<std::uint32_t>(0, std::min(up, 200u));
  const auto down_phase = input.ConsumeIntegralInRange<std::uint32_t>(0, std::min(down, 200u));
  const std::uint32_t taps_len = DrawCount(input, 64, 400);
  const bool null_taps = input.ConsumeIntegral<std::uint8_t>() < 12;
  const bool moderate = input.ConsumeBool();
  const auto taps = DrawValues<T>(input, HeldFor(taps_len), moderate);
  const bool valid = up > 0 && !IsHuge(up) && down > 0 && !IsHuge(down) && up_phase < up &&
                     down_phase < down && taps_len > 0 && !IsHuge(taps_len) && !null_taps;
  const std::size_t delay_len = valid ? (taps_len + up - 1) / up : 0;
  std::size_t history_len = delay_len;
  switch (input.ConsumeIntegralInRange<int>(0, 3)) {
    case 0:
      history_len = 0;
      break;
    case 1:
      history_len = input.ConsumeIntegralInRange<std::size_t>(0, delay_len + 40);
      break;
    default:
      break;
  }
  const auto history_values = DrawValues<T>(input, history_len, moderate);
  const History history(history_values.begin(), history_values.end());
  const std::uint32_t iterations = DrawCount(input, 64, 600);
  const std::uint64_t inputs = std::uint64_t{iterations} * down;
  const std::uint64_t outputs = std::uint64_t{iterations} * up;
  const bool refused = !valid || iterations == 0 || inputs >= 0x80000000u || outputs >= 0x80000000u;
  const bool too_long = !refused && inputs + outputs > (std::uint64_t{1} << 21);
  const auto src = DrawValues<T>(input, refused || too_long ? 16 : inputs, moderate);
  const std::uint32_t split =
      refused || too_long ? 0 : input.ConsumeIntegralInRange<std::uint32_t>(0, iterations);
  const bool null_stream = input.ConsumeIntegral<std::uint8_t>() < 12;
  const int offset = DrawOffset(input, sizeof(T));
  if (too_long) return;
  Exact exact;
  const bool check_accuracy = moderate && mode.IsDefault() && !refused && !null_stream;
  if (check_accuracy) {
    exact = MrfExact(taps, history, delay_len, src, outputs, up, down, up_phase, down_phase);
  }
  const double terms = static_cast<double>(delay_len);
  const double eps = std::numeric_limits<T>::epsilon();

  for (int level : SupportedLevels()) {
    DescribeCall(std::string(sizeof(T) == 4 ? "MRF<float>" : "MRF<double>") + " at level " +
                 std::to_string(level) + ", " + mode.Name() + ", " + std::to_string(up) + "/" +
                 std::to_string(down) + " phases " + std::to_string(up_phase) + "/" +
                 std::to_string(down_phase) + ", " + std::to_string(taps_len) + " taps, " +
                 std::to_string(history.size()) + " history, " + std::to_string(iterations) +
                 " iterations split at " + std::to_string(split));
    ForceLevel(level);
    Array<T> tap_array(taps, 0);
    State* whole = nullptr;
    State* pieces = nullptr;
    const T* t = null_taps ? nullptr : tap_array.data();
    RunUnder(FpMode{}, [&] {
      f::MRFInit(&whole, up, down, t, taps_len, history, up_phase, down_phase);
      f::MRFInit(&pieces, up, down, t, taps_len, history, up_phase, down_phase);
    });
    Expect(tap_array.Unchanged(), "MRFInit wrote to its taps");
    Expect((whole != nullptr) == valid && (pieces != nullptr) == valid,
           valid ? "MRFInit failed for a valid filter" : "MRFInit made a refused filter");
    if (!valid) continue;

    Array<T> in(src, offset);
    Array<T> out(std::vector<T>(refused ? 16 : outputs), 0);
    Array<T> split_out(std::vector<T>(refused ? 16 : outputs), 0);
    RunUnder(mode, [&] {
      f::MRFProcess(null_stream ? nullptr : in.data(), out.data(), iterations, whole);
      if (refused || null_stream) return;
      f::MRFProcess(in.data(), split_out.data(), split, pieces);
      f::MRFProcess(in.data() + std::size_t{split} * down,
                    split_out.data() + std::size_t{split} * up, iterations - split, pieces);
    });
    Expect(in.Intact() && out.Intact() && split_out.Intact(), "wrote outside an array");
    Expect(in.Unchanged(), "changed the source");
    if (refused || null_stream) {
      Expect(out.Unchanged(), "a refused call wrote its destination");
    } else {
      // Without a delay line every call starts from silence, and a NaN or infinity may reach
      // outputs near its own through the zero-padded taps: only then may a split differ.
      Expect(history.empty() || !moderate || SameOutputs(out.Values(), split_out.Values()),
             "a stream split in two calls differs from one call");
      if (check_accuracy) {
        const auto got = out.Values();
        for (std::size_t m = 0; m < got.size(); ++m) {
          Expect(Within(got[m], exact.value[m], (terms + 2) * eps * exact.magnitude[m]),
                 "output " + std::to_string(m) + " beyond the stated bound");
        }
      }
    }
    f::MRFFree(whole);
    f::MRFFree(pieces);
  }
  f::MRFFree(static_cast<State*>(nullptr));
}

}  // namespace
}  // namespace zal::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zal::fuzz;
  FuzzedDataProvider input(data, size);
  switch (input.ConsumeIntegralInRange<int>(0, 4)) {
    case 0:
      FirCall(input);
      break;
    case 1:
      IirCall<float>(input);
      break;
    case 2:
      IirCall<double>(input);
      break;
    case 3:
      MrfCall<float>(input);
      break;
    default:
      MrfCall<double>(input);
  }
  return 0;
}
