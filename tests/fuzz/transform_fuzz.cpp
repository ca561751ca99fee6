// Fuzz target for the transforms. The input picks one of the six FFT kinds or an FFTImpl and
// draws the order (valid, too large, huge), the direction, in-place or out-of-place operands at
// element-aligned offsets, null pointers, the operand values and the floating-point modes. Each
// call runs at every level this processor has; see docs/fuzzing.md for what is checked.
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_support.h"
#include "zalaccelerate/transform.h"

namespace zal::fuzz {
namespace {

namespace t = zalaccelerate::transform;

// Transforms run up to this order; larger valid orders are prepared and released only.
constexpr unsigned kLargestRunOrder = 14;
constexpr unsigned kLargestPreparedOrder = 20;

unsigned DrawOrder(FuzzedDataProvider& input) {
  switch (input.ConsumeIntegralInRange<int>(0, 9)) {
    case 0:
      return input.ConsumeIntegralInRange<unsigned>(kLargestRunOrder + 1, kLargestPreparedOrder);
    case 1:
      return input.ConsumeIntegralInRange<unsigned>(t::kFFTMaxOrder + 1, 64);
    case 2: {
      const auto k = input.ConsumeIntegral<std::uint16_t>();
      return input.ConsumeBool() ? 0x80000000u + k : 0xFFFFFFFFu - k;
    }
    default:
      return input.ConsumeIntegralInRange<unsigned>(0, input.ConsumeBool() ? 6 : kLargestRunOrder);
  }
}

// The arrays of one transform: sources then destinations, each `lanes` long.
struct Arrays {
  std::vector<std::unique_ptr<Buffer>> buffers;
  std::vector<unsigned char*> sources;
  std::vector<unsigned char*> destinations;
};

template <class T>
Lane LaneOf() {
  return sizeof(T) == 4 ? Lane::kFloat : Lane::kDouble;
}

// Relative RMS distance of two lane arrays; infinite when either holds a non-finite lane.
template <class T>
double RmsDistance(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
  const std::size_t lanes = a.size() / sizeof(T);
  double diff = 0;
  double norm = 0;
  for (std::size_t i = 0; i < lanes; ++i) {
    T x, y;
    std::memcpy(&x, a.data() + i * sizeof(T), sizeof(T));
    std::memcpy(&y, b.data() + i * sizeof(T), sizeof(T));
    if (!std::isfinite(x) || !std::isfinite(y)) return INFINITY;
    diff += (static_cast<double>(x) - y) * (static_cast<double>(x) - y);
    norm += static_cast<double>(x) * x;
  }
  return norm == 0 ? (diff == 0 ? 0 : INFINITY) : std::sqrt(diff / norm);
}

template <class T>
bool AllFinite(const std::vector<unsigned char>& bytes) {
  for (std::size_t i = 0; i < bytes.size() / sizeof(T); ++i) {
    T x;
    std::memcpy(&x, bytes.data() + i * sizeof(T), sizeof(T));
    if (!std::isfinite(x) || (x != 0 && std::fabs(x) < 1e-30) || std::fabs(x) > 1e30) return false;
  }
  return true;
}

// One kind: its state, its sample type, whether it is real, and how many arrays (1 interleaved
// or real, 2 deinterleaved) each side has.
template <class State, class T, bool kReal, int kSideArrays, const char* kKindName>
struct Kind {
  static constexpr const char* kName = kKindName;
  static constexpr int kSides = kSideArrays;
  using StateType = State;
  using Sample = T;
  static constexpr bool kDeinterleaved = kSides == 2;

  static void Transform(bool forward, const std::vector<unsigned char*>& sources,
                        const std::vector<unsigned char*>& destinations, State* state,
                        unsigned char* work) {
    if constexpr (kDeinterleaved) {
      const auto* sr = reinterpret_cast<const T*>(sources[0]);
      const auto* si = reinterpret_cast<const T*>(sources[1]);
      auto* dr = reinterpret_cast<T*>(destinations[0]);
      auto* di = reinterpret_cast<T*>(destinations[1]);
      forward ? t::FFTFwd(sr, si, dr, di, state, work) : t::FFTInv(sr, si, dr, di, state, work);
    } else if constexpr (kReal) {
      const auto* s = reinterpret_cast<const T*>(sources[0]);
      auto* d = reinterpret_cast<T*>(destinations[0]);
      forward ? t::FFTFwd(s, d, state, work) : t::FFTInv(s, d, state, work);
    } else {
      const auto* s = reinterpret_cast<const std::complex<T>*>(sources[0]);
      auto* d = reinterpret_cast<std::complex<T>*>(destinations[0]);
      forward ? t::FFTFwd(s, d, state, work) : t::FFTInv(s, d, state, work);
    }
  }

