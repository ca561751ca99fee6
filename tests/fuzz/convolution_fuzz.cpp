// Fuzz target for the two-operand utilities: convolution (with and without a work buffer),
// decimation and interpolation with their stream phase, and the matrix product in both orders.
// The input draws lengths, factors, phases and shapes (valid or not), null pointers, offsets,
// the operands and the floating-point modes; each call runs at every level this processor has
// and is checked against an independent reference; see docs/fuzzing.md.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/fuzz/typed_array.h"
#include "zalaccelerate/utility.h"

namespace zal::fuzz {
namespace {

namespace u = zalaccelerate::utility;

std::string TypeName(std::size_t bytes) {
  return bytes == 4 ? "float" : "double";
}

bool Within(double got, double exact, double bound) {
  return std::fabs(got - exact) <= bound * (1 + 0x1p-20) + 0x1p-126;
}

// ---- Convolution --------------------------------------------------------------------------------

template <class T>
void ConvolveCall(FuzzedDataProvider& input) {
  const FpMode mode = DrawMode(input);
  const std::uint32_t len_a = DrawCount(input, 200, 2000);
  const std::uint32_t len_b = DrawCount(input, 200, 2000);
  const int null_pointer = input.ConsumeIntegral<std::uint8_t>() < 24
                               ? input.ConsumeIntegralInRange<int>(0, 3)
                               : -1;  // a, b, dst, work
  const bool with_work = input.ConsumeBool();
  const bool moderate = input.ConsumeBool();
  const auto a = DrawValues<T>(input, HeldFor(len_a), moderate);
  const auto b = DrawValues<T>(input, HeldFor(len_b), moderate);
  const int offset_a = DrawOffset(input, sizeof(T));
  const int offset_dst = DrawOffset(input, sizeof(T));
  const bool lengths_refused = len_a == 0 || len_b == 0 || IsHuge(len_a) || IsHuge(len_b) ||
                               std::uint64_t{len_a} + len_b - 1 > 0x7FFFFFFFu;
  const std::size_t outputs = lengths_refused ? 16 : len_a + len_b - 1;

  // The bound is relative to sum |a| sum |b|, for whichever method runs: direct summation's
  // M eps, or the transform's (3 log2 N + 8) eps with N at most 2^20.
  std::vector<long double> exact(outputs);
  long double sum_a = 0, sum_b = 0;
  const bool check_accuracy = moderate && mode.IsDefault() && !lengths_refused;
  if (check_accuracy) {
    for (std::size_t i = 0; i < len_a; ++i) {
      sum_a += std::fabs(a[i]);
      for (std::size_t j = 0; j < len_b; ++j) exact[i + j] += static_cast<long double>(a[i]) * b[j];
    }
    for (std::size_t j = 0; j < len_b; ++j) sum_b += std::fabs(b[j]);
  }
  const double eps = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
  const double bound = std::max<double>(std::min(len_a, len_b), 3.0 * 20 + 8) * eps *
                       static_cast<double>(sum_a * sum_b);

  for (int level : SupportedLevels()) {
    DescribeCall("Convolve<" + TypeName(sizeof(T)) + "> at level " + std::to_string(level) + ", " +
                 mode.Name() + ", lengths " + std::to_string(len_a) + " and " +
                 std::to_string(len_b) + (with_work ? ", work buffer" : "") +
                 (null_pointer >= 0 ? ", pointer " + std::to_string(null_pointer) + " null" : ""));
    ForceLevel(level);
    // The work size is the level's own: each level's transform lays out its tables.
    const unsigned long long work_size = u::ConvolutionWorkBufferSize(len_a, len_b);
    if (lengths_refused) Expect(work_size == 0, "a refused pair of lengths needs a work buffer");
    Array<T> x(a, offset_a);
    Array<T> y(b, 0);
    Array<T> dst(std::vector<T>(outputs), offset_dst);
    Array<T> work(std::vector<T>(with_work ? work_size : 0), 0);
    const T* pa = null_pointer == 0 ? nullptr : x.data();
    const T* pb = null_pointer == 1 ? nullptr : y.data();
    T* pd = null_pointer == 2 ? nullptr : dst.data();
    T* pw = null_pointer == 3 ? nullptr : work.data();
    std::vector<unsigned char> first;
    RunUnder(mode, [&] {
      if (with_work) {
        u::Convolve(len_a, pa, len_b, pb, pd, pw);
        first = dst.Bytes();
        // Again with the tables the first call left in the buffer: the same bits.
        u::Convolve(len_a, pa, len_b, pb, pd, pw);
      } else {
        u::Convolve(len_a, pa, len_b, pb, pd);
      }
    });
    Expect(x.Intact() && y.Intact() && dst.Intact() && work.Intact(), "wrote outside an array");
    Expect(x.Unchanged() && y.Unchanged(), "changed an operand");
    const bool refused = lengths_refused || (null_pointer >= 0 && null_pointer < 3) ||
                         (with_work && null_pointer == 3 && work_size > 0);
    if (refused) {
      Expect(dst.Unchanged(), "a refused call wrote its destination");
      continue;
    }
    if (with_work) Expect(first == dst.Bytes(), "a second call with the same work buffer differs");
    if (check_accuracy) {
      const auto got = dst.Values();
      for (std::size_t k = 0; k < outputs; ++k) {
        Expect(Within(got[k], static_cast<double>(exact[k]), bound),
               "output " + std::to_string(k) + " beyond the stated bound");
      }
    }
  }
}

// ---- DownSample and UpSample --------------------------------------------------------------------

template <class T>
void ResampleCall(FuzzedDataProvider& input) {
  const bool down = input.ConsumeBool();
  const std::uint32_t len = DrawCount(input, 300, 5000);
  std::uint32_t factor = 0;
  switch (input.ConsumeIntegralInRange<int>(0, 9)) {
    case 0:
      factor = input.ConsumeBool() ? 0 : 0x80000000u + input.ConsumeIntegral<std::uint8_t>();
      break;
    case 1:
      factor = input.ConsumeIntegralInRange<std::uint32_t>(9, down ? 100000 : 64);
      break;
    default:
      factor = input.ConsumeIntegralInRange<std::uint32_t>(1, 8);
  }
  const std::uint32_t phase_in = input.ConsumeIntegral<std::uint8_t>() < 16
                                     ? factor + input.ConsumeIntegral<std::uint8_t>()
                                     : input.ConsumeIntegralInRange<std::uint32_t>(
                                           0, factor > 0 ? std::min(factor - 1, 100000u) : 0);
  const int null_pointer = input.ConsumeIntegral<std::uint8_t>() < 20
                               ? input.ConsumeIntegralInRange<int>(0, 2)
                               : -1;  // src, dst, phase
  const auto src = DrawValues<T>(input, HeldFor(len), false);
  const int offset = DrawOffset(input, sizeof(T));
  const bool refused = null_pointer >= 0 || len == 0 || IsHuge(len) || factor == 0 ||
                       IsHuge(factor) || phase_in >= factor ||
                       (!down && std::uint64_t{len} * factor > 0x7FFFFFFFu);
  if (!down && !refused && std::uint64_t{len} * factor > (1u << 22)) return;

  // The reference: which source element lands where, and the phase that follows.
  std::vector<T> expected;
  std::uint32_t phase_out = phase_in;
  if (!refused && down) {
    for (std::uint64_t i = phase_in; i < len; i += factor) expected.push_back(src[i]);
    phase_out =
        static_cast<std::uint32_t>(phase_in + std::uint64_t{expected.size()} * factor - len);
  } else if (!refused) {
    expected.assign(std::size_t{len} * factor, T{});
    for (std::size_t k = 0; k < len; ++k) expected[k * factor + phase_in] = src[k];
  }
  const std::size_t held = refused ? 16
                           : down  ? std::max<std::size_t>(expected.size(), 1)
                                   : expected.size();

  for (int level : SupportedLevels()) {
    DescribeCall(std::string(down ? "DownSample<" : "UpSample<") + TypeName(sizeof(T)) +
                 "> at level " + std::to_string(level) + ", len " + std::to_string(len) +
                 ", factor " + std::to_string(factor) + ", phase " + std::to_string(phase_in) +
                 (null_pointer >= 0 ? ", pointer " + std::to_string(null_pointer) + " null" : ""));
    ForceLevel(level);
    Array<T> in(src, offset);
    Array<T> out(std::vector<T>(held), offset);
    std::uint32_t phase = phase_in;
    const T* ps = null_pointer == 0 ? nullptr : in.data();
    T* pd = null_pointer == 1 ? nullptr : out.data();
    std::uint32_t* pp = null_pointer == 2 ? nullptr : &phase;
    RunUnder(FpMode{}, [&] {
      down ? u::DownSample(len, ps, pd, factor, pp) : u::UpSample(len, ps, pd, factor, pp);
    });
    Expect(in.Intact() && out.Intact(), "wrote outside an array");
    Expect(in.Unchanged(), "changed the source");
    if (refused) {
      Expect(out.Unchanged() && phase == phase_in, "a refused call wrote its destination or phase");
      continue;
    }
    const auto got = out.Values();
    Expect(expected.empty() ||
               std::memcmp(got.data(), expected.data(), expected.size() * sizeof(T)) == 0,
           "the samples differ from the reference");
    Expect(phase == phase_out, "the phase after the call is not the next sample's");
  }
}

// ---- Matrix product -----------------------------------------------------------------------------

int DrawDimension(FuzzedDataProvider& input) {
  return input.ConsumeIntegral<std::uint8_t>() < 16 ? input.ConsumeIntegralInRange<int>(-2, 0)
                                                    : input.ConsumeIntegralInRange<int>(1, 40);
}

template <class T>
void MultiplyCall(FuzzedDataProvider& input) {
  using R = RealOf<T>;
  const FpMode mode = DrawMode(input);
  constexpr int kOrders[] = {zalaccelerate::RowMajor,
                             zalaccelerate::ColumnMajor,
                             zalaccelerate::RowMajor,
                             zalaccelerate::ColumnMajor,
                             -1,
                             7};
  const int order_value = kOrders[input.ConsumeIntegralInRange<int>(0, 5)];
  const auto order = static_cast<zalaccelerate::MatrixDataOrder>(order_value);
  const int m = DrawDimension(input);
  const int n = DrawDimension(input);
  const int k = DrawDimension(input);
  const int null_pointer = input.ConsumeIntegral<std::uint8_t>() < 20
                               ? input.ConsumeIntegralInRange<int>(0, 2)
                               : -1;  // a, b, c
  const bool moderate = input.ConsumeBool();
  const auto size = [](int r, int c) { return r > 0 && c > 0 ? std::size_t(r) * c : 16; };
  const auto a = DrawValues<T>(input, size(m, k), moderate);
  const auto b = DrawValues<T>(input, size(k, n), moderate);
  const auto c0 = DrawValues<T>(input, size(m, n), false);
  const int offset = DrawOffset(input, sizeof(T));
  const bool known_order = order == zalaccelerate::RowMajor || order == zalaccelerate::ColumnMajor;
  const bool refused = null_pointer >= 0 || m <= 0 || n <= 0 || k < 0 || !known_order;
  // By rows, m x n is checked against the largest size before anything else, so a negative n
  // (m > (2^63 - 1) / n) throws however the other arguments stand.
  const bool impossible_temporary = order == zalaccelerate::RowMajor && m != 0 && n != 0 &&
                                    m > std::numeric_limits<std::int64_t>::max() / n;

  const bool rows = order == zalaccelerate::RowMajor;
  const auto at = [rows](int i, int j, int r, int c) {
    return rows ? std::size_t(i) * c + j : i + std::size_t(j) * r;
  };
  using Wide = std::conditional_t<std::is_same_v<T, R>, long double, std::complex<long double>>;
  std::vector<Wide> exact;
  std::vector<long double> magnitude;
  const bool check_accuracy = !refused && moderate && mode.IsDefault();
  if (check_accuracy) {
    exact.assign(size(m, n), Wide{});
    magnitude.assign(size(m, n), 0);
    for (int i = 0; i < m; ++i) {
      for (int j = 0; j < n; ++j) {
        for (int l = 0; l < k; ++l) {
          const Wide term = Wide(a[at(i, l, m, k)]) * Wide(b[at(l, j, k, n)]);
          exact[at(i, j, m, n)] += term;
          magnitude[at(i, j, m, n)] += std::abs(term);
        }
      }
    }
  }
  const double eps = (sizeof(R) == 4 ? 0x1p-24 : 0x1p-53) * (std::is_same_v<T, R> ? 1 : 2);

  for (int level : SupportedLevels()) {
    DescribeCall("Multiply<" + TypeName(sizeof(R)) + (std::is_same_v<T, R> ? "" : " complex") +
                 "> at level " + std::to_string(level) + ", " + mode.Name() + ", order " +
                 std::to_string(order_value) + ", " + std::to_string(m) + " x " +
                 std::to_string(k) + " x " + std::to_string(n));
    ForceLevel(level);
    Array<T> x(a, offset);
    Array<T> y(b, 0);
    Array<T> z(c0, offset);
    bool threw = false;
    RunUnder(mode, [&] {
      try {
        u::Multiply(order, m, n, k, null_pointer == 0 ? nullptr : x.data(),
                    null_pointer == 1 ? nullptr : y.data(), null_pointer == 2 ? nullptr : z.data());
      } catch (const std::bad_alloc&) {
        threw = true;
      }
    });
    Expect(threw == impossible_temporary,
           threw ? "threw std::bad_alloc for a temporary that can exist"
                 : "did not throw std::bad_alloc for a temporary that cannot exist");
    Expect(x.Intact() && y.Intact() && z.Intact(), "wrote outside an array");
    Expect(x.Unchanged() && y.Unchanged(), "changed an operand");
    if (refused) {
      Expect(z.Unchanged(), "a refused product wrote its destination");
      continue;
    }
    if (!check_accuracy) continue;
    const auto got = z.Values();
    for (std::size_t e = 0; e < got.size(); ++e) {
      const long double error = std::abs(Wide(got[e]) - exact[e]);
      Expect(error <= k * eps * magnitude[e] * (1 + 0x1p-20) + 0x1p-126,
             "element " + std::to_string(e) + " beyond the stated bound");
    }
  }
}

}  // namespace
}  // namespace zal::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zal::fuzz;
  FuzzedDataProvider input(data, size);
  switch (input.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      ConvolveCall<float>(input);
      break;
    case 1:
      ConvolveCall<double>(input);
      break;
    case 2:
      ResampleCall<float>(input);
      break;
    case 3:
      ResampleCall<double>(input);
      break;
    case 4:
      MultiplyCall<float>(input);
      break;
    case 5:
      MultiplyCall<double>(input);
      break;
    case 6:
      MultiplyCall<std::complex<float>>(input);
      break;
    default:
      MultiplyCall<std::complex<double>>(input);
  }
  return 0;
}