  // Lanes of the source and destination arrays for N points.
  static std::size_t SourceLanes(std::size_t n, bool forward) {
    if constexpr (kReal) return forward ? n : n + 2;
    return kDeinterleaved ? n : 2 * n;
  }
  static std::size_t DestinationLanes(std::size_t n, bool forward) {
    return SourceLanes(n, !forward);
  }
};

// The draws of one transform call, the same at every level.
struct Plan {
  unsigned order = 0;
  bool forward = true;
  bool in_place = false;
  int null_pointer = -1;  // 0.. sources, then destinations, then the state (-1 none)
  bool null_work = false;
  bool free_twice = false;
  FpMode mode;
  std::vector<int> offsets;
  std::vector<std::vector<unsigned char>> contents;
};

template <class K>
class KindCall {
  using T = typename K::Sample;
  using State = typename K::StateType;

 public:
  explicit KindCall(FuzzedDataProvider& input) {
    plan_.mode = DrawMode(input);
    plan_.order = DrawOrder(input);
    plan_.forward = input.ConsumeBool();
    plan_.in_place = input.ConsumeBool();
    const auto null_choice = input.ConsumeIntegral<std::uint8_t>();
    if (null_choice < 20) plan_.null_pointer = null_choice % (2 * K::kSides + 1);
    plan_.null_work = input.ConsumeIntegral<std::uint8_t>() < 16;
    plan_.free_twice = input.ConsumeBool();
    const std::size_t n = Points();
    for (int i = 0; i < 2 * K::kSides; ++i) {
      plan_.offsets.push_back(DrawOffset(input, sizeof(T)));
      const bool source = i < K::kSides;
      const std::size_t lanes =
          source ? K::SourceLanes(n, plan_.forward) : K::DestinationLanes(n, plan_.forward);
      plan_.contents.push_back(DrawContents(input, LaneOf<T>(), lanes));
    }
  }

  void Run() {
    for (int level : SupportedLevels()) RunAt(level);
  }

 private:
  bool Runs() const { return plan_.order <= kLargestRunOrder; }
  // Points of the arrays: a few where the order has no transform to run.
  std::size_t Points() const { return Runs() ? std::size_t{1} << plan_.order : 8; }

  static void Prepare(State** state, unsigned order) {
    *state = nullptr;
    RunUnder(FpMode{}, [&] { t::FFTInit(state, order); });
    Expect(*state != nullptr, "FFTInit stored no record");
    unsigned size = 0xDEADBEEF;
    t::FFTGetBufSize(*state, &size);
    Expect(size == (*state)->workSize, "FFTGetBufSize differs from the record's work size");
    if (order > t::kFFTMaxOrder) {
      Expect((*state)->engineHandle == nullptr && (*state)->specBlock == nullptr && size == 0,
             "a record for an order above the largest is not empty");
    } else {
      Expect((*state)->engineHandle != nullptr && (*state)->specBlock != nullptr,
             "preparation of a valid order failed");
    }
  }

  void RunAt(int level) {
    DescribeCall(
        std::string(K::kName) + " at level " + std::to_string(level) + ", " + plan_.mode.Name() +
        ", order " + std::to_string(plan_.order) + (plan_.forward ? ", forward" : ", inverse") +
        (plan_.in_place ? ", in place" : "") +
        (plan_.null_pointer >= 0 ? ", pointer " + std::to_string(plan_.null_pointer) + " null"
                                 : ""));
    ForceLevel(level);
    State* state = nullptr;
    Prepare(&state, plan_.order);
    const bool prepared = plan_.order <= t::kFFTMaxOrder;
    if (prepared && !Runs()) {
      Release(state);
      return;
    }

    // Work buffer of the reported size (may be null when that is 0).
    std::unique_ptr<Buffer> work;
    if (state->workSize > 0 || !plan_.null_work) {
      work = std::make_unique<Buffer>(Lane::kByte, state->workSize, 0);
    }
    Arrays arrays = Allocate();
    const std::size_t n = Points();
    std::vector<std::vector<unsigned char>> before;
    for (const auto& buffer : arrays.buffers) before.push_back(buffer->Contents());

    const bool refused = !prepared || plan_.null_pointer >= 0;
    std::vector<unsigned char*> sources = arrays.sources;
    std::vector<unsigned char*> destinations = arrays.destinations;
    State* called = state;
    if (plan_.null_pointer >= 0) {
      if (plan_.null_pointer < K::kSides) {
        sources[plan_.null_pointer] = nullptr;
      } else if (plan_.null_pointer < 2 * K::kSides) {
        destinations[plan_.null_pointer - K::kSides] = nullptr;
      } else {
        // A record never prepared: what a failed preparation hands back.
        called = &unprepared_;
      }
    }
    RunUnder(plan_.mode, [&] {
      K::Transform(plan_.forward, sources, destinations, called, work ? work->data() : nullptr);
    });

    for (std::size_t i = 0; i < arrays.buffers.size(); ++i) {
      Expect(arrays.buffers[i]->CanariesIntact(), "wrote outside an array");
      const bool source = i < static_cast<std::size_t>(K::kSides);
      if ((source && !plan_.in_place) || refused) {
        Expect(arrays.buffers[i]->Contents() == before[i],
               source ? "changed a source" : "wrote a destination in a call that must do nothing");
      }
    }
    if (work) Expect(work->CanariesIntact(), "wrote outside the work buffer");

    if (!refused) Check(arrays, n);
    Release(state);
  }

  Arrays Allocate() const {
    Arrays arrays;
    const std::size_t n = Points();
    for (int i = 0; i < 2 * K::kSides; ++i) {
      const bool source = i < K::kSides;
      if (!source && plan_.in_place) {
        // In place: the destination is its source array, large enough for either side.
        arrays.destinations.push_back(arrays.sources[i - K::kSides]);
        continue;
      }
      std::size_t lanes =
          source ? K::SourceLanes(n, plan_.forward) : K::DestinationLanes(n, plan_.forward);
      if (plan_.in_place) lanes = std::max(lanes, K::DestinationLanes(n, plan_.forward));
      arrays.buffers.push_back(std::make_unique<Buffer>(LaneOf<T>(), lanes, plan_.offsets[i]));
      arrays.buffers.back()->Load(plan_.contents[i]);
      (source ? arrays.sources : arrays.destinations).push_back(arrays.buffers.back()->data());
    }
    return arrays;
  }

  // Agreement with the first level within a few times the error of a good transform (in the
  // default mode, on moderate finite data). Which NaN a bin holds is not specified.
  void Check(const Arrays& arrays, std::size_t n) {
    std::vector<std::vector<unsigned char>> results;
    for (int side = 0; side < K::kSides; ++side) {
      const std::size_t bytes = K::DestinationLanes(n, plan_.forward) * sizeof(T);
      results.emplace_back(arrays.destinations[side], arrays.destinations[side] + bytes);
    }
    if (reference_.empty()) {
      reference_ = std::move(results);
      return;
    }
    if (!plan_.mode.IsDefault()) return;
    for (const auto& contents : plan_.contents) {
      if (!AllFinite<T>(contents)) return;
    }
    const double eps = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
    const double bound = 16 * eps * (plan_.order + 1);
    for (int side = 0; side < K::kSides; ++side) {
      Expect(RmsDistance<T>(reference_[side], results[side]) <= bound,
             "disagrees with level " + std::to_string(SupportedLevels().front()) +
                 " beyond the transform's accuracy");
    }
  }

  void Release(State* state) {
    t::FFTFree(state);
    Expect(state->specBlock == nullptr, "FFTFree left the tables in the record");
    if (plan_.free_twice) t::FFTFree(state);
    delete state;
  }

  Plan plan_;
  State unprepared_{};
  std::vector<std::vector<unsigned char>> reference_;
};

// ---- FFTImpl ------------------------------------------------------------------------------------

// A length as FFTImpl rounds it: trunc(log2(L) + 0.5).
unsigned RoundedOrder(unsigned length) {
  return static_cast<unsigned>(
      static_cast<long long>(std::log2(static_cast<double>(length)) + 0.5));
}

unsigned DrawSize(FuzzedDataProvider& input) {
  switch (input.ConsumeIntegralInRange<int>(0, 5)) {
    case 0:
      return 0;
    case 1:
      return input.ConsumeIntegralInRange<unsigned>(0x40000000u, 0xFFFFFFFFu);
    default:
      return input.ConsumeIntegralInRange<unsigned>(1, 20000);
  }
}

template <class State, class C>
void ImplCall(FuzzedDataProvider& input) {
  using Impl = t::FFTImpl<State, C>;
  using T = typename C::value_type;
  const FpMode mode = DrawMode(input);
  const unsigned order = DrawOrder(input);
  const unsigned size = DrawSize(input);
  const bool resize = input.ConsumeBool();
  const unsigned next_size = DrawSize(input);
  const bool forward = input.ConsumeBool();
  std::vector<int> offsets;
  std::vector<std::vector<unsigned char>> contents;
  for (int i = 0; i < 4; ++i) {
    offsets.push_back(DrawOffset(input, sizeof(T)));
    contents.push_back(DrawContents(input, LaneOf<T>(), std::size_t{1} << kLargestRunOrder));
  }

  for (int level : SupportedLevels()) {
    DescribeCall(std::string(sizeof(T) == 4 ? "FFTImpl<float>" : "FFTImpl<double>") + " at level " +
                 std::to_string(level) + ", " + mode.Name() + ", order " + std::to_string(order) +
                 ", size " + std::to_string(size) +
                 (resize ? ", then size " + std::to_string(next_size) : ""));
    ForceLevel(level);
    Impl impl(order, size);
    unsigned expected_size = size;
    unsigned expected_order = size ? RoundedOrder(size) : order;
    if (resize) {
      impl.SetFFTSize(next_size);
      if (next_size != size) {
        expected_size = next_size;
        // A request of 0 gives order 0: log2(0) is minus infinity.
        expected_order = next_size ? RoundedOrder(next_size) : 0;
      }
    }
    Expect(impl.GetFFTSize() == expected_size, "GetFFTSize is not the length last requested");
    Expect(impl.GetOrder() == expected_order, "GetOrder is not the rounded length's order");
    const unsigned block = impl.GetBlockSize();
    Expect(block == (expected_order <= t::kFFTMaxOrder ? 1u << expected_order : 0u),
           "GetBlockSize is not 2^order, or 0 beyond the largest order");
    if (expected_order > kLargestRunOrder && expected_order <= t::kFFTMaxOrder) continue;

    const bool prepared = expected_order <= t::kFFTMaxOrder;
    const std::size_t n = prepared ? std::size_t{1} << expected_order : 8;
    std::vector<std::unique_ptr<Buffer>> buffers;
    std::vector<std::vector<unsigned char>> before;
    for (int i = 0; i < 4; ++i) {
      buffers.push_back(std::make_unique<Buffer>(LaneOf<T>(), n, offsets[i]));
      buffers.back()->Load(contents[i]);
      before.push_back(buffers.back()->Contents());
    }
    T* p[4];
    for (int i = 0; i < 4; ++i) p[i] = buffers[i]->template As<T>();
    RunUnder(mode, [&] {
      forward ? impl.ProcessFwd(p[0], p[1], p[2], p[3]) : impl.ProcessInv(p[0], p[1], p[2], p[3]);
    });
    for (int i = 0; i < 4; ++i) {
      Expect(buffers[i]->CanariesIntact(), "wrote outside an array");
      if (i < 2 || !prepared) {
        Expect(buffers[i]->Contents() == before[i],
               i < 2 ? "changed a source" : "an unprepared FFTImpl wrote its destination");
      }
    }
  }
}

constexpr char kFloatReal[] = "FFTState_Float";
constexpr char kDoubleReal[] = "FFTState_Double";
constexpr char kFloatInterleaved[] = "FFTState_Complex_Float_Interleaved";
constexpr char kDoubleInterleaved[] = "FFTState_Complex_Double_Interleaved";
constexpr char kFloatDeinterleaved[] = "FFTState_Complex_Float_Deinterleaved";
constexpr char kDoubleDeinterleaved[] = "FFTState_Complex_Double_Deinterleaved";
using FloatReal = Kind<t::FFTState_Float, float, true, 1, kFloatReal>;
using DoubleReal = Kind<t::FFTState_Double, double, true, 1, kDoubleReal>;
using FloatInterleaved =
    Kind<t::FFTState_Complex_Float_Interleaved, float, false, 1, kFloatInterleaved>;
using DoubleInterleaved =
    Kind<t::FFTState_Complex_Double_Interleaved, double, false, 1, kDoubleInterleaved>;
using FloatDeinterleaved =
    Kind<t::FFTState_Complex_Float_Deinterleaved, float, false, 2, kFloatDeinterleaved>;
using DoubleDeinterleaved =
    Kind<t::FFTState_Complex_Double_Deinterleaved, double, false, 2, kDoubleDeinterleaved>;

}  // namespace
}  // namespace zal::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zal::fuzz;
  namespace t = zalaccelerate::transform;
  FuzzedDataProvider input(data, size);
  switch (input.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      KindCall<FloatReal>(input).Run();
      break;
    case 1:
      KindCall<DoubleReal>(input).Run();
      break;
    case 2:
      KindCall<FloatInterleaved>(input).Run();
      break;
    case 3:
      KindCall<DoubleInterleaved>(input).Run();
      break;
    case 4:
      KindCall<FloatDeinterleaved>(input).Run();
      break;
    case 5:
      KindCall<DoubleDeinterleaved>(input).Run();
      break;
    case 6:
      ImplCall<t::FFTState_Complex_Float_Deinterleaved, std::complex<float>>(input);
      break;
    default:
      ImplCall<t::FFTState_Complex_Double_Deinterleaved, std::complex<double>>(input);
  }
  return 0;
}
